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

# expect NAME CODE FILE: runs an example; compares its output with what stands on stdin.
expect() {
  local code=0 answer
  answer=$("$build/examples/example_$1" "$3" 2>/dev/null) || code=$?
  [[ $answer == "$(cat)" && $code == "$2" ]] || {
    printf '%s %s: exit status %s\n%s\n' "$1" "$3" "$code" "$answer"
    exit 1
  }
}
size() { stat -c %s "$1"; }

expect inspect 0 "$clear" <<<clear
# header TYPE: where the header of the only box of this type begins.
header() { echo $(($(grep -abo "$1" "$protected" | head -1 | cut -d: -f1) - 4)); }
expect inspect 1 "$protected" <<END
protected
  moov/trak[1]/mdia/minf/stbl/stsd/drms[1] at byte $(header drms): The format "drms" of a sample entry is for protected media.
  moov/trak[1]/mdia/minf/stbl/stsd/drms[1]/sinf at byte $(header sinf): A protection scheme information box that names no scheme.
END
expect inspect 2 "$build/no such file" <<END
undetermined (it cannot be opened: No such file or directory)
END

expect inspect_tracks 0 "$clear" <<END
clear
track 1 soun: mp4a
END
expect inspect_tracks 1 "$protected" <<END
protected
track 1 soun: drms (was mp4a) no scheme
END
expect inspect_tracks 2 "$build/no such file" <<<undetermined

expect inspect_sources 0 "$protected" <<END
callbacks: protected
reads: 1
memory: protected
END

expect inspect_ranges 0 "$protected" <<END
needs bytes 0 to $(($(size "$protected") - 1))
protected
END
