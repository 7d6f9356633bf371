#!/usr/bin/env bash
# The programs of examples/ do what the README says: check_examples.sh BUILD
set -euo pipefail
build=$1
clear=$build/samples/clear.m4a protected=$build/samples/protected.m4a

# judge ANSWER CODE FILE
judge() {
  local code=0 answer
  answer=$("$build/examples/example_judge" "$3") || code=$?
  [[ $answer == "$1" && $code == "$2" ]]
}
judge clear 0 "$clear"
judge protected 1 "$protected"
judge unreadable 2 "$build/no such file"

# 43 frames of 4 bytes, one after the other up to the end of the file.
list=$("$build/examples/example_list_samples" "$clear")
first=$(($(stat -c %s "$clear") - 43 * 4))
[[ $(wc -l <<<"$list") == 43 ]]
[[ $(head -1 <<<"$list") == "track 1: offset $first, 4 bytes, time 0" ]]
