"""The two questions: the verdict, and the report it stands in."""

from __future__ import annotations

import json
import os
from collections.abc import Iterator
from contextlib import contextmanager
from ctypes import byref, sizeof
from typing import Any, cast

from ._library import ERROR_MEMORY, ERROR_NOT_A_FILE, ERROR_OPEN, Options, library
from ._report import Report, Verdict
from ._sources import (
    Source,
    is_buffer,
    is_file,
    memory_of,
    name_of,
    path_of,
    read_at_thunk,
    reader_of,
    size_thunk,
)

_VERDICTS: tuple[Verdict, ...] = ("clear", "protected", "undetermined")


def judge(source: Source, everything: bool = False) -> Verdict:
    """Whether a file is protected: "clear", "protected" or "undetermined".

    `source` is a path, the file's bytes in any buffer (bytes, memoryview, mmap, NumPy array), or a
    binary file object that can seek. Of the last, a few kilobytes are read. bytes are contents,
    never a path. A file with movie fragments is looked at near its beginning unless `everything`
    is wanted.

    A path that cannot be opened raises the OSError that `open` would; what a file object raises
    comes through. Everything else has a verdict.
    """
    with _inspection(source, everything, host_answer=False, name=None) as report:
        number = library.mp4judge_report_verdict(report)
        return _VERDICTS[number] if 0 <= number < 2 else "undetermined"


def inspect(
    source: Source,
    everything: bool = False,
    *,
    host_answer: bool = True,
    name: str | None = None,
) -> Report:
    """The verdict with its evidence; takes and raises what `judge` does.

    With `host_answer`, the host's judgement stands beside the verdict. `name` is what the report
    calls the source; without one it is the path, or what a file object says it is called.
    """
    with _inspection(source, everything, host_answer, name) as report:
        text = library.mp4judge_report_json(report)
        if text is None:
            raise MemoryError
        return Report.from_dict(json.loads(text))


@contextmanager
def _inspection(
    source: Source, everything: bool, host_answer: bool, name: str | None
) -> Iterator[Any]:
    """The library's report, freed afterwards."""
    path = path_of(source)
    if name is None and path is None:
        name = name_of(source)
    encoded = os.fsencode(name).split(b"\0")[0] if name is not None else None
    options = Options(sizeof(Options), everything, host_answer, encoded)
    report = _make(source, path, options)
    try:
        error = library.mp4judge_report_error(report)
        if error == ERROR_MEMORY:
            raise MemoryError
        if error in (ERROR_OPEN, ERROR_NOT_A_FILE):
            number = library.mp4judge_report_errno(report)
            if number:
                raise OSError(number, os.strerror(number), cast(Any, source))
        yield report
    finally:
        library.mp4judge_report_free(report)


def _make(source: Source, path: bytes | None, options: Options) -> Any:
    if path is not None:
        return library.mp4judge_inspect_path(path, byref(options))
    if is_buffer(source):
        with memory_of(source) as (address, size):
            return library.mp4judge_inspect_memory(address, size, byref(options))
    if is_file(source):
        return _of_file(source, options)
    raise TypeError(
        "a path, a buffer or a binary file object with seek and read is wanted, not "
        + type(source).__name__
    )


def _of_file(file: object, options: Options) -> Any:
    report = None
    with reader_of(file) as (reader, number):
        report = library.mp4judge_inspect_callbacks(
            read_at_thunk, size_thunk, number, byref(options)
        )
        if reader.failure is not None:
            library.mp4judge_report_free(report)
            reader.raise_failure()
    return report
