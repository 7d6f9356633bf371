#!/usr/bin/env python3
"""Tries to make the inspector call protected files clear.

usage: scripts/false_clear.py LIBRARY PATH... [--seconds N] [--most-cuts N]

LIBRARY is a libmp4judge.so, PATH a file or folder. Every file that is protected is cut everywhere,
and each byte of its boxes (media data and free space left out) is changed to seven other values.
Each result that says "clear" is printed with what justifies it: that the change removed the
protection itself. Exit status: 0 when each has such a justification, 1 when one has none, 2 for
trouble.

--most-cuts N   cut at most at N places of a file, evenly spread; those of its boxes always
--seconds N     stop after so much processor time
"""
import argparse
import ctypes
import json
import os
import struct
import sys
import time

CLEAR, PROTECTED = 0, 1
MEDIA = (b"mdat", b"free", b"skip", b"wide")


class Options(ctypes.Structure):
    _fields_ = [("size", ctypes.c_size_t), ("everything", ctypes.c_int),
                ("host_answer", ctypes.c_int), ("name", ctypes.c_char_p)]


class Inspector:
    def __init__(self, path):
        self.library = ctypes.CDLL(os.path.abspath(path))
        self.library.mp4judge_inspect_memory.restype = ctypes.c_void_p
        self.library.mp4judge_report_json.restype = ctypes.c_char_p
        for name in ("verdict", "json", "free"):
            getattr(self.library, "mp4judge_report_" + name).argtypes = [ctypes.c_void_p]
        self.library.mp4judge_inspect_memory.argtypes = [
            ctypes.c_void_p, ctypes.c_size_t, ctypes.c_void_p]
        self.options = Options(ctypes.sizeof(Options), 0, 0, None)

    def _inspect(self, data, n):
        return self.library.mp4judge_inspect_memory(data, n, ctypes.byref(self.options))

    def verdict(self, data, n):
        report = self._inspect(data, n)
        verdict = self.library.mp4judge_report_verdict(report)
        self.library.mp4judge_report_free(report)
        return verdict

    def report(self, data, n):
        report = self._inspect(data, n)
        said = json.loads(self.library.mp4judge_report_json(report))
        self.library.mp4judge_report_free(report)
        return said


def top_level(data):
    """The boxes of a file: offset, length of the header, end, type."""
    at = 0
    while len(data) - at >= 8:
        size, kind = struct.unpack(">I4s", data[at:at + 8])
        header = 8
        if size == 1 and len(data) - at >= 16:
            size, header = struct.unpack(">Q", data[at + 8:at + 16])[0], 16
        end = len(data) if size == 0 else min(at + size, len(data))
        if end < at + header:
            return
        yield at, header, end, kind
        at = end


def protection_index(data, offset):
    """Where an ItemInfoEntry at an offset says by which scheme it is protected."""
    wide = data[offset + 8] == 3
    return range(offset + (16 if wide else 14), offset + (18 if wide else 16))


def justification(data, report, boxes, at):
    """Why a change of the byte `at` may make a file clear; None when it may not."""
    for offset, header, _, kind in boxes:
        size = list(range(offset, offset + 4)) + list(range(offset + 8, offset + header))
        if kind in MEDIA and at in size:
            return "media data or free space covers what follows"
    for evidence in report["evidence"]:
        offset, path = evidence["offset"], evidence["box_path"]
        if offset is None:
            continue
        if "/stsd/" in path and path.rsplit("/", 1)[0].endswith("stsd"):
            if at in range(offset + 4, offset + 8):
                return "the format that protects by itself became another"
        if path.rsplit("/", 1)[-1].startswith("infe") and at in protection_index(data, offset):
            return "the item has no protection index any more"
    return None


def values_instead_of(byte):
    values = {0, 1, 255, (byte + 1) & 255, (byte - 1) & 255, byte ^ 0x20, byte ^ 0x80}
    return sorted(values - {byte})


class Trial:
    def __init__(self, arguments):
        self.inspector = Inspector(arguments.library)
        self.most_cuts = arguments.most_cuts
        self.deadline = arguments.seconds
        self.files = self.runs = self.justified = self.unjustified = 0

    def over(self):
        return self.deadline is not None and time.process_time() > self.deadline

    def note(self, path, what, why):
        if why is None:
            self.unjustified += 1
        else:
            self.justified += 1
        print(f"{path}: {what}: clear, {why or 'AND NOTHING JUSTIFIES IT'}", flush=True)

    def try_file(self, path):
        with open(path, "rb") as file:
            data = file.read()
        buffer = (ctypes.c_ubyte * max(len(data), 1)).from_buffer_copy(data or b"\0")
        report = self.inspector.report(buffer, len(data))
        if report["verdict"] != "protected":
            return
        self.files += 1
        boxes = list(top_level(data))
        changed = [at for offset, header, end, kind in boxes
                   for at in range(offset, offset + header if kind in MEDIA else end)]
        self.cut(path, buffer, len(data), report, changed)
        for at in changed:
            if self.over():
                return
            self.change(path, buffer, data, report, boxes, at)

    def cut(self, path, buffer, size, report, in_boxes):
        step = max(1, size // self.most_cuts) if self.most_cuts else 1
        offsets = [e["offset"] for e in report["evidence"] if e["offset"] is not None]
        first = min(offsets) if offsets and len(offsets) == len(report["evidence"]) else None
        for n in sorted(set(range(0, size, step)) | set(in_boxes)):
            if self.over():
                return
            self.runs += 1
            if self.inspector.verdict(buffer, n) == CLEAR:
                gone = first is not None and n < first + 8
                self.note(path, f"cut at byte {n}", "nothing protected is left" if gone else None)

    def change(self, path, buffer, data, report, boxes, at):
        for value in values_instead_of(data[at]):
            buffer[at] = value
            self.runs += 1
            if self.inspector.verdict(buffer, len(data)) == CLEAR:
                self.note(path, f"byte {at} from {data[at]} to {value}",
                          justification(data, report, boxes, at))
        buffer[at] = data[at]


def files_of(paths):
    for path in paths:
        if not os.path.isdir(path):
            yield path
            continue
        for folder, folders, names in os.walk(path):
            folders.sort()
            for name in sorted(names):
                yield os.path.join(folder, name)


def main():
    parser = argparse.ArgumentParser(usage=__doc__.split("\n\n")[1][7:])
    parser.add_argument("library")
    parser.add_argument("paths", nargs="+")
    parser.add_argument("--seconds", type=float)
    parser.add_argument("--most-cuts", type=int)
    arguments = parser.parse_args()
    try:
        trial = Trial(arguments)
        # Small ones first, so that little time tries many.
        for path in sorted(files_of(arguments.paths), key=os.path.getsize):
            if trial.over():
                break
            trial.try_file(path)
    except OSError as error:
        print(f"false_clear.py: {error}", file=sys.stderr)
        return 2
    print(f"{trial.files} protected files, {trial.runs} broken copies: {trial.justified} clear with "
          f"a justification, {trial.unjustified} without one" + (" (stopped)" if trial.over() else ""))
    return 1 if trial.unjustified else 0 if trial.files else 2


if __name__ == "__main__":
    sys.exit(main())
