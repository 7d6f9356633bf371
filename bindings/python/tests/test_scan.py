"""Many objects, rows for all of them."""

from __future__ import annotations

import json
import os
import pathlib
import re
import subprocess
import sys
import types
from typing import Any

import boxes
import mp4judge
import pytest
import serving
from mp4judge import judge_row

dask = pytest.importorskip("dask")
pytest.importorskip("fsspec")

BIG = boxes.box("mdat", bytes(3_000_000))


@pytest.fixture(autouse=True)
def one_process() -> Any:
    with dask.config.set(scheduler="synchronous"):
        yield


@pytest.fixture
def folder(tmp_path: pathlib.Path) -> pathlib.Path:
    made = tmp_path / "films"
    (made / "more").mkdir(parents=True)
    (made / "a clear.mp4").write_bytes(boxes.clear() + BIG)
    (made / "b.mp4").write_bytes(boxes.cenc() + BIG)
    (made / "more" / "c.mp4").write_bytes(boxes.cenc())
    (made / "more" / "d.txt").write_bytes(b"no film")
    return made


COLUMNS = ["path", "verdict", "schemes", "reason", "host_answer", "tracks", "protected_tracks"]
COLUMNS += ["evidence", "error", "report"]
VERDICTS = ["clear", "protected", "protected", "undetermined"]


def verdicts(rows: Any) -> list[str]:
    return [row["verdict"] for row in rows]


def test_a_folder_is_every_file_below_it(folder: pathlib.Path) -> None:
    assert mp4judge.objects_of(str(folder)) == [
        f"{folder}/{name}" for name in ("a clear.mp4", "b.mp4", "more/c.mp4", "more/d.txt")
    ]
    assert mp4judge.objects_of(f"{folder}/b.mp4") == [f"{folder}/b.mp4"]
    assert mp4judge.objects_of(f"{folder}/*.mp4") == [
        f"{folder}/{name}" for name in ("a clear.mp4", "b.mp4")
    ]


def test_rows_come_as_a_bag_in_order(folder: pathlib.Path) -> None:
    rows = mp4judge.scan(folder).compute()
    assert verdicts(rows) == VERDICTS
    assert rows[1]["schemes"] == ["cenc"]
    assert (rows[1]["tracks"], rows[1]["protected_tracks"]) == (1, 1)
    assert rows[1]["evidence"].startswith("moov/trak[1]")
    assert mp4judge.Report.from_dict(json.loads(rows[1]["report"])) == mp4judge.inspect(
        folder / "b.mp4"
    )


def test_all_rows_have_the_same_members(folder: pathlib.Path) -> None:
    names = [*map(str, folder.glob("*.mp4")), str(folder / "missing"), "nosuch://x", "a\0b"]
    rows = mp4judge.scan(names).compute()
    assert len({tuple(row) for row in rows}) == 1


@pytest.mark.parametrize("path", ["/no such file", "/", "nosuch://bucket/x", "memory://none"])
def test_a_failure_is_a_row(path: str) -> None:
    row = judge_row(path)
    assert row["verdict"] == "undetermined"
    assert row["error"] and row["reason"] == row["error"]
    assert row["path"] == path


def test_objects_of_other_file_systems_are_read() -> None:
    fsspec = pytest.importorskip("fsspec")
    memory = fsspec.filesystem("memory")
    memory.pipe_file("/bucket/a.mp4", boxes.clear())
    memory.pipe_file("/bucket/b.mp4", boxes.cenc())
    names = mp4judge.objects_of("memory://bucket")
    assert [name.rpartition("/")[2] for name in names] == ["a.mp4", "b.mp4"]
    assert verdicts(mp4judge.scan(names).compute()) == ["clear", "protected"]


def test_a_listing_is_judged_with_little_traffic(folder: pathlib.Path) -> None:
    pytest.importorskip("fsspec.implementations.http")

    class Counting(serving.Handler):
        sent = 0

    with serving.serve(str(folder), Counting) as url:
        rows = mp4judge.scan(url).compute()
    assert verdicts(rows) == VERDICTS
    assert rows[0]["path"] == url + "a%20clear.mp4"
    assert Counting.sent < 600_000


def test_a_server_without_ranges_is_never_misread(folder: pathlib.Path) -> None:
    pytest.importorskip("fsspec.implementations.http")
    with serving.serve(str(folder), serving.HandlerWithoutRanges) as url:
        rows = mp4judge.scan([url + "b.mp4", url + "more/c.mp4"]).compute()
    assert rows[0]["verdict"] in ("protected", "undetermined")
    assert (rows[0]["verdict"] == "undetermined") == (rows[0]["error"] is not None)
    assert rows[1]["verdict"] == "protected"


def test_rows_are_written(folder: pathlib.Path, tmp_path: pathlib.Path) -> None:
    out = tmp_path / "out"
    summary = mp4judge.scan(folder, out, partition_size=3)
    assert summary == mp4judge.Summary(
        4, {"clear": 1, "protected": 2, "undetermined": 1}, 0, 2, 0
    )
    assert sorted(os.listdir(out)) == ["part-000000.jsonl", "part-000001.jsonl", "scan.json"]
    rows = list(mp4judge.read_rows(out))
    assert rows == mp4judge.scan(folder).compute()


def test_failures_are_counted(tmp_path: pathlib.Path) -> None:
    summary = mp4judge.scan(["/no such file", "/"], tmp_path / "out")
    assert (summary.objects, summary.failures) == (2, 2)


def test_a_second_run_judges_what_is_missing(folder: pathlib.Path, tmp_path: pathlib.Path) -> None:
    out = tmp_path / "out"
    mp4judge.scan(folder, out, partition_size=1)
    before = (out / "part-000000.jsonl").stat().st_ino
    (out / "part-000002.jsonl").unlink()
    summary = mp4judge.scan(folder, out, partition_size=1)
    assert (summary.objects, summary.partitions, summary.partitions_before) == (1, 4, 3)
    assert summary.verdicts == {"protected": 1}
    assert (out / "part-000000.jsonl").stat().st_ino == before
    assert verdicts(mp4judge.read_rows(out)) == VERDICTS
    assert mp4judge.scan(folder, out, partition_size=1).objects == 0


def test_an_interruption_leaves_whole_files(
    folder: pathlib.Path, tmp_path: pathlib.Path, monkeypatch: pytest.MonkeyPatch
) -> None:
    out = tmp_path / "out"
    from mp4judge import _scan

    def interrupted(path: str, *more: Any) -> Any:
        if path.endswith("c.mp4"):
            raise KeyboardInterrupt
        return judge_row(path, *more)

    monkeypatch.setattr(_scan, "judge_row", interrupted)
    with pytest.raises(KeyboardInterrupt):
        mp4judge.scan(folder, out, partition_size=2)
    assert sorted(os.listdir(out)) == ["part-000000.jsonl", "scan.json"]
    monkeypatch.undo()
    assert mp4judge.scan(folder, out, partition_size=2).partitions_before == 1
    assert verdicts(mp4judge.read_rows(out)) == VERDICTS


def test_a_folder_of_another_scan_is_refused(folder: pathlib.Path, tmp_path: pathlib.Path) -> None:
    out = tmp_path / "out"
    mp4judge.scan(folder, out)
    for changed in ({"everything": True}, {"partition_size": 7}):
        with pytest.raises(ValueError, match="begun for other"):
            mp4judge.scan(folder, out, **changed)  # type: ignore[arg-type]
    with pytest.raises(ValueError, match="begun for other"):
        mp4judge.scan([str(folder / "b.mp4")], out)


def test_wrong_options_are_refused(folder: pathlib.Path, tmp_path: pathlib.Path) -> None:
    with pytest.raises(ValueError, match="format"):
        mp4judge.scan(folder, tmp_path / "out", format="csv")
    with pytest.raises(ValueError, match="partition_size"):
        mp4judge.scan(folder, tmp_path / "out", partition_size=0)
    assert not (tmp_path / "out").exists()


def test_lines_hold_all_of_a_report(folder: pathlib.Path, tmp_path: pathlib.Path) -> None:
    mp4judge.scan(folder, tmp_path / "out", partition_size=3)
    parts = sorted((tmp_path / "out").glob("part-*"))
    assert [part.name for part in parts] == ["part-000000.jsonl", "part-000001.jsonl"]
    lines = [line for part in parts for line in part.read_text().splitlines()]
    rows = [json.loads(line) for line in lines]
    assert rows == list(mp4judge.read_rows(tmp_path / "out")) == mp4judge.scan(folder).compute()
    assert [list(row) for row in rows] == [COLUMNS] * 4
    for row in rows:
        report = mp4judge.inspect(row["path"])
        assert row["report"] == report.to_json()
        assert mp4judge.Report.from_dict(json.loads(row["report"])) == report


def test_parquet_needs_its_module(
    folder: pathlib.Path, tmp_path: pathlib.Path, monkeypatch: pytest.MonkeyPatch
) -> None:
    missing: Any = None
    monkeypatch.setitem(sys.modules, "pyarrow", missing)
    with pytest.raises(ImportError, match="pyarrow"):
        mp4judge.scan(folder, tmp_path / "out", format="parquet")
    assert not (tmp_path / "out").exists()


def test_parquet_gets_a_type_for_every_column(
    folder: pathlib.Path, tmp_path: pathlib.Path, monkeypatch: pytest.MonkeyPatch
) -> None:
    """On a stand-in that keeps what it is given; the next test takes the real one."""

    def write_table(table: Any, file: Any) -> None:
        file.write(json.dumps(table).encode())

    arrow, parquet = types.ModuleType("pyarrow"), types.ModuleType("pyarrow.parquet")
    vars(arrow).update(
        string=lambda: "text",
        int64=lambda: "number",
        list_=lambda kind: [kind],
        schema=dict,
        Table=types.SimpleNamespace(from_pylist=lambda rows, schema: [schema, rows]),
        parquet=parquet,
    )
    vars(parquet).update(write_table=write_table)
    monkeypatch.setitem(sys.modules, "pyarrow", arrow)
    monkeypatch.setitem(sys.modules, "pyarrow.parquet", parquet)
    name = os.fsdecode(os.fsencode(folder) + b"/caf\xe9.mp4")
    os.rename(folder / "b.mp4", name)
    mp4judge.scan(folder, tmp_path / "out", format="parquet")
    schema, rows = json.loads((tmp_path / "out" / "part-000000.parquet").read_bytes())
    kinds: dict[str, Any] = dict.fromkeys(COLUMNS, "text")
    kinds.update(host_answer="number", tracks="number", protected_tracks="number", schemes=["text"])
    assert schema == kinds
    assert verdicts(rows) == VERDICTS
    assert rows[1]["path"] == f"{folder}/caf\ufffd.mp4"
    assert [list(row) for row in rows] == [COLUMNS] * 4


def test_parquet_is_read_back(folder: pathlib.Path, tmp_path: pathlib.Path) -> None:
    parquet = pytest.importorskip("pyarrow.parquet")
    mp4judge.scan(folder, tmp_path / "out", format="parquet")
    table = parquet.read_table(tmp_path / "out" / "part-000000.parquet")
    assert table.column_names == COLUMNS
    assert table.column("verdict").to_pylist() == VERDICTS


def test_names_need_not_be_utf8(tmp_path: pathlib.Path) -> None:
    name = os.fsencode(tmp_path) + b"/caf\xe9.mp4"
    with open(name, "wb") as file:
        file.write(boxes.cenc())
    out = tmp_path / "out"
    assert mp4judge.scan([os.fsdecode(name)], out).verdicts == {"protected": 1}
    (row,) = mp4judge.read_rows(out)
    assert os.fsencode(row["path"]) == name


def test_the_program_of_the_guide_runs(folder: pathlib.Path) -> None:
    root = pathlib.Path(__file__).parents[3]
    (program,) = re.findall(r"```python needs distributed\n(.*?)```", (root / "docs" / "scale.md").read_text(), re.S)
    folder.rename(folder.parent / "FOLDER")
    # Of this machine's cores one does; starting the others is what costs.
    (folder.parent / "guide.py").write_text(program)
    done = subprocess.run(
        [sys.executable, "guide.py"],
        cwd=folder.parent,
        env={
            **os.environ,
            "PYTHONPATH": str(root / "bindings" / "python"),
            "DASK_SCHEDULER": "synchronous",
        },
        capture_output=True,
        text=True,
        check=True,
    )
    assert "('protected', 2)" in done.stdout
    assert "Summary(objects=4" in done.stdout
