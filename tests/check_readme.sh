#!/usr/bin/env bash
# What README.md and CONTRIBUTING.md say is so: check_readme.sh SOURCE BUILD WORK
# Runs their code blocks in order, as a reader would, in a copy of SOURCE in which nothing is built yet;
# tests/blocks.sh says how blocks are read. Here
#
#   c, cpp        programs are compiled when all commands have run; these find the last one as app.c or
#                 app.cpp
#   cmake         is what links that program, as `app`, in a project
#
# clip.m4v lies in the current folder, and pkg-config looks in PREFIX. Then every path and every option
# in `...` has to exist.
set -euo pipefail
mkdir -p "$3"
source=$(cd "$1" && pwd) build=$(cd "$2" && pwd) work=$(cd "$3" && pwd)
tree=$work/mp4judge prefix=$work/prefix clear=$build/samples/clear.m4a
folder=$work/folder out=$work/out python=python3
source "$source/tests/blocks.sh"

# What of the copy is still like the original keeps its date, so that the copy's build stays good.
copy_project() {
  mkdir -p "$tree"
  find "$tree" -mindepth 1 -maxdepth 1 ! -name build -exec rm -rf {} +
  find "$source" -mindepth 1 -maxdepth 1 ! -name build ! -name .git -exec cp -rp {} "$tree" \;
  cp "$clear" "$tree/clip.m4v"
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
rm -rf "$work/blocks" "$prefix"
cd "$tree"
export PKG_CONFIG_PATH=$prefix/lib/pkgconfig LD_LIBRARY_PATH=$prefix/lib
ran=0
for page in README CONTRIBUTING; do
  split_blocks "$page.md" "$work/blocks/$page"
  rm -f app.c app.cpp
  for block in "$work/blocks/$page"/*.{c,cpp}; do
    [[ ! -e $block ]] || cp "$block" "app.${block##*.}"
  done
  for block in "$work/blocks/$page"/*; do
    echo "== $page.md ${block##*/}"
    [[ $block != *.info ]] && ! left_out "$block" || continue
    case $block in
      *.cmake) run_cmake "$block" ;;
      *.c | *.cpp) ;;
      *) run_block "$block" ;;
    esac
    ran=$((ran + 1))
  done
  for block in "$work/blocks/$page"/*.{c,cpp}; do
    [[ ! -e $block ]] || run_program "$block"
  done
done
((ran > 8)) || fail "README has too few blocks"

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
