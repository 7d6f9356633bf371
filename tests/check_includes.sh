#!/usr/bin/env bash
# Every project include goes to the same folder or to a lower floor: check_includes.sh ROOT
# docs/design.md has the table of floors.
set -euo pipefail
cd "$1"

declare -A floor=(
  [io]=0 [codecs]=1 [platform]=1 [boxes]=2 [demux]=3 [inspect]=4 [tools]=5 [bindings]=5)

seen=0 failed=0
while IFS=: read -r file line text; do
  from=${file%%/*}
  header=$(sed -E 's/^[^"]*"([^"]*)".*/\1/' <<<"$text")
  to=${header%%/*}
  seen=$((seen + 1))
  if [[ -z ${floor[$to]:-} ]]; then
    echo "$file:$line: \"$header\" is outside the floors"
  elif [[ $from != "$to" ]] && ((${floor[$to]} >= ${floor[$from]})); then
    echo "$file:$line: $from may not include \"$header\""
  elif [[ ! -f $header ]]; then
    echo "$file:$line: \"$header\" does not exist; includes start at the project's root"
  else
    continue
  fi
  failed=1
done < <(for folder in "${!floor[@]}"; do
  [[ ! -d $folder ]] || grep -rnE '^[[:space:]]*#[[:space:]]*include[[:space:]]*"' "$folder" \
    --include='*.h' --include='*.c' --include='*.cpp' || true
done)

((seen > 0)) || { echo "no include was found at all"; exit 1; }
echo "$seen includes checked"
exit $failed
