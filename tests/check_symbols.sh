#!/usr/bin/env bash
# What the shared library shows and needs: check_symbols.sh SOURCE BUILD LIBRARY
set -euo pipefail
source=$1 build=$2 library=$3
failed=0
fail() {
  echo "FAILED: $*"
  failed=1
}

dynamic=$(readelf -dW "$library")
symbols=$(nm -DC --defined-only --with-symbol-versions "$library")

grep -q 'SONAME.*\[libmp4judge\.so\.1\]' <<<"$dynamic" || fail "the SONAME is not libmp4judge.so.1"

# Only zlib and the language runtimes.
while read -r needed; do
  case $needed in
    libz.so.*|libstdc++.so.*|libc.so.*|libm.so.*|libgcc_s.so.*|ld-linux*) ;;
    *) fail "unexpected dependency $needed" ;;
  esac
done < <(sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' <<<"$dynamic")

# The list of exports and the library, both ways. "?" and "*" in the list stand for any characters.
mapfile -t listed < <(sed -n '/global:/,/local:/p' "$source/cmake/mp4judge.map" |
  sed -nE 's/^ *"?([^#"]*[^"{}])"?;$/\1/p')
mapfile -t exported < <(sed -E 's/^[0-9a-f]+ . //; s/@@MP4JUDGE_1$//' <<<"$symbols" |
  grep -vx 'MP4JUDGE_1' | sort -u)
((${#listed[@]} > 100)) || fail "the list of exports was not read"
is_exported() {
  local name pattern=${1//[/\\[}
  for name in "${exported[@]}"; do [[ $name != $pattern ]] || return 0; done
  return 1
}
is_listed() {
  local pattern
  for pattern in "${listed[@]}"; do [[ $1 != ${pattern//[/\\[} ]] || return 0; done
  return 1
}
for name in "${listed[@]}"; do is_exported "$name" || fail "listed and not exported: $name"; done
for name in "${exported[@]}"; do is_listed "$name" || fail "exported and not listed: $name"; done

# Every function of the C header is there under its plain name and under a version.
plain=$(nm -D --defined-only --with-symbol-versions "$library" | awk '{print $3}')
declared=$(grep -oE '^MP4JUDGE_API [^(]*\(' "$source/include/mp4judge/mp4judge.h" | grep -oE '\w+\($' | tr -d '(')
[[ $declared == *JudgeMP4HaveDRM* ]] || fail "the header's functions were not read"
for name in $declared; do
  grep -qx "$name@@MP4JUDGE_1" <<<"$plain" || fail "$name is declared and not exported"
done
! grep -q '^av_get_bits_per_sample' <<<"$plain" || fail "av_get_bits_per_sample has C linkage"
# So is what the headers of hosts mark, functions and tables. Classes list what of them is public.
marked=$(grep -rhE '^(extern )?MP4JUDGE_API ' "$build/include/mp4judge/host" |
  sed -E 's/[[(].*//; s/.*[ *]//' | sort -u)
[[ $marked == *codec_get_id* ]] || fail "the marks of the host headers were not read"
names=$(printf '%s\n' "${exported[@]}")
for name in $marked; do
  grep -qE "(^|::)$name(\(|$)" <<<"$names" || fail "$name is marked and not exported"
done
# A host's own logging function takes the place of this one.
grep -q ' W ZRLogEx@@' <<<"$symbols" || fail "ZRLogEx is not weak"

echo "${#exported[@]} names are exported"
exit $failed
