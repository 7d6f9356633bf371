"""`python -m mp4judge`: the command. The one that came with the package or stands on the system
does the work; without one, files are judged here."""

from __future__ import annotations

import argparse
import os
import shutil
import sys
from pathlib import Path

import mp4judge


def command() -> str | None:
    """The program, unless it is a script, which might call this module again."""
    bundled = Path(__file__).with_name("bin") / "mp4judge"
    found = str(bundled) if bundled.exists() else shutil.which("mp4judge")
    if found is None:
        return None
    with open(found, "rb") as file:
        return found if file.read(4) == b"\x7fELF" else None


def judge_files(arguments: list[str]) -> int:
    """One line a file; 0 when all are clear, 1 when one is protected, 2 when one is undetermined or
    cannot be read."""
    parser = argparse.ArgumentParser(
        "mp4judge", description="Say whether MP4 files are protected. Status: 0 all are clear, "
        "1 one is protected, 2 one is undetermined or cannot be read, which beats 1."
    )
    parser.add_argument("--version", action="version", version=f"mp4judge {mp4judge.version()}")
    parser.add_argument("--json", action="store_true", help="print a report a line")
    parser.add_argument("--everything", action="store_true", help="look at all movie fragments")
    parser.add_argument("files", metavar="FILE", nargs="+")
    wanted = parser.parse_args(arguments)
    statuses = {"clear": 0, "protected": 1, "undetermined": 2}
    status = 0
    for file in wanted.files:
        try:
            report = mp4judge.inspect(file, wanted.everything)
        except OSError as why:
            status = 2
            print(f"{_shown(file)}: undetermined ({why.strerror})")
            continue
        status = max(status, statuses[report.verdict])
        print(report.to_json() if wanted.json else f"{_shown(file)}: {report}")
    return status


def _shown(name: str) -> str:
    """The name on one line: whatever is not printable as \\xHH."""
    made = (c if c.isprintable() and c != "\\" else "".join(f"\\x{b:02x}" for b in os.fsencode(c)) for c in name)
    return "".join(made)


def main() -> int:
    program = command()
    if program is not None:
        sys.stdout.flush()
        os.execv(program, ["mp4judge", *sys.argv[1:]])
    return judge_files(sys.argv[1:])


if __name__ == "__main__":
    sys.exit(main())
