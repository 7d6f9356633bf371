"""The boxes of a file, with their fields."""

from __future__ import annotations

import errno
import json
from collections.abc import Iterator, Mapping
from contextlib import ExitStack
from ctypes import byref, sizeof
from dataclasses import dataclass
from typing import Any

from ._library import TreeOptions, library
from ._report import Part
from ._sources import Source, call_with, raise_unopened


@dataclass(frozen=True)
class Box(Part):
    """One box (ISO/IEC 14496-12, 4.2)."""

    type: str  #: four characters, \xHH for those that are not printable ASCII
    name: str  #: what its standard calls it; "" when unknown
    standard: str  #: where that is; "" when unknown
    path: str  #: "moov/trak[2]/mdia"
    space: int  #: 0 for the file; otherwise an inflated movie, whose bytes `offset` counts in
    offset: int  #: of the header's first byte
    header_size: int  #: bytes in front of the payload
    size: int  #: header included, as the box says
    present: int  #: bytes of it that are there
    fields: Mapping[str, Any]  #: named as the standard has it, in camel case
    problems: tuple[str, ...]  #: what is wrong with the box, a sentence each
    children: tuple[Box, ...]  #: the boxes in it, in the order of the file

    @classmethod
    def from_dict(cls, members: Mapping[str, Any]) -> Box:
        optional = {"name": "", "standard": "", "space": 0, "fields": {}, "problems": ()}
        values = {**optional, "present": members["size"], "children": (), **members}
        values["problems"] = tuple(values["problems"])
        values["children"] = tuple(map(cls.from_dict, values["children"]))
        return cls(**{name: values[name] for name in cls.__dataclass_fields__ if name in values})

    def to_dict(self) -> dict[str, Any]:
        """The members of the JSON: those without a value are left out."""
        members = super().to_dict()
        if self.present == self.size:
            del members["present"]
        kept = ("type", "path", "offset", "header_size", "size", "present")
        return {name: value for name, value in members.items() if value or name in kept}

    def walk(self) -> Iterator[Box]:
        """This box and all below it, in file order."""
        yield self
        for child in self.children:
            yield from child.walk()

    def __hash__(self) -> int:
        return hash((self.path, self.space, self.offset))

    def __repr__(self) -> str:
        return f"<Box {self.path} at {self.offset}, {self.size} bytes>"


@dataclass(frozen=True)
class Tree(Part):
    """The boxes of a file."""

    size: int  #: bytes of the file
    complete: bool  #: False when more boxes are there than were wanted
    problems: tuple[str, ...]  #: what is wrong with the file, a sentence each
    boxes: tuple[Box, ...]  #: those at the top level, or those of the path asked for

    _many = {"boxes": Box}

    @classmethod
    def from_dict(cls, members: Mapping[str, Any]) -> Tree:
        return super().from_dict({"problems": [], **members})

    def to_dict(self) -> dict[str, Any]:
        """The members of the JSON: problems are left out when there are none."""
        members = super().to_dict()
        return {name: value for name, value in members.items() if value or name != "problems"}

    def walk(self) -> Iterator[Box]:
        """All boxes in file order, parents before their children."""
        for box in self.boxes:
            yield from box.walk()

    def __str__(self) -> str:
        """A line a box, children further in."""
        lines = list(self.problems)
        levels = {id(box): 0 for box in self.boxes}
        for box in self.walk():
            level = levels[id(box)]
            levels.update((id(child), level + 1) for child in box.children)
            told = [f"{name}={value}" for name, value in box.fields.items()]
            told += [f"PROBLEM: {problem}" for problem in box.problems]
            head = f"{'  ' * level}{box.type} {box.offset} {box.size}"
            lines.append("  ".join([head, *told]))
        return "\n".join(lines)

    def __repr__(self) -> str:
        return f"<Tree of {self.size} bytes: {' '.join(box.type for box in self.boxes[:20])}>"


def tree(
    source: Source, path: str | None = None, *, depth: int = 0, most_boxes: int = 200_000
) -> Tree:
    """The boxes of a file; takes and raises what `judge` does, and OSError where a read fails.

    `path` narrows it to boxes of that path and what is below them: a type without an ordinal stands
    for any of them, "*" for any type, and with a "/" in front the path begins at the top level:
    "trak[2]/tkhd", "/moov", "tenc". `depth` is how many levels are wanted, 0 for all.
    """
    options = TreeOptions(
        sizeof(TreeOptions), depth, path.encode() if path is not None else None, most_boxes, 0
    )
    return Tree.from_dict(ask(source, library.mp4judge_tree_json, byref(options)))


def info(source: Source) -> dict[str, Any]:
    """The movie in words and numbers: brands, tracks with codecs, times and sizes, metadata,
    chapters, fragments; the members of `mp4judge info --json`. Takes and raises what `tree` does."""
    members: dict[str, Any] = ask(source, library.mp4judge_info_json, 0)
    return members


def ask(source: Source, question: Any, *more: object) -> Any:
    """What the library tells as JSON of a file that is looked at."""
    with ExitStack() as stack:
        handle, reader = call_with(stack, source, "mp4judge_tree_open")
        stack.callback(library.mp4judge_tree_free, handle)
        text = question(handle, *more)
        if reader is not None:
            reader.raise_failure()
        error = library.mp4judge_tree_error(handle)
        raise_unopened(error, library.mp4judge_tree_errno(handle), source)
        if text is None:
            raise MemoryError
        if error:
            why = library.mp4judge_error_text(error).decode()
            raise OSError(library.mp4judge_tree_errno(handle) or errno.EIO, why, source)
        members = json.loads(text)
    return members
