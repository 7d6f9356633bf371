"""The picture of a file."""

from __future__ import annotations

import io
import math
import pathlib
import re
import xml.etree.ElementTree as ElementTree

import boxes
import mp4judge
import pytest
from mp4judge._html import _COLOURS

SVG = "{http://www.w3.org/2000/svg}"


def drawn(data: bytes) -> ElementTree.Element:
    return ElementTree.fromstring(mp4judge.chart(data).svg)


def titles(picture: ElementTree.Element) -> list[str]:
    return [title.text or "" for title in picture.iter(SVG + "title")]


def texts(picture: ElementTree.Element) -> list[str]:
    return [text.text or "" for text in picture.iter(SVG + "text")]


def test_boxes_are_drawn_to_scale() -> None:
    data = boxes.film([1000])
    picture = drawn(data)
    rows = [g for g in picture.iter(SVG + "g")]
    mdat = next(g for g in rows if (g[0].text or "").startswith("mdat\n"))
    width, x = float(mdat[1].attrib["width"]), float(mdat[1].attrib["x"])
    at = len(data) - 1008
    assert width == pytest.approx(1008 / len(data) * 776, abs=0.1)
    assert x == pytest.approx(96 + at / len(data) * 776, abs=0.1)
    assert mdat[0].text == f"mdat\nMedia Data Box\nbyte {at:,}, 1,008 bytes"


def test_the_movie_is_enlarged_and_named() -> None:
    told = texts(drawn(boxes.film([10])))
    assert "the file" in told and "moov, enlarged" in told
    assert {"moov", "trak", "mdia", "stbl"} <= set(told)


def test_the_evidence_is_marked_and_enlarged() -> None:
    picture = drawn(boxes.cenc())
    marked = {g[0].text.split("\n")[0] for g in picture.iter(SVG + "g") if g[0].text and "stroke" in g[1].attrib}
    report = mp4judge.inspect(boxes.cenc())
    assert marked == {one.box_path for one in report.evidence}
    assert "moov/trak[1]/mdia/minf/stbl/stsd, enlarged" in texts(picture)
    clear = drawn(boxes.clear())
    assert not any("stroke" in rect.attrib for rect in clear.iter(SVG + "rect"))


def test_tracks_have_lanes_where_their_samples_lie() -> None:
    data = boxes.film([500, 500])
    lane = next(iter(drawn(data).iter(SVG + "path"))).attrib["d"]
    found = re.fullmatch(r"M([\d.]+) [\d.]+h([\d.]+)v12h-([\d.]+)z", lane)
    assert found
    assert float(found[1]) == pytest.approx(96 + (len(data) - 1000) / len(data) * 776, abs=0.1)
    assert float(found[2]) == pytest.approx(1000 / len(data) * 776, abs=0.1)


def test_boxes_too_narrow_to_be_seen_are_drawn_together() -> None:
    data = boxes.fragmented(5000)
    picture = drawn(data)
    assert any(re.match(r"[\d,]+ boxes, among them moof\[", title) for title in titles(picture))
    assert len(mp4judge.chart(data).svg) < 200_000


def test_a_movie_of_very_many_tracks_shows_that_they_are_there() -> None:
    data = boxes.movie(*(boxes.track(number=i + 1) for i in range(1000)))
    crowds = [title for title in titles(drawn(data)) if "boxes, among them moov/" in title]
    assert sum(int(title.split()[0]) for title in crowds) == 1001  # and the movie header


def test_a_crowd_is_marked_when_evidence_is_in_it() -> None:
    data = boxes.cenc() + boxes.box("mdat", bytes(1_000_000))
    marked = [g[0].text for g in drawn(data).iter(SVG + "g") if "stroke" in g[1].attrib]
    assert any(text and "enca" in text for text in marked)


def test_what_the_file_says_is_escaped() -> None:
    data = boxes.movie(boxes.track("<b>&")) + boxes.box("<i>'", bytes(100))
    svg = mp4judge.chart(data).svg
    assert "<b>" not in svg and "<i>" not in svg
    assert any("<b>&" in title for title in titles(ElementTree.fromstring(svg)))


def test_what_is_no_movie_is_drawn_as_far_as_it_goes() -> None:
    for data in (b"", b"\x89PNG\r\n\x1a\n" + bytes(100), boxes.cenc()[:300]):
        assert "the file" in texts(drawn(data))


def test_files_and_file_objects_are_drawn_too(tmp_path: pathlib.Path) -> None:
    (tmp_path / "a.mp4").write_bytes(boxes.cenc())
    want = mp4judge.chart(boxes.cenc())
    assert mp4judge.chart(tmp_path / "a.mp4") == want == mp4judge.chart(io.BytesIO(boxes.cenc()))
    assert want._repr_html_() == want.svg
    with pytest.raises(FileNotFoundError):
        mp4judge.chart(tmp_path / "none.mp4")


def test_a_report_of_a_path_shows_the_chart(
    tmp_path: pathlib.Path, monkeypatch: pytest.MonkeyPatch
) -> None:
    (tmp_path / "a.mp4").write_bytes(boxes.cenc())
    monkeypatch.chdir(tmp_path)
    report = mp4judge.inspect("a.mp4")
    assert report == mp4judge.Report.from_dict(report.to_dict())
    monkeypatch.chdir("/")
    assert mp4judge.chart(boxes.cenc()).svg in report._repr_html_()


def test_a_report_of_a_name_has_no_chart_of_another_file(
    tmp_path: pathlib.Path, monkeypatch: pytest.MonkeyPatch
) -> None:
    (tmp_path / "a.mp4").write_bytes(boxes.cenc())
    monkeypatch.chdir(tmp_path)
    assert "<svg" not in mp4judge.inspect(boxes.cenc(), name="a.mp4")._repr_html_()


def test_a_file_that_changed_or_is_gone_has_no_chart(tmp_path: pathlib.Path) -> None:
    path = tmp_path / "a.mp4"
    path.write_bytes(boxes.cenc())
    report = mp4judge.inspect(path)
    path.write_bytes(boxes.clear())
    html = report._repr_html_()
    assert "<svg" not in html and "changed" in html
    path.unlink()
    html = report._repr_html_()
    assert "<svg" not in html and "Evidence" in html


def test_colours_do_on_light_and_dark_pages() -> None:
    def brightness(colour: str) -> float:
        parts = [int(colour[at : at + 2], 16) / 255 for at in (1, 3, 5)]
        linear = [p / 12.92 if p <= 0.04045 else math.pow((p + 0.055) / 1.055, 2.4) for p in parts]
        return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2]

    # White on the verdict's colour, 4.5 : 1 as WCAG wants it.
    assert all(1.05 / (brightness(colour) + 0.05) >= 4.5 for colour in _COLOURS.values())
    picture = drawn(boxes.cenc())
    assert picture.attrib["fill"] == "currentColor"
    assert not any("fill" in text.attrib for text in picture.iter(SVG + "text"))
    for shape in (*picture.iter(SVG + "rect"), *picture.iter(SVG + "path")):
        ratio = (brightness(shape.attrib["fill"]) + 0.05) / 0.05
        assert 2 < ratio < 15, "neither black nor white"
