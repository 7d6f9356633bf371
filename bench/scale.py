#!/usr/bin/env python3
"""What many objects cost: scale.py BUILD COUNT...

Judges COUNT small files with the command, alone and under xargs and GNU parallel, and with
mp4judge.scan on a local cluster of two workers, from the disk and (up to 10,000) over HTTP. Prints a
table in Markdown: seconds that passed and, for a machine that does other work beside, seconds of the
processors."""

import os
import resource
import shutil
import subprocess
import sys
import tempfile
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
PYTHON = os.path.join(ROOT, "bindings", "python")
sys.path[:0] = [os.path.join(PYTHON, "tests")]

import boxes  # noqa: E402
import serving  # noqa: E402

MEDIA = 2000


def make_tree(root, count):
    """A thousand files a folder; a third of them protected, each file of its own size."""
    kinds = [boxes.clear(), boxes.movie(boxes.track(number=7)), boxes.cenc()]
    for i in range(count):
        folder = os.path.join(root, f"{i // 1000:04d}")
        if i % 1000 == 0:
            os.makedirs(folder)
        with open(os.path.join(folder, f"{i}.mp4"), "wb") as file:
            file.write(kinds[i % 3] + boxes.box("mdat", bytes(MEDIA + i % 100)))


def cost(command, **more):
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    start = time.perf_counter()
    done = subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, **more)
    passed = time.perf_counter() - start
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    used = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
    # A tree with protected files ends with 1, of xargs with 123, of parallel with a count.
    if done.returncode not in (0, 1) and "xargs" not in command and "parallel" not in command:
        raise SystemExit(f"{command}: {done.returncode}\n{done.stderr.decode()}")
    return passed, used


def measure(build, count, work):
    tree = os.path.join(work, "tree")
    make_tree(tree, count)
    tool = os.path.join(build, "bin", "mp4judge")
    library = os.path.join(build, "libmp4judge.so")
    environment = {**os.environ, "PYTHONPATH": PYTHON, "MP4JUDGE_LIBRARY": library}
    example = [sys.executable, os.path.join(ROOT, "examples", "scan_dask.py")]
    names = os.path.join(work, "names")
    with open(names, "wb") as file:
        subprocess.run(["find", tree, "-type", "f", "-print0"], stdout=file, check=True)
    subprocess.run([tool, "-r", tree], stdout=subprocess.DEVNULL)  # warm

    yield "`mp4judge -r`", cost([tool, "-r", tree])
    yield "`mp4judge -r --json`", cost([tool, "-r", "--json", tree])
    with open(names, "rb") as file:
        yield "`xargs -0 -P 2 -n 500 mp4judge`", cost(
            ["xargs", "-0", "-P", "2", "-n", "500", tool], stdin=file
        )
    if shutil.which("parallel"):
        with open(names, "rb") as file:
            yield "`parallel -0 -j 2 -n 500 -k mp4judge`", cost(
                ["parallel", "-0", "-j", "2", "-n", "500", "-k", tool], stdin=file
            )
    out = os.path.join(work, "out")
    yield "`mp4judge.scan`, two workers", cost([*example, out, tree], env=environment)
    yield "the same again, all done", cost([*example, out, tree], env=environment)
    if count <= 10_000:
        with serving.serve(tree) as url:
            command = [*example, os.path.join(work, "http"), url]
            yield "`mp4judge.scan` over HTTP, two workers", cost(command, env=environment)


def main():
    build, *counts = sys.argv[1:]
    print("| | objects | s | objects/s | processor s |\n|---|---|---|---|---|", flush=True)
    for count in map(int, counts):
        with tempfile.TemporaryDirectory() as work:
            for name, (passed, used) in measure(os.path.abspath(build), count, work):
                rate = f"{count / passed:,.0f}"
                print(f"| {name} | {count:,} | {passed:.2f} | {rate} | {used:.2f} |", flush=True)
    with open("/proc/loadavg") as load:
        print(f"\nLoad {load.read().split()[0]} on {os.cpu_count()} cores at the end.")


if __name__ == "__main__":
    main()
