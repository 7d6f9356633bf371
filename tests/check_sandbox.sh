#!/usr/bin/env bash
# What a parser that is captured can still do under the tool's confinement:
#   check_sandbox.sh PROBE [TOOL CAPTURED SAMPLES]
# PROBE confines itself as the tool does; CAPTURED is a library that captures the tool itself.
set -uo pipefail
probe=$1 tool=${2:-} captured=${3:-} samples=${4:-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
failed=0
ulimit -c 0
# ends STATUS WHAT: 159 is how a shell reports SIGSYS, by which the system ends a process.
ends() {
  local code=0
  "$probe" "$2" 2>/dev/null || code=$?
  if ((code == 77)); then
    echo "LEFT OUT: this system or this build confines nothing"
    exit 0
  fi
  ((code == $1)) || { echo "FAILED: $2 ended with $code, not $1"; failed=1; }
}
# tool_ends STATUS WHAT ARGUMENT...: the tool, whose parser is captured by the first byte it sees.
tool_ends() {
  local want=$1 what=$2 code=0
  shift 2
  # Its output may be what was there before; the shell's own word of the signal is of no interest.
  { CAPTURED=$what LD_PRELOAD=$captured "$tool" "$@" >out 2>err || code=$?; } 2>/dev/null
  ((code == want)) || { echo "FAILED: $what in mp4judge $*: $code, not $want"; cat out err; failed=1; }
}

ends 159 socket
ends 159 fork
ends 159 exec
ends 1 create
ends 1 change
ends 1 remove
ends 0 read
[[ ! -e captured && -e $probe ]] || failed=1

[[ -n $tool ]] || exit $failed
cp "$samples/clear.m4a" "$samples/protected.m4a" .
: >victim
commands=("clear.m4a" "-j 4 clear.m4a protected.m4a" "--cache cache.db clear.m4a" "tree clear.m4a"
  "tree --json clear.m4a" "info clear.m4a" "info --json clear.m4a" "samples clear.m4a"
  "samples --init clear.m4a protected.m4a" "chart -o chart.svg clear.m4a"
  "chart -o chart.html clear.m4a" "diff clear.m4a protected.m4a")
for command in "${commands[@]}"; do
  read -ra words <<<"$command"
  for what in socket fork exec; do tool_ends 159 $what "${words[@]}"; done
  for what in create change remove; do tool_ends 101 $what "${words[@]}"; done
  tool_ends 100 read "${words[@]}"
  [[ ! -e captured && -e victim ]] || { echo "FAILED: $command did what it was told"; failed=1; }
  tool_ends 100 socket "${words[@]}" --no-sandbox
done
exit $failed
