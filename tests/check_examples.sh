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

# AAC frames of 4 bytes get 7 bytes of ADTS each; what is not video has no key frames.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$build/examples/example_copy_track" "$clear" 1 "$work/clear.aac"
[[ $(stat -c %s "$work/clear.aac") == $((43 * 11)) ]]
! "$build/examples/example_copy_track" "$clear" 9 "$work/none" 2>/dev/null
[[ $("$build/examples/example_key_frames" "$clear") == track,sample,seconds,offset,bytes ]]
! "$build/examples/example_key_frames" "$build/no such file" >/dev/null 2>&1

# Copies play: as many frames come out as went in, where there is a program to say so.
command -v ffmpeg >/dev/null && command -v ffprobe >/dev/null || exit 0
# frames KIND FILE
frames() {
  ffprobe -v error -count_packets -select_streams "$1" -show_entries stream=nb_read_packets \
    -of csv=p=0 "$2" | tr -d ','
}
# copied CODEC EXTENSION: a second of test pictures, copied out of a movie
copied() {
  ffmpeg -v error -f lavfi -i testsrc=d=1:r=25:s=128x96 -c:v "$1" -g 10 -pix_fmt yuv420p \
    "$work/$2.mp4" 2>/dev/null || return 0
  "$build/examples/example_copy_track" "$work/$2.mp4" 1 "$work/copy.$2"
  [[ $(frames v "$work/copy.$2") == 25 ]]
  ffmpeg -v error -xerror -i "$work/copy.$2" -f null - 2>"$work/errors"
  [[ ! -s $work/errors ]]
}
copied libx264 h264
copied libx265 hevc
if ffmpeg -v error -f lavfi -i sine=d=1 -c:a aac "$work/sine.m4a"; then
  "$build/examples/example_copy_track" "$work/sine.m4a" 1 "$work/sine.aac"
  [[ $(frames a "$work/sine.aac") == "$(frames a "$work/sine.m4a")" ]]
  ffmpeg -v error -xerror -i "$work/sine.aac" -f null - 2>"$work/errors"
  [[ ! -s $work/errors ]]
fi
# Key frames are where the prober has them.
if [[ -f $work/h264.mp4 ]]; then
  "$build/examples/example_key_frames" "$work/h264.mp4" | tail -n +2 | cut -d, -f4 >"$work/ours"
  ffprobe -v error -select_streams v -show_entries packet=pos,flags -of csv=p=0 "$work/h264.mp4" |
    grep K | cut -d, -f1 >"$work/theirs"
  cmp "$work/ours" "$work/theirs"
fi
