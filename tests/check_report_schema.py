#!/usr/bin/env python3
"""Every report's JSON keeps to docs/report.schema.json, members in the schema's order:
check_report_schema.py LIBRARY SCHEMA FILE...

The files are inspected as they are, cut, with bytes changed (the same ones every time), under names
that are no UTF-8, and through ranges that were not brought. The checker knows the words of JSON
Schema that the schema uses and fails on any other."""
import ctypes
import json
import os
import random
import re
import shutil
import sys
import tempfile

KNOWN = {"$ref", "const", "enum", "type", "pattern", "minimum", "maximum", "items", "properties",
         "required"}
WORDS = {"$schema", "$id", "$defs", "title", "description"}
TYPES = {
    "object": lambda v: isinstance(v, dict),
    "array": lambda v: isinstance(v, list),
    "string": lambda v: isinstance(v, str),
    "boolean": lambda v: isinstance(v, bool),
    "integer": lambda v: isinstance(v, int) and not isinstance(v, bool),
    "null": lambda v: v is None,
}


class Checker:
    def __init__(self, schema):
        self.schema = schema

    def faults(self, value, rule=None, at="$"):
        """What of `value` breaks `rule`, one text each."""
        rule = self.schema if rule is None else rule
        unknown = set(rule) - KNOWN - WORDS
        if unknown:
            raise SystemExit(f"the checker does not know {unknown}")
        if "$ref" in rule:
            name = rule["$ref"].removeprefix("#/$defs/")
            yield from self.faults(value, self.schema["$defs"][name], at)
        if "const" in rule and value != rule["const"]:
            yield f"{at}: is not {rule['const']!r}"
        if "enum" in rule and not any(v is value or (v == value and type(v) is type(value))
                                      for v in rule["enum"]):
            yield f"{at}: {value!r} is none of {rule['enum']}"
        types = rule.get("type", [])
        types = [types] if isinstance(types, str) else types
        if types and not any(TYPES[t](value) for t in types):
            yield f"{at}: {value!r} is no {types}"
        if isinstance(value, str) and not re.search(rule.get("pattern", ""), value):
            yield f"{at}: {value!r} does not match"
        if TYPES["integer"](value):
            if not rule.get("minimum", value) <= value <= rule.get("maximum", value):
                yield f"{at}: {value} is out of range"
        if isinstance(value, list) and "items" in rule:
            for i, one in enumerate(value):
                yield from self.faults(one, rule["items"], f"{at}[{i}]")
        if isinstance(value, dict) and "properties" in rule:
            yield from self.members(value, rule, at)

    def members(self, value, rule, at):
        if list(value) != list(rule["properties"]):
            yield f"{at}: members {list(value)}, expected {list(rule['properties'])}"
        if list(value) != rule["required"]:
            yield f"{at}: not all members are required, or in another order"
        for name, one in value.items():
            if name in rule["properties"]:
                yield from self.faults(one, rule["properties"][name], f"{at}.{name}")


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


def broken(data, chance):
    """`data` cut, and with up to four bytes changed."""
    yield b""
    for _ in range(60):
        yield data[:chance.randrange(len(data))]
    for _ in range(400):
        changed = bytearray(data)
        for _ in range(chance.randrange(1, 5)):
            changed[chance.randrange(len(data))] = chance.randrange(256)
        yield bytes(changed)


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
