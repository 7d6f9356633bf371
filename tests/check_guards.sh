#!/usr/bin/env bash
# No sane file is read differently for a limit, nor does judging differ from opening:
#   check_guards.sh DIGEST UNLIMITED_DIGEST FILE-OR-FOLDER...
# The two programs are the same but for the limits of the library inside. Without files, movies of
# many shapes are made. Run it over a library of media to see that none of it meets a limit.
set -euo pipefail
limited=$1 unlimited=$2
shift 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
if (($# == 0)); then
  mkdir "$work/movies"
  "$limited" --make "$work/movies"
  set -- "$work/movies"
  # The two do differ where a limit is met.
  mkdir "$work/beyond"
  "$limited" --beyond "$work/beyond"
  ! cmp -s <("$limited" "$work/beyond"/*) <("$unlimited" "$work/beyond"/*) ||
    { echo "FAILED: no limit is out of reach" && exit 1; }
fi

find "$@" -type f -print0 | sort -z >"$work/files"
status=0
xargs -0 -a "$work/files" "$limited" >"$work/limited" || status=1
xargs -0 -a "$work/files" "$unlimited" >"$work/unlimited" || status=1
diff "$work/limited" "$work/unlimited" || status=1
opened=$(grep -c ': 1 ' "$work/limited" || true)
echo "$(tr -cd '\0' <"$work/files" | wc -c) files, $opened open"
((opened > 0)) || status=1
exit $status
