"""The tracks of a file and every sample of them: where and when it is."""

from __future__ import annotations

import ctypes
import errno
import math
import os
import threading
import weakref
from collections.abc import Callable, Iterator, Sequence
from contextlib import ExitStack
from dataclasses import dataclass, field
from typing import TYPE_CHECKING, Any, NamedTuple, Optional, TypeVar, Union, overload

from . import _library
from ._library import ERROR_MEMORY, library
from ._need import need
from ._sources import FileReader, Source, call_with, is_buffer, memory_of, path_of, raise_unopened

if TYPE_CHECKING:
    import numpy

_Answer = TypeVar("_Answer")

_OF_THE_MOVIE = ctypes.c_size_t(-1).value


class Error(Exception):
    """What keeps a question from being answered: `reason`, with the `file` and the `offset`."""

    def __init__(self, reason: str, file: object, offset: int | None) -> None:
        super().__init__(reason, file, offset)
        self.reason = reason
        self.file = file
        self.offset = offset

    def __str__(self) -> str:
        file = f"{self.file}: " if isinstance(self.file, (str, os.PathLike)) else ""
        place = f" at offset {self.offset}" if self.offset is not None else ""
        return f"{file}{self.reason}{place}"


class Sample(NamedTuple):
    """One sample. Times count in units of the track's timescale."""

    number: int  #: from 1 within the track
    offset: int  #: in the file
    size: int  #: bytes
    dts: int  #: decode time
    cts: int  #: composition time
    duration: int  #: in units of the track's timescale
    sync: Optional[bool]  #: None when not told
    description: int  #: sample description, from 1; 0 when nothing names one
    protected: Optional[bool]  #: None when it cannot be told
    fragment: int  #: movie fragment, from 1; 0 for the movie box
    depends: int  #: the four fields of SampleDependencyTypeBox, two bits each from the highest on
    outside: bool  #: not all of its bytes are in the file
    elsewhere: bool  #: its data is in another file
    partial_sync: bool  #: in QuickTime's partial sync table


class Edit(NamedTuple):
    """One edit (EditListBox, ISO/IEC 14496-12, 8.6.6)."""

    duration: int  #: in units of the movie's timescale
    media_time: int  #: in units of the track's timescale; -1 for an empty edit
    rate: float  #: 0 for a dwell


@dataclass(frozen=True)
class Columns:
    """Samples as NumPy arrays, one element a sample."""

    number: numpy.ndarray[Any, Any]  #: from 1 within the track
    offset: numpy.ndarray[Any, Any]  #: in the file
    size: numpy.ndarray[Any, Any]  #: bytes
    dts: numpy.ndarray[Any, Any]  #: decode times, in units of the track's timescale
    cts: numpy.ndarray[Any, Any]  #: composition times, likewise
    duration: numpy.ndarray[Any, Any]  #: likewise
    flags: numpy.ndarray[Any, Any]  #: bits, the `MP4JUDGE_SAMPLE_` numbers of samples.h

    @property
    def sync(self) -> numpy.ndarray[Any, Any]:
        """True for samples that are known to be sync samples."""
        return self._any_of(1)

    @property
    def protected(self) -> numpy.ndarray[Any, Any]:
        """True for samples that are protected, and for those of which it cannot be told."""
        return self._any_of(2 | 64)

    @property
    def outside(self) -> numpy.ndarray[Any, Any]:
        """True for samples whose bytes are not all in the file."""
        return self._any_of(4)

    def _any_of(self, bits: int) -> numpy.ndarray[Any, Any]:
        found: numpy.ndarray[Any, Any] = (self.flags & bits) != 0
        return found

    def __len__(self) -> int:
        return len(self.flags)


_KINDS = {
    "offset": "uint64",
    "size": "uint32",
    "dts": "int64",
    "cts": "int64",
    "duration": "uint32",
    "flags": "uint8",
}


class Samples(Sequence[Sample]):
    """The samples of a track, or a slice of them. None is kept in memory: each is looked up when
    it is asked for. Indexes begin with 0, sample numbers with 1."""

    def __init__(self, movie: Movie, track: int, timescale: int, rows: range | None = None) -> None:
        self._movie = movie
        self._track = track
        self._timescale = timescale
        self._known = rows

    @property
    def _rows(self) -> range:
        if self._known is None:
            self._known = range(self._movie._call("sample_count", self._track))
        return self._known

    def __len__(self) -> int:
        return len(self._rows)

    @overload
    def __getitem__(self, index: int) -> Sample: ...

    @overload
    def __getitem__(self, index: slice) -> Samples: ...

    def __getitem__(self, index: int | slice) -> Sample | Samples:
        rows = self._rows[index]
        if isinstance(rows, range):
            return Samples(self._movie, self._track, self._timescale, rows)
        found = self._numbered(rows + 1)
        if found is None:
            raise IndexError("sample index out of range")
        return found

    def __iter__(self) -> Iterator[Sample]:
        for row in self._rows:
            found = self._numbered(row + 1)
            if found is not None:
                yield found

    def __repr__(self) -> str:
        return f"<{len(self)} samples>"

    def _numbered(self, number: int) -> Sample | None:
        raw = _library.Sample()
        if not self._movie._call("sample", self._track, number, ctypes.byref(raw)):
            return None
        return Sample(
            raw.number,
            raw.offset,
            raw.size,
            raw.decode_time,
            raw.composition_time,
            raw.duration,
            None if raw.sync < 0 else raw.sync != 0,
            raw.description,
            None if raw.is_protected < 0 else raw.is_protected != 0,
            raw.fragment,
            raw.depends,
            raw.outside != 0,
            raw.elsewhere != 0,
            raw.partial_sync != 0,
        )

    def _found(self, look_up: str, value: int) -> Sample | None:
        """Of the whole track, whatever the slice."""
        number = self._movie._call(look_up, self._track, value)
        return self._numbered(number) if number else None

    def at_time(self, seconds: float) -> Sample | None:
        """The sample of the track that is shown so long after the presentation's beginning, edit
        list considered; None where none is."""
        # A time that was divided by the timescale comes back as that time.
        return self._found(
            "at_presentation_time", math.floor(seconds * self._timescale + 1 / 1024)
        )

    def at_dts(self, dts: int) -> Sample | None:
        """The track's last sample whose decode time is at or before `dts`."""
        return self._found("at_decode_time", dts)

    def at_cts(self, cts: int) -> Sample | None:
        """The track's sample with the greatest composition time at or before `cts`."""
        return self._found("at_composition_time", cts)

    def sync_before(self, sample: Sample | int) -> Sample | None:
        """The track's last sync sample up to this one, or up to that index."""
        number = sample.number if isinstance(sample, Sample) else self._rows[sample] + 1
        return self._found("sync_before", number)

    def columns(self) -> Columns:
        """All of these samples as NumPy arrays, filled by the library."""
        numpy = need("columns()", "numpy", "python3-numpy")
        rows = self._rows
        low, high = (min(rows[0], rows[-1]), max(rows[0], rows[-1]) + 1) if rows else (0, 0)
        made = {name: numpy.empty(high - low, kind) for name, kind in _KINDS.items()}
        made["number"] = numpy.arange(low + 1, high + 1, dtype="uint64")
        places = _library.Columns(*(made[name].ctypes.data for name in _KINDS))
        count = self._movie._call(
            "columns", self._track, low + 1, high - low, ctypes.byref(places)
        )
        step = slice(None, None, rows.step)
        return Columns(**{name: values[:count][step] for name, values in made.items()})

    def frame(self) -> Any:
        """All of these samples as a pandas DataFrame."""
        pandas = need("frame()", "pandas", "python3-pandas")
        columns = self.columns()
        names = [*(name for name in _KINDS if name != "flags"), "sync", "protected", "outside"]
        return pandas.DataFrame(
            {name: getattr(columns, name) for name in names},
            index=pandas.Index(columns.number, name="number"),
        )

    def read(self, sample: Sample) -> bytes:
        """The bytes of a sample. Raises Error when the file does not have them all."""
        if sample.elsewhere:
            raise Error(f"sample {sample.number} is in another file", self._movie.source, None)
        if sample.outside:
            raise Error(
                f"sample {sample.number}, {sample.size} bytes, is not all in the file",
                self._movie.source,
                sample.offset,
            )
        raw = _library.Sample(number=sample.number, offset=sample.offset, size=sample.size)
        data = ctypes.create_string_buffer(sample.size)
        count = self._movie._call("read", ctypes.byref(raw), data, sample.size)
        if count != sample.size:
            raise Error(f"sample {sample.number} is cut", self._movie.source, sample.offset)
        return data.raw


@dataclass(frozen=True)
class MovieTrack:
    """A track, with its first sample description."""

    id: int  #: of the track header; 0 when unreadable
    in_movie: bool  #: False when fragments alone name the track
    handler: Optional[str]  #: "vide", "soun", ...; None when not told
    format: Optional[str]  #: of the sample entry: "avc1", "encv"
    codec: Optional[str]  #: the format before protection: "avc1"
    protected: bool  #: whether some sample description is
    scheme: Optional[str]  #: "cenc", ...; None when none is named
    descriptions: int  #: how many sample descriptions there are
    timescale: int  #: units a second; 0 when not told
    duration: Optional[int]  #: of the media; None when not told
    language: str  #: "eng", "en-US", "mac:0"; "" when not told
    width: int  #: of video, in pixels
    height: int  #: likewise
    channels: int  #: of sound
    sample_rate: float  #: of sound, frames a second
    config_type: Optional[str]  #: "avcC", "esds", ...; None without a decoder configuration
    config: bytes = field(repr=False)  #: payload of that box
    edits: tuple[Edit, ...]  #: in the order they are shown
    #: all of them, looked up when they are asked for
    samples: Samples = field(compare=False, repr=False)
    _movie: Movie = field(compare=False, repr=False)
    _index: int = field(compare=False, repr=False)

    @property
    def problems(self) -> tuple[str, ...]:
        """What is wrong with the boxes that place its samples, a sentence each."""
        return self._movie._problems(self._index)

    def presentation_time(self, cts: int) -> float | None:
        """When a composition time is presented, in seconds; None when no edit shows it."""
        time = ctypes.c_int64()
        if not self.timescale or not self._movie._call(
            "presentation_time", self._index, cts, ctypes.byref(time)
        ):
            return None
        return time.value / self.timescale


def _text(raw: bytes | None) -> str | None:
    return raw.decode(errors="replace") if raw is not None else None


def _release(handle: Any, stack: ExitStack) -> None:
    library.mp4judge_movie_free(handle)
    stack.close()


class Movie:
    """An open file. Threads take turns. Use it with `with`, or close it; a forgotten one is closed
    when nothing refers to it any more, its tracks included."""

    def __init__(self, source: Source, init: Source | None = None) -> None:
        self.source = source
        self._lock = threading.Lock()
        self._asking: int | None = None
        with ExitStack() as stack:
            handle, self._reader = _open_movie(stack, source, init)
            if handle is None:
                raise MemoryError
            self._handle = handle
            self._close = weakref.finalize(self, _release, handle, stack.pop_all())
        try:
            error = library.mp4judge_movie_error(handle)
            self._raise_failure()
            raise_unopened(error, library.mp4judge_movie_errno(handle), source)
            self._raise_error()
        except BaseException:
            self.close()
            raise

    def close(self) -> None:
        """Lets the file go. What is asked of it afterwards raises ValueError."""
        with self._lock:
            self._close()

    def __enter__(self) -> Movie:
        return self

    def __exit__(self, *what: object) -> None:
        self.close()

    @property
    def timescale(self) -> int:
        """Units a second of the movie; 0 without a movie box."""
        return int(self._call("timescale"))

    @property
    def tracks(self) -> tuple[MovieTrack, ...]:
        """Those of the movie box; once samples were asked for, those that only fragments name."""
        return tuple(map(self._track, range(self._call("track_count"))))

    @property
    def problems(self) -> tuple[str, ...]:
        """What is wrong with the movie and its fragments, a sentence each."""
        return self._problems(_OF_THE_MOVIE)

    def __repr__(self) -> str:
        if not self._close.alive:
            return "<Movie, closed>"
        tracks = ", ".join(f"{t.handler or '?'} {t.codec or '?'}" for t in self.tracks)
        return f"<Movie: {tracks}>"

    def _call(self, name: str, *arguments: Any) -> Any:
        """Asks the library about this movie."""
        function: Callable[..., Any] = getattr(library, "mp4judge_movie_" + name)

        def question() -> Any:
            return function(self._handle, *arguments)

        return self._ask(question)

    def _ask(self, question: Callable[[], _Answer]) -> _Answer:
        """Lets nobody else ask meanwhile, and raises what went wrong."""
        if self._asking == threading.get_ident():
            raise RuntimeError("a file object must not ask the movie that is reading it")
        with self._lock:
            if not self._close.alive:
                raise ValueError("the movie is closed")
            self._asking = threading.get_ident()
            try:
                answer = question()
            finally:
                self._asking = None
            self._raise_failure()
            self._raise_error()
            return answer

    def _raise_failure(self) -> None:
        if self._reader is not None:
            self._reader.raise_failure()

    def _raise_error(self) -> None:
        error = library.mp4judge_movie_error(self._handle)
        if error == ERROR_MEMORY:
            raise MemoryError
        if error:
            why = library.mp4judge_error_text(error).decode()
            number = library.mp4judge_movie_errno(self._handle)
            raise OSError(number if number > 0 else errno.EIO, why, self.source)

    def _problems(self, track: int) -> tuple[str, ...]:
        count = self._call("problem_count", track)
        texts = (self._call("problem", track, i) for i in range(count))
        return tuple(text.decode(errors="replace") for text in texts if text is not None)

    def _track(self, index: int) -> MovieTrack:
        return self._ask(lambda: self._copy_of_track(index))

    def _copy_of_track(self, index: int) -> MovieTrack:
        raw = library.mp4judge_movie_track_at(self._handle, index).contents
        return MovieTrack(
            id=raw.id,
            in_movie=raw.in_movie != 0,
            handler=_text(raw.handler),
            format=_text(raw.format),
            codec=_text(raw.codec),
            protected=raw.is_protected != 0,
            scheme=_text(raw.scheme),
            descriptions=raw.description_count,
            timescale=raw.timescale,
            duration=raw.duration if raw.duration >= 0 else None,
            language=_text(raw.language) or "",
            width=raw.width,
            height=raw.height,
            channels=raw.channels,
            sample_rate=raw.sample_rate,
            config_type=_text(raw.config_type),
            config=ctypes.string_at(raw.config, raw.config_size) if raw.config else b"",
            edits=tuple(
                Edit(edit.duration, edit.media_time, edit.rate / 65536)
                for edit in (raw.edits[i] for i in range(raw.edit_count))
            ),
            samples=Samples(self, index, raw.timescale),
            _movie=self,
            _index=index,
        )


def _open_movie(
    stack: ExitStack, source: Source, init: Source | None
) -> tuple[Any, FileReader | None]:
    kind = "mp4judge_movie_open"
    if init is None:
        more: tuple[object, ...] = ()
        if path_of(source) is not None:
            more = (None,)
        elif is_buffer(source):
            more = (None, 0)
        return call_with(stack, source, kind, *more, restore=False)
    if path_of(source) is not None and path_of(init) is not None:
        return call_with(stack, source, kind, path_of(init))
    memory = stack.enter_context(memory_of(_contents(init)))
    return call_with(stack, _contents(source), kind, *memory)


def _contents(source: Any) -> Any:
    """A buffer with all of the source."""
    path: Optional[Union[bytes, str]] = path_of(source)
    if path is not None:
        with open(path, "rb") as file:
            return file.read()
    if is_buffer(source):
        return source
    source.seek(0)
    return source.read()


def open_movie(source: Source, init: Source | None = None) -> Movie:
    """Opens a file for its tracks and samples; takes and raises what `judge` does.

    A path or file object is read when something is asked; a buffer stays in use until the movie is
    closed. `init` is the initialization that describes a media segment; unless both are paths, both
    are read as a whole.
    """
    return Movie(source, init)
