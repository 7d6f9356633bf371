"""Where things lie in a file, drawn to scale."""

from __future__ import annotations

from collections.abc import Collection, Iterable, Mapping
from ctypes import c_uint
from dataclasses import dataclass
from html import escape
from typing import Any

from ._inspect import inspect
from ._library import library
from ._report import Report
from ._sources import Source
from ._tree import Box, ask, tree

_WIDTH, _LEFT, _RIGHT, _ROW = 880, 96, 872, 20
#: Boxes narrower than this are drawn together.
_NARROW = 3.0
_MOST_LANES = 8
_MOST_LEVELS = 8

# Of a middle brightness, and drawn half through: they do on light and dark pages alike. Texts have
# the page's own colour.
_MEDIA, _SPACE, _FRAGMENT, _PROTECTION, _OTHER = "#80868f", "#b9bdc4", "#1f9e8f", "#d6336c", "#4a7fd4"
_COLOURS = {
    **dict.fromkeys(("mdat", "idat", "odda"), _MEDIA),
    **dict.fromkeys(("free", "skip", "wide"), _SPACE),
    **dict.fromkeys(("moof", "styp", "sidx", "mfra"), _FRAGMENT),
    **dict.fromkeys(("sinf", "schm", "schi", "tenc", "pssh", "ipro", "senc", "adrm"), _PROTECTION),
}
_LANES = ("#4a7fd4", "#d9822b", "#2f9e5f", "#9a62c7")


@dataclass(frozen=True)
class Chart:
    """A picture of a file. Notebooks show it."""

    svg: str  #: SVG that needs nothing else, for light and dark pages

    def _repr_html_(self) -> str:
        return self.svg


class _Picture:
    """A picture that grows downwards."""

    def __init__(self, evidence: Collection[int]) -> None:
        self._evidence = evidence
        self._parts: list[str] = []
        self._y = 0.0

    def heading(self, left: str, right: str) -> None:
        self._y += 14
        self._text(_LEFT, left)
        self._text(_RIGHT, right, "end")
        self._y += 6

    def _text(self, x: float, text: str, anchor: str = "start", below: float = 0) -> None:
        self._parts.append(
            f'<text x="{x:g}" y="{self._y + below:g}" text-anchor="{anchor}">{escape(text)}</text>'
        )

    def levels(self, boxes: Iterable[Box], start: int, end: int) -> None:
        """A row of boxes, and one for each level below, down to one of narrow boxes alone."""
        scale = _Scale(start, end)
        level = [box for box in boxes if box.space == 0]
        for _ in range(_MOST_LEVELS):
            self._row(level, scale)
            if not any(scale.width(box.offset, box.present) >= _NARROW for box in level):
                break
            level = [child for box in level for child in box.children if child.space == 0]
            if not level:
                break
        self._y += 4

    def _row(self, boxes: list[Box], scale: _Scale) -> None:
        crowd: list[Box] = []
        for box in boxes:
            if scale.width(box.offset, box.present) >= _NARROW:
                self._draw(crowd, scale)
                self._draw([box], scale)
                crowd = []
                continue
            if crowd and scale.x(box.offset) - scale.x(crowd[0].offset) > _NARROW:
                self._draw(crowd, scale)
                crowd = []
            crowd.append(box)
        self._draw(crowd, scale)
        self._y += _ROW

    def _draw(self, boxes: list[Box], scale: _Scale) -> None:
        """One box, or those that are too narrow to be seen alone."""
        if not boxes:
            return
        telling = [box for box in boxes if box.offset in self._evidence] or boxes
        box = telling[0]
        x = scale.x(boxes[0].offset)
        width = max(scale.x(boxes[-1].offset + boxes[-1].present) - x, 0.8)
        title = f"{box.path}\n{box.name}\nbyte {box.offset:,}, {box.size:,} bytes"
        if len(boxes) > 1:
            title = f"{len(boxes):,} boxes, among them {box.path}"
        fill = _COLOURS.get(box.type, _OTHER)
        edge = f' stroke="{_PROTECTION}" stroke-width="2"' if box.offset in self._evidence else ""
        drawn = (
            f'<rect x="{x:.1f}" y="{self._y:g}" width="{width:.1f}" height="{_ROW - 3}" rx="2"'
            f' fill="{fill}" fill-opacity=".5"{edge}/>'
        )
        if len(boxes) == 1 and width > 9 * len(box.type):
            drawn += f'<text x="{x + 4:.1f}" y="{self._y + 12:g}">{escape(box.type)}</text>'
        self._parts.append(f"<g><title>{escape(title)}</title>{drawn}</g>")

    def lanes(self, tracks: list[Mapping[str, Any]], size: int) -> None:
        """Where the samples of each track lie."""
        scale = _Scale(0, size)
        for i, track in enumerate(tracks[:_MOST_LANES]):
            label = f"{track['id']} {track['codec'] or track['handler']}"
            self._text(0, label if len(label) < 15 else label[:14] + "\u2026", below=10)
            path = "".join(
                f"M{x:.1f} {self._y:g}h{width:.1f}v12h-{width:.1f}z"
                for x, width in _stretches(track["extents"], scale)
            )
            self._parts.append(f'<path d="{path}" fill="{_LANES[i % len(_LANES)]}"/>')
            self._y += 16

    def svg(self) -> str:
        return (
            f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {_WIDTH} {self._y:g}"'
            f' width="{_WIDTH}" style="max-width:100%" font-family="sans-serif" font-size="11"'
            f' fill="currentColor" role="img">{"".join(self._parts)}</svg>'
        )


@dataclass(frozen=True)
class _Scale:
    start: int
    end: int

    def x(self, offset: int) -> float:
        part = (offset - self.start) / max(self.end - self.start, 1)
        return _LEFT + min(max(part, 0.0), 1.0) * (_RIGHT - _LEFT)

    def width(self, offset: int, size: int) -> float:
        return self.x(offset + size) - self.x(offset)


def _stretches(extents: list[list[int]], scale: _Scale) -> list[tuple[float, float]]:
    """Left edge and width of what can be told apart."""
    found: list[tuple[float, float]] = []
    for offset, end, _ in extents:
        x, right = scale.x(offset), scale.x(end)
        if found and x <= found[-1][0] + found[-1][1] + 0.5:
            x = found.pop()[0]
        found.append((x, max(right - x, 0.8)))
    return found


def _description_of(movie: Box, evidence: Collection[int]) -> Box | None:
    """The first sample description with evidence in it: too small to be seen in its movie."""
    for box in movie.walk():
        if box.type == "stsd" and any(inside.offset in evidence for inside in box.walk()):
            return box
    return None


def draw(source: Source, report: Report) -> Chart:
    """The chart of a file that has this report."""
    evidence = {one.offset for one in report.evidence if one.offset is not None}
    top = tree(source, depth=1)
    picture = _Picture(evidence)
    picture.heading("the file", f"{top.size:,} bytes")
    picture.levels(top.boxes, 0, top.size)
    picture.lanes(ask(source, library.mp4judge_layout_json, c_uint(1))["tracks"], top.size)
    for kind in ("/moov", "/meta"):
        for box in tree(source, kind, most_boxes=20_000).boxes[:1]:
            picture.heading(f"{box.path}, enlarged", f"{box.size:,} bytes")
            picture.levels([box], box.offset, box.offset + box.present)
            inside = _description_of(box, evidence)
            if inside is not None:
                picture.heading(f"{inside.path}, enlarged", f"{inside.size:,} bytes")
                picture.levels([inside], inside.offset, inside.offset + inside.present)
    return Chart(picture.svg())


def chart(source: Source) -> Chart:
    """Draws the boxes of a file and where the samples of its tracks lie, with the boxes that the
    verdict rests on marked. Takes and raises what `tree` does."""
    return draw(source, inspect(source, host_answer=False))
