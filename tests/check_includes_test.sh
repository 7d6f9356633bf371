#!/usr/bin/env bash
# The include check itself: it passes a sound tree and names each kind of violation.
set -euo pipefail
check=$(dirname "${BASH_SOURCE[0]}")/check_includes.sh
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
mkdir "$tree"/{io,codecs,platform,boxes,demux,tools,tests}
touch "$tree"/{io/A.h,codecs/C.h,platform/P.h,demux/D.h,tests/Bytes.h}

# accepts FOLDER HEADER / rejects FOLDER HEADER: a file in FOLDER that includes HEADER.
probe() {
  echo "#include \"$2\"" >"$tree/$1/Probe.h"
  local result=0
  bash "$check" "$tree" >"$tree/log" || result=1
  rm "$tree/$1/Probe.h"
  return $result
}
accepts() { probe "$@" || { echo "FAILED: $1 should reach $2"; exit 1; }; }
rejects() {
  ! probe "$@" || { echo "FAILED: $1 reached $2"; exit 1; }
  grep -q "$1/Probe.h:1:" "$tree/log" || { echo "FAILED: the place is not named"; exit 1; }
}

accepts boxes io/A.h
accepts boxes codecs/C.h
accepts demux demux/D.h
accepts tools demux/D.h
accepts platform io/A.h
rejects io codecs/C.h
rejects io demux/D.h
rejects boxes demux/D.h
rejects codecs platform/P.h
rejects boxes tests/Bytes.h
rejects boxes io/Missing.h
rejects io A.h
