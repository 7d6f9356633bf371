"""memory_check.py CALLS: so many calls of every kind leave the memory as it was."""

from __future__ import annotations

import gc
import io
import sys
from typing import Any, Callable

import boxes
import conftest  # noqa: F401  where the package is
import mp4judge

#: What an allocator may keep on top, however many the calls.
SLACK = 1024 * 1024


def resident() -> int:
    with open("/proc/self/status") as status:
        line = next(line for line in status if line.startswith("VmRSS:"))
    return int(line.split()[1]) * 1024


class Failing(io.BytesIO):
    def read(self, n: int | None = -1, /) -> bytes:
        raise RuntimeError(str(n))


def fails(call: Callable[[Any], object], source: object) -> None:
    try:
        call(source)
    except (OSError, RuntimeError, TypeError):
        return
    raise AssertionError(f"{source!r} was taken")


def round_of_calls() -> int:
    for data in (boxes.clear(), boxes.cenc(), b""):
        mp4judge.judge(data)
        mp4judge.judge(bytearray(data))
        mp4judge.judge(io.BytesIO(data))
        report = mp4judge.inspect(data)
        report.to_json()
        mp4judge.tree(data).to_json()
        list(mp4judge.open(io.BytesIO(data)).tracks)
    fails(mp4judge.inspect, "/no such file")
    fails(mp4judge.inspect, Failing(boxes.clear()))
    fails(mp4judge.judge, 1)
    return 21


def repeat(calls: int) -> int:
    done = 0
    while done < calls:
        done += round_of_calls()
    return done


def main() -> int:
    calls = int(sys.argv[1])
    # What is not freed without the collector of cycles counts as kept.
    gc.disable()
    repeat(5000)
    before = resident()
    done = repeat(calls)
    grown = resident() - before
    print(f"{done} calls, {grown} bytes more")
    return 0 if grown <= SLACK else 1


if __name__ == "__main__":
    sys.exit(main())
