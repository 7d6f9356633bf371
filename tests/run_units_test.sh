#!/usr/bin/env bash
# The runner of unit tests itself, on a program that stands in for one of GoogleTest's.
set -euo pipefail
runner=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)/run_units.sh
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

# Each test does what its name says. $LEAK makes the program end badly after all of them.
cat >program <<'PROGRAM'
#!/usr/bin/env bash
tests=(A.Passes A.Fails B/0.Passes Many/B.Passes/1 C.Crashes C.Exits C.Hangs Z.Passes)
if [[ $1 == --gtest_list_tests ]]; then
  printf '%s\n' 'Running main()' A. '  Passes' '  Fails' 'B/0.  # TypeParam = int' '  Passes' Many/B. \
    '  Passes/1  # GetParam() = 1' C. '  Crashes' '  Exits' '  Hangs' Z. '  Passes'
  exit
fi
chosen=$(<"${1#--gtest_flagfile=}") code=0 ran=0
for test in "${tests[@]}"; do
  [[ ":${chosen#*=}:" == *":$test:"* ]] || continue
  ran=$((ran + 1))
  echo "[ RUN      ] $test"
  case $test in
    *Fails) printf 'the reason\n[  FAILED  ] %s\n' "$test"; code=1 ;;
    *Crashes) echo 'the last words'; kill -SEGV $$ ;;
    *Exits) exit 0 ;;
    *Hangs) sleep 20 ;;
    *) echo "noise of $test"; echo "[       OK ] $test" ;;
  esac
done
echo "[==========] $ran tests from 1 test suite ran."
if ((code)); then printf '[  FAILED  ] 1 test, listed below:\n[  FAILED  ] A.Fails\n'; fi
if [[ -n ${LEAK:-} ]]; then echo 'a leak' && exit 23; fi
exit $code
PROGRAM
chmod +x program
export MP4JUDGE_UNITS_TIMEOUT=4

die() {
  echo "FAILED: $*"
  cat output
  exit 1
}
# run CODE COUNT ONLY [PART PARTS]
run() {
  local code=0
  MP4JUDGE_ONLY=$3 bash "$runner" ./program x "${4:-1}" "${5:-1}" >output 2>&1 || code=$?
  [[ $code == "$1" && $(<"units/x.${4:-1}.count") == "$2" ]] ||
    die "'$3' gave $code and $(<"units/x.${4:-1}.count"), not $1 and $2"
}
shows() { grep -qF -e "$1" output || die "'$1' is not shown"; }

run 0 "4 0" Passes
[[ ! -s output ]] || die "passing tests are shown"
run 1 "4 4" .
shows "the reason"
shows "the last words"
shows "C.Exits ended the process with code 0"
shows "C.Hangs ended the process with code 124"
! grep -q noise output || die "passing tests are shown among failed ones"
LEAK=1 run 1 "4 1" Passes
shows "a leak"
run 0 "0 0" NoSuchTest
# Two parts have all of it between them.
run 0 "2 0" Passes 1 2
run 0 "2 0" Passes 2 2
