"""The shared library: where it is found, and what its functions take and give."""

from __future__ import annotations

import ctypes
import os
from ctypes import c_char_p, c_int, c_int64, c_size_t, c_uint64, c_void_p
from pathlib import Path

NAME = "libmp4judge.so.1"

OK = 0
ERROR_MEMORY = 2
ERROR_OPEN = 3
ERROR_NOT_A_FILE = 4

#: What reads up to n bytes at an offset into an address, and what tells the size.
READ_AT = ctypes.CFUNCTYPE(c_int64, c_void_p, c_uint64, c_void_p, c_size_t)
SIZE = ctypes.CFUNCTYPE(c_int64, c_void_p)


class Options(ctypes.Structure):
    """mp4judge_options."""

    _fields_ = [
        ("size", c_size_t),
        ("everything", c_int),
        ("host_answer", c_int),
        ("name", c_char_p),
    ]


class TreeOptions(ctypes.Structure):
    """mp4judge_tree_options."""

    _fields_ = [
        ("size", c_size_t),
        ("depth", c_int),
        ("path", c_char_p),
        ("most_boxes", c_uint64),
        ("indented", c_int),
    ]


OPTIONS = ctypes.POINTER(Options)
TREE_OPTIONS = ctypes.POINTER(TreeOptions)

_FUNCTIONS: dict[str, tuple[object, list[object]]] = {
    "mp4judge_version": (c_char_p, []),
    "mp4judge_error_text": (c_char_p, [c_int]),
    "mp4judge_verdict_name": (c_char_p, [c_int]),
    "mp4judge_inspect_path": (c_void_p, [c_char_p, OPTIONS]),
    "mp4judge_inspect_memory": (c_void_p, [c_void_p, c_size_t, OPTIONS]),
    "mp4judge_inspect_callbacks": (c_void_p, [READ_AT, SIZE, c_void_p, OPTIONS]),
    "mp4judge_report_free": (None, [c_void_p]),
    "mp4judge_report_verdict": (c_int, [c_void_p]),
    "mp4judge_report_error": (c_int, [c_void_p]),
    "mp4judge_report_errno": (c_int, [c_void_p]),
    "mp4judge_report_json": (c_char_p, [c_void_p]),
    "mp4judge_tree_open_path": (c_void_p, [c_char_p]),
    "mp4judge_tree_open_memory": (c_void_p, [c_void_p, c_size_t]),
    "mp4judge_tree_open_callbacks": (c_void_p, [READ_AT, SIZE, c_void_p]),
    "mp4judge_tree_free": (None, [c_void_p]),
    "mp4judge_tree_error": (c_int, [c_void_p]),
    "mp4judge_tree_errno": (c_int, [c_void_p]),
    "mp4judge_tree_json": (c_char_p, [c_void_p, TREE_OPTIONS]),
}


def _candidates() -> list[str]:
    """The library that the environment names; the one that came in the wheel; the system's."""
    named = os.environ.get("MP4JUDGE_LIBRARY")
    if named:
        return [named]
    bundled = Path(__file__).with_name(NAME)
    return [str(bundled)] if bundled.exists() else [NAME]


def _load() -> ctypes.CDLL:
    for path in _candidates():
        try:
            # A CDLL gives the interpreter lock up for as long as a call lasts.
            found = ctypes.CDLL(path)
            for name, (result, arguments) in _FUNCTIONS.items():
                function = getattr(found, name)
                function.restype = result
                function.argtypes = arguments
            return found
        except (OSError, AttributeError) as why:
            raise ImportError(
                f"mp4judge needs its library {NAME}, and {path} does not do: {why}. Install it "
                f"(Debian: libmp4judge1), or name it in the environment as MP4JUDGE_LIBRARY.",
                name="mp4judge",
                path=path,
            ) from why
    raise AssertionError("there is always a candidate")


library = _load()


def version() -> str:
    """The version of the library, for example "1.0.0"."""
    text: bytes = library.mp4judge_version()
    return text.decode()
