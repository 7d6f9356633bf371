"""The two questions: the verdict, and the report it stands in."""

from __future__ import annotations

import json
import os
from collections.abc import Iterator
from contextlib import ExitStack, contextmanager
from ctypes import byref, sizeof
from typing import Any

from ._library import Options, library
from ._report import Report, Verdict
from ._sources import Source, call_with, name_of, path_of, raise_unopened

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
        made = Report.from_dict(json.loads(text))
    path = path_of(source)
    if path is not None:
        # A notebook that shows the report looks at the file again, for the chart.
        object.__setattr__(made, "_place", (os.path.abspath(path), everything))
    return made


@contextmanager
def _inspection(
    source: Source, everything: bool, host_answer: bool, name: str | None
) -> Iterator[Any]:
    """The library's report, freed afterwards."""
    if name is None and path_of(source) is None:
        name = name_of(source)
    encoded = os.fsencode(name).split(b"\0")[0] if name is not None else None
    options = Options(sizeof(Options), everything, host_answer, encoded)
    with ExitStack() as stack:
        report, reader = call_with(stack, source, "mp4judge_inspect", byref(options))
        stack.callback(library.mp4judge_report_free, report)
        if reader is not None:
            reader.raise_failure()
        error = library.mp4judge_report_error(report)
        raise_unopened(error, library.mp4judge_report_errno(report), source)
        yield report
