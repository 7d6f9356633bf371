"""What can be looked at: paths, memory and file objects, handed to the library as they are."""

from __future__ import annotations

import ctypes
import errno
import io
import itertools
import os
import zipfile
from collections.abc import Iterator
from contextlib import ExitStack, contextmanager
from typing import Any, Protocol, Union

from ._library import (
    ERROR_MEMORY,
    ERROR_NOT_A_FILE,
    ERROR_OPEN,
    READ_AT,
    SIZE,
    library,
)


class BinaryFile(Protocol):
    """A file object with the two methods that are needed."""

    def read(self, n: int, /) -> Any: ...

    def seek(self, offset: int, whence: int = ..., /) -> Any: ...


#: A path, whatever has the buffer protocol, or a binary file object.
Source = Union[
    str,
    "os.PathLike[str]",
    "os.PathLike[bytes]",
    bytes,
    bytearray,
    memoryview,
    BinaryFile,
    Any,  # other buffers, which Python 3.9 has no type for
]


def is_file(source: object) -> bool:
    return hasattr(source, "read") and hasattr(source, "seek")


def is_buffer(source: object) -> bool:
    try:
        memoryview(source).release()  # type: ignore[arg-type]
    except TypeError:
        return False
    return True


def path_of(source: object) -> bytes | None:
    """The path's bytes, or None for what is not a path. Raises what `open` would."""
    if not isinstance(source, str):
        if is_file(source) or not hasattr(source, "__fspath__"):
            return None
    path = os.fsencode(source)  # type: ignore[arg-type]
    if b"\0" in path:
        raise ValueError("embedded null byte")
    return path


class _PyBuffer(ctypes.Structure):
    """Py_buffer, as the stable ABI of CPython has it."""

    _fields_ = [
        ("buf", ctypes.c_void_p),
        ("obj", ctypes.py_object),
        ("len", ctypes.c_ssize_t),
        ("itemsize", ctypes.c_ssize_t),
        ("readonly", ctypes.c_int),
        ("ndim", ctypes.c_int),
        ("format", ctypes.c_char_p),
        ("shape", ctypes.c_void_p),
        ("strides", ctypes.c_void_p),
        ("suboffsets", ctypes.c_void_p),
        ("internal", ctypes.c_void_p),
    ]


_get_buffer = ctypes.pythonapi.PyObject_GetBuffer
_get_buffer.argtypes = [ctypes.py_object, ctypes.POINTER(_PyBuffer), ctypes.c_int]
_release_buffer = ctypes.pythonapi.PyBuffer_Release
_release_buffer.argtypes = [ctypes.POINTER(_PyBuffer)]
_release_buffer.restype = None


@contextmanager
def memory_of(source: object) -> Iterator[tuple[int | None, int]]:
    """Address and size of a buffer, which stays where it is meanwhile. Nothing is copied unless
    its bytes do not lie together."""
    view = memoryview(source)  # type: ignore[arg-type]
    held = source if view.c_contiguous else view.tobytes()
    view.release()
    buffer = _PyBuffer()
    _get_buffer(held, buffer, 0)
    try:
        yield buffer.buf, buffer.len
    finally:
        _release_buffer(buffer)


class FileReader:
    """Reads a file object for the library, and keeps what it raised."""

    def __init__(self, file: Any) -> None:
        if isinstance(file, io.TextIOBase):
            raise TypeError("the file is open in text mode; open it in binary mode ('rb')")
        self._file = file
        self.failure: BaseException | None = None

    def size(self) -> int:
        if isinstance(self._file, zipfile.ZipExtFile):
            # Going to the end would unpack all of the member.
            known = getattr(self._file, "_orig_file_size", None)
            if isinstance(known, int):
                return known
        end = self._file.seek(0, os.SEEK_END)
        return int(self._file.tell() if end is None else end)

    def read_at(self, offset: int, address: int, n: int) -> int:
        self._file.seek(offset, os.SEEK_SET)
        data = self._file.read(n)
        if data is None:
            raise BlockingIOError(errno.EAGAIN, os.strerror(errno.EAGAIN))
        if not isinstance(data, bytes):
            data = memoryview(data).tobytes()
        count = min(len(data), n)
        ctypes.memmove(address, data, count)
        return count or -1  # an end before the end

    def raise_failure(self) -> None:
        """Raises the very exception that the file object raised."""
        failure, self.failure = self.failure, None
        if failure is not None:
            try:
                raise failure
            finally:
                # The exception's frames know this reader; without this they would hold each other.
                del failure


# A thunk for each reader would cost more than what it reads, so two know them all by number.
_readers: dict[int, FileReader] = {}
_numbers = itertools.count(1)


def _read_at(number: int, offset: int, address: int, n: int) -> int:
    reader = _readers[number]
    if reader.failure is not None:
        return -1
    try:
        return reader.read_at(offset, address, n)
    except BaseException as failure:
        reader.failure = failure
        return -1


def _size(number: int) -> int:
    reader = _readers[number]
    try:
        return reader.size()
    except BaseException as failure:
        reader.failure = failure
        return -1


read_at_thunk = READ_AT(_read_at)
size_thunk = SIZE(_size)


def register(reader: FileReader) -> int:
    """The number by which the thunks know the reader until `forget`."""
    number = next(_numbers)
    _readers[number] = reader
    return number


def forget(number: int) -> None:
    _readers.pop(number, None)


@contextmanager
def reader_of(file: object, restore: bool) -> Iterator[tuple[FileReader, int]]:
    """A reader and its number. The file's position is afterwards what it was, if that is wanted."""
    reader = FileReader(file)
    tell = getattr(file, "tell", None) if restore else None
    position = tell() if tell is not None else None
    number = register(reader)
    try:
        yield reader, number
    finally:
        forget(number)
    if position is not None:
        file.seek(position)  # type: ignore[attr-defined]


def call_with(
    stack: ExitStack,
    source: object,
    kind: str,
    *more: object,
    restore: bool = True,
) -> tuple[Any, FileReader | None]:
    """Calls the library's function `kind` for a path, memory or callbacks, as the source is one.
    What it was given lasts until `stack` ends. Gives what the function gives and, of a file object,
    the reader."""
    path = path_of(source)
    if path is not None:
        return getattr(library, kind + "_path")(path, *more), None
    if is_buffer(source):
        address, size = stack.enter_context(memory_of(source))
        return getattr(library, kind + "_memory")(address, size, *more), None
    if not is_file(source):
        raise TypeError(
            "a path, a buffer or a binary file object with seek and read is wanted, not "
            + type(source).__name__
        )
    reader, number = stack.enter_context(reader_of(source, restore))
    call = getattr(library, kind + "_callbacks")
    return call(read_at_thunk, size_thunk, number, *more), reader


def raise_unopened(error: int, number: int, source: object) -> None:
    """What is raised for an error of the library, if something is: a path that does not open raises
    what `open` would."""
    if error == ERROR_MEMORY:
        raise MemoryError
    if error in (ERROR_OPEN, ERROR_NOT_A_FILE) and number:
        raise OSError(number, os.strerror(number), source)


def name_of(source: object) -> str | None:
    """What a file object says it is called."""
    name = getattr(source, "name", None)
    return name if isinstance(name, str) else None
