# Sourced: runs the code blocks of a page as its reader would. The language behind the three backticks
# says what a block is:
#
#   (none), sh    commands, which must succeed; a program a.out that they make must judge the clip
#   console       lines "$ COMMAND" and below each what it prints; "..." stands for any lines
#   c, cpp        a whole program; compiled against what is installed, it must judge the clip
#   cmake         what links the page's last program, as `app`, in a project
#   python        a program
#   text          nothing to run
#
# Behind the language "needs NAME" says of a block that it runs where that command, or in python that
# module, is there, and "norun: REASON" that it runs on no machine of ours. Few should.
#
# In commands FILE (also FILE...) is a clear file, FOLDER one of clear files, OUT one that is not there
# yet, PREFIX where everything is installed, and NAME a test. The caller sets clear, folder, out,
# prefix and python.

fail() {
  echo "FAILED: $*"
  exit 1
}

# split_blocks PAGE FOLDER: one file a block, NNN.LANGUAGE, with what stands behind the language in
# NNN.LANGUAGE.info.
split_blocks() {
  mkdir -p "$2"
  awk -v out="$2" '
    /^ *```/ && !inside {inside = 1; sub(/^ *```/, ""); if ($1 == "") $1 = "sh"
      path = sprintf("%s/%03d.%s", out, ++n, $1); printf "" >path
      if (NF > 1) {info = $0; sub(/^[^ ]+ +/, "", info); print info >(path ".info"); close(path ".info")}
      next}
    /^ *```/ {inside = 0; close(path); next}
    inside {print >path}' "$1"
}

# left_out BLOCK: whether it does not run here; says so.
left_out() {
  local info=
  [[ ! -e $1.info ]] || info=$(<"$1.info")
  case $info in
    "") return 1 ;;
    "norun: "?*) echo "not run, ${info#norun: }: $(head -1 "$1")" ;;
    "needs "*)
      if [[ $1 == *.python ]]; then
        "$python" -c "import ${info#needs }" 2>/dev/null && return 1
      else
        command -v "${info#needs }" >/dev/null && return 1
      fi
      echo "not run, for ${info#needs } is missing: $(head -1 "$1")"
      ;;
    *) fail "what is \"$info\" behind a language?" ;;
  esac
}

# in_place: the words that stand for something.
in_place() {
  sed -E "s#\bFILE\b(\.\.\.)?#$clear#g; s#\bFOLDER\b#$folder#g; s#\bOUT\b#$out#g
    s#PREFIX#$prefix#g; s#\bNAME\b#BoxSTTS#g"
}
# What ./test is made of is not run inside it once more.
of_test() {
  [[ $1 =~ ^\./test( |$) || $1 == "cmake --preset test && cmake --build --preset test && ctest --preset test" ]]
}
judges_the_clip() { "$1" clip.m4v >printed || fail "$2 ends with $? on a clear file"; }

run_sh() {
  local line
  rm -f a.out
  while IFS= read -r line; do
    of_test "${line%%  *}" || echo "$line"
  done <"$1" | in_place >commands
  bash -euo pipefail commands || fail "these commands: $(<commands)"
  [[ ! -e a.out ]] || judges_the_clip ./a.out "the program of $(<commands)"
}

# matches EXPECTED PRINTED: whether the one, with its "..." lines, stands for the other.
matches() {
  awk 'function same(i, j) {
      if (i > n) return j > m
      if (want[i] == "...") return same(i + 1, j) || (j <= m && same(i, j + 1))
      return j <= m && want[i] == got[j] && same(i + 1, j + 1)
    }
    FNR == NR {want[++n] = $0; next} {got[++m] = $0} END {exit !same(1, 1)}' "$1" "$2"
}

run_console() {
  local command
  while IFS= read -r command; do
    { bash -c "$(in_place <<<"$command")" 2>&1 || (($? < 126)) || fail "$command"; } |
      { grep -v "^judge: building" || true; } >printed
    awk -v command="\$ $command" '$0 == command {on = 1; next} /^\$ / {on = 0} on' "$1" >expected
    matches expected printed || fail "\"$command\" prints: $(<printed)"
  done < <(sed -n 's/^\$ //p' "$1")
}

run_program() {
  local flags=(-Wall -Wextra -Werror -I"$prefix/include" -L"$prefix/lib" -Wl,-rpath,"$prefix/lib")
  case $1 in
    *.c) cc -std=c99 "${flags[@]}" -o program "$1" -lmp4judge ;;
    *) c++ -std=c++17 "${flags[@]}" -o program "$1" -lmp4judge ;;
  esac || fail "the program does not compile: $(<"$1")"
  judges_the_clip ./program "the program $(<"$1")"
}

run_python() {
  in_place <"$1" >program.py
  "$python" -W error program.py || fail "the program $(<program.py)"
}

run_block() {
  case $1 in
    *.sh) run_sh "$1" ;;
    *.console) run_console "$1" ;;
    *.python) run_python "$1" ;;
    *.c | *.cpp) run_program "$1" ;;
    *.text) ;;
    *) fail "nobody knows how to run ${1##*.}" ;;
  esac
}
