"""Files made box by box (ISO/IEC 14496-12)."""

from __future__ import annotations

import struct
from collections.abc import Sequence

KEY_ID = bytes(range(0, 256, 17))
KEY_ID_TEXT = "00112233-4455-6677-8899-aabbccddeeff"


def box(kind: str, *parts: bytes) -> bytes:
    body = b"".join(parts)
    return struct.pack(">I", 8 + len(body)) + kind.encode("latin-1") + body


def full(kind: str, *parts: bytes, version: int = 0, flags: int = 0) -> bytes:
    return box(kind, struct.pack(">I", version << 24 | flags), *parts)


def be32(*numbers: int) -> bytes:
    return struct.pack(f">{len(numbers)}I", *numbers)


MATRIX = be32(0x10000, 0, 0, 0, 0x10000, 0, 0, 0, 0x40000000)
FTYP = box("ftyp", b"isom", be32(0), b"isom")


def sinf(scheme: str, original: str = "mp4a") -> bytes:
    """A scheme with a TrackEncryptionBox: 8 bytes of IV a sample and KEY_ID."""
    return box(
        "sinf",
        box("frma", original.encode()),
        full("schm", scheme.encode(), be32(0x10000)),
        box("schi", full("tenc", bytes([0, 0, 1, 8]), KEY_ID)),
    )


def entry(kind: str, *boxes: bytes) -> bytes:
    """An audio sample entry, mono, 44.1 kHz."""
    fixed = bytes(6) + struct.pack(">H8xHHHHI", 1, 1, 16, 0, 0, 44100 << 16)
    return box(kind, fixed, *boxes)


def track(
    kind: str = "mp4a", *boxes: bytes, handler: str = "soun", number: int = 1, tables: bytes = b""
) -> bytes:
    """A track without samples, unless `tables` has some."""
    tables = tables or b"".join(
        full(name, be32(0, 0) if name == "stsz" else be32(0))
        for name in ("stts", "stsc", "stsz", "stco")
    )
    table = box("stbl", full("stsd", be32(1), entry(kind, *boxes)), tables)
    media = box(
        "mdia",
        full("mdhd", be32(0, 0, 1000, 0), struct.pack(">HH", 0x55C4, 0)),
        full("hdlr", be32(0), handler.encode(), bytes(12), b"\0"),
        box("minf", table),
    )
    header = be32(0, 0, number, 0, 0, 0, 0, 0, 0x1000000), MATRIX, be32(0, 0)
    return box("trak", full("tkhd", *header, flags=7), media)


def movie(*tracks: bytes) -> bytes:
    header = be32(0, 0, 1000, 0, 0x10000, 0x1000000, 0, 0), MATRIX, bytes(24), be32(99)
    return FTYP + box("moov", full("mvhd", *header), *tracks)


def clear() -> bytes:
    return movie(track())


def cenc() -> bytes:
    return movie(track("enca", sinf("cenc")))


def fragmented(count: int) -> bytes:
    """A movie of `count` empty fragments."""
    one = box("moof", full("mfhd", be32(1)), box("traf", full("tfhd", be32(1), flags=0x20000)))
    return movie(track(), box("mvex", full("trex", be32(1, 1, 0, 0, 0)))) + one * count


def tables(sizes: list[int], at: int, delta: int = 100, sync: Sequence[int] = ()) -> bytes:
    """One chunk of samples, each `delta` long, at an offset of the file."""
    made = full("stts", be32(1, len(sizes), delta)) + full("stsc", be32(1, 1, len(sizes), 1))
    made += full("stsz", be32(0, len(sizes), *sizes)) + full("stco", be32(1, at))
    return made + (full("stss", be32(len(sync), *sync)) if sync else b"")


def film(sizes: list[int], sync: Sequence[int] = ()) -> bytes:
    """Samples of these sizes, each filled with its index; the media data ends the file."""

    def before(at: int) -> bytes:
        return movie(track(tables=tables(sizes, at, sync=sync)))

    head = before(0)
    data = b"".join(bytes([i % 256]) * size for i, size in enumerate(sizes))
    return before(len(head) + 8) + box("mdat", data)
