"""Many objects on many machines: Dask carries the work, fsspec the bytes."""

from __future__ import annotations

import hashlib
import json
import os
from collections import Counter
from collections.abc import Iterable, Iterator, Mapping, Sequence
from dataclasses import dataclass
from typing import Any, Optional, Union

from ._inspect import inspect
from ._need import need
from ._report import Report

#: One row: `path`, `verdict`, `schemes`, `reason`, `host_answer`, `tracks`, `protected_tracks`,
#: `evidence` (the first box path), `error`, and `report` (all of it, as JSON). An object that could
#: not be looked at is a row, too: undetermined, with its `error`, and no report.
Row = dict[str, Any]

Sources = Union[str, "os.PathLike[str]", Iterable[Union[str, "os.PathLike[str]"]]]


@dataclass(frozen=True)
class Summary:
    """What a scan has written."""

    objects: int  #: rows of this run
    verdicts: Mapping[str, int]  #: how many of them are "clear", "protected", "undetermined"
    failures: int  #: rows with an error
    partitions: int  #: files of rows, those of earlier runs included
    partitions_before: int  #: of them were there already


def _need(module: str, package: str) -> Any:
    return need("mp4judge.scan", module, package)


def objects_of(place: str, storage_options: Mapping[str, Any] | None = None) -> list[str]:
    """The objects below a folder, a prefix or a listing, or those that a pattern ("*", "?", "[")
    stands for, sorted."""
    fsspec = _need("fsspec", "python3-fsspec")
    fs, root = fsspec.core.url_to_fs(place, **(storage_options or {}))
    if any(c in root for c in "*?["):
        found = fs.glob(root)
    elif _is_local(place):
        found = [root] if os.path.isfile(root) else fs.find(root)
    else:
        found = fs.find(root) or [root]
    if _is_local(place):
        return sorted(found)
    return sorted(one for one in map(fs.unstrip_protocol, found) if not one.endswith("/"))


def _is_local(path: str) -> bool:
    return "://" not in path and "::" not in path


def judge_row(
    path: str, storage_options: Mapping[str, Any] | None = None, everything: bool = False
) -> Row:
    """The row of one object. What goes wrong is in the row."""
    try:
        return _row(path, _inspect_one(path, storage_options, everything))
    except Exception as why:
        text = f"{type(why).__name__}: {why}"
        empty: Row = {"path": path, "verdict": "undetermined", "schemes": [], "reason": text}
        unknown = ("host_answer", "tracks", "protected_tracks", "evidence")
        return {**empty, **dict.fromkeys(unknown), "error": text, "report": None}


def _inspect_one(path: str, options: Mapping[str, Any] | None, everything: bool) -> Report:
    if _is_local(path):
        return inspect(path, everything)
    fsspec = _need("fsspec", "python3-fsspec")
    fs, inside = fsspec.core.url_to_fs(path, **(options or {}))
    # The library asks for what it needs in few and large pieces; a cache would fetch more.
    with fs.open(inside, "rb", cache_type="none") as file:
        return inspect(file, everything, name=path)


def _row(path: str, report: Report) -> Row:
    return {
        "path": path,
        "verdict": report.verdict,
        "schemes": list(report.schemes),
        "reason": report.reason,
        "host_answer": report.host_answer,
        "tracks": len(report.tracks),
        "protected_tracks": sum(track.protected for track in report.tracks),
        "evidence": report.evidence[0].box_path if report.evidence else None,
        "error": report.error.text if report.error is not None else None,
        "report": report.to_json(),
    }


def scan(
    sources: Sources,
    out: str | os.PathLike[str] | None = None,
    *,
    storage_options: Mapping[str, Any] | None = None,
    everything: bool = False,
    partition_size: int = 1000,
    format: str = "jsonl",
) -> Any:
    """Judges many objects with Dask, on the cluster that is connected or else on this machine.

    `sources` are paths and URLs that fsspec knows, or one folder, pattern or listing. Gives a
    dask.bag of rows, nothing judged yet. With `out`, a folder or its URL, the rows are written
    there, a file for `partition_size` objects, "jsonl" or "parquet" (with pyarrow), and a Summary
    comes back. A file appears when it is whole: after an interruption the same call judges only
    what is missing. An `out` that was begun for other objects or options raises ValueError.
    """
    bag = _need("dask.bag", "python3-dask")
    paths = _paths_of(sources, storage_options)
    if partition_size < 1:
        raise ValueError("partition_size must be 1 or more")
    if out is None:
        rows = bag.from_sequence(paths, partition_size=partition_size)
        return rows.map(judge_row, storage_options=storage_options, everything=everything)
    if format not in _WRITERS:
        raise ValueError(f"format must be one of {', '.join(_WRITERS)}, not {format!r}")
    if format == "parquet":
        _need("pyarrow.parquet", "not packaged; python3-pyarrow elsewhere")
    job = _Job(os.fspath(out), format, dict(storage_options or {}), everything)
    parts = [paths[at : at + partition_size] for at in range(0, len(paths), partition_size)]
    job.begin(paths, partition_size)
    missing = [(i, part) for i, part in enumerate(parts) if not job.is_written(i)]
    counts: list[Counter[str]] = []
    if missing:
        counts = bag.from_sequence(missing, partition_size=1).map(job.write).compute()
    total: Counter[str] = sum(counts, Counter())
    failures = total.pop("error", 0)
    done = len(parts) - len(missing)
    return Summary(sum(total.values()), dict(total), failures, len(parts), done)


def _paths_of(sources: Sources, storage_options: Mapping[str, Any] | None) -> list[str]:
    if isinstance(sources, (str, os.PathLike)):
        return objects_of(os.fspath(sources), storage_options)
    return [os.fspath(source) for source in sources]


def _write_lines(file: Any, rows: Sequence[Row]) -> None:
    for row in rows:
        file.write(json.dumps(row).encode() + b"\n")


def _write_parquet(file: Any, rows: Sequence[Row]) -> None:
    arrow = _need("pyarrow", "python3-pyarrow")
    text, number = arrow.string(), arrow.int64()
    kinds = {"schemes": arrow.list_(text), "host_answer": number, "tracks": number}
    kinds["protected_tracks"] = number
    schema = arrow.schema([(name, kinds.get(name, text)) for name in rows[0]])
    table = arrow.Table.from_pylist([_storable(row) for row in rows], schema=schema)
    _need("pyarrow.parquet", "python3-pyarrow").write_table(table, file)


def _storable(row: Row) -> Row:
    """Names of files need not be UTF-8; columns have to be."""
    return {**row, "path": row["path"].encode(errors="surrogateescape").decode(errors="replace")}


_WRITERS = {"jsonl": _write_lines, "parquet": _write_parquet}


@dataclass(frozen=True)
class _Job:
    """A folder that is filled, as the workers know it."""

    out: str
    format: str
    storage_options: Mapping[str, Any]
    everything: bool

    def _place(self) -> tuple[Any, str]:
        # What the objects need to be reached (keys, headers) may not be what the folder takes.
        options = {} if _is_local(self.out) else self.storage_options
        fs, root = _need("fsspec", "python3-fsspec").core.url_to_fs(self.out, **options)
        return fs, root.rstrip("/")

    def _part(self, root: str, i: int) -> str:
        return f"{root}/part-{i:06d}.{self.format}"

    def begin(self, paths: Sequence[str], partition_size: int) -> None:
        """Marks the folder as this job's, or makes sure that it is."""
        fs, root = self._place()
        listed = "\0".join(paths).encode(errors="surrogateescape")
        mark = {
            "objects": len(paths),
            "sha256": hashlib.sha256(listed).hexdigest(),
            "partition_size": partition_size,
            "everything": self.everything,
            "format": self.format,
        }
        fs.makedirs(root, exist_ok=True)
        name = f"{root}/scan.json"
        if fs.exists(name):
            if json.loads(fs.cat_file(name)) != mark:
                raise ValueError(f"{self.out} was begun for other objects or options")
            return
        self._put(fs, name, json.dumps(mark, indent=2).encode() + b"\n")

    def _put(self, fs: Any, name: str, data: bytes) -> None:
        with _whole(fs, name) as file:
            file.write(data)

    def is_written(self, i: int) -> bool:
        fs, root = self._place()
        return bool(fs.exists(self._part(root, i)))

    def write(self, numbered: tuple[int, Sequence[str]]) -> Counter[str]:
        """Judges and writes one partition; counts its verdicts and errors."""
        i, paths = numbered
        rows = [judge_row(path, self.storage_options, self.everything) for path in paths]
        fs, root = self._place()
        with _whole(fs, self._part(root, i)) as file:
            _WRITERS[self.format](file, rows)
        counts = Counter(row["verdict"] for row in rows)
        counts["error"] = sum(row["error"] is not None for row in rows)
        return counts


class _whole:
    """A file that gets its name when it is complete."""

    def __init__(self, fs: Any, name: str) -> None:
        folder, _, last = name.rpartition("/")
        self._fs = fs
        self._name = name
        self._unfinished = f"{folder}/.{last}.{os.urandom(8).hex()}"
        self._file: Any = None

    def __enter__(self) -> Any:
        self._file = self._fs.open(self._unfinished, "wb")
        return self._file

    def __exit__(self, kind: Optional[type[BaseException]], *more: object) -> None:
        self._file.close()
        if kind is None:
            self._fs.mv(self._unfinished, self._name)
        else:
            self._fs.rm_file(self._unfinished)


def read_rows(out: str | os.PathLike[str], **storage_options: Any) -> Iterator[Row]:
    """The rows that a scan wrote as JSON lines, in the order of the objects."""
    fsspec = _need("fsspec", "python3-fsspec")
    fs, root = fsspec.core.url_to_fs(os.fspath(out), **storage_options)
    for name in sorted(fs.glob(root.rstrip("/") + "/part-*.jsonl")):
        with fs.open(name, "rb") as file:
            for line in file:
                yield json.loads(line)
