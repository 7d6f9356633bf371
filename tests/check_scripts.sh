#!/usr/bin/env bash
# ./judge and ./test around the build, in a project that stands in for ours: check_scripts.sh SOURCE
# Their trouble ends with 2, for 1 is an answer; they say what they wait for.
set -euo pipefail
source=$1
work=$(mktemp -d)
trap 'chmod -R u+w "$work" && rm -rf "$work"' EXIT
chmod 755 "$work"
project=$work/project
tool=$project/build/release/bin/mp4judge

fail() {
  echo "FAILED: $*"
  cat "$work/out"
  exit 1
}
# Somebody who may not write here: the superuser may, so that another user is needed then.
stranger() {
  if ((EUID == 0)); then
    setpriv --reuid=65534 --regid=65534 --clear-groups "$@"
  else
    chmod -R a-w "$project"
    "$@" || { local code=$?; chmod -R u+w "$project"; return $code; }
    chmod -R u+w "$project"
  fi
}
# ends CODE COMMAND...
ends() {
  local want=$1 code=0
  shift
  "$@" >"$work/out" 2>&1 </dev/null || code=$?
  [[ $code == "$want" ]] || fail "$* ended with $code, not $want"
}
says() { grep -qF -e "$1" "$work/out" || fail "'$1' is not said"; }

# A project that is built, by tools that do nothing but end as $WITH says.
mkdir -p "$project/scripts" "$work/bin"
cp "$source/judge" "$source/test" "$project"
cp "$source/scripts/setup.sh" "$project/scripts"
: >"$project/CMakePresets.json"
printf '#!/bin/sh\nexit "${WITH:-0}"\n' >"$work/bin/cmake"
chmod +x "$work/bin/cmake"
export PATH=$work/bin:$PATH
make_tool() {
  mkdir -p "${tool%/*}"
  printf '#!/bin/sh\necho "judged $*"\nexit "${TOOL:-0}"\n' >"$tool"
  chmod +x "$tool"
}

ends 2 stranger "$project/judge" clip
says "cannot make $project/build"
ends 2 stranger "$project/test" --quick
says "cannot make $project/build"

make_tool
ends 0 "$project/judge" clip
says "judged clip"
TOOL=1 ends 1 "$project/judge" clip
TOOL=2 ends 2 "$project/judge" clip
WITH=1 ends 2 "$project/judge" clip
says "the build failed"

# Built by one user, used by another.
ends 0 stranger "$project/judge" clip
says "judged clip"
touch -d "+1 minute" "$project/judge"
ends 2 stranger "$project/judge" clip
says "cannot write $project/build"
ends 2 stranger "$project/test" --quick
says "cannot write $project/build"
touch "$project/judge"
if ((EUID == 0)); then
  chmod 777 "$project/build"
  ends 2 stranger "$project/judge" clip
  says "cannot write $project/build"
fi

flock "$project/build/.lock" sleep 4 &
until ! flock -n "$project/build/.lock" true; do sleep 0.1; done
ends 0 "$project/judge" clip
says "waiting for another build in $project/build to end"
wait

ends 0 "$project/test" --help
says "--quick [FILTER]"
ends 2 "$project/test" --nonsense
says "usage: ./test"
rm "$project/scripts/setup.sh"
ends 2 "$project/judge" clip
ends 2 "$project/test" --quick
