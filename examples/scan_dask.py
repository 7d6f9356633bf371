#!/usr/bin/env python3
"""Judges folder trees, patterns and HTTP listings on a local Dask cluster:

    scan_dask.py OUT PLACE...

Rows go to OUT/0, OUT/1, ...: JSON lines, one file for --partition-size objects. Interrupted, the same
command goes on where it was. With --scheduler ADDRESS the work goes to a cluster that is there."""

import argparse
import contextlib
import os

import mp4judge
from dask.distributed import Client, LocalCluster


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__.split(":")[0] + ".")
    parser.add_argument("out", metavar="OUT")
    parser.add_argument("places", metavar="PLACE", nargs="+")
    parser.add_argument("--workers", type=int, default=2)
    parser.add_argument("--threads", type=int, default=4, help="of each worker; waiting costs no core")
    parser.add_argument("--partition-size", type=int, default=1000)
    parser.add_argument("--scheduler", metavar="ADDRESS")
    wanted = parser.parse_args()

    with contextlib.ExitStack() as stack:
        cluster = wanted.scheduler or stack.enter_context(
            LocalCluster(
                n_workers=wanted.workers, threads_per_worker=wanted.threads, dashboard_address=None
            )
        )
        stack.enter_context(Client(cluster))
        for i, place in enumerate(wanted.places):
            out = os.path.join(wanted.out, str(i))
            summary = mp4judge.scan(place, out, partition_size=wanted.partition_size)
            verdicts = ", ".join(f"{n} {verdict}" for verdict, n in sorted(summary.verdicts.items()))
            print(
                f"{place}: {verdicts or 'nothing new'}; {summary.failures} could not be read; "
                f"{summary.partitions_before} of {summary.partitions} files were there"
            )


if __name__ == "__main__":
    main()
