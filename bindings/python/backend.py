"""Builds wheel and sdist (PEP 517) with nothing but Python and CMake:

    pip wheel .        or        python3 bindings/python/backend.py wheel|sdist FOLDER [BUILD]

The wheel has the shared library and the command inside. BUILD is a build folder whose library and
command are taken, instead of building anew; pip takes it as --config-settings build=FOLDER."""

from __future__ import annotations

import base64
import gzip
import hashlib
import io
import os
import re
import subprocess
import sys
import sysconfig
import tarfile
import tempfile
import zipfile
from pathlib import Path
from typing import IO, Optional, cast

Settings = Optional[dict[str, str]]

ROOT = Path(__file__).resolve().parents[2]
PACKAGE = ROOT / "bindings" / "python" / "mp4judge"
LIBRARY = "libmp4judge.so.1"
# The date of every file in what is built, so that the same sources give the same bytes.
DATE = (1980, 1, 1, 0, 0, 0)


def version() -> str:
    header = (ROOT / "include" / "mp4judge" / "mp4judge.h").read_text()
    found = re.search(r'MP4JUDGE_VERSION_STRING "([0-9.]+)"', header)
    assert found, "the header has no version"
    return found[1]


def metadata() -> str:
    """PKG-INFO and METADATA: what pyproject.toml says."""
    project = (ROOT / "pyproject.toml").read_text()
    lines = ["Metadata-Version: 2.1", "Name: mp4judge", f"Version: {version()}"]
    lines += re.findall(r'^description = "(.*)"$', project, re.M)
    lines[3] = "Summary: " + lines[3]
    lines += [f"Requires-Python: {text}" for text in re.findall(r'^requires-python = "(.*)"', project, re.M)]
    extras = project.partition("[project.optional-dependencies]\n")[2].partition("\n\n")[0]
    for line in extras.splitlines():
        extra, _, needs = line.partition(" = ")
        lines.append(f"Provides-Extra: {extra}")
        needed = re.findall(r'"(.*?)"', needs)
        lines += [f'Requires-Dist: {need}; extra == "{extra}"' for need in needed]
    lines.append("Description-Content-Type: text/markdown")
    readme = (ROOT / "bindings" / "python" / "README.md").read_text()
    return "\n".join(lines) + "\n\n" + readme


def build(work: str, taken: str | None) -> dict[str, bytes]:
    """Library and command, by their names in the package: they lie as they would be installed, so
    that the one finds the other."""
    folder = Path(taken or work)
    if taken is None:
        options = ["-DCMAKE_BUILD_TYPE=Release", "-DMP4JUDGE_TESTS=OFF", "-DMP4JUDGE_EXAMPLES=OFF"]
        run("cmake", "-S", str(ROOT), "-B", work, *options)
        run("cmake", "--build", work, "--parallel", "--target", "mp4judge_library", "mp4judge")
    staged = Path(work) / "staged"
    prefix = ["--prefix", str(staged), "--strip", "--component"]
    for component in ("library", "tool"):
        run("cmake", "--install", str(folder), *prefix, component)
    found = [next(staged.rglob(LIBRARY)), staged / "bin" / "mp4judge"]
    return {path.relative_to(staged).as_posix(): path.read_bytes() for path in found}


def run(*command: str) -> None:
    subprocess.run(command, check=True, stdout=sys.stderr)


class Wheel:
    """A zip archive with the list of its files and their hashes."""

    def __init__(self, path: Path, info: str) -> None:
        self._archive = zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED)
        self._info = info
        self._record: list[str] = []

    def add(self, name: str, data: bytes, mode: int = 0o644) -> None:
        entry = zipfile.ZipInfo(name, DATE)
        entry.external_attr = (0o100000 | mode) << 16
        entry.compress_type = zipfile.ZIP_DEFLATED
        self._archive.writestr(entry, data)
        digest = base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()
        self._record.append(f"{name},sha256={digest},{len(data)}")

    def close(self) -> None:
        name = f"{self._info}/RECORD"
        self._archive.writestr(zipfile.ZipInfo(name, DATE), "\n".join([*self._record, f"{name},,\n"]))
        self._archive.close()


def build_wheel(
    wheel_directory: str, config_settings: Settings = None, metadata_directory: str | None = None
) -> str:
    platform = re.sub("[^a-z0-9_]", "_", sysconfig.get_platform())
    tag = f"py3-none-{platform}"
    info = f"mp4judge-{version()}.dist-info"
    name = f"mp4judge-{version()}-{tag}.whl"
    with tempfile.TemporaryDirectory() as work:
        built = build(work, (config_settings or {}).get("build"))
    wheel = Wheel(Path(wheel_directory) / name, info)
    for path in sorted(PACKAGE.glob("*.py")) + [PACKAGE / "py.typed"]:
        wheel.add(f"mp4judge/{path.name}", path.read_bytes())
    for file, data in built.items():
        wheel.add(f"mp4judge/{file}", data, 0o755)
    wheel.add(f"{info}/METADATA", metadata().encode())
    wheel.add(f"{info}/entry_points.txt", b"[console_scripts]\nmp4judge = mp4judge.__main__:main\n")
    head = f"Wheel-Version: 1.0\nGenerator: mp4judge\nRoot-Is-Purelib: false\nTag: {tag}\n"
    wheel.add(f"{info}/WHEEL", head.encode())
    wheel.close()
    return name


def sources() -> list[Path]:
    """What git knows; in an unpacked sdist, what came with it."""
    if (ROOT / ".git").exists():
        listed = subprocess.run(["git", "-C", str(ROOT), "ls-files", "-z"], stdout=subprocess.PIPE, check=True)
        found = [ROOT / os.fsdecode(name) for name in listed.stdout.split(b"\0") if name]
    else:
        inside = (path for path in ROOT.rglob("*") if path.relative_to(ROOT).parts[0] != "build")
        found = [path for path in inside if "__pycache__" not in path.parts]
    return sorted(path for path in found if path.is_file() and path.name != "PKG-INFO")


def build_sdist(sdist_directory: str, config_settings: Settings = None) -> str:
    base = f"mp4judge-{version()}"
    name = f"{base}.tar.gz"
    with open(Path(sdist_directory) / name, "wb") as file:
        with gzip.GzipFile("", "wb", fileobj=file, mtime=0) as packed:
            stream = cast(IO[bytes], packed)
            with tarfile.open(fileobj=stream, mode="w", format=tarfile.PAX_FORMAT) as archive:
                add(archive, f"{base}/PKG-INFO", metadata().encode(), 0o644)
                for path in sources():
                    mode = 0o755 if os.access(path, os.X_OK) else 0o644
                    add(archive, f"{base}/{path.relative_to(ROOT)}", path.read_bytes(), mode)
    return name


def add(archive: tarfile.TarFile, name: str, data: bytes, mode: int) -> None:
    entry = tarfile.TarInfo(name)
    entry.size = len(data)
    entry.mode = mode
    archive.addfile(entry, io.BytesIO(data))


def main() -> int:
    kind, folder, *taken = sys.argv[1:]
    Path(folder).mkdir(parents=True, exist_ok=True)
    settings = {"build": taken[0]} if taken else None
    print(build_wheel(folder, settings) if kind == "wheel" else build_sdist(folder, settings))
    return 0


if __name__ == "__main__":
    sys.exit(main())
