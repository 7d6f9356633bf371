#!/usr/bin/env bash
# What the pages say is so: check_docs.sh SOURCE BUILD [[--record] PAGE...]
# Runs the code blocks of docs/ and of the Python package's page, as tests/blocks.sh has them, with what
# BUILD installs. README.md and CONTRIBUTING.md, which build the project, are check_readme.sh's.
# With --record, what the commands of the pages' `console` blocks print replaces what is there.
set -euo pipefail
source=$(cd "$1" && pwd) build=$(cd "$2" && pwd)
source "$source/tests/blocks.sh"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix clear=film.mp4 folder=$work/library out=$work/out

# Where a page's reader is: in the project, with the files that the pages show. What the blocks write
# does not end up in the project.
here=$work/here
mkdir -p "$here/build" "$folder"
find "$source" -mindepth 1 -maxdepth 1 ! -name build ! -name '.*' -exec ln -s -t "$here" {} +
ln -s "$build" "$here/build/test"
cd "$here"
cmake --install "$build" --prefix "$prefix" >"$work/log" || fail "$(<"$work/log")"
"$build/tests/protection_files" .
for name in film.mp4 clip.mp4 clip.m4v "$folder/a.m4a" "$folder/b.m4a"; do
  cp "$build/samples/clear.m4a" "$name"
done
export PATH=$prefix/bin:$PATH PYTHONPATH=$source/bindings/python PYTHONDONTWRITEBYTECODE=1
export MP4JUDGE_LIBRARY=$build/libmp4judge.so
# The Python that the distribution's packages are for; another one may come first in PATH.
for python in python3 /usr/bin/python3; do
  "$python" -c 'import numpy' 2>/dev/null && break
done

record() {
  local line inside= printed=
  while IFS= read -r line; do
    [[ $line != '```'* ]] || inside= printed=
    [[ $line != '```console'* ]] || inside=1
    if [[ -n $inside && $line == '$ '* ]]; then
      echo "$line"
      bash -c "$(in_place <<<"${line#* }")" 2>&1 || true
      printed=1
    fi
    [[ -n $printed ]] || echo "$line"
  done <"$1" >"$work/recorded"
  cat "$work/recorded" >"$1"
}

pages=("${@:3}")
if [[ ${pages-} == --record ]]; then
  for page in "${pages[@]:1}"; do
    record "$page"
  done
  exit
fi
((${#pages[@]})) || pages=(docs/*.md bindings/python/README.md)
ran=0
for page in "${pages[@]}"; do
  blocks=$work/blocks/$page
  split_blocks "$page" "$blocks"
  # A block that is only indented would not be seen here.
  awk '/^ *([-*]|[0-9]+\.) / {list = 1} /^[^ ]/ && !/^([-*]|[0-9]+\.) / {list = 0}
    /^ *```/ {inside = !inside}
    before == "" && /^    [^ ]/ && !list && !inside {exit 1} {before = $0}' "$page" ||
    fail "$page has a block without backticks"
  while read -r link; do
    [[ -e $(dirname "$page")/${link%%#*} ]] || fail "$page links to $link"
  done < <(grep -oE '\]\([A-Za-z.][^):]*\)' "$page" | sed 's/^](//; s/)$//')
  for block in "$blocks"/*; do
    [[ -e $block && $block != *.info ]] || continue
    echo "== $page ${block##*/}"
    left_out "$block" && continue
    run_block "$block"
    ran=$((ran + 1))
  done
done
# Every file that is made for a page is shown there.
for file in "$build"/protection/*; do
  grep -q "${file##*/}" docs/protection.md || fail "docs/protection.md does not show ${file##*/}"
done
(($# > 2 || ran > 20)) || fail "only $ran blocks were found"
