#!/usr/bin/env bash
# Files that ffmpeg encrypts by Common Encryption, and their clear twins: check_ffmpeg_cenc.sh TOOL
set -euo pipefail
tool=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
failed=0
key_id=0f0e0d0c0b0a09080706050403020100

# make FILE OPTION...: one second of picture and sound.
make() {
  local file=$1
  shift
  ffmpeg -hide_banner -loglevel error -nostdin -y -f lavfi -i testsrc=duration=1:size=64x64:rate=5 \
    -f lavfi -i sine=duration=1 -c:v mpeg4 -c:a aac "$@" "$file"
}
# judge CODE FILE PATTERN: the exit code of the tool, and what its JSON says without spaces.
judge() {
  local want=$1 file=$2 pattern=$3 code=0
  "$tool" --json "$file" >json || code=$?
  if [[ $code != "$want" ]] || ! tr -d ' \n' <json | grep -q -- "$pattern"; then
    echo "FAILED: $file: exit code $code, not $want, or no '$pattern' in:"
    cat json
    failed=1
  fi
}

encrypted=(-encryption_scheme cenc-aes-ctr -encryption_key 00112233445566778899aabbccddeeff
  -encryption_kid "$key_id")
fragmented=(-movflags frag_keyframe+empty_moov+default_base_moof)
make clear.mp4
make clear_fragmented.mp4 "${fragmented[@]}"
make cenc.mp4 "${encrypted[@]}"
make cenc_fast.mp4 "${encrypted[@]}" -movflags faststart
make cenc_fragmented.mp4 "${encrypted[@]}" "${fragmented[@]}"

judge 0 clear.mp4 '"verdict":"clear"'
judge 0 clear_fragmented.mp4 '"verdict":"clear"'
for file in cenc.mp4 cenc_fast.mp4 cenc_fragmented.mp4; do
  judge 1 "$file" '"schemes":\["cenc"\]'
  judge 1 "$file" '"format":"encv"'
  judge 1 "$file" '"format":"enca"'
  tr -d ' \n-' <json | grep -q "$key_id" || { echo "FAILED: $file: no key id"; failed=1; }
done
# The fragments of this writer do not say that they are encrypted: alone they are not clear.
from=$(grep -abo moof cenc_fragmented.mp4 | head -1 | cut -d: -f1)
tail -c +$((from - 3)) cenc_fragmented.mp4 >segment.m4s
judge 2 segment.m4s '"verdict":"undetermined"'
# Cut in its movie box, no clear file stays clear.
head -c $(($(stat -c %s clear.mp4) - 100)) clear.mp4 >cut.mp4
judge 2 cut.mp4 '"verdict":"undetermined"'
exit $failed
