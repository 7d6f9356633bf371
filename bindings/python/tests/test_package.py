"""The package as such: its library, its threads, its command."""

from __future__ import annotations

import os
import pathlib
import re
import subprocess
import sys
import threading

import boxes
import mp4judge
import pytest

PACKAGE = pathlib.Path(mp4judge.__file__).parent
README = pathlib.Path(__file__).parents[1] / "README.md"


def run(*arguments: str, **changes: str) -> subprocess.CompletedProcess[str]:
    environment = {**os.environ, "PYTHONPATH": str(PACKAGE.parent), **changes}
    return subprocess.run(
        [sys.executable, *arguments], env=environment, capture_output=True, text=True, check=False
    )


def test_the_version_is_the_library_s() -> None:
    assert mp4judge.__version__ == mp4judge.version()
    assert len(mp4judge.version().split(".")) == 3


def test_names_are_there_as_promised() -> None:
    assert all(hasattr(mp4judge, name) for name in mp4judge.__all__)
    assert (PACKAGE / "py.typed").exists()


def test_every_name_has_its_place_on_the_page() -> None:
    page = (PACKAGE.parents[2] / "docs" / "python" / "index.rst").read_text()
    told = set(re.findall(r"^\.\. auto\w+:: mp4judge\.(?:\w+\.)?(\w+)$", page, re.M))
    assert told == set(mp4judge.__all__)


def test_a_library_that_is_not_there_is_an_import_error() -> None:
    done = run("-c", "import mp4judge", MP4JUDGE_LIBRARY="/no/such/library.so")
    assert done.returncode == 1
    assert "ImportError: mp4judge needs its library" in done.stderr
    assert "/no/such/library.so" in done.stderr


def test_a_library_that_is_another_one_is_an_import_error() -> None:
    done = run("-c", "import mp4judge", MP4JUDGE_LIBRARY="libc.so.6")
    assert done.returncode == 1
    assert "ImportError: mp4judge needs its library" in done.stderr


def test_other_threads_run_during_a_call() -> None:
    data = boxes.fragmented(100_000)
    ended: list[str] = []

    def work() -> None:
        ended.append(mp4judge.judge(data, everything=True))

    # Nobody has to give the lock up unasked; so the line behind start() runs before the call has
    # ended only if the call gave it up.
    interval = sys.getswitchinterval()
    sys.setswitchinterval(1000)
    try:
        for _ in range(50):
            ended.clear()
            thread = threading.Thread(target=work)
            thread.start()
            overlapped = not ended
            thread.join()
            if overlapped:
                break
    finally:
        sys.setswitchinterval(interval)
    assert overlapped
    assert ended == ["clear"]


def test_threads_judge_at_once() -> None:
    found: list[tuple[str, str]] = []

    def work(data: bytes, expected: str) -> None:
        for _ in range(200):
            found.append((mp4judge.judge(data), expected))

    threads = [
        threading.Thread(target=work, args=case)
        for case in [(boxes.clear(), "clear"), (boxes.cenc(), "protected"), (b"", "undetermined")]
    ]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert len(found) == 600
    assert all(one == expected for one, expected in found)


@pytest.fixture
def folder(tmp_path: pathlib.Path) -> pathlib.Path:
    (tmp_path / "clear.mp4").write_bytes(boxes.clear())
    (tmp_path / "cenc.mp4").write_bytes(boxes.cenc())
    (tmp_path / "empty.mp4").write_bytes(b"")
    (tmp_path / "program").mkdir()
    return tmp_path


def test_the_module_judges_without_a_program(folder: pathlib.Path) -> None:
    def judge(*names: str) -> tuple[int, list[str]]:
        files = [str(folder / name) for name in names]
        done = run("-m", "mp4judge", *files, PATH=str(folder))
        return done.returncode, done.stdout.replace(f"{folder}/", "").splitlines()

    assert judge("clear.mp4") == (0, ["clear.mp4: clear"])
    assert judge("clear.mp4", "cenc.mp4") == (
        1,
        ["clear.mp4: clear", "cenc.mp4: protected (cenc: audio)"],
    )
    status, lines = judge("cenc.mp4", "missing.mp4", "empty.mp4")
    assert status == 2
    assert lines[1] == "missing.mp4: undetermined (No such file or directory)"
    assert lines[2].startswith("empty.mp4: undetermined (")


def test_the_module_runs_the_program_that_is_there(folder: pathlib.Path) -> None:
    (folder / "program" / "mp4judge").symlink_to("/bin/echo")
    done = run("-m", "mp4judge", "-r", "some files", PATH=str(folder / "program"))
    assert (done.returncode, done.stdout) == (0, "-r some files\n")


def test_the_module_does_not_run_a_script_that_could_run_it(folder: pathlib.Path) -> None:
    script = folder / "program" / "mp4judge"
    script.write_text(f"#!/bin/sh\nexec {sys.executable} -m mp4judge \"$@\"\n")
    script.chmod(0o755)
    done = run("-m", "mp4judge", str(folder / "clear.mp4"), PATH=str(folder / "program"))
    assert (done.returncode, done.stdout) == (0, f"{folder}/clear.mp4: clear\n")


@pytest.mark.parametrize("block", re.findall(r"```python.*?\n(.*?)```", README.read_text(), re.S))
def test_every_block_of_the_readme_runs(block: str, folder: pathlib.Path) -> None:
    data = boxes.film([5, 3, 9], sync=(1,))
    (folder / "film.mp4").write_bytes(data)
    environment = {**os.environ, "PYTHONPATH": str(PACKAGE.parent)}
    done = subprocess.run(
        [sys.executable, "-W", "error", "-c", block],
        cwd=folder,
        env=environment,
        capture_output=True,
        text=True,
        check=False,
    )
    assert (done.returncode, done.stderr) == (0, "")
    assert done.stdout
