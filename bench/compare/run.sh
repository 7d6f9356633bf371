#!/usr/bin/env bash
# Compares mp4judge with other tools on files of known answer and writes docs/comparison.md:
#
#   bench/compare/run.sh [OUT]     OUT is another file to write
#
# Installs what is missing (Debian); a tool that cannot be installed is left out.
set -uo pipefail
source "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/../../scripts/setup.sh"

out=${1:-$root/docs/comparison.md}
lock_build
install_needs "${build_needs[@]}" python3:python3
for need in ffprobe:ffmpeg mediainfo:mediainfo exiftool:libimage-exiftool-perl \
  AtomicParsley:atomicparsley; do
  (install_needs "$need") || say "going on without ${need#*:}"
done
build release mp4judge || exit 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
python3 "$root/bench/compare/compare.py" "$root/build/release/bin/mp4judge" "$work" >"$work/page" &&
  mv "$work/page" "$out"
