#!/usr/bin/env bash
# Every header with a source has a test of its own: check_tests_exist.sh ROOT
# The test stands in a file of the header's name (FooTest.cpp, or FooRandomTest.cpp) and its suite is
# named after the file or after something that the header declares. Mentioning it is no test.
set -euo pipefail
cd "$1"

# What a suite cannot test, and what does instead. The library's own logging function is weak and
# gives way to that of whoever links it, as the unit tests do; a program in C does the same.
declare -A instead=([platform/ZR_Log.h]=tests/consumers/c/main.c)

failed=0 seen=0
while read -r header; do
  [[ -f ${header%.h}.cpp ]] || continue
  seen=$((seen + 1))
  name=$(basename "$header" .h)
  [[ -z ${instead[$header]:-} || ! -f ${instead[$header]} ]] || continue
  found=
  while read -r suite; do
    [[ $suite != *"$name"* ]] && ! sed 's,//.*,,' "$header" | grep -qw "$suite" || found=$suite
  done < <(find tests -name "*$name*Test.cpp" -exec \
    sed -nE 's/^(TYPED_)?TEST(_[FP])?\((\w+),.*/\3/p' {} + | sort -u)
  [[ -z $found ]] || continue
  echo "$header: no test of it in a file tests/**/${name}Test.cpp"
  failed=1
done < <(for folder in io codecs platform boxes demux iso inspect samples door; do
  [[ ! -d $folder ]] || find "$folder" -name '*.h'
done | sort)

((seen > 0)) || { echo "no header was found at all"; exit 1; }
echo "$seen headers with a source"
exit $failed
