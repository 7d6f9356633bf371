#!/usr/bin/env bash
# Lines and branches of the library that corpora reach, by folder: fuzz/coverage.sh CORPORA
# CORPORA has one folder a target (judge, demux, ...), as fuzz/corpus has. Needs clang and llvm.
set -euo pipefail
corpora=$(readlink -f "$1")
cd "$(dirname "$(readlink -f "$0")")/.."
build=build/coverage
targets=(judge demux boxes tables samples utf interface tree report)

instrument="-fprofile-instr-generate -fcoverage-mapping"
CC=clang CXX=clang++ cmake -S . -B $build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_CXX_FLAGS="$instrument" -DMP4JUDGE_TOOLS=OFF >/dev/null
cmake --build $build --target "${targets[@]/#/replay_}" >/dev/null

programs=()
for target in "${targets[@]}"; do
  program=$build/fuzz/replay_$target
  LLVM_PROFILE_FILE=$build/$target.profraw $program "$corpora/$target" fuzz/corpus/$target >/dev/null
  programs+=(-object "$program")
done
llvm-profdata merge -o $build/all.profdata $build/*.profraw
for folder in io codecs boxes demux iso inspect samples door; do
  printf '%s: ' "$folder"
  llvm-cov export -summary-only -instr-profile=$build/all.profdata "${programs[@]:1}" "$folder" 2>/dev/null |
    python3 -c 'import json, sys
totals = json.load(sys.stdin)["data"][0]["totals"]
print(", ".join("%s %d of %d (%.1f %%)" % (kind, totals[kind]["covered"], totals[kind]["count"],
                                           totals[kind]["percent"]) for kind in ("lines", "branches")))'
done
