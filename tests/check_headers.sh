#!/usr/bin/env bash
# Every source of the library has a header of its own name: check_headers.sh ROOT
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
exit $failed
