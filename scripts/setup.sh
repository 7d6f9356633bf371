# Sourced by ./judge and ./test: finds the project, installs what is missing, builds quietly.
# Needs bash and, only when something is missing, apt-get with root or sudo.

root=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." && pwd -P)
jobs=$(nproc 2>/dev/null || echo 2)

# What each purpose needs: "command:package", or "-:package" for files without a command.
build_needs=(c++:g++ cmake:cmake ninja:ninja-build -:zlib1g-dev -:libcli11-dev)
test_needs=("${build_needs[@]}" cc:gcc nm:binutils clang-format:clang-format -:libgtest-dev
  valgrind:valgrind)
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
  say "installing ${packages[*]}"
  local apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -y -o DPkg::Lock::Timeout=300)
  # Stale package lists may still do, so only the installation decides.
  "${apt[@]}" update >"$log" 2>&1 </dev/null || say "apt-get update failed; going on"
  "${apt[@]}" install --no-install-recommends "${packages[@]}" >>"$log" 2>&1 </dev/null && return 0
  cat "$log" >&2
  die "could not install: ${packages[*]}"
}

# build PRESET [TARGET...]: quiet unless it fails, then the log goes to standard error.
build() {
  local preset=$1 dir=$root/build/$1 log=$root/build/$1.log
  shift
  # A build folder that was configured elsewhere (a moved or copied project) cannot be used.
  if [[ -f $dir/CMakeCache.txt ]] &&
    ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$dir/CMakeCache.txt"; then
    rm -rf "$dir"
  fi
  if { [[ $dir/build.ninja -nt $root/CMakePresets.json ]] || cmake -S "$root" --preset "$preset"; } >"$log" 2>&1 &&
    cmake --build "$dir" -j "$jobs" ${1:+--target "$@"} >>"$log" 2>&1; then
    return 0
  fi
  cat "$log" >&2
  say "the build failed; its log is $log"
  return 1
}

# One build at a time in this project, whoever started it. Held until the shell ends or execs.
lock_build() {
  mkdir -p "$root/build" || die "cannot make $root/build"
  exec {build_lock}>"$root/build/.lock"
  ! command -v flock >/dev/null || flock "$build_lock"
}
unlock_build() { exec {build_lock}>&-; }
