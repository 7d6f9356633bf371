"""scan_check.py EXAMPLE: the example judges a tree and its HTTP listing on two workers, and goes on
where an earlier scan was interrupted."""

from __future__ import annotations

import os
import pathlib
import subprocess
import sys
import tempfile

import boxes
import conftest  # noqa: F401  where the package is
import dask
import mp4judge
import serving

FOLDERS = 4
FILES = 10


def make_tree(root: pathlib.Path) -> None:
    """Of every ten files six are clear, three are protected, and one is no film."""
    for i in range(FOLDERS):
        folder = root / f"season {i}"
        folder.mkdir()
        for k in range(FILES):
            data = boxes.clear() if k < 6 else boxes.cenc() if k < 9 else b"no film"
            (folder / f"{k}.mp4").write_bytes(data)


def run(example: str, out: pathlib.Path, *places: str) -> list[str]:
    package = os.path.dirname(os.path.dirname(mp4judge.__file__))
    done = subprocess.run(
        [sys.executable, example, str(out), *places, "--partition-size", "15"],
        env={**os.environ, "PYTHONPATH": package},
        stdout=subprocess.PIPE,
        text=True,
        check=True,
    )
    return [line.rpartition(": ")[2] for line in done.stdout.splitlines()]


def main() -> int:
    with tempfile.TemporaryDirectory() as work:
        tree = pathlib.Path(work) / "tree"
        tree.mkdir()
        make_tree(tree)
        out = pathlib.Path(work) / "out"
        with dask.config.set(scheduler="synchronous"):
            mp4judge.scan(tree, out / "0", partition_size=15)
        (out / "0" / "part-000001.jsonl").unlink()
        with serving.serve(str(tree)) as url:
            found = run(sys.argv[1], out, str(tree), url)
        assert found == [
            "7 clear, 6 protected, 2 undetermined; 0 could not be read; 2 of 3 files were there",
            "24 clear, 12 protected, 4 undetermined; 0 could not be read; 0 of 3 files were there",
        ], found
        local, remote = (list(mp4judge.read_rows(out / str(i))) for i in range(2))
        assert [row["verdict"] for row in local] == [row["verdict"] for row in remote]
        assert len({row["path"] for row in local + remote}) == 2 * FOLDERS * FILES
    return 0


if __name__ == "__main__":
    sys.exit(main())
