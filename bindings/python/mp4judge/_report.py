"""What an inspection says. Members are named, ordered and worded as in docs/report.schema.json."""

from __future__ import annotations

import json
from collections.abc import Mapping
from dataclasses import dataclass, fields
from typing import Any, ClassVar, Literal, Optional, TypeVar

#: "clear": everything was seen, nothing is protected. "protected": the evidence says where.
#: "undetermined": something that could be protected was not seen; the reason says what.
Verdict = Literal["clear", "protected", "undetermined"]

_Part = TypeVar("_Part", bound="Part")


@dataclass(frozen=True)
class Part:
    """What all parts of a report can do."""

    #: Members that are parts themselves, and those that are lists of parts.
    _one: ClassVar[Mapping[str, type[Part]]] = {}
    _many: ClassVar[Mapping[str, type[Part]]] = {}

    @classmethod
    def from_dict(cls: type[_Part], members: Mapping[str, Any]) -> _Part:
        """The opposite of `to_dict`. Members that are not known are left out."""
        values: dict[str, Any] = {}
        for field in fields(cls):
            name = field.name
            value = members[name]
            if name in cls._many:
                value = tuple(map(cls._many[name].from_dict, value))
            elif name in cls._one and value is not None:
                value = cls._one[name].from_dict(value)
            elif isinstance(value, list):
                value = tuple(value)
            values[name] = value
        return cls(**values)

    def to_dict(self) -> dict[str, Any]:
        """Dictionaries, lists, texts, numbers, booleans and None, as in the JSON."""
        return {field.name: _plain(getattr(self, field.name)) for field in fields(self)}

    def to_json(self, indent: int | None = None) -> str:
        """JSON on one line, the same text that the command and the library give."""
        separators = (",", ":") if indent is None else None
        return json.dumps(
            self.to_dict(), ensure_ascii=False, indent=indent, separators=separators
        )


def _plain(value: Any) -> Any:
    if isinstance(value, Part):
        return value.to_dict()
    return [_plain(one) for one in value] if isinstance(value, tuple) else value


@dataclass(frozen=True)
class Scheme(Part):
    """One ProtectionSchemeInfoBox ("sinf") of a sample entry."""

    scheme: Optional[str]  #: None without a SchemeTypeBox
    version: int  #: of the scheme; 0 without one
    uri: Optional[str]  #: None when there is none
    original_format: Optional[str]  #: None without an OriginalFormatBox
    default_protected: Optional[bool]  #: None without a TrackEncryptionBox
    default_key_id: Optional[str]  #: in hexadecimal with dashes; None without a TrackEncryptionBox
    iv_size: int  #: bytes for each sample
    crypt_blocks: int  #: so many blocks of 16 bytes are encrypted,
    skip_blocks: int  #: then so many are clear; 0 and 0 is no pattern
    constant_iv: Optional[str]  #: in hexadecimal; None when there is none


@dataclass(frozen=True)
class Entry(Part):
    """One sample entry. `scheme` to `default_key_id` are those of the first of `schemes`."""

    format: str  #: "avc1", "encv", ...
    original_format: Optional[str]  #: before it was protected or restricted
    protected: bool  #: whether it is for protected media
    scheme: Optional[str]  #: "cenc", ...; None when none is named
    default_protected: Optional[bool]  #: None without a TrackEncryptionBox
    default_key_id: Optional[str]  #: in hexadecimal with dashes; None without a TrackEncryptionBox
    schemes: tuple[Scheme, ...]  #: every ProtectionSchemeInfoBox, in the order of the file

    _many = {"schemes": Scheme}


@dataclass(frozen=True)
class Track(Part):
    """One track."""

    id: int  #: 0 when unreadable
    handler: Optional[str]  #: "soun", "vide", ...; None when unreadable
    protected: bool  #: whether some entry is, or an object descriptor says so
    entries: tuple[Entry, ...]  #: the sample entries

    _many = {"entries": Entry}


@dataclass(frozen=True)
class System(Part):
    """A protection system that the file names ("pssh"), whether or not something is protected."""

    id: str  #: in hexadecimal with dashes
    name: Optional[str]  #: as registered; None when unknown
    key_ids: tuple[str, ...]  #: those that the box lists, likewise
    payload_size: int  #: bytes of the system's own data
    box_path: str  #: where it stands first


@dataclass(frozen=True)
class Evidence(Part):
    """Where it is said that something is protected."""

    box_path: str  #: for example "moov/trak[2]/mdia/minf/stbl/stsd/enca[1]/sinf/schm"
    offset: Optional[int]  #: of the box's first byte; None inside a compressed movie
    track: Optional[int]  #: track id; None when it is of no single track
    item: Optional[int]  #: item id; None when it is of no single item
    format: Optional[str]  #: None when it is of no single entry
    scheme: Optional[str]  #: None when none is named
    text: str  #: one sentence


@dataclass(frozen=True)
class Problem(Part):
    """What is broken, missing or contradictory."""

    box_path: str  #: where it is; "" for the file itself
    offset: Optional[int]  #: of the box's first byte; None inside a compressed movie
    text: str  #: one sentence
    may_hide: bool  #: protection could be where nobody could look


@dataclass(frozen=True)
class Item(Part):
    """An item, for example an image."""

    id: int  #: its number in the file
    type: Optional[str]  #: "hvc1", "grid", ...; None where items have no type
    protected: bool  #: itself, or what it is derived from
    scheme: Optional[str]  #: None when none is named


@dataclass(frozen=True)
class Failure(Part):
    """What kept the source from being opened or read."""

    code: int  #: a mp4judge_error
    text: str  #: what the number means
    errno: int  #: the system's number; 0 for none
    offset: Optional[int]  #: the first byte to bring, where bytes are needed
    size: Optional[int]  #: how many bytes to bring


@dataclass(frozen=True, repr=False)
class Report(Part):
    """What an inspection says of one source."""

    schema: str  #: "mp4judge-report/1"
    path: Optional[str]  #: bytes that are not UTF-8 stand as U+FFFD, see `path_bytes`
    verdict: Verdict  #: "clear", "protected" or "undetermined"
    schemes: tuple[str, ...]  #: each once; may be empty although something is protected
    host_answer: Optional[int]  #: the host's judgement: 1 protected, 0 clear or unreadable
    reason: Optional[str]  #: what keeps the verdict undetermined
    tracks: tuple[Track, ...]  #: in the order of the file
    systems: tuple[System, ...]  #: those that the file names, each once
    evidence: tuple[Evidence, ...]  #: in the order it was met
    problems: tuple[Problem, ...]  #: in the order they were met
    items: tuple[Item, ...]  #: by number
    notes: tuple[str, ...]  #: what is easily mistaken for protection
    fragments: int  #: movie fragments that were looked at
    everything: bool  #: every top-level box was looked at
    host_reads: Optional[bool]  #: whether the host could read a movie
    host_difference: Optional[str]  #: why the host's answer is not the verdict
    path_bytes: Optional[str]  #: a path that is not UTF-8, in hexadecimal
    error: Optional[Failure]  #: what kept the source from being opened or read

    _one = {"error": Failure}
    _many = {
        "tracks": Track,
        "systems": System,
        "evidence": Evidence,
        "problems": Problem,
        "items": Item,
    }

    #: Where the file is, and whether everything was looked at; None for what is no path.
    _place: ClassVar[Optional[tuple[bytes, bool]]] = None

    def __str__(self) -> str:
        """The verdict with what it rests on, as the command words it."""
        if self.verdict == "undetermined":
            return f"undetermined ({self.reason})"
        what = ", ".join(dict.fromkeys(self._protected_kinds()))
        inside = ": ".join(filter(None, (", ".join(self.schemes), what)))
        return f"{self.verdict} ({inside})" if self.verdict == "protected" and inside else self.verdict

    def _protected_kinds(self) -> list[str]:
        kinds = {"soun": "audio", "vide": "video"}
        tracks = [kinds.get(t.handler or "", t.handler or "track") for t in self.tracks if t.protected]
        return tracks + ["item" for item in self.items if item.protected]

    def __repr__(self) -> str:
        return f"<Report {self.path!r}: {self}>" if self.path is not None else f"<Report: {self}>"

    def _repr_html_(self) -> str:
        from ._html import report_html

        return report_html(self)
