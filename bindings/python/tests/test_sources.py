"""What can be looked at, and how little of it is read."""

from __future__ import annotations

import array
import errno
import io
import mmap
import os
import pathlib
import tempfile
import zipfile
from typing import Any

import boxes
import mp4judge
import pytest

SIZE = 50_000_000


class CountingFile(io.BytesIO):
    """Counts the bytes that are read."""

    count = 0

    def read(self, n: int | None = -1, /) -> bytes:
        data = super().read(n)
        self.count += len(data)
        return data


class Failing:
    """A file object whose `where` raises what it is given."""

    def __init__(self, failure: BaseException, where: str) -> None:
        self.failure = failure
        self.where = where
        self.position = 0

    def seek(self, offset: int, whence: int = 0) -> int:
        if self.where == ("size" if whence == 2 else "seek"):
            raise self.failure
        return 1000 if whence == 2 else offset

    def read(self, n: int) -> bytes:
        raise self.failure


@pytest.fixture
def path(tmp_path: pathlib.Path) -> pathlib.Path:
    made = tmp_path / "film.mp4"
    made.write_bytes(boxes.cenc())
    return made


def test_a_text_is_a_path(path: pathlib.Path) -> None:
    assert mp4judge.judge(str(path)) == "protected"


def test_a_path_object_is_a_path(path: pathlib.Path) -> None:
    assert mp4judge.judge(path) == "protected"


def test_a_path_object_may_give_bytes(path: pathlib.Path) -> None:
    class Named:
        def __fspath__(self) -> bytes:
            return os.fsencode(path)

    assert mp4judge.judge(Named()) == "protected"


def test_a_name_need_not_be_utf8(tmp_path: pathlib.Path) -> None:
    name = os.fsencode(tmp_path) + b"/caf\xe9\n.mp4"
    with open(name, "wb") as file:
        file.write(boxes.clear())
    report = mp4judge.inspect(os.fsdecode(name))
    assert report.verdict == "clear"
    assert bytes.fromhex(report.path_bytes or "") == name


@pytest.mark.parametrize("make", ["missing", "folder", "long", "loop", "below a file"])
def test_a_path_fails_as_open_does(tmp_path: pathlib.Path, make: str) -> None:
    bad = tmp_path / ("x" * 300 if make == "long" else "bad")
    if make == "folder":
        bad.mkdir()
    elif make == "loop":
        bad.symlink_to(bad)
    elif make == "below a file":
        bad.write_bytes(b"")
        bad = bad / "x"
    calls: list[Any] = [mp4judge.judge, mp4judge.inspect]
    for call in calls:
        with pytest.raises(OSError) as expected:
            open(bad)
        with pytest.raises(OSError) as found:
            call(bad)
        assert type(found.value) is type(expected.value)
        assert found.value.args == expected.value.args
        assert os.fspath(found.value.filename) == os.fspath(expected.value.filename)


def test_a_name_with_a_zero_fails_as_open_does() -> None:
    with pytest.raises(ValueError, match="embedded null byte"):
        mp4judge.judge("a\0b")


def test_a_pipe_is_not_waited_for(tmp_path: pathlib.Path) -> None:
    os.mkfifo(tmp_path / "pipe")
    report = mp4judge.inspect(tmp_path / "pipe")
    assert report.verdict == "undetermined"
    assert "pipe" in (report.reason or "")


@pytest.mark.parametrize("make", [bytes, bytearray, memoryview, lambda b: array.array("B", b)])
def test_any_buffer_is_contents(make: Any) -> None:
    assert mp4judge.judge(make(boxes.cenc())) == "protected"
    assert mp4judge.judge(make(boxes.clear())) == "clear"


def test_bytes_are_contents_even_if_a_path_reads_so(path: pathlib.Path) -> None:
    assert mp4judge.judge(os.fsencode(path)) == "undetermined"


def test_a_buffer_may_have_gaps() -> None:
    spread = bytearray(2 * len(boxes.cenc()))
    spread[::2] = boxes.cenc()
    assert mp4judge.judge(memoryview(spread)[::2]) == "protected"


def test_a_part_of_a_buffer_is_that_part() -> None:
    whole = b"junk" + boxes.cenc() + b"junk"
    assert mp4judge.judge(memoryview(whole)[4:-4]) == "protected"


def test_a_buffer_without_bytes_is_an_empty_file() -> None:
    assert mp4judge.inspect(b"").reason == mp4judge.inspect(io.BytesIO()).reason


def test_a_buffer_is_let_go() -> None:
    data = bytearray(boxes.cenc())
    mp4judge.judge(data)
    data.append(0)  # raises BufferError while the buffer is held


def test_a_mapped_file_is_a_buffer(path: pathlib.Path) -> None:
    with open(path, "rb") as file, mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ) as mapped:
        assert mp4judge.judge(mapped) == "protected"


def test_arrays_are_buffers() -> None:
    numpy = pytest.importorskip("numpy")
    flat = numpy.frombuffer(boxes.cenc() + bytes(-len(boxes.cenc()) % 4), dtype=">u4")
    assert mp4judge.judge(flat) == "protected"


@pytest.mark.parametrize("buffering", [0, -1])
def test_an_open_file_is_read(path: pathlib.Path, buffering: int) -> None:
    with open(path, "rb", buffering=buffering) as file:
        report = mp4judge.inspect(file)
    assert (report.verdict, report.path) == ("protected", str(path))


def test_temporary_files_are_read() -> None:
    with tempfile.SpooledTemporaryFile() as file:
        file.write(boxes.cenc())
        assert mp4judge.judge(file) == "protected"


def test_a_file_keeps_its_position() -> None:
    file = io.BytesIO(boxes.cenc())
    file.seek(17)
    mp4judge.judge(file)
    assert file.tell() == 17


def test_little_of_a_file_is_read() -> None:
    file = CountingFile(boxes.cenc() + boxes.box("mdat", bytes(SIZE)))
    assert mp4judge.judge(file) == "protected"
    assert 0 < file.count < 200_000


def test_a_member_of_an_archive_is_not_unpacked_to_its_end() -> None:
    archive = io.BytesIO()
    with zipfile.ZipFile(archive, "w", zipfile.ZIP_DEFLATED) as writer:
        writer.writestr("film.mp4", boxes.cenc() + boxes.box("mdat", bytes(SIZE)))
    with zipfile.ZipFile(archive) as reader, reader.open("film.mp4") as member:
        unpacked = 0
        read1 = member._read1  # type: ignore[attr-defined]

        def counting(n: int) -> bytes:
            nonlocal unpacked
            data: bytes = read1(n)
            unpacked += len(data)
            return data

        member._read1 = counting  # type: ignore[attr-defined]
        report = mp4judge.inspect(member, host_answer=False)
    assert (report.verdict, report.path) == ("protected", "film.mp4")
    assert 0 < unpacked < 1_000_000


def test_files_of_other_libraries_are_read() -> None:
    fsspec = pytest.importorskip("fsspec")
    memory = fsspec.filesystem("memory")
    memory.pipe_file("/film.mp4", boxes.cenc())
    with memory.open("/film.mp4") as file:
        assert mp4judge.judge(file) == "protected"


def test_reads_may_be_short() -> None:
    class Dripping(io.BytesIO):
        def read(self, n: int | None = -1, /) -> bytes:
            return super().read(min(n or 1, 7))

    assert mp4judge.judge(Dripping(boxes.cenc())) == "protected"


def test_reads_may_give_any_buffer() -> None:
    class Viewing(io.BytesIO):
        def read(self, n: int | None = -1, /) -> Any:
            return memoryview(super().read(n))

    assert mp4judge.judge(Viewing(boxes.cenc())) == "protected"


def test_a_read_of_too_much_is_cut() -> None:
    class Generous(io.BytesIO):
        def read(self, n: int | None = -1, /) -> bytes:
            return super().read() + b"more" * 100_000

    assert mp4judge.judge(Generous(boxes.cenc())) == "protected"


def test_a_file_that_ends_before_its_end_is_not_clear() -> None:
    class Shrunk(io.BytesIO):
        def read(self, n: int | None = -1, /) -> bytes:
            return b"" if self.tell() >= 100 else super().read(min(n or 1, 100 - self.tell()))

    report = mp4judge.inspect(Shrunk(boxes.clear()))
    assert report.verdict == "undetermined"
    assert report.error is not None and report.reason


@pytest.mark.parametrize("where", ["size", "seek", "read"])
@pytest.mark.parametrize("kind", [RuntimeError, KeyboardInterrupt, OSError, SystemExit])
def test_what_a_file_raises_comes_through(kind: type[BaseException], where: str) -> None:
    failure = kind("of the caller's")
    calls: list[Any] = [mp4judge.judge, mp4judge.inspect]
    for call in calls:
        with pytest.raises(kind) as found:
            call(Failing(failure, where))
        assert found.value is failure


def test_a_file_that_would_wait_raises() -> None:
    class Waiting(io.BytesIO):
        def read(self, n: int | None = -1, /) -> Any:
            return None

    with pytest.raises(BlockingIOError) as found:
        mp4judge.judge(Waiting(boxes.clear()))
    assert found.value.errno == errno.EAGAIN


def test_text_is_refused(path: pathlib.Path) -> None:
    with open(path, encoding="latin-1") as file:
        with pytest.raises(TypeError, match="binary mode"):
            mp4judge.judge(file)


@pytest.mark.parametrize("what", [None, 7, 1.5, object(), ["film.mp4"]])
def test_anything_else_is_refused(what: Any) -> None:
    with pytest.raises(TypeError, match=type(what).__name__):
        mp4judge.judge(what)
