"""Modules that a part of the package needs and the rest does without."""

from __future__ import annotations

import importlib
from typing import Any


def need(what: str, module: str, package: str) -> Any:
    """The module; or an ImportError that says what needs it, and what Debian calls its package."""
    try:
        return importlib.import_module(module)
    except ImportError as why:
        text = f"{what} needs {module} (Debian: {package}): {why}"
        raise ImportError(text, name=module) from why
