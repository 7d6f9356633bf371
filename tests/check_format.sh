#!/usr/bin/env bash
# Every source is laid out as .clang-format says: check_format.sh ROOT CLANG_FORMAT
set -euo pipefail
cd "$1"
folders=()
for folder in io codecs platform boxes demux iso inspect samples include door tools bindings tests \
  examples bench fuzz; do
  [[ ! -d $folder ]] || folders+=("$folder")
done
find "${folders[@]}" -type f \( -name '*.h' -o -name '*.c' -o -name '*.cpp' \) -print0 |
  xargs -0 "$2" --dry-run --Werror --style=file
