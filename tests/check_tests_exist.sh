#!/usr/bin/env bash
# Every class of the readers and boxes that has a source is met by a test: check_tests_exist.sh ROOT
set -euo pipefail
cd "$1"
failed=0
for header in io/mm*.h io/Mp4StreamReader.h codecs/*.h boxes/*/Box*.h boxes/base/Mp4Context.h demux/*.h; do
  name=$(basename "$header" .h)
  [[ -f ${header%.h}.cpp ]] || continue
  grep -rqE "(^|[^A-Za-z])$name([^A-Za-z]|$)" tests --include="*Test.cpp" && continue
  echo "no test mentions $name"
  failed=1
done
exit $failed
