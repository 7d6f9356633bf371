#!/usr/bin/env python3
"""Every report's JSON keeps to docs/report.schema.json, members in the schema's order:
check_report_schema.py LIBRARY SCHEMA FILE...

The files are inspected as they are, cut, with bytes changed (the same ones every time), under names
that are no UTF-8, and through ranges that were not brought."""
import ctypes
import json
import os
import random
import shutil
import sys
import tempfile

from json_schema import Checker, broken

class Library:
    def __init__(self, path):
        self.call = ctypes.CDLL(path)
        for name in ("mp4judge_inspect_path", "mp4judge_inspect_memory", "mp4judge_ranges_new",
                     "mp4judge_ranges_inspect"):
            getattr(self.call, name).restype = ctypes.c_void_p
        self.call.mp4judge_report_json.restype = ctypes.c_char_p

    def take(self, report):
        text = self.call.mp4judge_report_json(ctypes.c_void_p(report)).decode()
        self.call.mp4judge_report_free(ctypes.c_void_p(report))
        if "\n" in text:
            raise SystemExit("more than one line: " + text)
        return json.loads(text)

    def of_path(self, path):
        return self.take(self.call.mp4judge_inspect_path(path, None))

    def of_memory(self, data):
        return self.take(self.call.mp4judge_inspect_memory(data, ctypes.c_size_t(len(data)), None))

    def of_nothing_brought(self, size):
        ranges = ctypes.c_void_p(self.call.mp4judge_ranges_new(ctypes.c_uint64(size)))
        report = self.take(self.call.mp4judge_ranges_inspect(ranges, None))
        self.call.mp4judge_ranges_free(ranges)
        return report


def reports(library, files):
    chance = random.Random(10)
    for name in files:
        data = open(name, "rb").read()
        yield library.of_path(os.fsencode(name))
        yield from map(library.of_memory, broken(data, chance))
    folder = tempfile.mkdtemp()
    try:
        odd = os.path.join(os.fsencode(folder), b"caf\xe9\n\"\\\x01.mp4")
        shutil.copyfile(files[0], odd)
        report = library.of_path(odd)
        if bytes.fromhex(report["path_bytes"]) != odd:
            raise SystemExit("the bytes of a name are lost")
        yield report
    finally:
        shutil.rmtree(folder)
    for path in (b"/no such file", b"/", b"/dev/null", None):
        yield library.of_path(path)
    yield library.of_nothing_brought(2**63)


def self_test(checker, report):
    """A checker that finds nothing wrong anywhere proves nothing."""
    def broken_by(change):
        twin = json.loads(json.dumps(report))
        change(twin)
        return any(checker.faults(twin))
    changes = [lambda r: r.pop("notes"), lambda r: r.update(more=1),
               lambda r: r.update(verdict="fine"), lambda r: r.update(host_answer=True),
               lambda r: r.update(fragments=-1), lambda r: r.update(reason=1),
               lambda r: r.update(schema=r.pop("schema")), lambda r: r["tracks"][0].update(id="1"),
               lambda r: r["tracks"][0]["entries"][0].update(default_key_id="00"),
               lambda r: r["notes"].append(None)]
    for i, change in enumerate(changes):
        if not broken_by(change):
            raise SystemExit(f"the checker does not notice change {i}")


def main():
    library = Library(sys.argv[1])
    checker = Checker(json.load(open(sys.argv[2])))
    files = sys.argv[3:]
    self_test(checker, library.of_path(os.fsencode(files[0])))
    count = 0
    verdicts = {}
    for report in reports(library, files):
        count += 1
        verdicts[report["verdict"]] = verdicts.get(report["verdict"], 0) + 1
        for fault in checker.faults(report):
            print(fault)
            sys.exit(1)
    print(count, "reports", verdicts)
    sys.exit(0 if len(verdicts) == 3 else 1)


main()
