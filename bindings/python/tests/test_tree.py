"""The boxes of a file."""

from __future__ import annotations

import io
import json
import pathlib
from typing import Any

import boxes
import mp4judge
import pytest


def test_a_tree_has_every_box() -> None:
    tree = mp4judge.tree(boxes.clear())
    assert tree.size == len(boxes.clear())
    assert tree.complete and not tree.problems
    assert [box.type for box in tree.boxes] == ["ftyp", "moov"]
    assert [box.path for box in tree.walk()][-1] == "moov/trak[1]/mdia/minf/stbl/stco"


def test_a_box_has_its_place_and_fields() -> None:
    ftyp, moov = mp4judge.tree(boxes.clear()).boxes
    assert (ftyp.offset, ftyp.header_size, ftyp.size, ftyp.present) == (0, 8, 20, 20)
    assert (ftyp.name, ftyp.space, ftyp.children) == ("File Type Box", 0, ())
    assert ftyp.fields == {"majorBrand": "isom", "minorVersion": 0, "compatibleBrands": ["isom"]}
    assert moov.offset == 20
    assert moov.children[0].fields["timescale"] == 1000


def test_a_box_that_is_cut_says_so() -> None:
    box = mp4judge.tree(boxes.FTYP[:-2]).boxes[0]
    assert (box.size, box.present) == (20, 18)
    assert box.problems


def test_a_path_narrows_the_tree() -> None:
    tree = mp4judge.tree(boxes.movie(boxes.track(), boxes.track(number=2)), "trak[2]/tkhd")
    assert [box.path for box in tree.boxes] == ["moov/trak[2]/tkhd"]
    assert tree.boxes[0].fields["trackId"] == 2


def test_depth_and_number_of_boxes_are_limits() -> None:
    assert {len(box.children) for box in mp4judge.tree(boxes.clear(), depth=1).boxes} == {0}
    few = mp4judge.tree(boxes.clear(), most_boxes=3)
    assert not few.complete
    assert len(list(few.walk())) <= 3


@pytest.mark.parametrize("data", [boxes.cenc(), boxes.FTYP[:-2], b"", bytes(7)])
def test_the_members_are_those_of_the_json(data: bytes) -> None:
    tree = mp4judge.tree(data)
    members = json.loads(tree.to_json())
    assert members == tree.to_dict()
    assert mp4judge.Tree.from_dict(members) == tree
    from mp4judge._library import library

    handle = library.mp4judge_tree_open_memory(data, len(data))
    try:
        assert json.loads(library.mp4judge_tree_json(handle, None)) == members
    finally:
        library.mp4judge_tree_free(handle)


def test_a_tree_shows_itself() -> None:
    tree = mp4judge.tree(boxes.clear())
    lines = str(tree).splitlines()
    assert lines[0].startswith("ftyp 0 20  majorBrand=isom")
    assert lines[2].startswith("  mvhd 28 108  version=0")
    assert repr(tree) == f"<Tree of {len(boxes.clear())} bytes: ftyp moov>"
    assert repr(tree.boxes[0]) == "<Box ftyp at 0, 20 bytes>"
    assert len(set(tree.walk())) == len(lines)


def test_deep_nesting_ends() -> None:
    data = b""
    for _ in range(5000):
        data = boxes.box("moov", data)
    assert 1 < len(list(mp4judge.tree(data).walk())) < 500


def test_paths_and_files_do(tmp_path: pathlib.Path) -> None:
    (tmp_path / "a.mp4").write_bytes(boxes.cenc())
    expected = mp4judge.tree(boxes.cenc())
    assert mp4judge.tree(tmp_path / "a.mp4") == expected
    assert mp4judge.tree(io.BytesIO(boxes.cenc())) == expected


def test_failures_are_raised(tmp_path: pathlib.Path) -> None:
    with pytest.raises(FileNotFoundError) as missing:
        mp4judge.tree(tmp_path / "missing")
    assert missing.value.filename == tmp_path / "missing"
    failure = RuntimeError()

    class Failing(io.BytesIO):
        def read(self, n: int | None = -1, /) -> bytes:
            raise failure

    with pytest.raises(RuntimeError) as found:
        mp4judge.tree(Failing(boxes.clear()))
    assert found.value is failure

    class Shrunk(io.BytesIO):
        def read(self, n: int | None = -1, /) -> Any:
            return b""

    with pytest.raises(OSError, match="read"):
        mp4judge.tree(Shrunk(boxes.clear()))


def test_the_movie_is_told_in_words(tmp_path: pathlib.Path) -> None:
    (tmp_path / "a.mp4").write_bytes(boxes.film([5, 3, 9]))
    info = mp4judge.info(tmp_path / "a.mp4")
    assert info == mp4judge.info(io.BytesIO(boxes.film([5, 3, 9])))
    assert len(info["tracks"]) == 1
    with pytest.raises(FileNotFoundError):
        mp4judge.info(tmp_path / "missing")
