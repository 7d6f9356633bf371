"""Tracks and samples."""

from __future__ import annotations

import gc
import io
import os
import pathlib
import struct
import subprocess
import sys
import threading
import time
from typing import Any

import boxes
import mp4judge
import pytest
from boxes import be32, film, full, tables

LONG = 1_150_000


SIZES = [5, 3, 9, 1, 4, 7]
FILM = film(SIZES, sync=(1, 4))


@pytest.fixture
def samples() -> mp4judge.Samples:
    return mp4judge.open(FILM).tracks[0].samples


def test_a_movie_has_tracks() -> None:
    movie = mp4judge.open(boxes.movie(boxes.track(), boxes.track("enca", boxes.sinf("cbcs"), number=2)))
    first, second = movie.tracks
    assert (first.id, first.handler, first.format, first.codec) == (1, "soun", "mp4a", "mp4a")
    assert (first.protected, first.scheme, first.timescale) == (False, None, 1000)
    assert (first.channels, first.sample_rate, first.language) == (1, 44100.0, "und")
    assert (second.format, second.codec, second.protected) == ("enca", "mp4a", True)
    assert second.scheme == "cbcs"
    assert (movie.timescale, movie.problems) == (1000, ())
    assert repr(movie) == "<Movie: soun mp4a, soun mp4a>"


def test_samples_know_their_place(samples: mp4judge.Samples) -> None:
    assert len(samples) == 6
    base = FILM.index(b"mdat") + 4
    assert [one.offset - base for one in samples] == [0, 5, 8, 17, 18, 22]
    assert [one.size for one in samples] == SIZES
    assert [one.dts for one in samples] == [one.cts for one in samples] == [*range(0, 600, 100)]
    assert [one.number for one in samples] == [1, 2, 3, 4, 5, 6]
    assert [one.sync for one in samples] == [True, False, False, True, False, False]
    assert {(s.duration, s.description, s.protected, s.fragment) for s in samples} == {
        (100, 1, False, 0)
    }


def test_samples_are_a_sequence(samples: mp4judge.Samples) -> None:
    assert samples[-1] == samples[5] == list(samples)[5]
    for wrong in (6, -7):
        with pytest.raises(IndexError):
            samples[wrong]
    assert list(reversed(samples))[0].number == 6
    assert samples[2] in samples


@pytest.mark.parametrize("cut", [slice(1, 4), slice(None, None, 2), slice(4, 1, -1), slice(9, 12)])
def test_slices_are_samples(samples: mp4judge.Samples, cut: slice) -> None:
    expected = list(samples)[cut]
    part = samples[cut]
    assert len(part) == len(expected) and list(part) == expected
    assert part.columns().number.tolist() == [one.number for one in expected]
    assert part.columns().size.tolist() == [one.size for one in expected]


def test_a_slice_of_a_slice_is_a_slice(samples: mp4judge.Samples) -> None:
    assert [one.number for one in samples[1:][1:3]] == [3, 4]


def test_samples_are_found_by_time(samples: mp4judge.Samples) -> None:
    def number(found: mp4judge.Sample | None) -> int | None:
        return None if found is None else found.number

    assert [number(samples.at_dts(t)) for t in (-1, 0, 99, 100, 10_000)] == [None, 1, 1, 2, 6]
    assert [number(samples.at_cts(t)) for t in (-1, 0, 99, 100)] == [None, 1, 1, 2]
    assert [number(samples.at_time(t)) for t in (0, 0.0999, 0.1, 0.3, 0.599)] == [1, 1, 2, 4, 6]
    assert [number(samples.at_time(one.cts / 1000)) for one in samples] == [1, 2, 3, 4, 5, 6]


def test_the_sync_sample_before_is_found(samples: mp4judge.Samples) -> None:
    found = [samples.sync_before(i) for i in range(6)]
    assert [one.number for one in found if one is not None] == [1, 1, 1, 4, 4, 4]
    assert samples.sync_before(samples[4]) == samples[3]
    assert samples[4:].sync_before(0) == samples[3]


def test_columns_are_arrays(samples: mp4judge.Samples) -> None:
    columns = samples.columns()
    assert len(columns) == 6
    for name in ("number", "offset", "size", "dts", "cts", "duration", "sync", "protected"):
        values = getattr(columns, name)
        assert values.tolist() == [getattr(one, name) for one in samples]
    assert not columns.outside.any()
    assert columns.offset.dtype == "uint64" and columns.dts.dtype == "int64"


def test_columns_of_no_samples_are_empty() -> None:
    assert len(mp4judge.open(boxes.clear()).tracks[0].samples.columns()) == 0


def test_a_frame_has_the_columns(samples: mp4judge.Samples) -> None:
    pytest.importorskip("pandas")
    frame = samples.frame()
    assert frame.index.name == "number"
    assert frame["size"].tolist() == SIZES
    assert frame["sync"].sum() == 2


def test_the_bytes_of_a_sample_are_read(samples: mp4judge.Samples) -> None:
    assert [samples.read(one) for one in samples] == [
        bytes([i]) * size for i, size in enumerate(SIZES)
    ]


def test_a_sample_that_is_not_there_is_not_read(tmp_path: pathlib.Path) -> None:
    path = tmp_path / "cut.mp4"
    path.write_bytes(FILM[:-1])
    with mp4judge.open(path) as movie:
        last = movie.tracks[0].samples[5]
        assert last.outside
        with pytest.raises(mp4judge.Error, match="sample 6") as found:
            movie.tracks[0].samples.read(last)
    assert (found.value.file, found.value.offset) == (path, last.offset)
    assert str(path) in str(found.value)


def test_columns_of_a_long_film_cost_little() -> None:
    sizes = struct.pack(f">{LONG}I", *range(LONG))
    table = full("stts", be32(1, LONG, 100)) + full("stsc", be32(1, 1, LONG, 1))
    table += full("stsz", be32(0, LONG), sizes) + full("stco", be32(1, 8))
    samples = mp4judge.open(boxes.movie(boxes.track(tables=table))).tracks[0].samples
    assert len(samples) == LONG
    best = 1.0
    for _ in range(5):
        start = time.thread_time()
        columns = samples.columns()
        best = min(best, time.thread_time() - start)
    assert columns.size[-1] == LONG - 1
    assert columns.dts[-1] == 100 * (LONG - 1)
    # A loop in Python takes more than half a second.
    assert best < 0.1


def test_fragments_have_samples() -> None:
    run = full("trun", be32(2), be32(4, 6), flags=0x200)
    traf = boxes.box("traf", full("tfhd", be32(1, 50), flags=0x20008), run)
    head = boxes.movie(boxes.track(), boxes.box("mvex", full("trex", be32(1, 1, 0, 0, 0))))
    segment = boxes.box("moof", full("mfhd", be32(1)), traf) + boxes.box("mdat", bytes(10))
    whole = list(mp4judge.open(head + segment).tracks[0].samples)
    assert [(one.size, one.dts, one.fragment) for one in whole] == [(4, 0, 1), (6, 50, 1)]
    apart = list(mp4judge.open(segment, head).tracks[0].samples)
    assert [one.offset + len(head) for one in apart] == [one.offset for one in whole]
    assert list(mp4judge.open(io.BytesIO(segment), io.BytesIO(head)).tracks[0].samples) == apart


def test_an_initialization_may_be_a_file(tmp_path: pathlib.Path) -> None:
    head = boxes.movie(boxes.track(), boxes.box("mvex", full("trex", be32(1, 1, 7, 3, 0))))
    run = full("trun", be32(2))
    traf = boxes.box("traf", full("tfhd", be32(1), flags=0x20000), run)
    segment = boxes.box("moof", full("mfhd", be32(1)), traf) + boxes.box("mdat", bytes(6))
    (tmp_path / "init.mp4").write_bytes(head)
    (tmp_path / "1.m4s").write_bytes(segment)
    for source, init in (
        (tmp_path / "1.m4s", tmp_path / "init.mp4"),
        (segment, tmp_path / "init.mp4"),
        (tmp_path / "1.m4s", head),
    ):
        samples = mp4judge.open(source, init).tracks[0].samples
        assert [(one.size, one.duration) for one in samples] == [(3, 7), (3, 7)]


def test_presentation_times_are_told() -> None:
    track = mp4judge.open(FILM).tracks[0]
    assert track.edits == ()
    assert track.presentation_time(250) == 0.25
    assert track.problems == ()


def test_what_is_wrong_is_told() -> None:
    broken = boxes.movie(boxes.track(tables=tables(SIZES, 8) + full("ctts", be32(9))))
    assert mp4judge.open(broken).tracks[0].problems


@pytest.mark.parametrize("kind", ["path", "file", "bytes", "bytearray"])
def test_every_source_does(tmp_path: pathlib.Path, kind: str) -> None:
    path = tmp_path / "a.mp4"
    path.write_bytes(FILM)
    source: Any = {
        "path": path,
        "file": io.BytesIO(FILM),
        "bytes": FILM,
        "bytearray": bytearray(FILM),
    }[kind]
    with mp4judge.open(source) as movie:
        assert [one.size for one in movie.tracks[0].samples] == SIZES


def test_a_buffer_is_held_until_the_movie_is_closed() -> None:
    data = bytearray(FILM)
    movie = mp4judge.open(data)
    with pytest.raises(BufferError):
        data.append(0)
    movie.close()
    data.append(0)


def test_a_forgotten_movie_lets_go() -> None:
    data = bytearray(FILM)
    samples = mp4judge.open(data).tracks[0].samples
    assert len(samples) == 6  # a track keeps its movie open
    del samples
    gc.collect()
    data.append(0)


def test_a_closed_movie_says_so() -> None:
    movie = mp4judge.open(FILM)
    track = movie.tracks[0]
    movie.close()
    movie.close()
    assert repr(movie) == "<Movie, closed>"
    asks: list[Any] = [lambda: movie.tracks, lambda: track.samples[0], lambda: track.problems]
    for ask in asks:
        with pytest.raises(ValueError, match="closed"):
            ask()


def test_a_file_may_be_closed_before_its_movie() -> None:
    file = io.BytesIO(FILM)
    movie = mp4judge.open(file)
    assert len(movie.tracks[0].samples) == 6
    file.close()
    with pytest.raises(ValueError, match="closed"):
        movie.tracks[0].samples.read(movie.tracks[0].samples[0])
    movie.close()


def test_a_path_fails_as_open_does(tmp_path: pathlib.Path) -> None:
    for bad in (tmp_path, tmp_path / "missing"):
        with pytest.raises(OSError) as expected:
            open(bad)
        with pytest.raises(OSError) as found:
            mp4judge.open(bad)
        assert type(found.value) is type(expected.value)
        assert found.value.args == expected.value.args
    with pytest.raises(OSError, match="regular"):
        mp4judge.open("/dev/null")
    with pytest.raises(TypeError):
        mp4judge.open(7)


@pytest.mark.parametrize("fails_at", [0, 1])
def test_what_a_file_raises_comes_through(fails_at: int) -> None:
    failure = RuntimeError()

    class Failing(io.BytesIO):
        broken = fails_at == 0

        def read(self, n: int | None = -1, /) -> bytes:
            if self.broken:
                raise failure
            return super().read(n)

    file = Failing(FILM)
    with pytest.raises(RuntimeError) as found:
        movie = mp4judge.open(file)
        file.broken = True
        movie.tracks[0].samples.read(movie.tracks[0].samples[5])
        list(movie.tracks[0].samples)
    assert found.value is failure


def test_a_file_that_ends_early_is_an_error() -> None:
    class Shrunk(io.BytesIO):
        def read(self, n: int | None = -1, /) -> bytes:
            return b""

    with pytest.raises(OSError, match="read"):
        mp4judge.open(Shrunk(FILM))


def test_a_file_must_not_ask_its_movie() -> None:
    class Asking(io.BytesIO):
        movie: mp4judge.Movie | None = None

        def read(self, n: int | None = -1, /) -> bytes:
            if self.movie is not None:
                self.movie.tracks
            return super().read(n)

    file = Asking(boxes.FTYP + boxes.box("free", bytes(500_000)) + FILM[20:])
    movie = mp4judge.open(file)
    file.movie = movie
    with pytest.raises(RuntimeError, match="must not ask"):
        for track in movie.tracks:
            track.samples.read(mp4judge.Sample(1, 1000, 50, 0, 0, 0, None, 1, None, 0, 0, False, False, False))


def test_threads_take_turns() -> None:
    samples = mp4judge.open(FILM).tracks[0].samples
    wrong: list[object] = []

    def work(index: int) -> None:
        for _ in range(2000):
            if samples[index].size != SIZES[index]:
                wrong.append(index)

    threads = [threading.Thread(target=work, args=(i,)) for i in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not wrong


def test_all_but_columns_does_without_numpy() -> None:
    code = (
        "import sys; sys.modules['numpy'] = None\n"
        "import io, mp4judge\n"
        "samples = mp4judge.open(sys.stdin.buffer.read()).tracks[0].samples\n"
        "assert samples[2].size == 9\n"
        "try: samples.columns()\n"
        "except ImportError: print('as it should')\n"
    )
    package = pathlib.Path(mp4judge.__file__).parents[1]
    done = subprocess.run(
        [sys.executable, "-c", code],
        input=FILM,
        env={**os.environ, "PYTHONPATH": str(package)},
        capture_output=True,
        check=True,
    )
    assert done.stdout == b"as it should\n"


def test_what_is_not_installed_is_named(monkeypatch: pytest.MonkeyPatch) -> None:
    missing: Any = None
    with mp4judge.open(boxes.film([10])) as movie:
        monkeypatch.setitem(sys.modules, "pandas", missing)
        with pytest.raises(ImportError, match=r"frame\(\) needs pandas \(Debian: python3-pandas\)"):
            movie.tracks[0].samples.frame()
        monkeypatch.setitem(sys.modules, "numpy", missing)
        with pytest.raises(ImportError, match=r"columns\(\) needs numpy \(Debian: python3-numpy\)"):
            movie.tracks[0].samples.columns()
