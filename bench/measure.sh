# shellcheck shell=bash disable=SC2154
# Sourced by run.sh: the measurements of one round. Each figure is a line of results/figures:
# table, round, row, column and value, separated by tabs.

record() { # TABLE ROW COLUMN VALUE; nothing for a program that gave no value
  [[ -z ${4:-} ]] || printf '%s\t%s\t%s\t%s\t%s\n' "$1" "$round" "$2" "$3" "$4" >>"$results/figures"
}

# What a peer's version is, as its package says; nothing when it was not built.
version_of() { # PROGRAM MODULE NAME
  [[ ! -x $bin/peers/$1 ]] || echo ", $3 $(pkg-config --modversion "$2")"
}

describe_setup() {
  local cpu load
  cpu=$(sed -n 's/^model name[[:space:]]*: //p' /proc/cpuinfo | head -1)
  read -r load _ </proc/loadavg
  echo "${cpu:-$(uname -m)}, $(nproc) cores, Linux $(uname -r)," \
    "$(c++ --version | head -1), $(date +%Y-%m-%d), load $load before," \
    "$rounds rounds$(version_of peer_taglib taglib TagLib)$(version_of peer_mediainfo \
      libmediainfo MediaInfo)$(version_of peer_gstreamer gstreamer-1.0 \
        GStreamer)$(version_of peer_avformat libavformat libavformat)"
}

# Every file by every program, one after the other, so that a disturbance meets them all.
measure_opening() {
  local name path headers limit fresh start peer
  while read -r name path; do
    IFS=$'\t' read -r headers limit fresh start _ < <("$bin/limit" "$path" | tail -1)
    record opening headers "$name" "$headers"
    record opening limit "$name" "$limit"
    record opening fresh "$name" "$fresh"
    record opening start "$name" "$start"
    for way in judge init; do
      record opening "$way" "$name" "$("$bin/opening" "$way" "$path" "$repeats" "$seconds")"
    done
    for peer in "$bin"/peers/peer_*; do
      [[ -x $peer && ! -d $peer ]] || continue
      record opening "${peer##*_}" "$name" \
        "$(timeout 60 "$peer" "$path" "$repeats" "$seconds" 2>>"$results/log")"
    done
  done <"$TMPDIR/movies"
}

measure_walking() {
  "$bin/bench_walk" --benchmark_min_time="$least" --benchmark_format=json \
    >"$results/walk-$round.json" 2>>"$results/log"
}

# In a process of its own for each number: a heap that others have grown changes the cost of pages.
measure_fragments() {
  local count path way
  while read -r count path; do
    for way in judge init; do
      record fragments "$way" "$count" "$("$bin/opening" "$way" "$path" "$repeats" "$seconds")"
    done
  done <"$TMPDIR/fragments"
}

measure_memory() {
  local way name path peak stays anonymous movie tables runs published
  while read -r name path; do
    for way in judge init; do
      IFS=$'\t' read -r peak stays anonymous movie tables runs published \
        < <("$bin/memory" "$way" "$path")
      record memory "$way peak" "$name" "$peak"
      record memory "$way" "$name" "$stays"
      record memory "$way anonymous" "$name" "$anonymous"
    done
    record memory movie "$name" "$movie"
    record memory tables "$name" "$tables"
    record memory runs "$name" "$runs"
    record memory published "$name" "$published"
  done <"$TMPDIR/movies"
}

# rate ROW FILES COMMAND...: files a second of a command that goes through so many files
rate() {
  local row=$1 count=$2 start end
  shift 2
  start=$EPOCHREALTIME
  "$@" >/dev/null 2>&1
  end=$EPOCHREALTIME
  record folder "$row" rate $((count * 1000000 / (${end/./} - ${start/./})))
}

measure_folder() {
  head -"$sample" "$list" >"$list.sample"
  rate open_read "$files" xargs -a "$list" -n 2500 "$bin/open_read"
  rate mp4judge "$files" xargs -a "$list" -n 2500 "$root/build/bench/bin/mp4judge"
  rate "mp4judge, a process a file" "$sample" \
    xargs -a "$list.sample" -n 1 "$root/build/bench/bin/mp4judge"
  ! command -v mediainfo >/dev/null || rate mediainfo "$sample" xargs -a "$list.sample" -n 1 mediainfo
  ! command -v ffprobe >/dev/null ||
    rate ffprobe "$sample" xargs -a "$list.sample" -n 1 ffprobe -v quiet -show_streams
  ! command -v gst-discoverer-1.0 >/dev/null ||
    rate gst-discoverer-1.0 "$sample" xargs -a "$list.sample" -n 1 gst-discoverer-1.0
}

# System calls of one judgement and the bytes they read: a run of one less a run of none.
measure_calls() {
  local name path n
  command -v strace >/dev/null || return 0
  while read -r name path; do
    local calls=() bytes=()
    for n in 0 1; do
      strace -f -qq -o "$TMPDIR/trace" "$bin/opening" judge "$path" "$n" >/dev/null 2>&1 || return 0
      calls+=("$(wc -l <"$TMPDIR/trace")")
      bytes+=("$(awk '/ (read|pread64)\(/ && $NF > 0 { n += $NF } END { print n + 0 }' "$TMPDIR/trace")")
    done
    record calls calls "$name" $((calls[1] - calls[0]))
    record calls bytes "$name" $((bytes[1] - bytes[0]))
  done <"$TMPDIR/movies"
}
