"""Sphinx makes the pages of the Python package of its docstrings, by the target "docs"."""

from __future__ import annotations

from typing import Any

from sphinx.pycode import ModuleAnalyzer
from sphinx.util import logging

import mp4judge

project = "mp4judge"
version = release = mp4judge.__version__
copyright = "the mp4judge maintainers"
extensions = ["sphinx.ext.autodoc"]
html_theme = "alabaster"
html_copy_source = False
html_show_sourcelink = False
autodoc_member_order = "bysource"
autodoc_typehints = "signature"
# Docstrings have names in single backquotes, as README has them.
default_role = "code"

_log = logging.getLogger(__name__)


def _want_words(app: Any, what: str, name: str, obj: Any, options: Any, lines: list[str]) -> None:
    """What a user meets has to say what it is."""
    last = name.rpartition(".")[2]
    generated = what == "class" and lines and lines[0].startswith(last + "(")
    if last != "__init__" and (generated or not any(line.strip() for line in lines)):
        _log.warning("%s %s has no docstring", what, name)
    if what in ("class", "exception"):
        _want_words_of_members(obj)


def _want_words_of_members(kind: type) -> None:
    """Of members that are declared and not set there is no docstring to process."""
    told = ModuleAnalyzer.for_module(kind.__module__).find_attr_docs()
    for member in kind.__dict__.get("__annotations__", {}):
        if not member.startswith("_") and (kind.__name__, member) not in told:
            _log.warning("attribute %s.%s has no docstring", kind.__name__, member)


def _no_constructor(app: Any, what: str, *more: Any) -> tuple[str, None] | None:
    """Users get their values from functions; the members say what is in them."""
    return ("", None) if what == "class" else None


def setup(app: Any) -> None:
    app.connect("autodoc-process-signature", _no_constructor)
    app.connect("autodoc-process-docstring", _want_words)
