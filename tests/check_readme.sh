#!/usr/bin/env bash
# What README.md says is so: check_readme.sh SOURCE BUILD WORK
# Runs its code blocks in order, as a reader would, in a copy of SOURCE in which nothing is built yet.
# The language behind the three backticks says what a block is:
#
#   (none), sh    commands, which must succeed; a program a.out that they make must judge the clip
#   console       lines "$ COMMAND" and below each what it prints; "..." stands for any lines
#   c, cpp        a whole program; compiled against what the commands install, it must judge the clip.
#                 The commands find the last one as app.c or app.cpp
#   cmake         what links that program, as `app`, in a project
#   python        a program
#   text          nothing to run
#
# In commands FILE (also FILE...) is a clear file, PREFIX the folder to install to, in which pkg-config
# looks too, and NAME a test. clip.m4v lies in the current folder. Commands that ./test consists of
# are not run inside it once more. Then every path and every option in `...` has to exist.
set -euo pipefail
mkdir -p "$3"
source=$(cd "$1" && pwd) build=$(cd "$2" && pwd) work=$(cd "$3" && pwd)
tree=$work/mp4judge prefix=$work/prefix clear=$build/samples/clear.m4a

fail() {
  echo "FAILED: $*"
  exit 1
}

# What of the copy is still like the original keeps its date, so that the copy's build stays good.
copy_project() {
  mkdir -p "$tree"
  find "$tree" -mindepth 1 -maxdepth 1 ! -name build -exec rm -rf {} +
  find "$source" -mindepth 1 -maxdepth 1 ! -name build ! -name .git -exec cp -rp {} "$tree" \;
  cp "$clear" "$tree/clip.m4v"
}

# One file a block: NNN.LANGUAGE.
split_blocks() {
  rm -rf "$work/blocks" "$prefix"
  mkdir -p "$work/blocks"
  awk -v out="$work/blocks" '
    /^ *```/ && !inside {inside = 1; sub(/^ *```/, ""); if ($1 == "") $1 = "sh"
      path = sprintf("%s/%03d.%s", out, ++n, $1); printf "" >path; next}
    /^ *```/ {inside = 0; close(path); next}
    inside {print >path}' "$source/README.md"
}

# in_place: the words that stand for something.
in_place() {
  sed -E "s#\bFILE\b(\.\.\.)?#$clear#g; s#PREFIX#$prefix#g; s#\bNAME\b#BoxSTTS#g"
}
# What ./test is made of.
of_test() {
  [[ $1 =~ ^\./test( |$) || $1 == "cmake --preset test && cmake --build --preset test && ctest --preset test" ]]
}
judges_the_clip() { "$1" clip.m4v >out || fail "$2 ends with $? on a clear file"; }

run_sh() {
  local line
  rm -f a.out
  while IFS= read -r line; do
    of_test "${line%%  *}" || echo "$line"
  done <"$1" | in_place >commands
  bash -euo pipefail commands || fail "these commands: $(<commands)"
  [[ ! -e a.out ]] || judges_the_clip ./a.out "the program of $(<commands)"
}

run_console() {
  local command
  while IFS= read -r command; do
    { bash -c "$(in_place <<<"$command")" 2>&1 || (($? < 126)) || fail "$command"; } |
      { grep -v "^judge: building" || true; } >printed
    # What follows the command in the block, as a pattern for the whole output.
    awk -v command="\$ $command" '$0 == command {on = 1; next} /^\$ / {on = 0} on' "$1" >expected
    awk 'function same(i, j) {
        if (i > n) return j > m
        if (want[i] == "...") return same(i + 1, j) || (j <= m && same(i, j + 1))
        return j <= m && want[i] == got[j] && same(i + 1, j + 1)
      }
      FNR == NR {want[++n] = $0; next} {got[++m] = $0} END {exit !same(1, 1)}' expected printed ||
      fail "\"$command\" prints: $(<printed)"
  done < <(sed -n 's/^\$ //p' "$1")
}

run_program() {
  local name=block$2
  local flags=(-Wall -Wextra -Werror -I"$prefix/include" -L"$prefix/lib" -Wl,-rpath,"$prefix/lib")
  case $1 in
    *.c) cc -std=c99 "${flags[@]}" -o "$name" "$1" -lmp4judge ;;
    *) c++ -std=c++17 "${flags[@]}" -o "$name" "$1" -lmp4judge ;;
  esac || fail "the program does not compile: $(<"$1")"
  judges_the_clip "./$name" "the program $(<"$1")"
}

run_cmake() {
  local program=app.cpp
  [[ -e $program ]] || program=app.c
  rm -rf app
  mkdir app
  { echo 'cmake_minimum_required(VERSION 3.25)' && echo 'project(app C CXX)' &&
    echo "add_executable(app ../$program)" && cat "$1"; } >app/CMakeLists.txt
  cmake -S app -B app/build -G Ninja -DCMAKE_PREFIX_PATH="$prefix" && cmake --build app/build ||
    fail "the project with $(<"$1")"
  judges_the_clip app/build/app "the project with $(<"$1")"
}

copy_project
split_blocks
cd "$tree"
export PKG_CONFIG_PATH=$prefix/lib/pkgconfig LD_LIBRARY_PATH=$prefix/lib
blocks=("$work"/blocks/*)
for block in "${blocks[@]}"; do
  [[ $block != *.c && $block != *.cpp ]] || cp "$block" "app.${block##*.}"
done
for block in "${blocks[@]}"; do
  echo "== ${block##*/}"
  case $block in
    *.sh) run_sh "$block" ;;
    *.console) run_console "$block" ;;
    *.cmake) run_cmake "$block" ;;
    *.python) python3 "$block" || fail "$(<"$block")" ;;
    *.c | *.cpp | *.text) ;;
    *) fail "nobody knows how to run ${block##*.}" ;;
  esac
done
ran=0
for block in "${blocks[@]}"; do
  case $block in
    *.c | *.cpp) run_program "$block" $((++ran)) ;;
  esac
done
((ran > 0 && ${#blocks[@]} > 3)) || fail "README has too few blocks"

# Every path, link and option.
while read -r path; do
  [[ -e $path || -e include/$path || -e $prefix/include/$path ]] || fail "README names $path"
done < <(grep -oE '`[a-z]+/[A-Za-z0-9_./-]*`|\]\([A-Za-z][A-Za-z0-9_./-]*\)' README.md | sed -E 's/^`|^\]\(|`$|\)$//g' | sort -u)
while read -r script options; do
  [[ -x $script ]] || fail "README names $script"
  for option in $options; do
    [[ $option != --* ]] || "$script" --help | grep -q -e "$option" || fail "README names $script $option"
  done
done < <(grep -oE '`\./[a-z]+( [^`]*)?`' README.md | tr -d '`' | sort -u)
