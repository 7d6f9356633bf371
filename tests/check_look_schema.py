#!/usr/bin/env python3
"""What is told as JSON of a file's boxes, movie and layout keeps to docs/tree.schema.json,
info.schema.json and layout.schema.json: check_look_schema.py LIBRARY DOCS TOOL FOLDER...

The files in the folders are looked at as they are, by the tool, too, then cut and with bytes changed
(the same ones every time)."""
import ctypes
import json
import os
import random
import subprocess
import sys

from json_schema import Checker, broken

# Of each file so many broken twins; there are many files.
TWINS = 40


class Library:
    def __init__(self, path):
        self.call = ctypes.CDLL(path)
        self.call.mp4judge_tree_open_memory.restype = ctypes.c_void_p
        for kind in ("tree", "info", "layout"):
            getattr(self.call, f"mp4judge_{kind}_json").restype = ctypes.c_char_p

    def told(self, kind, data, more):
        tree = ctypes.c_void_p(self.call.mp4judge_tree_open_memory(data, ctypes.c_size_t(len(data))))
        text = getattr(self.call, f"mp4judge_{kind}_json")(tree, more)
        told = json.loads(text.decode())
        self.call.mp4judge_tree_free(tree)
        return told


def self_test(checkers, told):
    """A checker that finds nothing wrong anywhere proves nothing."""
    def of_first_box(change):
        return lambda t: change(t["boxes"][0])
    changes = {
        "tree": [lambda t: t.pop("size"), lambda t: t.update(more=1),
                 lambda t: t.update(size=t.pop("size")), lambda t: t.update(problems=[]),
                 of_first_box(lambda b: b.update(offset=-1)),
                 of_first_box(lambda b: b.update(header_size=9)),
                 of_first_box(lambda b: b["fields"].update(x={})),
                 of_first_box(lambda b: b["fields"].update(x=[1]))],
        "info": [lambda t: t.pop("verdict"), lambda t: t["tracks"][0].update(samples=0.5),
                 lambda t: t["tracks"][0].pop("timescale"),
                 lambda t: t["tracks"][0]["descriptions"][0].update(width=0)],
        "layout": [lambda t: t["tracks"][0]["extents"].append([1, 2]),
                   lambda t: t["tracks"][0]["bytes"].append(-1)],
    }
    for kind, some in changes.items():
        if any(checkers[kind].faults(told[kind])):
            raise SystemExit(f"{kind}: a good file has faults")
        for i, change in enumerate(some):
            twin = json.loads(json.dumps(told[kind]))
            change(twin)
            if not any(checkers[kind].faults(twin)):
                raise SystemExit(f"{kind}: the checker does not notice change {i}")


def main():
    library = Library(sys.argv[1])
    docs, tool, folders = sys.argv[2], sys.argv[3], sys.argv[4:]
    more = {"tree": None, "info": ctypes.c_int(0), "layout": ctypes.c_uint(8)}
    checkers = {kind: Checker(json.load(open(f"{docs}/{kind}.schema.json"))) for kind in more}
    files = sorted(os.path.join(folder, name) for folder in folders for name in os.listdir(folder))
    sample = open(next(name for name in files if name.endswith("clear.m4a")), "rb").read()
    self_test(checkers, {kind: library.told(kind, sample, more[kind]) for kind in more})
    chance = random.Random(8)
    count = 0

    def check(kind, told, what):
        nonlocal count
        count += 1
        for fault in checkers[kind].faults(told):
            raise SystemExit(f"{kind} of {what}: {fault}")

    for name in files:
        data = open(name, "rb").read()
        for kind in more:
            check(kind, library.told(kind, data, more[kind]), name)
            if kind != "layout":
                done = subprocess.run([tool, kind, "--json", name], stdout=subprocess.PIPE, check=False)
                told = json.loads(done.stdout)
                check(kind, told, name)
                if told != library.told(kind, data, more[kind]):
                    raise SystemExit(f"{kind} of {name}: the tool tells another story")
        for i, twin in enumerate(broken(data, chance)):
            for kind in more if i % (461 // TWINS) == 0 else ():
                check(kind, library.told(kind, twin, more[kind]), f"{name}, twin {i}")
    print(count, "answers about", len(files), "files")


main()
