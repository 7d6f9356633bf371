#!/usr/bin/env bash
# Runs unit tests in one process and counts them: run_units.sh PROGRAM NAME PART PARTS
# Of the tests whose name matches $MP4JUDGE_ONLY (all, when that is not set) it takes every PARTS-th.
# Leaves units/NAME.PART.log, the whole output, and units/NAME.PART.count, "PASSED FAILED"; prints
# what failed and nothing else. A test that ends the process or hangs has failed, and the tests
# behind it run in a process of their own.
set -euo pipefail
program=$1 parts=$4 part=$3
mkdir -p units
out=units/$2.$part
: >"$out.log"

"$program" --gtest_list_tests >"$out.list"
awk '{sub(/ *#.*/, "")} /^[^ ].*\.$/ {suite = $1; next} /^  / {print suite $1}' "$out.list" |
  { grep -E -e "${MP4JUDGE_ONLY:-.}" || true; } |
  awk -v part="$part" -v parts="$parts" 'NR % parts == part % parts' >"$out.all"
cp "$out.all" "$out.left"

# marked MARK...: the tests that the log has a line with one of these marks of.
marked() { sed -nE "s/.*\[ +($1) +\] ([^ ,]+\.[^ ,]+).*/\2/p" "$out.log"; }
# without LIST: the lines of standard input that LIST has not.
without() { grep -vxFf "$1" || true; }

code=0
while [[ -s $out.left ]]; do
  { printf -- '--gtest_filter=' && paste -sd: "$out.left"; } >"$out.flags"
  code=0
  timeout -k 5 "${MP4JUDGE_UNITS_TIMEOUT:-300}" "$program" "--gtest_flagfile=$out.flags" \
    --gtest_color=no --gtest_print_time=0 >>"$out.log" 2>&1 </dev/null || code=$?
  without <(marked 'OK|FAILED') <"$out.left" >"$out.rest"
  # Of those without an end, the one that began has ended the process.
  broken=$(marked RUN | grep -xFf "$out.rest" | tail -1) || break
  printf '\n[  FAILED  ] %s ended the process with code %s\n' "$broken" "$code" >>"$out.log"
  grep -vxF "$broken" "$out.rest" >"$out.left" || break
done

passed=$(comm -12 <(marked OK | sort -u) <(without <(marked FAILED) <"$out.all" | sort -u) | wc -l)
failed=$(($(wc -l <"$out.all") - passed))
awk '/\[ RUN      \]/ {text = ""} {text = text $0 "\n"} /\[       OK \]/ {text = ""}
  /\[  FAILED  \] [^ ,]+\./ && text ~ /\[ RUN      \]/ {printf "%s", text; text = ""}' "$out.log"
if [[ -s $out.rest ]] 2>/dev/null; then without <(marked 'OK|FAILED') <"$out.rest" | sed 's/$/: never ran/'; fi
# Such as a leak, which shows when everything has run.
if ((code != 0 && failed == 0)); then
  failed=1
  echo "$program ended with code $code after its tests:"
  sed '1,/^\[==========\].*ran\./d' "$out.log"
fi
echo "$passed $failed" >"$out.count"
((failed == 0))
