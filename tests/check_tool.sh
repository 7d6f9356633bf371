#!/usr/bin/env bash
# The command line as a person meets it: check_tool.sh BUILD CASE
set -euo pipefail
build=$1 tests=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
cp "$build/samples/clear.m4a" "$build/samples/protected.m4a" .
failed=0

# run CODE ARGUMENT...: runs the tool, whose exit code must be CODE; leaves `out` and `err`.
run() {
  local want=$1 code=0
  shift
  timeout 20 "$build/bin/mp4judge" "$@" >out 2>err </dev/null || code=$?
  [[ $code == "$want" ]] && return 0
  echo "FAILED: mp4judge $*: exit code $code, not $want"
  cat out err
  failed=1
}
# same TEXT: the last run said exactly this on standard output, and nothing on the other.
same() {
  printf '%s\n' "$1" | cmp -s - out && [[ ! -s err ]] && return 0
  echo "FAILED: expected '$1', got:"
  cat out err
  failed=1
}
# silent: the last run printed nothing at all.
silent() {
  [[ ! -s out && ! -s err ]] && return 0
  echo "FAILED: something was printed:"
  cat out err
  failed=1
}
# says FILE PATTERN
says() {
  grep -qE -e "$2" "$1" && return 0
  echo "FAILED: '$2' is not in $1:"
  cat "$1"
  failed=1
}

case_samples() {
  run 0 clear.m4a
  same "clear.m4a: clear"
  run 1 protected.m4a
  same "protected.m4a: protected (drms: audio)"
  run 0 "$PWD/clear.m4a" ./clear.m4a
  same "$PWD/clear.m4a: clear"$'\n'"./clear.m4a: clear"
}

# Trouble beats protected beats clear, wherever they stand.
case_exit_codes() {
  run 1 clear.m4a protected.m4a clear.m4a
  same $'clear.m4a: clear\nprotected.m4a: protected (drms: audio)\nclear.m4a: clear'
  run 2 missing.m4a protected.m4a
  same $'missing.m4a: undetermined (it cannot be opened: No such file or directory)\nprotected.m4a: protected (drms: audio)'
  run 2 protected.m4a missing.m4a clear.m4a
  run 2 clear.m4a missing.m4a
  run 1 -q protected.m4a
  silent
  run 2 -q missing.m4a
  silent
}

case_obstacles() {
  mkdir folder
  run 2 folder
  same "folder: undetermined (it is a directory; -r judges the files in it)"
  # Nobody writes to the pipe: opening it would wait for ever.
  mkfifo pipe
  run 2 pipe
  same "pipe: undetermined (it is a pipe, a socket or a device, which is not waited for)"
  run 2 /dev/null
  says out '^/dev/null: undetermined \(it is a pipe, a socket or a device'
  : >empty.m4a
  run 2 empty.m4a
  same "empty.m4a: undetermined (the file is empty)"
  head -c 19 clear.m4a >short.m4a
  run 2 short.m4a
  says out '^short.m4a: undetermined \(.*cut at byte 19 of 28'
  head -c 4096 /dev/zero >zeros.m4a
  run 2 zeros.m4a
  says out '^zeros.m4a: undetermined \(not a movie file'
  printf '\x89PNG\r\n\x1a\n' >cover.png
  run 2 cover.png
  says out '^cover.png: undetermined \(not a movie file: begins with PNG'
  printf '\x9e\x9c\x03\x38\xda\xc6\x1b\x38noise, noise' >noise.m4a
  run 2 noise.m4a
  same "noise.m4a: undetermined (not a movie file: its beginning is no box of a movie)"
  run 2 clear.m4a/below
  says out 'Not a directory\)$'
  ln -s loop loop
  run 2 loop
  says out 'Too many levels of symbolic links\)$'
  ln -s protected.m4a link.m4a
  run 1 link.m4a
  same "link.m4a: protected (drms: audio)"
  # The superuser may read everything.
  if ((EUID != 0)); then
    chmod 0 clear.m4a
    run 2 clear.m4a
    says out 'Permission denied\)$'
  fi
}

case_tree() {
  run 0 tree clear.m4a
  says out '^ +0 +[0-9]+  ftyp  File Type Box$'
  says out '^ +majorBrand='
  says out '  moov  Movie Box$'
  run 0 tree --no-fields -d 1 clear.m4a
  ! grep -q '=' out || { echo "FAILED: fields are printed"; failed=1; }
  ! grep -q 'mvhd' out || { echo "FAILED: the depth is passed over"; failed=1; }
  run 0 tree -p stsd protected.m4a
  says out '^ +[0-9]+ +[0-9]+  stsd  Sample Description Box$'
  says out '^ +[0-9]+ +[0-9]+    drms  Protected Audio Sample Entry$'
  run 0 tree --json -p /moov/mvhd clear.m4a
  says out '"path": "moov/mvhd"'
  head -c 200 clear.m4a >cut.m4a
  run 0 tree cut.m4a
  says out '! .*is cut at byte'
  run 2 tree --most 3 clear.m4a
  says err 'not every box was listed: they are more than --most, or nest too deep$'
  run 2 tree missing.m4a
  says err '^mp4judge: missing.m4a: No such file or directory$'
  run 2 tree
  says err '^mp4judge tree: no file is named$'
  run 2 tree clear.m4a clear.m4a
  cp clear.m4a '[a,b]'
  cp clear.m4a -- '-x.m4a'
  run 0 tree '[a,b]'
  run 0 tree -- '-x.m4a'
  run 0 tree --help
  says out '^Usage: mp4judge tree \[OPTIONS\] FILE$'
}

case_info() {
  run 0 info clear.m4a
  says out '^  protection +clear$'
  says out '^Track 1: audio'
  run 0 info protected.m4a
  says out 'PROTECTED'
  run 0 info --json clear.m4a
  says out '"verdict": "clear"'
  # A film of 1920 x 1080 that was held upright.
  command -v python3 >/dev/null && {
    python3 "$tests/chart/film.py" film.mp4
    run 0 info film.mp4
    says out '^  shown +1920 x 1080$'
    says out '^  frame rate +25 a second \(25/1\)$'
    python3 - <<'PY'
import struct
film = bytearray(open('film.mp4', 'rb').read(20000))
at = film.index(b'tkhd') + 4 + 4 + 20 + 16
film[at:at + 36] = struct.pack('>9I', 0, 0x10000, 0, 0xFFFF0000, 0, 0, 1080 << 16, 0, 0x40000000)
open('upright.mp4', 'wb').write(film)
PY
    run 0 info upright.mp4
    says out '^  shown +1080 x 1920$'
    says out '^  rotation +90 degrees clockwise$'
  }
  # An image with two items, and what of it is wrong; 30 times over.
  command -v python3 >/dev/null && {
    python3 - <<'PY'
import struct
def box(kind, *parts):
    body = b''.join(parts)
    return struct.pack('>I', 8 + len(body)) + kind + body
def infe(number, kind):
    return box(b'infe', b'\2\0\0\0', struct.pack('>HH', number, 0), kind, b'\0')
meta = box(b'meta', bytes(4), box(b'hdlr', bytes(8), b'pict', bytes(13)), box(b'pitm', bytes(5), b'\1'),
           box(b'iinf', bytes(4), b'\0\3', infe(1, b'hvc1'), infe(2, b'hvc1'), infe(3, b'Exif')))
head = box(b'ftyp', b'heic', bytes(4), b'mif1')
open('image.heic', 'wb').write(head + meta)
open('wrong.heic', 'wb').write(head + meta + box(b'moov', *[box(b'trak')] * 30))
PY
    run 0 info image.heic
    says out '^  items +3: 1 Exif, 2 hvc1$'
    run 0 info wrong.heic
    says out '^  ! and [0-9]+ more, which --json and --explain show$'
    (($(grep -c '^  !' out) == 21)) || { cat out; failed=1; }
  }
  printf 'no movie at all' >text
  run 0 info text
  says out '^  protection +undetermined'
  run 2 info missing.m4a
}

case_chart() {
  run 0 chart protected.m4a -o a.svg
  silent
  says a.svg '^<svg xmlns='
  says a.svg 'prefers-color-scheme:dark'
  says a.svg '>protected'
  run 0 chart clear.m4a -o a.html
  says a.html '^<!doctype html>'
  ! grep -qE '(src|href)=' a.html || { echo "FAILED: the page loads something"; failed=1; }
  cp clear.m4a '<script>&.m4a'
  run 0 chart '<script>&.m4a' -o b.svg
  says b.svg '&lt;script&gt;&amp;.m4a'
  run 0 chart '<script>&.m4a' -o b.html
  says b.html '"file":"\\u003cscript>&.m4a"'
  run 2 chart clear.m4a -o a.png
  says err 'ends in .svg or .html'
  run 2 chart clear.m4a
  says err '^mp4judge chart: the chart has no name; -o CHART.svg'
  # A chart that cannot be drawn leaves none behind, and none is drawn over its own file.
  run 2 chart missing.m4a -o none.svg
  [[ ! -e none.svg ]] || { echo "FAILED: a chart of nothing"; failed=1; }
  cp clear.m4a own.svg
  run 2 chart own.svg -o ./own.svg
  says err 'this is the file to be drawn'
  cmp clear.m4a own.svg || failed=1
  # A shorter chart takes the place of a longer one.
  head -c 3000000 /dev/zero >long.svg
  run 0 chart protected.m4a -o long.svg
  cmp a.svg long.svg || failed=1
  # Nobody reads from the pipe: opening it would wait for ever.
  mkfifo pipe.svg
  run 2 chart clear.m4a -o pipe.svg
  run 2 chart clear.m4a -o missing/a.svg
  says err 'cannot be written'
  run 2 chart missing.m4a -o c.svg
}

# docs/chart.svg, which README shows, is what the tool makes of the film of tests/chart. After a change
# of the picture that is meant: tests/chart/film.py film.mp4 && mp4judge chart film.mp4 -o docs/chart.svg
case_picture() {
  command -v python3 >/dev/null || return 0
  python3 "$tests/chart/film.py" film.mp4
  run 0 chart film.mp4 -o film.svg
  cmp film.svg "$tests/../docs/chart.svg" || { echo "FAILED: docs/chart.svg is not this chart"; failed=1; }
  run 1 film.mp4
  same "film.mp4: protected (cenc: video, audio)"
}

# Few bytes that claim much, and very many boxes, cost what docs/limits.md allows: within the time of
# `run`, and in 256 MiB and 16 bytes for each of the file. What is left out is said.
case_bounds() {
  command -v python3 >/dev/null || return 0
  python3 - clear.m4a <<'PY'
import struct
import sys
u32 = lambda value: struct.pack('>I', value)
def box(kind, *parts):
    body = b''.join(parts)
    return u32(8 + len(body)) + kind + body
def table(kind, *numbers):
    return box(kind, bytes(4), *map(u32, numbers))
def track(number, *tables):
    entry = box(b'mp4a', bytes(6), b'\0\1', bytes(8), b'\0\2\0\x10', bytes(4), u32(44100 << 16))
    return box(b'trak', box(b'tkhd', u32(7), bytes(8), u32(number), bytes(68)),
               box(b'mdia', box(b'mdhd', bytes(12), u32(44100), u32(4096), bytes(4)),
                   box(b'hdlr', bytes(8), b'soun', bytes(13)),
                   box(b'minf', box(b'stbl', box(b'stsd', bytes(4), u32(1), entry), *tables))))
def movie(*tracks):
    return box(b'ftyp', b'isom', bytes(4)) + box(b'moov', box(b'mvhd', bytes(100)), *tracks)
def write(name, content):
    with open(name, 'wb') as file:
        file.write(content)
every = 0xFFFFFFFF
write('billions', movie(track(1, table(b'stts', 1, every, 1), table(b'stsc', 1, 1, every, 1),
                              table(b'stsz', 1, every), table(b'stco', 1, 64))))
write('boxes', movie() + (u32(8) + b'free') * 210000)
write('fields', box(b'moov', box(b'trak', box(b'tkhd', u32(7), bytes(80)) * 210000)))
chunks = [100 * i for i in range(4096)]
write('extents', movie(*(track(i, table(b'stts', 1, 4096, 1), table(b'stsc', 1, 1, 1, 1),
                               table(b'stsz', 1, 4096), table(b'stco', 4096, *chunks))
                         for i in range(1, 151))))
PY
  # within MEBIBYTES CODE ARGUMENT...
  within() {
    local most=$1
    shift
    (
      # A sanitizer takes all addresses there are.
      [[ $build == */sanitized ]] || ulimit -v $(((most + 60) * 1024))
      run "$@"
      exit $failed
    ) || failed=1
  }
  local size name code form
  local names=(billions boxes fields extents)
  # The others are much for a sanitizer, and no other code sees them.
  [[ $build != */sanitized ]] || names=(billions)
  for name in "${names[@]}"; do
    size=$((256 + $(stat -c %s "$name") / 65536))
    code=2
    [[ $name != extents ]] || code=0
    for form in svg html; do
      within "$size" $code chart "$name" -o "$name.$form"
      [[ $code == 0 ]] || says err "^mp4judge: $name: not everything is drawn; the chart says what is left out\$"
      [[ $code == 0 ]] || says "$name.$form" 'Not every (box|sample) is drawn'
    done
    [[ $name != billions ]] || code=0
    within $((2 * size)) $code diff "$name" "$name"
    [[ $code == 0 ]] || says err "^mp4judge: $name: not every box was compared: they are too many, or nest too deep\$"
  done
  [[ $build == */sanitized ]] || (($(stat -c %s extents.html) < 8000000)) || { ls -l extents.html; failed=1; }
}

case_diff() {
  run 0 diff clear.m4a clear.m4a
  silent
  run 1 diff clear.m4a protected.m4a
  says out '^~ protection: clear -> protected'
  says out '^- moov/trak\[1\]/mdia/minf/stbl/stsd/'
  says out '^\+ moov/trak\[1\]/mdia/minf/stbl/stsd/drms\[1\]'
  cp clear.m4a other.m4a
  local at
  at=$(grep -abo stts clear.m4a | head -n 1 | cut -d: -f1)
  printf '\x01' | dd of=other.m4a bs=1 seek=$((at + 15)) conv=notrunc status=none
  run 1 diff clear.m4a other.m4a
  says out '^~ moov/trak\[1\]/mdia/minf/stbl/stts: '
  run 2 diff clear.m4a missing.m4a
  run 2 diff clear.m4a
  says err '^mp4judge diff: two files are compared, and one is named$'
}

case_names() {
  local name
  for name in $'\u00fc\u20ac\U0001d11e.m4a' '[clear,x]' '{}' '-' '-x.m4a' 'a b' '%s' '@list' \
    $'\xff.m4a' $'\xed\xa0\x80.m4a' $'cut\xe2\x82'; do
    cp clear.m4a "./$name"
    run 0 -- "$name"
    same "$name: clear"
  done
  run 0 -
  same "-: clear"
  # A name stays on its line, and no two print alike.
  cp clear.m4a $'two\nlines'
  cp clear.m4a 'two\x0Alines'
  run 0 $'two\nlines' 'two\x0Alines'
  same $'two\\x0Alines: clear\ntwo\\\\x0Alines: clear'
  run 0 -0 $'two\nlines'
  printf 'two\nlines: clear\0' | cmp - out || failed=1
  run 2 ""
  says out '^: undetermined \(.*No such file or directory\)$'
}

case_lists() {
  printf 'clear.m4a\n\nprotected.m4a' >list
  run 1 --files-from list
  same $'clear.m4a: clear\nprotected.m4a: protected (drms: audio)'
  cp clear.m4a $'two\nlines'
  printf 'two\nlines\0protected.m4a\0' >list0
  run 1 clear.m4a --files0-from list0
  same $'clear.m4a: clear\ntwo\\x0Alines: clear\nprotected.m4a: protected (drms: audio)'
  run 2 --files-from missing
  same 'missing: undetermined (No such file or directory)'
  printf 'clear.m4a\n' | timeout 20 "$build/bin/mp4judge" --files-from - >out || failed=1
  says out '^clear.m4a: clear$'
}

case_folders() {
  mkdir -p tree/b/c
  cp protected.m4a tree/a.jpg
  cp clear.m4a tree/b/c/x.M4A
  printf '\xff\xd8\xff\xe0' >tree/b/cover.jpg
  ln -s .. tree/b/up
  ln -s c tree/b/d
  run 1 -r tree --summary
  says out '^tree/a.jpg: protected \(drms: audio\)$'
  says out '^tree/b/c/x.M4A: clear$'
  [[ $(wc -l <out) == 2 ]] || { cat out; failed=1; }
  says err '^2 files: 1 clear, 1 protected, 0 undetermined$'
  says err '^  passed over, no movies: 1$'
  run 2 -r --all-files tree
  says out 'cover.jpg: undetermined \(not a movie file: begins with JPEG'
  run 0 -r --ext m4a,mov tree
  same "tree/b/c/x.M4A: clear"
  run 1 -r -l tree
  same "tree/a.jpg"
  run 1 -r -L tree
  same "tree/b/c/x.M4A"
  run 2 -r tree/nothing
  says out 'No such file'
}

case_formats() {
  run 1 --json clear.m4a protected.m4a
  [[ $(wc -l <out) == 2 ]] || failed=1
  if command -v python3 >/dev/null; then
    cp clear.m4a $'\xff"\\\n'
    "$build/bin/mp4judge" --json $'\xff"\\\n' >>out
    python3 - <<'PY' || failed=1
import json
rows = [json.loads(line) for line in open('out', encoding='utf-8')]
assert [row['verdict'] for row in rows] == ['clear', 'protected', 'clear'], rows
assert rows[1]['tracks'][0]['entries'][0]['format'] == 'drms'
assert rows[1]['host_answer'] == 1
assert rows[2]['path'] == '\ufffd"\\\n', rows[2]['path']
PY
  fi
  run 1 --explain protected.m4a
  says out '^  evidence: moov/trak\[1\]/mdia/minf/stbl/stsd/drms\[1\] at byte [0-9,]+, track 1: '
  says out '^  host answer: 1$'
  run 1 --host-answer protected.m4a clear.m4a
  same $'protected.m4a: protected (drms: audio); host answer 1\nclear.m4a: clear; host answer 0'
}

# Results come in the order of the names, however many threads there are.
case_many() {
  mkdir many
  local i
  for i in {1000..2999}; do ln clear.m4a "many/$i.m4a"; done
  ln -f protected.m4a many/1500.m4a
  local jobs
  for jobs in 1 2 7; do
    run 1 -j "$jobs" many/*
    cut -d: -f1 out | cmp - <(printf '%s\n' many/*) || failed=1
    [[ $(grep -c ': clear$' out) == 1999 ]] || failed=1
  done
}

case_cache() {
  mkdir many
  local i
  for i in {100..399}; do cp clear.m4a "many/$i.m4a"; done
  run 0 --cache cache.db -r many
  cp out first
  run 0 --cache cache.db -r many
  cmp first out || failed=1
  # What has changed is looked at again; what has not is not.
  cp protected.m4a many/200.m4a
  run 1 --cache cache.db -r many
  says out '^many/200.m4a: protected'
  run 1 --cache cache.db --json many/200.m4a
  says out '"path":"many/200.m4a"'
  mv many/200.m4a many/moved.m4a
  run 1 --cache cache.db --json many/moved.m4a
  says out '"path":"many/moved.m4a"'
  # A cache that was cut is begun anew; what is no cache is not touched.
  rm -f cache.db-wal cache.db-shm
  truncate -s 5000 cache.db
  run 0 --cache cache.db many/100.m4a
  says err 'begun anew'
  cp clear.m4a precious
  run 2 --cache precious many/100.m4a
  says err 'not a cache'
  cmp clear.m4a precious || failed=1
  run 2 --cache missing/cache.db many/100.m4a
  says err 'cannot be used'
}

# A run that is killed loses nothing that was finished, and one that is interrupted says what was done.
case_interrupted() {
  mkfifo names
  local code=0
  timeout 20 "$build/bin/mp4judge" --files-from names >out 2>err &
  local pid=$!
  exec 7>names
  printf 'clear.m4a\nprotected.m4a\n' >&7
  sleep 0.5
  pkill -INT -P "$pid" mp4judge || kill -INT "$pid"
  wait "$pid" || code=$?
  exec 7>&-
  [[ $code == 130 ]] || { echo "FAILED: exit code $code"; cat err; failed=1; }
  says out '^protected.m4a: protected'
  says err '^2 files: 1 clear, 1 protected, 0 undetermined$'
}

case_usage() {
  run 2
  says err '^mp4judge: no file is named$'
  run 2 --nonsense clear.m4a
  says err '^mp4judge: there is no option --nonsense$'
  run 2 --exlain clear.m4a
  says err '^mp4judge: there is no option --exlain; did you mean --explain\?$'
  run 2 -qX clear.m4a
  says err '^mp4judge: there is no option -X$'
  run 2 tree --jsn=3 clear.m4a
  says err '^mp4judge tree: there is no option --jsn; did you mean --json\?$'
  run 2 -l -L clear.m4a
  run 2 -j 0 clear.m4a
  run 2 clear.m4a --cache
  says err '^mp4judge: behind --cache there is no FILE$'
  run 2 tree -d
  says err '^mp4judge tree: behind -d there is no N$'
  run 2 samples --most -3 clear.m4a
  says err '--most'
  # A cluster of short options, the last with its value.
  run 0 -qj 2 clear.m4a
  silent
  run 0 -qj2 clear.m4a
  silent
  run 2 info clear.m4a protected.m4a
  says err '^mp4judge info: "protected.m4a" is one file too many$'
  run 0 --help
  says out '^  0    every file is clear$'
  run 0 --version
  says out '^mp4judge [0-9]+\.[0-9]+\.[0-9]+$'
}

# options COMMAND: all that --help lists, one a line.
options() {
  # shellcheck disable=SC2086
  "$build/bin/mp4judge" $1 --help | sed -nE '/^Options:/,/^$/ s/^ {2,6}(-[^ ,]+)(, (--[^ ]+))?( .*)?$/\1\n\3/p' | grep .
}
# The manual and the completions know every option of every command, and nothing else.
case_words() {
  local command prefix option
  run 0 --print man
  says out '^\.TH MP4JUDGE 1'
  ! command -v man >/dev/null || { man -l --warnings ./out 2>&1 >/dev/null | grep . && failed=1; }
  cp out page
  run 0 --print zsh
  cp out zsh
  ! command -v zsh >/dev/null || zsh -n zsh || failed=1
  run 0 --print fish
  cp out fish
  ! command -v fish >/dev/null || fish -n fish || failed=1
  run 0 --print bash
  bash -n out || failed=1
  # shellcheck disable=SC1091
  source ./out
  for command in "" tree info samples chart diff; do
    options "$command" >expected
    (($(wc -l <expected) >= 3)) || { echo "FAILED: --help of '$command' lists nothing"; failed=1; }
    # The part of each that is about this command.
    if [[ -z $command ]]; then
      sed '/^\.SS/,$d' page >part.man
      sed -n '/^  \*)/,$p' zsh >part.zsh
      grep "^complete -c mp4judge -n 'not __fish_seen_subcommand_from" fish >part.fish
    else
      sed -n "/^\.SS \"mp4judge $command /,/^\.SS \"mp4judge [^$command]/p" page | sed '1!{/^\.SS/,$d}' >part.man
      sed -n "/^  $command)/,/^    ;;/p" zsh >part.zsh
      grep "^complete -c mp4judge -n '__fish_seen_subcommand_from $command'" fish >part.fish
    fi
    while IFS= read -r option; do
      grep -qE -e "^\.TP" part.man && grep -qF -e "${option//-/\\-}" part.man ||
        { echo "FAILED: the manual lacks $command $option"; failed=1; }
      grep -qF -e "'$option[" part.zsh || { echo "FAILED: zsh lacks $command $option"; failed=1; }
      prefix=-s
      [[ $option != --* ]] || prefix=-l
      grep -qE -e " $prefix ${option##*-}( |\$)| $prefix ${option#--} " part.fish ||
        { echo "FAILED: fish lacks $command $option"; failed=1; }
    done <expected
    COMP_WORDS=(mp4judge)
    [[ -z $command ]] || COMP_WORDS+=("$command")
    COMP_WORDS+=(-)
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    _mp4judge || true
    printf '%s\n' "${COMPREPLY[@]}" | sort | cmp - <(sort expected) ||
      { echo "FAILED: bash completes '$command' with ${COMPREPLY[*]}"; failed=1; }
  done
  COMP_WORDS=(mp4judge --print "") COMP_CWORD=2
  _mp4judge || true
  [[ ${COMPREPLY[*]} == "man bash zsh fish" ]] || { echo "FAILED: ${COMPREPLY[*]}"; failed=1; }
  COMP_WORDS=(mp4judge "s") COMP_CWORD=1
  _mp4judge || true
  [[ ${COMPREPLY[*]} == samples ]] || { echo "FAILED: ${COMPREPLY[*]}"; failed=1; }
}

# 43 frames of 4 bytes, one after the other up to the end of the file.
case_list_samples() {
  local first=$(($(stat -c %s clear.m4a) - 43 * 4))
  run 0 samples --json clear.m4a
  [[ $(wc -l <out) == 43 ]] || failed=1
  says out "^\\{\"track\":1,\"sample\":1,\"offset\":$first,\"size\":4,\"dts\":0,\"cts\":0,\"duration\":1024,\"sync\":true,\"description\":1,\"protected\":false\\}\$"
  run 0 samples --json protected.m4a
  says out '"sample":43,.*"protected":true\}$'
  run 0 samples --csv --track 1 clear.m4a
  [[ $(wc -l <out) == 44 ]] || failed=1
  says out "^1,43,$((first + 42 * 4)),4,43008,43008,1024,1,1,0,0,0\$"
  run 0 samples clear.m4a
  run 2 samples --track 2 clear.m4a
  says err 'there is no such track$'
  # A few bytes can claim billions of samples.
  run 2 samples --json --most 10 clear.m4a
  [[ $(wc -l <out) == 10 ]] || failed=1
  says err 'there are more samples than were listed; --most N lists more$'
  run 0 samples --json --most 43 clear.m4a
  [[ $(wc -l <out) == 43 ]] || failed=1
  if command -v python3 >/dev/null; then
    python3 - clear.m4a <<'PY'
import sys
movie = bytearray(open(sys.argv[1], 'rb').read())
for kind, fields in ((b'stsz', (1, 0xFFFFFFFF)), (b'stsc', (1, 1, 0xFFFFFFFF)), (b'stts', (1, 0xFFFFFFFF))):
    at = movie.index(kind) + 8
    for i, value in enumerate(fields):
        movie[at + 4 * i:at + 4 * i + 4] = value.to_bytes(4, 'big')
open('billions.m4a', 'wb').write(movie)
PY
    run 2 samples --csv billions.m4a
    [[ $(wc -l <out) == 2000189 ]] || { wc -l out; failed=1; }
  fi
  run 2 samples missing.m4a
  says err 'missing.m4a: No such file or directory$'
  run 2 samples
  says err '^mp4judge samples: no file is named$'
  run 0 samples --help
  says out '^Usage: mp4judge samples'
  head -c $((first + 10)) clear.m4a >cut.m4a
  run 0 samples --json cut.m4a
  says out '"sample":4,.*"outside":true\}$'
  # A file of that name.
  cp clear.m4a samples
  run 0 ./samples
}

# What plainly is no movie is not taken apart as one.
case_no_movies() {
  printf '\x89PNG\r\n\x1a\n\0\0\0\rIHDR' >cover.png
  : >empty.mp4
  local words
  for words in tree "tree --json" samples "samples --csv" "diff clear.m4a" "chart -o a.svg"; do
    # shellcheck disable=SC2086
    run 2 $words cover.png
    says err '^mp4judge: cover.png: not a movie file: begins with PNG image$'
    [[ ! -s out ]] || { echo "FAILED: $words lists a PNG"; failed=1; }
    # shellcheck disable=SC2086
    run 2 $words empty.mp4
    says err '^mp4judge: empty.mp4: the file is empty$'
  done
  says a.svg '>the file is empty<'
  run 0 info cover.png
  says out '^  protection +undetermined: not a movie file: begins with PNG image$'
  run 2 samples missing.m4a
  [[ ! -s out ]] || failed=1
  # The movie box may have stood behind media that is cut.
  { printf '\0\0\0\x10ftypisom\0\0\0\0\0\0\x10\0mdat' && head -c 100 /dev/zero; } >cut.mp4
  run 2 cut.mp4
  same 'cut.mp4: undetermined (no movie box; the box "mdat" is cut at byte 108 of 4,096: bring the whole file)'
}

# Colours on a terminal alone, and not with NO_COLOR.
case_terminal() {
  command -v script >/dev/null || return 0
  TERM=xterm script -qec "$build/bin/mp4judge clear.m4a" /dev/null >out </dev/null
  says out $'\033\\[32mclear'
  NO_COLOR=1 TERM=xterm script -qec "$build/bin/mp4judge clear.m4a" /dev/null >out </dev/null
  ! grep -q $'\033' out || failed=1
}

# Output that does not arrive is trouble, never a clear file.
case_output() {
  local code
  local what
  for what in clear.m4a --help --version "--print man"; do
    code=0
    # shellcheck disable=SC2086
    "$build/bin/mp4judge" $what >/dev/full 2>err || code=$?
    ((code == 2)) || { echo "FAILED: a full device gave $code"; failed=1; }
    says err 'output'
  done
  code=0
  "$build/bin/mp4judge" clear.m4a >&- 2>err || code=$?
  ((code == 2)) || { echo "FAILED: closed output gave $code"; failed=1; }
  says err 'output'
  { "$build/bin/mp4judge" clear.m4a 2>err || echo $? >code; } | :
  # The reader may have been there long enough: then the line arrived and nothing is wrong.
  [[ ! -e code || $(<code) == 2 ]] || { echo "FAILED: a gone reader gave $(<code)"; failed=1; }
}

"case_$2"
exit $failed
