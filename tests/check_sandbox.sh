#!/usr/bin/env bash
# What a parser that is captured can still do under the tool's confinement: check_sandbox.sh PROBE
set -uo pipefail
probe=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
failed=0
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
ulimit -c 0
ends 159 socket
ends 159 fork
ends 159 exec
ends 1 create
ends 1 change
ends 1 remove
ends 0 read
[[ ! -e captured && -e $probe ]] || failed=1
exit $failed
