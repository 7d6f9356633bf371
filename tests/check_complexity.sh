#!/usr/bin/env bash
# Twice the input may take at most 2.2 times the instructions: check_complexity.sh PROGRAM OPERATION
# The program prints "SHAPE SIZE" for each measured call; callgrind writes one count for each.
set -euo pipefail
program=$1 operation=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

export TMPDIR=$work
valgrind --tool=callgrind --toggle-collect=MeasuredOperation --dump-after=MeasuredOperation \
  --callgrind-out-file="$work/count" "$program" "$operation" >"$work/cases" 2>"$work/log" ||
  { cat "$work/log" && exit 1; }

failed=0 number=0 before=0
while read -r shape size; do
  number=$((number + 1))
  [[ -f $work/count.$number ]] || { echo "FAILED: no call was counted" && exit 1; }
  count=$(sed -n 's/^totals: //p' "$work/count.$number")
  if ((number % 2 == 1)); then
    before=$count
    continue
  fi
  printf '%s of %s: %s, twice as much: %s\n' "$operation" "$shape" "$before" "$count"
  # A count of next to nothing would mean that the wrong thing was measured.
  if ((before < 10000 || count * 10 > before * 22)); then
    echo "FAILED: $shape at $size"
    failed=1
  fi
done <"$work/cases"
((number > 0 && number % 2 == 0)) || { echo "FAILED: nothing measured" && exit 1; }
exit $failed
