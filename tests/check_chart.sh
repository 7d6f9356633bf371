#!/usr/bin/env bash
# A chart in a browser, driven as a reader would: check_chart.sh TOOL CHROMIUM
set -euo pipefail
tool=$1 chromium=$2 here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
failed=0
python3 "$here/chart/film.py" film.mp4
"$tool" chart film.mp4 -o film.html
{ cat film.html && echo "<script>" && cat "$here/chart/drive.js" && echo "</script>"; } >driven.html

# open SCHEME: leaves what the page said in `seen`. 0 is a dark system, 1 a light one.
open() {
  timeout 120 "$chromium" --headless --no-sandbox --disable-gpu --user-data-dir="$work/profile" \
    --window-size=1280,900 --blink-settings="preferredColorScheme=$1" --virtual-time-budget=5000 \
    --enable-logging=stderr --dump-dom "file://$work/driven.html" >dom 2>log || { cat log; exit 1; }
  sed -n '/<pre id="seen">/,/<\/pre>/p' dom | sed 's/<[^>]*>//g' >seen
  ! grep -E 'CONSOLE.*(Error|Uncaught)' log || failed=1
}
# says PATTERN
says() {
  grep -qE -e "$1" seen && return 0
  echo "FAILED: the page does not say '$1' but:"
  cat seen
  failed=1
}

open 1
size=$(stat -c %s film.mp4 | sed -E ':a; s/([0-9])([0-9]{3})($|,)/\1,\2\3/; ta')
says "^whole: bytes 0 to $size\$"
says "^back: bytes 0 to $size\$"
says '^first box: .*(ftyp|boxes, among them).*\| byte 0, [0-9,]+ bytes'
says '^beside: nothing$'
says '^left: nothing$'
says '^evidence: moov/trak\[[12]\]/.* \| the verdict rests on this'
says '^ink: rgb\(31, 35, 40\)$'
for what in zoomed movie "double click"; do
  says "^$what: bytes [0-9,]+ to [0-9,]+\$"
  ! grep -qE "^$what: bytes 0 to $size\$" seen || { echo "FAILED: $what shows the whole file"; failed=1; }
done
open 0
says '^ink: rgb\(232, 230, 225\)$'
exit $failed
