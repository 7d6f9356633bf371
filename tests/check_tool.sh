#!/usr/bin/env bash
# The command line as a person meets it: check_tool.sh BUILD CASE
set -euo pipefail
build=$1
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
  same "protected.m4a: protected"
  run 0 "$PWD/clear.m4a" ./clear.m4a
  same "$PWD/clear.m4a: clear"$'\n'"./clear.m4a: clear"
}

# Trouble beats protected beats clear, wherever they stand.
case_exit_codes() {
  run 1 clear.m4a protected.m4a clear.m4a
  same $'clear.m4a: clear\nprotected.m4a: protected\nclear.m4a: clear'
  run 2 missing.m4a protected.m4a
  same $'missing.m4a: unreadable (No such file or directory)\nprotected.m4a: protected'
  run 2 protected.m4a missing.m4a clear.m4a
  run 2 clear.m4a missing.m4a
}

case_obstacles() {
  mkdir folder
  run 2 folder
  same "folder: unreadable (is a directory)"
  # Nobody writes to the pipe: opening it would wait for ever.
  mkfifo pipe
  run 2 pipe
  same "pipe: unreadable (not a regular file)"
  run 2 /dev/null
  same "/dev/null: unreadable (not a regular file)"
  : >empty.m4a
  run 2 empty.m4a
  same "empty.m4a: unreadable (shorter than 20 bytes)"
  head -c 19 clear.m4a >short.m4a
  run 2 short.m4a
  same "short.m4a: unreadable (shorter than 20 bytes)"
  head -c 20 clear.m4a >twenty.m4a
  run 2 twenty.m4a
  same "twenty.m4a: unreadable (not a movie file: no readable movie box)"
  head -c 4096 /dev/zero >zeros.m4a
  run 2 zeros.m4a
  same "zeros.m4a: unreadable (not a movie file: no readable movie box)"
  run 2 clear.m4a/below
  same "clear.m4a/below: unreadable (Not a directory)"
  ln -s loop loop
  run 2 loop
  same "loop: unreadable (Too many levels of symbolic links)"
  ln -s protected.m4a link.m4a
  run 1 link.m4a
  same "link.m4a: protected"
  # The superuser may read everything.
  if ((EUID != 0)); then
    chmod 0 clear.m4a
    run 2 clear.m4a
    same "clear.m4a: unreadable (Permission denied)"
  fi
}

case_names() {
  local name
  for name in $'\u00fc\u20ac\U0001d11e.m4a' '[clear,x]' '{}' '-' '-x.m4a' 'a b' '%s' '@list'; do
    cp clear.m4a "./$name"
    run 0 -- "$name"
    same "$name: clear"
  done
  run 0 -
  same "-: clear"
  # A name stays on its line.
  cp clear.m4a $'two\nlines'
  run 0 $'two\nlines'
  same 'two\x0Alines: clear'
  # Bytes that are no UTF-8, an overlong form and a surrogate: the file of that name is judged.
  for name in $'\xff.m4a' $'\xc0\xaf.m4a' $'\xed\xa0\x80.m4a' $'cut\xe2\x82'; do
    cp protected.m4a "$name"
    run 1 "$name"
    same "$name: protected"
  done
  # Nothing cuts a long name: 4,095 bytes are the longest that the system takes.
  printf -v name '%*s' 2041 ''
  name=${name// /./}
  run 1 "${name}protected.m4a"
  run 2 "$name/protected.m4a"
  says out 'unreadable \(File name too long\)$'
  run 2 ""
  same ": unreadable (No such file or directory)"
}

case_usage() {
  run 2
  says err 'FILE is required'
  run 2 --nonsense clear.m4a
  says err 'nonsense'
  run 0 --help
  says out 'Exit code: 0 when every file is clear'
  run 0 --version
  says out '^mp4judge [0-9]+\.[0-9]+\.[0-9]+$'
}

# Output that does not arrive is trouble, never a clear file.
case_output() {
  local code=0
  "$build/bin/mp4judge" clear.m4a >&- 2>err || code=$?
  ((code == 2)) || { echo "FAILED: closed output gave $code"; failed=1; }
  says err 'output'
  code=0
  "$build/bin/mp4judge" clear.m4a >/dev/full 2>err || code=$?
  ((code == 2)) || { echo "FAILED: a full device gave $code"; failed=1; }
  code=0
  { "$build/bin/mp4judge" clear.m4a 2>err || echo $? >code; } | :
  # The reader may have been there long enough: then the line arrived and nothing is wrong.
  [[ ! -e code || $(<code) == 2 ]] || { echo "FAILED: a gone reader gave $(<code)"; failed=1; }
}

"case_$2"
exit $failed
