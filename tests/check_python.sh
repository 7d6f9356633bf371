#!/usr/bin/env bash
# The Python package on the library of the build: check_python.sh CASE SOURCE BUILD
#   tests    pytest
#   types    mypy, at its strictest, for the oldest Python that is supported
#   memory   calls of every kind leave the memory as it was
#   wheel    wheel and sdist are built; what they bring works without anything else
#   scan     the example over a tree and an HTTP listing, on a cluster of two workers
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
  mypy --strict --python-version 3.9 --cache-dir="$build/mypy" mp4judge tests backend.py
}

case_memory() { "$python" "$package/tests/memory_check.py" 20000; }

case_wheel() {
  local one=$work/one two=$work/two site=$work/site
  "$python" "$package/backend.py" wheel "$one" "$build" 2>"$work/log" || { cat "$work/log"; return 1; }
  "$python" "$package/backend.py" sdist "$one"
  # From the sdist the same wheel comes.
  mkdir "$work/source"
  tar -xzf "$one"/mp4judge-*.tar.gz -C "$work/source"
  (cd "$work"/source/mp4judge-* && "$python" bindings/python/backend.py wheel "$two" "$build" 2>"$work/log") ||
    { cat "$work/log"; return 1; }
  cmp "$one"/*.whl "$two"/*.whl
  [[ -f $(echo "$work"/source/mp4judge-*/PKG-INFO) ]]
  diff <(cd "$source" && find io door tools -name '*.cpp' | sort) \
    <(cd "$work"/source/mp4judge-* && find io door tools -name '*.cpp' | sort)

  "$python" "$package/tests/unpack_wheel.py" "$one"/*.whl "$site"
  unset MP4JUDGE_LIBRARY
  export PYTHONPATH=$site
  cd "$work"
  local samples=$build/samples
  [[ $("$python" -c 'import sys, mp4judge; print(mp4judge.__file__, *map(mp4judge.judge, sys.argv[1:]))' \
    "$samples/clear.m4a" "$samples/protected.m4a") == "$site/mp4judge/__init__.py clear protected" ]]
  # The command is the one inside.
  [[ $("$python" -m mp4judge --version) == "$(cd "$build" && bin/mp4judge --version)" ]]
  mv "$site"/mp4judge/lib* "$work/away"
  ! "$python" -m mp4judge --version 2>/dev/null
}

case_scan() { "$python" "$package/tests/scan_check.py" "$source/examples/scan_dask.py"; }

"case_$case"
