#!/usr/bin/env bash
# The library as others use it: check_package.sh CASE SOURCE BUILD CXX CLANG
#   headers       every installed header compiles on its own, so do the programs in README
#   install       what ./judge builds is all that installing takes; the installed tool runs
#   find_package  a CMake project in C++, and one in C alone
#   pkg_config    the flags of pkg-config
#   plain         a compiler and the two folders
#   subdirectory  our folder inside another project, static and by clang++; the unit tests on
#                 that, and the static package that comes of it, from C alone
set -euo pipefail
case=$1 source=$2 build=$3 cxx=$4 clang=$5
cc=${CC:-cc}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
samples=("$build/samples/clear.m4a" "$build/samples/protected.m4a")
strict=(-Wall -Wextra -Werror -pedantic)
consumers=$source/tests/consumers

install_build() { cmake --install "$1" --prefix "$prefix" >"$work/install.log"; }
libdir() { dirname "$(find "$prefix" -name 'libmp4judge.*' -print -quit)"; }
flags() { PKG_CONFIG_PATH=$(libdir)/pkgconfig pkg-config "$@" mp4judge; }

# cmake_consumer LANGUAGE OPTION...: builds that project and runs what it makes.
cmake_consumer() {
  local language=$1
  shift
  cmake -S "$consumers/$language" -B "$work/$language" -G Ninja -DCMAKE_BUILD_TYPE=Debug \
    -DCMAKE_PREFIX_PATH="$prefix" "$@" >"$work/log" && cmake --build "$work/$language" >>"$work/log" ||
    { cat "$work/log"; return 1; }
  "$work/$language/consumer" "${samples[@]}"
}
in_c() { cmake_consumer c -DCMAKE_C_STANDARD=99 -DCMAKE_C_EXTENSIONS=OFF -DCMAKE_C_FLAGS="${strict[*]}"; }
in_cpp() { cmake_consumer cpp -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_CXX_FLAGS="${strict[*]}"; }

# by_hand COMPILER STANDARD SOURCE FLAG...: compiles one file and runs it.
by_hand() {
  local compiler=$1 standard=$2 file=$3
  shift 3
  "$compiler" -std="$standard" "${strict[@]}" "$file" -o "$work/by_hand" "$@"
  "$work/by_hand" "${samples[@]}"
}

case_headers() {
  install_build "$build"
  [[ $(ls "$prefix/include") == mp4judge ]]
  cd "$prefix/include"
  find . -name '*.h' | grep -q host/demux/Mp4Demux.h
  find . -name '*.h' -printf '%P\n' | xargs -P "$(nproc)" -I{} sh -c \
    'echo "#include <$1>" | "$2" -std=c++17 -Wall -Wextra -Werror -fsyntax-only -I. -x c++ - || exit 255' \
    - {} "$cxx"
  # What inline functions of the headers call is exported.
  { find mp4judge/host -name '*.h' -printf '#include <%p>\n' && echo 'int main() {}'; } |
    "$cxx" -std=c++17 -O0 -fkeep-inline-functions -I. -x c++ - -o "$work/inline" \
      -L"$(libdir)" -lmp4judge -Wl,-rpath,"$(libdir)"
  local header
  for header in mp4judge.h host/demux/FileInfoInterface.h host/platform/ZR_Log.h; do
    echo "#include <mp4judge/$header>" | "$cc" -std=c99 "${strict[@]}" -fsyntax-only -I. -x c -
  done
  # Nothing in them is found beside mp4judge/.
  ! grep -rnE '#[[:space:]]*include[[:space:]]*"' . | grep -v '"mp4judge/'

  show() { awk -v start="^\`\`\`$1\$" '$0 ~ start {on = 1; next} /^```/ {on = 0} on' "$source/README.md"; }
  [[ $(show c) == *main* && $(show cpp) == *main* ]]
  show c | "$cc" -std=c99 "${strict[@]}" -fsyntax-only -I. -x c -
  show cpp | "$cxx" -std=c++17 "${strict[@]}" -fsyntax-only -I. -x c++ -
}

case_install() {
  install_build "$build"
  [[ ! -x $build/bin/mp4judge ]] || [[ $("$prefix/bin/mp4judge" "${samples[0]}") == *": clear" ]]
  local kind
  for kind in report tree info layout; do
    [[ -s $prefix/share/mp4judge/$kind.schema.json ]]
  done
  # What is installed and made by the build is made when everything is, as ./judge asks for.
  local made file missing=0
  made=$(ninja -C "$build" -t inputs all)
  # What a phony target asks for directly is not among these.
  made+=$'\n'$(ninja -C "$build" -t query tools/mp4judge_texts 2>/dev/null | sed -n 's/^    //p' || true)
  while read -r file; do
    [[ ! -L $file ]] || continue  # made with what it points to
    ninja -C "$build" -t query "${file#"$build"/}" >/dev/null 2>&1 || continue
    grep -qxF -e "${file#"$build"/}" <<<"$made"$'\nbin/mp4judge' && continue
    echo "FAILED: ./judge does not build $file"
    missing=1
  done < <(find "$build" -name cmake_install.cmake -exec grep -ohE "\"$build/[^\"]+\"" {} + | tr -d '"')
  return $missing
}

case_find_package() {
  install_build "$build"
  in_cpp
  in_c
}

case_pkg_config() {
  install_build "$build"
  [[ $(flags --modversion) == "$("$build/bin/mp4judge" --version | cut -d' ' -f2)" ]]
  local run="-Wl,-rpath,$(libdir)"
  by_hand "$cxx" c++17 "$consumers/cpp/main.cpp" $(flags --cflags --libs) "$run"
  by_hand "$cc" c99 "$consumers/c/main.c" $(flags --cflags --libs) "$run"
}

case_plain() {
  install_build "$build"
  by_hand "$cxx" c++17 "$consumers/cpp/main.cpp" \
    -I"$prefix/include" -L"$(libdir)" -lmp4judge -Wl,-rpath,"$(libdir)"
}

case_subdirectory() {
  cmake_consumer subdirectory -DMP4JUDGE_FOLDER="$source" -DCMAKE_CXX_COMPILER="$clang" \
    -DCMAKE_CXX_FLAGS_DEBUG=-O0 -DCMAKE_CXX_FLAGS="${strict[*]}"
  # Neither tests nor tool nor samples come along, and the form is the other project's to choose.
  ! find "$work/subdirectory" -name '*test*' -type f -executable -o -name 'make_samples' | grep .
  install_build "$work/subdirectory"
  find "$prefix" -name 'libmp4judge.*' | grep -qx '.*\.a'
  in_c
  # The unit tests, as they were compiled for the other compiler, on what this one made.
  find "$build/tests/CMakeFiles/mp4judge_tests.dir" -name '*.o' >"$work/objects"
  "$cxx" @"$work/objects" "$(libdir)"/libmp4judge.a -lgtest_main -lgtest -lz -o "$work/units"
  # Without those that try thousands of files: what they look for depends on no compiler.
  "$work/units" --gtest_brief=1 \
    --gtest_filter='-*Random*:Hostile*:NoFalseClear*:Movies/*:All/BrokenBoxes*:SampleSearch*'
  ! command -v pkg-config >/dev/null ||
    by_hand "$cc" c99 "$consumers/c/main.c" $(flags --cflags --libs)
  by_hand "$clang" c++17 "$consumers/cpp/main.cpp" \
    -I"$prefix/include" -L"$(libdir)" -lmp4judge -lz
}

"case_$case"
