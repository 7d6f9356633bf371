#!/usr/bin/env bash
# Every box source has a test of the same name: check_tests_exist.sh ROOT
set -euo pipefail
cd "$1"
failed=0
for source in io/*.cpp codecs/*.cpp boxes/*.cpp; do
  name=$(basename "$source" .cpp)
  grep -qlE "(^|[^A-Za-z])$name([^A-Za-z]|$)" tests/*Test.cpp || { echo "no test mentions $name"; failed=1; }
done
exit $failed
