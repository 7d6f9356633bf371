#!/usr/bin/env bash
# The include check itself: it passes a sound tree and names each kind of violation.
set -euo pipefail
check=$(dirname "${BASH_SOURCE[0]}")/check_includes.sh
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
for room in io codecs platform boxes/{base,tables,description,userdata,track,movie,fragments,cellar} \
  demux iso inspect samples include/mp4judge door tools bindings tests; do
  mkdir -p "$tree/$room"
  touch "$tree/$room/A.h"
done

# accepts FOLDER HEADER / rejects FOLDER HEADER: a file in FOLDER that includes HEADER.
probe() {
  echo "#include $2" >"$tree/$1/Probe.h"
  local result=0
  bash "$check" "$tree" >"$tree/log" || result=1
  rm "$tree/$1/Probe.h"
  return $result
}
accepts() { probe "$1" "\"$2\"" || { echo "FAILED: $1 should reach $2"; cat "$tree/log"; exit 1; }; }
rejects() {
  ! probe "$1" "\"$2\"" || { echo "FAILED: $1 reached $2"; exit 1; }
  grep -q "$1/Probe.h:1:" "$tree/log" || { echo "FAILED: the place is not named"; exit 1; }
}

# Down the floors, and inside a room.
accepts codecs io/A.h
accepts platform io/A.h
accepts boxes/base io/A.h
accepts boxes/description codecs/A.h
accepts demux demux/A.h
accepts iso io/A.h
accepts inspect iso/A.h
accepts samples iso/A.h
accepts door mp4judge/A.h
accepts door demux/A.h
accepts door inspect/A.h
accepts tools mp4judge/A.h
accepts bindings mp4judge/A.h
accepts tools tools/A.h
accepts bindings bindings/A.h
probe tools "<mp4judge/A.h>" || { echo "FAILED: tools should reach <mp4judge/A.h>"; exit 1; }

# Up, sideways, out of the house.
rejects io codecs/A.h
rejects io demux/A.h
rejects codecs platform/A.h
rejects boxes/movie demux/A.h
rejects demux door/A.h
rejects inspect samples/A.h
rejects door tools/A.h
rejects boxes/base tests/A.h
rejects boxes/base io/Missing.h
rejects door mp4judge/Missing.h
rejects io A.h
rejects tools bindings/A.h
! probe io "<mp4judge/A.h>" || { echo "FAILED: io reached <mp4judge/A.h>"; exit 1; }

# The rooms of the boxes go down as the floors do.
rooms=(base tables track movie fragments)
for ((i = 0; i < ${#rooms[@]}; i++)); do
  for ((k = 0; k < ${#rooms[@]}; k++)); do
    if ((k <= i)); then verdict=accepts; else verdict=rejects; fi
    $verdict "boxes/${rooms[i]}" "boxes/${rooms[k]}/A.h"
  done
done
rejects boxes/tables boxes/description/A.h
rejects boxes/description boxes/userdata/A.h
rejects boxes/userdata boxes/tables/A.h
rejects boxes/cellar io/A.h
rejects boxes/track boxes/cellar/A.h

# Never from wing to wing, whatever the floor.
rejects demux iso/A.h
rejects boxes/fragments iso/A.h
rejects inspect boxes/base/A.h
rejects samples boxes/tables/A.h
rejects iso boxes/base/A.h

# Public headers stand alone.
accepts include/mp4judge mp4judge/A.h
rejects include/mp4judge io/A.h

# The top floor goes through the door as users do: public headers alone, in quotes or brackets.
for room in io codecs platform boxes/base demux iso inspect samples door; do
  rejects tools "$room/A.h"
  rejects bindings "$room/A.h"
  ! probe tools "<$room/A.h>" || { echo "FAILED: tools reached <$room/A.h>"; exit 1; }
done
