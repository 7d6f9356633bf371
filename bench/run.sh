#!/usr/bin/env bash
# Measures everything and fills the tables of docs/performance.md and README.md.
#
#   bench/run.sh [--quick] [OUT]
#
# OUT is a folder for the two filled documents; without it they are changed in place. --quick does
# one round with few repetitions, to see that everything works, and writes to build/bench/quick.
# ROUNDS changes their number. Needs a quiet machine, some minutes and 400 MB of disk. Installs what is missing (Debian); a
# peer that cannot be installed is left out. The raw figures stay in build/bench/results.
set -uo pipefail
export LC_ALL=C
source "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/../scripts/setup.sh"
source "$root/bench/measure.sh"

rounds=${ROUNDS:-7} repeats=201 seconds=0.4 least=0.2 files=10000 sample=100 out=$root
if [[ ${1:-} == --quick ]]; then
  rounds=1 repeats=3 seconds=0.01 least=0.001 files=200 sample=3 out=$root/build/bench/quick
  shift
fi
out=${1:-$out}

lock_build
install_needs "${build_needs[@]}" -:libbenchmark-dev pkg-config:pkg-config python3:python3
# Each by itself: whatever cannot be had leaves a gap in the tables, no more.
for need in strace:strace -:libtag1-dev -:libmediainfo-dev mediainfo:mediainfo ffprobe:ffmpeg \
  -:libavformat-dev -:libgstreamer1.0-dev -:gstreamer1.0-plugins-good \
  gst-discoverer-1.0:gstreamer1.0-plugins-base-apps; do
  (install_needs "$need") || say "going on without ${need#*:}"
done

# Found by CMake's configuration, which an earlier build may have done without them.
rm -f "$root/build/bench/build.ninja"
say "building"
build bench || exit 2
[[ -x $root/build/bench/bin/mp4judge ]] || die "the command was not built"
bin=$root/build/bench/bench
results=$root/build/bench/results
rm -rf "$results"
mkdir -p "$results" "$out" || exit 2

# Kept for the next run: on some disks removing ten thousand files takes minutes.
export TMPDIR=$root/build/bench/files-$files
list=$TMPDIR/list
if [[ ! $list -nt $bin/make_files ]]; then
  say "making the files"
  rm -rf "$TMPDIR"
  mkdir -p "$TMPDIR/folder" || exit 2
  { "$bin/make_files" movies >"$TMPDIR/movies" &&
    "$bin/make_files" fragments >"$TMPDIR/fragments" &&
    "$bin/make_files" folder "$TMPDIR/folder" "$files" &&
    find "$TMPDIR/folder" -type f | sort >"$list"; } || die "the files could not be made"
fi

describe_setup >"$results/setup"
for ((round = 1; round <= rounds; ++round)); do
  say "round $round of $rounds"
  measure_opening
  measure_walking
  measure_fragments
  measure_memory
  measure_folder
done
measure_calls

python3 -B "$root/bench/report.py" "$results" "$root" "$out" || exit 2
say "done: $out, after $SECONDS s"
