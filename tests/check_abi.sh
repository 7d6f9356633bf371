#!/usr/bin/env bash
# The C interface is binary compatible with what was recorded: check_abi.sh SOURCE [record]
# Compared are the functions of the C headers, what they take and give, and every structure and enum
# that can be reached from them. New functions do not count; all else fails. A change that is meant,
# such as a member at the end of a structure, is recorded with "record", and seen in the review.
set -euo pipefail
source=$1 action=${2:-compare}
recorded=$source/cmake/mp4judge.abi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# dump INCLUDE: what a library has that has every function of the headers, and the types as a C
# compiler sees them. That needs no build of the real one, and no debug information in it.
dump() {
  (
    cd "$1"
    python3 - mp4judge/*.h >"$work/stub.c" <<'PROGRAM'
import re, sys
count = 0
for name in sys.argv[1:]:
    text = re.sub(r"//[^\n]*|/\*.*?\*/", "", open(name).read(), flags=re.S)
    print(f'#include "{name}"')
    for declared in re.findall(r"^MP4JUDGE_API ([^;{]+\([^;{]*\));", text, re.M):
        count += 1
        print(declared, "{ __builtin_trap(); }")
sys.exit(count < 50)
PROGRAM
    "${CC:-cc}" -std=c99 -g -shared -fPIC -w -I. -Wl,-soname,libmp4judge.so.1 \
      -ffile-prefix-map="$work=." "$work/stub.c" -o "$work/libmp4judge.so.1"
    abidw --no-corpus-path --no-comp-dir-path --no-show-locs "$work/libmp4judge.so.1"
  )
}

if [[ $action == record ]]; then
  dump "$source/include" >"$recorded"
  exit
fi
dump "$source/include" >"$work/now.abi"
abidiff --no-added-syms "$recorded" "$work/now.abi" || {
  echo "FAILED: the C interface has changed. If that is meant: tests/check_abi.sh . record"
  exit 1
}
# A check that finds nothing proves nothing: a member less, a member of another type, a function less.
for change in '/^  int is_protected;/d' 's/^  uint64_t offset; /  uint32_t offset; /' \
  's/^MP4JUDGE_API int mp4judge_report_everything/static int unused/'; do
  mkdir -p "$work/changed/mp4judge"
  for header in "$source"/include/mp4judge/*.h; do
    sed "$change" "$header" >"$work/changed/mp4judge/${header##*/}"
  done
  dump "$work/changed" >"$work/changed.abi"
  ! abidiff --no-added-syms "$recorded" "$work/changed.abi" >/dev/null || {
    echo "FAILED: a change goes unnoticed: $change"
    exit 1
  }
done
