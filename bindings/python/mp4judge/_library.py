"""The shared library: where it is found, and what its functions take and give."""

from __future__ import annotations

import ctypes
import os
from ctypes import (
    c_char_p,
    c_double,
    c_int,
    c_int8,
    c_int32,
    c_int64,
    c_size_t,
    c_uint,
    c_uint8,
    c_uint32,
    c_uint64,
    c_void_p,
)
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


class Edit(ctypes.Structure):
    """mp4judge_edit."""

    _fields_ = [("duration", c_uint64), ("media_time", c_int64), ("rate", c_int32)]


class MovieTrack(ctypes.Structure):
    """mp4judge_movie_track."""

    _fields_ = [
        ("id", c_uint32),
        ("in_movie", c_int),
        ("handler", c_char_p),
        ("format", c_char_p),
        ("codec", c_char_p),
        ("is_protected", c_int),
        ("scheme", c_char_p),
        ("description_count", c_size_t),
        ("timescale", c_uint32),
        ("duration", c_int64),
        ("language", c_char_p),
        ("width", c_uint32),
        ("height", c_uint32),
        ("channels", c_uint32),
        ("sample_rate", c_double),
        ("config_type", c_char_p),
        ("config", c_void_p),
        ("config_size", c_size_t),
        ("edit_count", c_size_t),
        ("edits", ctypes.POINTER(Edit)),
    ]


class Sample(ctypes.Structure):
    """mp4judge_sample."""

    _fields_ = [
        ("number", c_uint64),
        ("offset", c_uint64),
        ("decode_time", c_int64),
        ("composition_time", c_int64),
        ("size", c_uint32),
        ("duration", c_uint32),
        ("description", c_uint32),
        ("fragment", c_uint32),
        ("sync", c_int8),
        ("is_protected", c_int8),
        ("depends", c_uint8),
        ("outside", c_uint8),
        ("elsewhere", c_uint8),
        ("partial_sync", c_uint8),
        ("reserved", c_uint8 * 2),
    ]


class Columns(ctypes.Structure):
    """mp4judge_columns."""

    _fields_ = [
        ("offset", c_void_p),
        ("size", c_void_p),
        ("dts", c_void_p),
        ("cts", c_void_p),
        ("duration", c_void_p),
        ("flags", c_void_p),
    ]


OPTIONS = ctypes.POINTER(Options)
TREE_OPTIONS = ctypes.POINTER(TreeOptions)
SAMPLE = ctypes.POINTER(Sample)

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
    "mp4judge_info_json": (c_char_p, [c_void_p, c_int]),
    "mp4judge_layout_json": (c_char_p, [c_void_p, c_uint]),
    "mp4judge_movie_open_path": (c_void_p, [c_char_p, c_char_p]),
    "mp4judge_movie_open_memory": (c_void_p, [c_void_p, c_size_t, c_void_p, c_size_t]),
    "mp4judge_movie_open_callbacks": (c_void_p, [READ_AT, SIZE, c_void_p]),
    "mp4judge_movie_free": (None, [c_void_p]),
    "mp4judge_movie_error": (c_int, [c_void_p]),
    "mp4judge_movie_errno": (c_int, [c_void_p]),
    "mp4judge_movie_track_count": (c_size_t, [c_void_p]),
    "mp4judge_movie_track_at": (ctypes.POINTER(MovieTrack), [c_void_p, c_size_t]),
    "mp4judge_movie_timescale": (c_uint32, [c_void_p]),
    "mp4judge_movie_sample_count": (c_uint64, [c_void_p, c_size_t]),
    "mp4judge_movie_sample": (c_int, [c_void_p, c_size_t, c_uint64, SAMPLE]),
    "mp4judge_movie_at_decode_time": (c_uint64, [c_void_p, c_size_t, c_int64]),
    "mp4judge_movie_at_composition_time": (c_uint64, [c_void_p, c_size_t, c_int64]),
    "mp4judge_movie_at_presentation_time": (c_uint64, [c_void_p, c_size_t, c_int64]),
    "mp4judge_movie_sync_before": (c_uint64, [c_void_p, c_size_t, c_uint64]),
    "mp4judge_movie_presentation_time": (
        c_int,
        [c_void_p, c_size_t, c_int64, ctypes.POINTER(c_int64)],
    ),
    "mp4judge_movie_read": (c_size_t, [c_void_p, SAMPLE, c_void_p, c_size_t]),
    "mp4judge_movie_columns": (
        c_size_t,
        [c_void_p, c_size_t, c_uint64, c_size_t, ctypes.POINTER(Columns)],
    ),
    "mp4judge_movie_problem_count": (c_size_t, [c_void_p, c_size_t]),
    "mp4judge_movie_problem": (c_char_p, [c_void_p, c_size_t, c_size_t]),
}


def _candidates() -> list[str]:
    """The library that the environment names; the one that came in the wheel; the system's."""
    named = os.environ.get("MP4JUDGE_LIBRARY")
    if named:
        return [named]
    bundled = Path(__file__).parent.glob(f"lib*/**/{NAME}")
    return [*map(str, bundled), NAME][:1]


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
