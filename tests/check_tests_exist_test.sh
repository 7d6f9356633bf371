#!/usr/bin/env bash
# The check itself: it takes a test of the class or of what its header declares, and nothing less.
set -euo pipefail
check=$(dirname "${BASH_SOURCE[0]}")/check_tests_exist.sh
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
mkdir -p "$tree"/{io,tests/io}
echo 'int Measure();  // not Weigh' >"$tree/io/Scale.h"
touch "$tree/io/Scale.cpp"

# probe FILE CONTENT: the check of a tree whose only test is FILE.
probe() {
  rm -f "$tree"/tests/io/*
  echo "$2" >"$tree/tests/io/$1"
  bash "$check" "$tree" >"$tree/log"
}
accepts() { probe "$@" || { echo "FAILED: $1 with $2 is a test"; exit 1; }; }
rejects() {
  ! probe "$@" || { echo "FAILED: $1 with $2 is no test"; exit 1; }
  grep -q "^io/Scale.h:" "$tree/log" || { echo "FAILED: the header is not named"; exit 1; }
}

accepts ScaleTest.cpp 'TEST(Scale, Weighs) {'
accepts ScaleTest.cpp 'TEST_F(Scale, Weighs) {'
accepts ScaleTest.cpp 'TEST_P(EveryScale, Weighs) {'
accepts ScaleTest.cpp 'TEST(Measure, Weighs) {'
accepts ScaleRandomTest.cpp 'TEST(Scale, Weighs) {'
rejects ScaleTest.cpp '// Scale is tested elsewhere.'
rejects ScaleTest.cpp '#include "io/Scale.h"'
rejects ScaleTest.cpp '// TEST(Scale, Weighs) {'
rejects ScaleTest.cpp 'TEST(Weigh, Measures) {'
rejects ScaleTest.cpp 'TEST(Other, Scale) {'
rejects OtherTest.cpp 'TEST(Scale, Weighs) {'
rejects Scale.cpp 'TEST(Scale, Weighs) {'

# Of one header a program is the test, as long as there is that program.
mkdir -p "$tree"/{platform,tests/consumers/c}
echo 'void ZRLogEx();' | tee "$tree"/platform/ZR_Log.{h,cpp} >"$tree/tests/consumers/c/main.c"
accepts ScaleTest.cpp 'TEST(Scale, Weighs) {'
rm "$tree/tests/consumers/c/main.c"
! probe ScaleTest.cpp 'TEST(Scale, Weighs) {' || { echo "FAILED: the program is gone"; exit 1; }
grep -q "^platform/ZR_Log.h:" "$tree/log" || { echo "FAILED: the header is not named"; exit 1; }
rm "$tree"/platform/*

# A header without a source has nothing to be missed, but a tree without headers was not checked.
rm "$tree"/io/*
touch "$tree/io/Only.h"
! bash "$check" "$tree" >/dev/null || { echo "FAILED: nothing was checked"; exit 1; }
