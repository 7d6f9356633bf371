#!/usr/bin/env bash
# Every source of the library has a header of its own name, and no two headers define a class of one
# name, which the linker would take for the same: check_headers.sh ROOT
# What stands behind the public headers (door/) is declared there, and inspect/ declares its families
# of readers together.
set -euo pipefail
cd "$1"
seen=0 failed=0
while IFS= read -r source; do
  seen=$((seen + 1))
  [[ ! -f ${source%.cpp}.h ]] || continue
  echo "$source has no header of its own name"
  failed=1
done < <(find io codecs platform boxes demux iso samples -name '*.cpp' 2>/dev/null)
((seen > 0)) || { echo "no source was found at all"; exit 1; }

definitions() {
  grep -rE '^(class|struct)( MP4JUDGE_API)? [^;]*\{' --include='*.h' \
    io codecs platform boxes demux iso inspect samples door 2>/dev/null |
    sed -E 's/:(class|struct)( MP4JUDGE_API)? ([A-Za-z0-9_:]+).*/ \3/'
}
while IFS= read -r name; do
  echo "$name is defined by more than one header:"
  definitions | grep -F " $name" | grep -E " $name\$"
  failed=1
done < <(definitions | cut -d ' ' -f 2 | sort | uniq -d)
exit $failed
