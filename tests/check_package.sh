#!/usr/bin/env bash
# Installs the build into a fresh prefix, builds the consumer project against it and runs it.
#   check_package.sh SOURCE BUILD COMPILER
set -euo pipefail
source=$1 build=$2 compiler=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/prefix" >"$work/install.log"
cmake -S "$source/tests/consumer_package" -B "$work/build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_CXX_STANDARD=17 -DCMAKE_CXX_EXTENSIONS=OFF -DCMAKE_CXX_COMPILER="$compiler" \
  -DCMAKE_CXX_FLAGS="-Wall -Wextra -Werror" -DCMAKE_PREFIX_PATH="$work/prefix"
cmake --build "$work/build"
"$work/build/consumer" "$build/samples/clear.m4a" "$build/samples/protected.m4a"

# Every installed header compiles on its own, the C entries as C.
while read -r header; do
  echo "#include \"$header\"" |
    "$compiler" -std=c++17 -Wall -Wextra -Werror -fsyntax-only -I"$work/prefix/include/mp4judge" -x c++ -
done < <(cd "$work/prefix/include/mp4judge" && find . -name '*.h')

# The programs that the README shows compile.
show() { awk -v start="^\`\`\`$1\$" '$0 ~ start {on = 1; next} /^```/ {on = 0} on' "$source/README.md"; }
flags=(-Wall -Wextra -Werror -fsyntax-only -I"$work/prefix/include/mp4judge")
[[ $(show c) == *main* && $(show cpp) == *main* ]]
show c | "${CC:-cc}" -std=c99 "${flags[@]}" -x c -
show cpp | "$compiler" -std=c++17 "${flags[@]}" -x c++ -

# The installed tool finds its library without help.
if [[ -x $build/bin/mp4judge ]]; then "$work/prefix/bin/mp4judge" "$build/samples/clear.m4a"; fi
