#!/usr/bin/env bash
# The Python package on the library of the build: check_python.sh CASE SOURCE BUILD
#   tests    pytest
#   types    mypy, at its strictest, for the oldest Python that is supported
#   memory   calls of every kind leave the memory as it was
set -euo pipefail
case=$1 source=$2 build=$3
package=$source/bindings/python
export MP4JUDGE_LIBRARY=$build/libmp4judge.so PYTHONDONTWRITEBYTECODE=1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The Python that the distribution's packages are for; another one may come first in PATH.
python=
for python in python3 /usr/bin/python3; do
  "$python" -c 'import numpy, pytest' 2>/dev/null && break
done

case_tests() {
  "$python" -m pytest -q -p no:cacheprovider -W error --basetemp="$work/pytest" \
    -c /dev/null --rootdir="$package" "$package/tests"
}

case_types() {
  cd "$package"
  mypy --strict --python-version 3.9 --cache-dir="$build/mypy" mp4judge tests
}

case_memory() { "$python" "$package/tests/memory_check.py" 20000; }

"case_$case"
