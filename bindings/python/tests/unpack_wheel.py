"""unpack_wheel.py WHEEL FOLDER: as an installer does, hashes checked."""

from __future__ import annotations

import base64
import csv
import hashlib
import os
import sys
import zipfile


def main() -> int:
    wheel, folder = sys.argv[1:]
    with zipfile.ZipFile(wheel) as archive:
        names = archive.namelist()
        (record,) = (name for name in names if name.endswith(".dist-info/RECORD"))
        rows = list(csv.reader(archive.read(record).decode().splitlines()))
        assert [row[0] for row in rows] == names, "the record lists other files"
        for name, digest, size in rows[:-1]:
            data = archive.read(name)
            sha256 = base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=")
            assert digest == "sha256=" + sha256.decode() and int(size) == len(data), name
            path = archive.extract(name, folder)
            os.chmod(path, archive.getinfo(name).external_attr >> 16 & 0o777)
        assert rows[-1] == [record, "", ""]
    return 0


if __name__ == "__main__":
    sys.exit(main())
