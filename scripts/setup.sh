# Sourced by ./judge and ./test: finds the project, installs what is missing, builds quietly.
# Needs bash and, only when something is missing, apt-get with root or sudo.

root=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." && pwd -P)
jobs=$(nproc 2>/dev/null || echo 2)

# What each purpose needs: "command:package", or "-:package" for files without a command.
build_needs=(c++:g++ cmake:cmake ninja:ninja-build -:zlib1g-dev -:libcli11-dev
  -:libsqlite3-dev -:libseccomp-dev -:nlohmann-json3-dev)
test_needs=("${build_needs[@]}" cc:gcc nm:binutils clang-format:clang-format -:libgtest-dev
  valgrind:valgrind)
# Without these a part of the tests is left out; without ccache they take longer.
useful_in_tests=(ccache:ccache pkg-config:pkg-config abidiff:abigail-tools clang++:clang python3:python3
  doxygen:doxygen sphinx-build:python3-sphinx parallel:parallel
  pytest-3:python3-pytest -:python3-numpy -:python3-pandas mypy:mypy
  -:python3-dask -:python3-distributed -:python3-fsspec -:python3-aiohttp -:python3-requests)
lint_needs=("${test_needs[@]}" clang-tidy:clang-tidy)

say() { printf '%s: %s\n' "${0##*/}" "$*" >&2; }

# Trouble of our own making ends with 2, like the tool's.
die() {
  say "$*"
  exit 2
}

# missing_packages NEED...: the packages to install, one a line. Without dpkg, commands alone count.
missing_packages() {
  local need command package
  for need in "$@"; do
    command=${need%%:*} package=${need#*:}
    if [[ $command != - ]]; then
      command -v "$command" >/dev/null || echo "$package"
    elif command -v dpkg >/dev/null && ! dpkg -s "$package" >/dev/null 2>&1; then
      echo "$package"
    fi
  done
}

# install_needs NEED...: returns at once when everything is there.
install_needs() {
  local packages=() as_root=() log=$root/build/install.log
  read -r -d '' -a packages <<<"$(missing_packages "$@")" || true
  ((${#packages[@]})) || return 0
  command -v apt-get >/dev/null || die "please install: ${packages[*]}"
  if ((EUID != 0)); then
    command -v sudo >/dev/null || die "root or sudo is needed to install: ${packages[*]}"
    as_root=(sudo)
  fi
  must_write "$log"
  local apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -y -o DPkg::Lock::Timeout=300)
  # Stale package lists may still do, so only the installation decides.
  say "installing ${packages[*]}"
  "${apt[@]}" update >"$log" 2>&1 </dev/null || say "apt-get update failed; going on"
  "${apt[@]}" install --no-install-recommends "${packages[@]}" >>"$log" 2>&1 </dev/null && return 0
  cat "$log" >&2
  die "could not install: ${packages[*]}"
}

# must_write PATH...: those that are there, with what they hold, can be written.
must_write() {
  local path stuck
  for path in "$@"; do
    [[ -e $path ]] || continue
    stuck=$(find "$path" -maxdepth 1 ! -type l ! -writable -print -quit 2>&1) || true
    [[ -z $stuck ]] || die "cannot write $stuck (made by another user?): remove $root/build, or run as its owner"
  done
}

# follow TEXT COMMAND...: runs the command and says what it is doing and how far it is: a line that
# counts up on a terminal, otherwise a line after 2 seconds and every 20. TEXT is a function that
# prints the present state.
follow() {
  local text=$1 ticker code=0 started=$SECONDS
  shift
  tick "$text" "$started" &
  ticker=$!
  "$@" || code=$?
  kill "$ticker" 2>/dev/null || true
  wait "$ticker" 2>/dev/null || true
  [[ ! -t 2 ]] || printf '\r\033[K' >&2
  return $code
}
tick() {
  local seconds nap next=2
  # A pipe that nothing is written to: reading it is a sleep that leaves no process behind.
  exec {nap}<> <(:)
  while kill -0 $$ 2>/dev/null; do
    read -r -t 1 -u "$nap" || true
    seconds=$((SECONDS - $2))
    if [[ -t 2 ]]; then
      printf '\r\033[K%s: %s (%d s)' "${0##*/}" "$("$1")" "$seconds" >&2
    elif ((seconds >= next)); then
      say "$("$1") ($seconds s)"
      next=$((seconds + 20))
    fi
  done
}

# build PRESET [TARGET...]: quiet unless it fails, then the log goes to standard error.
build() {
  local preset=$1 dir=$root/build/$1 log=$root/build/$1.log
  shift
  must_write "$dir" "$log"
  # A build folder that was configured elsewhere (a moved or copied project) cannot be used.
  if [[ -f $dir/CMakeCache.txt ]] &&
    ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$dir/CMakeCache.txt"; then
    rm -rf "$dir"
  fi
  follow building run_build "$@" && return 0
  cat "$log" >&2
  say "the build failed; its log is $log"
  return 1
}
# These two know the variables of build.
run_build() {
  { [[ $dir/build.ninja -nt $root/CMakePresets.json ]] || cmake -S "$root" --preset "$preset"; } >"$log" 2>&1 &&
    cmake --build "$dir" -j "$jobs" ${1:+--target "$@"} >>"$log" 2>&1
}
building() {
  local step
  step=$(tail -c 4000 "$log" 2>/dev/null | grep -oE '^\[[0-9]+/[0-9]+\]' | tail -1)
  [[ -z $step ]] || step=${step/\// of }
  echo "building \"$preset\" ${step//[][]/}"
}

# What the tests build once more, in a copy of the project and with the same options, is compiled once.
# Whoever has set a launcher has a cache of his own.
share_objects() {
  command -v ccache >/dev/null && [[ -z ${CMAKE_CXX_COMPILER_LAUNCHER:-} ]] || return 0
  export CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache
  export CCACHE_DIR=$root/build/ccache CCACHE_MAXSIZE=500M CCACHE_BASEDIR=$root CCACHE_NOHASHDIR=1
  # Warnings that are errors change no object, and the compiler's list of headers saves a pass.
  export CCACHE_IGNOREOPTIONS=-Werror CCACHE_DEPEND=1
}

# One build at a time in this project, whoever started it. Held until the shell ends or execs.
lock_build() {
  mkdir -p "$root/build" 2>/dev/null || die "cannot make $root/build"
  { : >>"$root/build/.lock"; } 2>/dev/null || die "cannot write $root/build/.lock (made by another user?)"
  exec {build_lock}>>"$root/build/.lock"
  command -v flock >/dev/null || return 0
  flock -n "$build_lock" || follow waiting flock "$build_lock"
}
waiting() { echo "waiting for another build in $root/build to end"; }
unlock_build() { exec {build_lock}>&-; }

# is_current PROGRAM: it is there and no file of the project outside build/ is newer.
is_current() {
  [[ -x $1 ]] && [[ -z $(find "$root" -path "$root/build" -prune -o -path "$root/.git" -prune -o \
    -type f -newer "$1" -print -quit 2>&1) ]]
}
