#!/usr/bin/env bash
# Every project include stays in its room or goes to a lower floor, never from one wing to the other,
# and from the top floor to public headers alone: check_includes.sh ROOT
# docs/design.md has the table of floors.
set -euo pipefail
cd "$1"

declare -A floor=(
  [io]=0 [codecs]=1 [platform]=1
  [boxes/base]=2 [boxes/tables]=3 [boxes/description]=3 [boxes/userdata]=3
  [boxes/track]=4 [boxes/movie]=5 [boxes/fragments]=6 [demux]=7
  [iso]=2 [inspect]=7 [samples]=7
  [mp4judge]=8 [door]=9 [tools]=10 [bindings]=10)
rooms="io codecs platform boxes demux iso inspect samples mp4judge door tools bindings"
declare -A wing=([boxes]=host [demux]=host [iso]=people [inspect]=people [samples]=people)

# room FILE-OR-HEADER: the room it stands in, in $room. Public headers are known as "mp4judge/...".
room() {
  local path=${1#include/}
  room=${path%%/*}
  if [[ $room == boxes ]]; then
    path=${path#*/}
    room=boxes/${path%%/*}
  fi
}

# why_not FROM TO HEADER: what is wrong with this include, in $fault; empty when nothing is.
why_not() {
  local from=$1 to=$2 header=$3 path=$3
  local from_wing=${wing[${from%%/*}]:-} to_wing=${wing[${to%%/*}]:-}
  [[ $to != mp4judge ]] || path=include/$header
  fault=
  if [[ -z ${floor[$from]:-} ]]; then
    fault="stands in no room"
  elif [[ -z ${floor[$to]:-} ]]; then
    fault="\"$header\" is outside the floors"
  elif [[ $from == mp4judge && $to != mp4judge ]]; then
    fault="a public header may not include \"$header\""
  elif [[ ${floor[$from]} == 10 && $to != "$from" && $to != mp4judge ]]; then
    fault="$from may include public headers alone, not \"$header\""
  elif [[ -n $from_wing && -n $to_wing && $from_wing != "$to_wing" ]]; then
    fault="the $from_wing's wing may not include \"$header\""
  elif [[ $from != "$to" ]] && ((${floor[$to]} >= ${floor[$from]})); then
    fault="$from may not include \"$header\""
  elif [[ ! -f $path ]]; then
    fault="\"$header\" does not exist; includes start at the project's root or in include/"
  fi
}

includes() {
  local folder
  for folder in ${rooms/mp4judge/include}; do
    [[ ! -d $folder ]] ||
      grep -rnE "^[[:space:]]*#[[:space:]]*include[[:space:]]*(\"|<(${rooms// /|})/)" "$folder" \
        --include='*.h' --include='*.c' --include='*.cpp' || true
  done
}

seen=0 failed=0
while IFS=: read -r file line text; do
  header=${text#*[\"<]}
  header=${header%%[\">]*}
  room "$file"
  from=$room
  room "$header"
  seen=$((seen + 1))
  why_not "$from" "$room" "$header"
  [[ -n $fault ]] || continue
  echo "$file:$line: $fault"
  failed=1
done < <(includes)

((seen > 0)) || { echo "no include was found at all"; exit 1; }
echo "$seen includes checked"
exit $failed
