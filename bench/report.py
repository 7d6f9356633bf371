#!/usr/bin/env python3
"""Fills the tables of the documents from the figures of a run: report.py RESULTS ROOT OUT

A table stands between "<!-- table: NAME -->" and "<!-- end -->". Every figure is the median over the
rounds; every ratio is the median of the rounds' own ratios, so that both sides met the same machine.
"""
import os
import sys

from figures import Report, load
from tables import all_tables


def fill(path, out, tables):
    with open(path, encoding="utf-8") as file:
        text = file.read()
    for name, table in tables.items():
        start = f"<!-- table: {name} -->"
        if start not in text:
            continue
        before, rest = text.split(start, 1)
        text = f"{before}{start}\n{table}\n<!-- end -->{rest.split('<!-- end -->', 1)[1]}"
    os.makedirs(os.path.dirname(out), exist_ok=True)
    with open(out, "w", encoding="utf-8") as file:
        file.write(text)


def main():
    results, root, out = sys.argv[1:]
    with open(os.path.join(results, "setup"), encoding="utf-8") as file:
        setup = " ".join(file.read().split())
    tables = all_tables(Report(load(results), setup))
    for name in ("docs/performance.md", "README.md"):
        fill(os.path.join(root, name), os.path.join(out, name), tables)


if __name__ == "__main__":
    main()
