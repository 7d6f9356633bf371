#!/usr/bin/env bash
# check_docs.sh finds what is false in a page: check_docs_test.sh SOURCE BUILD
set -euo pipefail
source=$1 build=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=0

# expect CODE NAME: of the page that stands on the input.
expect() {
  local code=0
  cat >"$work/page.md"
  bash "$source/tests/check_docs.sh" "$source" "$build" "$work/page.md" >"$work/log" 2>&1 || code=1
  ((code == $1)) && return
  echo "FAILED: $2: ends with $code"
  cat "$work/log"
  failed=1
}

expect 0 "a true page" <<'PAGE'
```console
$ echo one; echo two; echo three
one
...
three
```

```console needs no-such-command
$ no-such-command
```

```text
anything
```
PAGE
for output in $'one\nthree' $'two\n...'; do
  expect 1 "another output" <<<$'```console\n$ echo one; echo two; echo three\n'"$output"$'\n```'
done
expect 1 "a command that fails" <<<$'```\nfalse\n```'
expect 1 "a program that does not compile" <<<$'```c\nint main(void) { return x; }\n```'
expect 1 "a program that does not judge the clip" <<<$'```c\nint main(void) { return 1; }\n```'
expect 1 "a Python program that raises" <<<$'```python\nraise SystemExit(1)\n```'
expect 1 "a language that nobody knows" <<<$'```fortran\nEND\n```'
expect 1 "no reason for not running" <<<$'```sh norun\nfalse\n```'
expect 1 "a link that leads nowhere" <<<'[there](none.md)'
expect 1 "a block without backticks" <<<$'Like this:\n\n    true'
exit $failed
