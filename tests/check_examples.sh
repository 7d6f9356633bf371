#!/usr/bin/env bash
# The programs of examples/ do what the README says: check_examples.sh BUILD
set -euo pipefail
build=$1
clear=$build/samples/clear.m4a protected=$build/samples/protected.m4a

[[ $("$build/examples/example_judge" "$clear") == "clear or not readable" ]]
[[ $("$build/examples/example_judge" "$protected") == "protected" ]]

# 43 frames of 4 bytes, one after the other up to the end of the file.
list=$("$build/examples/example_list_samples" "$clear")
first=$(($(stat -c %s "$clear") - 43 * 4))
[[ $(wc -l <<<"$list") == 43 ]]
[[ $(head -1 <<<"$list") == "track 1: offset $first, 4 bytes, time 0" ]]
