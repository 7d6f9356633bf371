"""A report as a notebook shows it."""

from __future__ import annotations

import os
from collections.abc import Iterable
from html import escape

from ._report import Report

# White stands on them; all else has the page's own colour, for light and dark pages.
_COLOURS = {"clear": "#1a7f37", "protected": "#a85100", "undetermined": "#6e40c9"}


def _row(cells: Iterable[object], tag: str = "td") -> str:
    style = "text-align:left;padding:0.1em 0.8em 0.1em 0;vertical-align:top"
    made = "".join(
        f'<{tag} style="{style}">{escape("" if cell is None else str(cell))}</{tag}>'
        for cell in cells
    )
    return f"<tr>{made}</tr>"


def _table(title: str, heads: list[str], rows: list[list[object]]) -> str:
    if not rows:
        return ""
    body = "".join(map(_row, rows))
    return (
        f'<div style="margin-top:0.6em"><b>{escape(title)}</b></div>'
        f"<table>{_row(heads, 'th')}{body}</table>"
    )


def report_html(report: Report) -> str:
    """Verdict, reason, evidence, problems and the chart. Everything that came from the file is
    escaped."""
    colour = _COLOURS[report.verdict]
    name = f"{escape(report.path)}: " if report.path is not None else ""
    parts = [
        f'<div style="border-left:0.4em solid {colour};padding-left:0.8em">'
        f'<div>{name}<b style="background:{colour};color:#fff;border-radius:0.8em;'
        f'padding:0.1em 0.7em">{escape(str(report))}</b></div>',
        _table(
            "Evidence",
            ["box", "offset", "track", "format", "scheme", "what it says"],
            [[e.box_path, e.offset, e.track, e.format, e.scheme, e.text] for e in report.evidence],
        ),
        _table(
            "Problems",
            ["box", "offset", "what is wrong", "may hide protection"],
            [[p.box_path, p.offset, p.text, "yes" if p.may_hide else ""] for p in report.problems],
        ),
    ]
    parts += [f"<div>{escape(note)}</div>" for note in report.notes]
    if report.host_difference:
        parts.append(f"<div>{escape(report.host_difference)}</div>")
    parts.append(_chart_of(report))
    return "".join(parts) + "</div>"


def _chart_of(report: Report) -> str:
    """The chart of a report about a path, unless the file is another one by now."""
    from ._chart import draw
    from ._inspect import inspect

    if report._place is None:
        return ""
    path, everything = report._place
    try:
        now = inspect(os.fsdecode(path), everything, host_answer=False)
        same = (now.verdict, now.evidence, now.problems)
        if same != (report.verdict, report.evidence, report.problems):
            return "<div>No chart: the file has changed since.</div>"
        return f'<div style="margin-top:0.6em">{draw(os.fsdecode(path), now).svg}</div>'
    except OSError:
        return ""
