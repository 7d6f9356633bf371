"""What a report says, and how."""

from __future__ import annotations

import dataclasses
import json
import os
import pathlib
from typing import Any

import boxes
import mp4judge
import pytest

ROOT = pathlib.Path(__file__).resolve().parents[3]
SCHEMA = ROOT / "docs" / "report.schema.json"


def members(schema: dict[str, Any]) -> list[str]:
    return list(schema["properties"])


@pytest.fixture
def schema() -> Any:
    return json.loads(SCHEMA.read_text())["properties"]


def test_the_classes_have_the_members_of_the_schema(schema: Any) -> None:
    entry = schema["tracks"]["items"]["properties"]["entries"]["items"]
    for kind, described in (
        (mp4judge.Report, {"properties": schema}),
        (mp4judge.Track, schema["tracks"]["items"]),
        (mp4judge.Entry, entry),
        (mp4judge.Scheme, entry["properties"]["schemes"]["items"]),
        (mp4judge.System, schema["systems"]["items"]),
        (mp4judge.Evidence, schema["evidence"]["items"]),
        (mp4judge.Problem, schema["problems"]["items"]),
        (mp4judge.Item, schema["items"]["items"]),
        (mp4judge.Failure, schema["error"]),
    ):
        assert [field.name for field in dataclasses.fields(kind)] == members(described)


def test_a_protected_file_says_where() -> None:
    report = mp4judge.inspect(boxes.cenc())
    assert report.verdict == "protected"
    assert report.schemes == ("cenc",)
    assert report.tracks[0].id == 1
    assert report.tracks[0].handler == "soun"
    entry = report.tracks[0].entries[0]
    assert (entry.format, entry.original_format, entry.scheme) == ("enca", "mp4a", "cenc")
    assert entry.default_key_id == boxes.KEY_ID_TEXT
    assert entry.schemes[0].iv_size == 8
    evidence = report.evidence[-1]
    assert evidence.box_path.startswith("moov/trak[1]/mdia/minf/stbl/stsd/enca[1]")
    assert evidence.offset is not None
    assert boxes.cenc()[evidence.offset + 4 :][:4] in (b"enca", b"sinf", b"schm", b"tenc")


def test_a_clear_file_says_no_more() -> None:
    report = mp4judge.inspect(boxes.clear())
    assert (report.verdict, report.reason, report.schemes) == ("clear", None, ())
    assert (report.evidence, report.error, report.path) == ((), None, None)


def test_what_is_no_movie_has_a_reason() -> None:
    report = mp4judge.inspect(b"\x89PNG\r\n\x1a\n" + bytes(100))
    assert report.verdict == "undetermined"
    assert "PNG" in (report.reason or "")


@pytest.mark.parametrize("data", [boxes.clear(), boxes.cenc(), boxes.cenc()[:300], b""])
def test_json_is_the_library_s(data: bytes) -> None:
    report = mp4judge.inspect(data, name='a "name" \u00e9\n')
    text = report.to_json()
    assert json.loads(text) == report.to_dict()
    assert mp4judge.Report.from_dict(json.loads(text)) == report
    from mp4judge._inspect import _inspection
    from mp4judge._library import library

    with _inspection(data, False, True, 'a "name" \u00e9\n') as handle:
        assert library.mp4judge_report_json(handle).decode() == text


def test_json_may_be_indented() -> None:
    report = mp4judge.inspect(boxes.cenc())
    assert json.loads(report.to_json(indent=2)) == report.to_dict()
    assert '\n  "verdict": "protected"' in report.to_json(indent=2)


def test_members_of_later_versions_are_left_out() -> None:
    report = mp4judge.inspect(boxes.cenc())
    later = {**report.to_dict(), "more": 1}
    assert mp4judge.Report.from_dict(later) == report


def test_reports_do_not_change_and_can_be_keys() -> None:
    report = mp4judge.inspect(boxes.cenc())
    with pytest.raises(dataclasses.FrozenInstanceError):
        report.verdict = "clear"  # type: ignore[misc]
    assert len({report, mp4judge.inspect(boxes.cenc())}) == 1


def test_a_report_shows_itself() -> None:
    assert repr(mp4judge.inspect(boxes.clear())) == "<Report: clear>"
    assert (
        repr(mp4judge.inspect(boxes.cenc(), name="film.mp4"))
        == "<Report 'film.mp4': protected (cenc: audio)>"
    )
    assert str(mp4judge.inspect(b"")).startswith("undetermined (")


def test_protected_kinds_stand_once() -> None:
    tracks = [
        boxes.track("encv", boxes.sinf("cbcs"), handler="vide"),
        boxes.track("enca", boxes.sinf("cenc"), number=2),
        boxes.track("enca", boxes.sinf("cenc"), number=3),
    ]
    assert str(mp4judge.inspect(boxes.movie(*tracks))) == "protected (cbcs, cenc: video, audio)"


def test_html_has_verdict_and_evidence_and_escapes_what_came_from_outside() -> None:
    report = mp4judge.inspect(boxes.cenc(), name="<script>alert(1)</script>")
    html = report._repr_html_()
    assert "protected" in html and "Evidence" in html
    assert report.evidence[0].box_path in html
    assert "<script>" not in html and "&lt;script&gt;" in html
    assert html.count("<div") == html.count("</div>")
    assert html.count("<td") == html.count("</td>")
    assert html.count("<table") == html.count("</table>")


def test_html_shows_problems_and_reason() -> None:
    report = mp4judge.inspect(boxes.cenc()[:-30])
    html = report._repr_html_()
    assert "Problems" in html and report.problems


def test_the_host_is_asked_unless_it_is_not_wanted() -> None:
    drms = boxes.movie(boxes.track("drms", boxes.sinf("itun")))
    assert mp4judge.inspect(drms).host_answer == 1
    report = mp4judge.inspect(drms, host_answer=False)
    assert (report.host_answer, report.host_reads) == (None, None)


def test_everything_is_looked_at_when_asked() -> None:
    data = boxes.fragmented(3000)
    report = mp4judge.inspect(data, everything=True)
    assert (report.fragments, report.everything) == (3000, True)
    assert mp4judge.inspect(data).fragments < 3000
    assert mp4judge.judge(data, everything=True) == report.verdict


def test_a_name_may_be_given() -> None:
    url = "https://example.org/film.mp4"
    assert mp4judge.inspect(boxes.clear(), name=url).path == url


def test_a_path_is_the_name(tmp_path: pathlib.Path) -> None:
    (tmp_path / "a.mp4").write_bytes(boxes.clear())
    report = mp4judge.inspect(tmp_path / "a.mp4")
    assert report.path == os.fspath(tmp_path / "a.mp4")
    assert report.path_bytes is None
