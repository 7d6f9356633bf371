#!/usr/bin/env python3
"""Changes one token of the library at a time and sees whether the unit tests notice.

    scripts/mutants.py --sample 300            a sample over the whole library
    scripts/mutants.py --files 'boxes/track/*' every change in some files
    scripts/mutants.py --at io/mmBuffer.cpp:31 every change of one line
    scripts/mutants.py --list                  what could be changed, without running anything

A changed source is compiled by itself and linked in front of the static library; of a changed
header, every source that includes it, and the tests named after it. The tests named after the file
run first, then all of them, up to the first failure. Runs are limited in processor time and memory, and a run that reaches a
limit has noticed. Changes that do not compile do not count.

Survivors are printed as FILE:LINE: BEFORE -> AFTER, with the line. scripts/equivalent_mutants.txt
lists changes that are known to make no difference, and why; they are counted, but not tried. Exits
with 1 when a change went unnoticed, with 2 when that could not be found out.
"""

import argparse
import collections
import fnmatch
import json
import os
import pathlib
import random
import re
import resource
import shlex
import shutil
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
FOLDERS = ["io", "codecs", "boxes", "demux", "iso", "inspect", "samples"]
EQUIVALENT = ROOT / "scripts" / "equivalent_mutants.txt"
MEMORY = 2 << 30  # in use: address space costs nothing, and the tests map a lot of it
SLOW = 0.2  # seconds of a suite that is run last
MOST_OF_A_LINE = 3  # changes, in a sample

TOKEN = re.compile(
    r"""//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|'(?:\\.|[^'\\\n])*'
    |0[xX][0-9A-Fa-f']+[uUlL]*|\d[\d']*(?:\.\d+)?[uUlL]*|[A-Za-z_]\w*
    |<=>|<<=|>>=|->|\+\+|--|<=|>=|==|!=|&&|\|\||<<|>>|[-+*/%&|^]=|::|\S""",
    re.S | re.X)
# The layout of the sources tells operators from template brackets, references and signs.
BETWEEN_SPACES = {
    "<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==", "&&": "||", "||": "&&",
    "+": "-", "-": "+", "*": "+", "/": "*", "%": "/", "<<": ">>", ">>": "<<", "&": "|", "|": "&",
    "^": "&", "+=": "-=", "-=": "+=", "|=": "&=", "&=": "|=", "*=": "+=", "<<=": ">>=",
    ">>=": "<<="}
WORDS = {"true": "false", "false": "true", "min": "max", "max": "min", "break": "continue",
         "continue": "break", "++": "--", "--": "++"}

Mutant = collections.namedtuple("Mutant", "file line start end before after text")


def neighbours(token):
    """What a number or a string may become."""
    if token[0] == '"':
        letter = token[-2]
        return [token[:-2] + ("x" if letter != "x" else "y") + '"'] if letter.isalnum() else []
    number = re.fullmatch(r"(0[xX][0-9A-Fa-f']+|\d[\d']*)([uUlL]*)", token)
    if number is None:
        return []
    hexadecimal = number[1][:2] in ("0x", "0X")
    value = int(number[1].replace("'", ""), 16 if hexadecimal else 10)
    return [f"{v:#x}{number[2]}" if hexadecimal else f"{v}{number[2]}"
            for v in (value + 1, value - 1) if v >= 0]


def replacements(source, match):
    token, start, end = match[0], match.start(), match.end()
    if token in BETWEEN_SPACES and source[start - 1].isspace() and source[end].isspace():
        return [BETWEEN_SPACES[token]]
    if token in WORDS:
        return [WORDS[token]]
    if token == "!":
        return [""]
    if token[0].isdigit() or token[0] == '"':
        return neighbours(token)
    return []


def mutants_of(file):
    source = (ROOT / file).read_text()
    lines = source.split("\n")
    directive = set()  # lines of the preprocessor
    for i, text in enumerate(lines):
        if text.lstrip().startswith("#") or (i - 1 in directive and lines[i - 1].endswith("\\")):
            directive.add(i)
    for match in TOKEN.finditer(source):
        line = source.count("\n", 0, match.start())
        if match[0].startswith(("//", "/*")) or line in directive:
            continue
        if 'extern "C"' in lines[line] or "static_assert" in lines[line]:
            continue
        for after in replacements(source, match):
            yield Mutant(file, line + 1, match.start(), match.end(), match[0], after,
                         lines[line].strip())


def sources():
    for folder in FOLDERS:
        for path in sorted((ROOT / folder).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                yield path.relative_to(ROOT).as_posix()


def known_equivalents():
    """{(file, text of the line, change)}; a line of the list is FILE | TEXT | CHANGE | WHY."""
    known = set()
    if EQUIVALENT.exists():
        for line in EQUIVALENT.read_text().splitlines():
            if not line.startswith("#") and line.strip():
                file, text, change, _ = (part.strip().replace("\\|", "|")
                                         for part in line.split(" | ", 3))
                known.add((file, text, change))
    return known


class Build:
    """The unit tests, linked anew for each change."""

    def __init__(self, folder, work):
        self.folder, self.work = folder, work
        if not (folder / "compile_commands.json").exists():
            run(["cmake", "-S", ROOT, "-B", folder, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
                 "-DCMAKE_CXX_FLAGS_DEBUG=-O0", "-DMP4JUDGE_TOOLS=OFF",
                 "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON"])
        run(["ninja", "-j1", "-C", folder, "mp4judge_tests"])
        library = set(subprocess.run(["ninja", "-C", folder, "-t", "inputs", "mp4judge_internal"],
                                     check=True, capture_output=True, text=True).stdout.split())
        self.commands = {}
        self.commands_of_tests = {}
        self.tests = {}  # their objects
        for entry in json.loads((folder / "compile_commands.json").read_text()):
            file = pathlib.Path(entry["file"])
            words = shlex.split(entry["command"])
            output = words[words.index("-o") + 1]
            if file.is_relative_to(ROOT) and output in library:
                self.commands[file.relative_to(ROOT).as_posix()] = words
            elif "/mp4judge_tests.dir/" in output and file.is_relative_to(ROOT / "tests"):
                self.commands_of_tests[file.relative_to(ROOT).as_posix()] = words
                self.tests[file.relative_to(ROOT).as_posix()] = output
        self.includes = {}
        self.link = self.link_command()
        self.precompile()

    def link_command(self):
        """The tests' own link command, with their objects joined into one. What is built in the
        folder meanwhile changes nothing: the library is a copy, too."""
        lines = subprocess.run(["ninja", "-C", self.folder, "-t", "commands", "mp4judge_tests"],
                               check=True, capture_output=True, text=True).stdout.splitlines()
        words = shlex.split(lines[-1])
        compiler = next(i for i, word in enumerate(words) if re.search(r"(\+\+|cc|clang)[^/]*$", word))
        words = words[compiler:]
        words = words[:words.index("&&")] if "&&" in words else words
        objects = [w for w in words if w.endswith(".o") and "/mp4judge_tests.dir/" in w]
        self.joined = self.work / "tests.o"
        run([words[0], "-r", "-nostdlib", "-o", self.joined, *objects], cwd=self.folder)
        libraries = [self.kept(w) for w in words[words.index("-o") + 2:] if not w.endswith(".o")]
        linker = ["-fuse-ld=lld"] if shutil.which("ld.lld") else []
        return [words[0], *linker, "-o", self.work / "tests", "CHANGED", *libraries]

    def kept(self, word):
        if not word.endswith(".a") or not (self.folder / word).is_file():
            return word
        return shutil.copy(self.folder / word, self.work / pathlib.Path(word).name)

    def precompile(self):
        """The system's headers, which take longer to read than any source."""
        system = set()
        for file in self.commands:
            system.update(re.findall(r"^#\s*include\s*<([a-z_]+)>", (ROOT / file).read_text(), re.M))
        self.common = self.work / "common.h"
        self.common.write_text("".join(f"#include <{name}>\n" for name in sorted(system)))
        words = self.flags(next(iter(self.commands)))
        run([*words, "-x", "c++-header", "-o", f"{self.common}.gch", self.common], cwd=self.folder)

    def flags(self, file):
        """The command that compiles a source, without its input and output. A change need be
        neither tidy nor fast."""
        words = self.commands.get(file) or self.commands_of_tests[file]
        words = words[1:] if words[0].endswith("ccache") else list(words)
        for option in ("-o", "-c"):
            at = words.index(option)
            del words[at:at + 2]
        return [w for w in words if w != "-Werror"] + ["-O0", "-w"]

    def included(self, file):
        if file not in self.includes:
            path = ROOT / file
            text = path.read_text() if path.exists() else ""
            self.includes[file] = re.findall(r'^\s*#\s*include\s*"([^"]+)"', text, re.M)
        return self.includes[file]

    def depends(self, file, header, seen):
        if file == header:
            return True
        fresh = [f for f in self.included(file) if f not in seen]
        seen.update(fresh)
        return any(self.depends(f, header, seen) for f in fresh)

    def make(self, mutant, source):
        """Compiles and links a change; False when it does not compile."""
        overlay = self.work / "changed"
        shutil.rmtree(overlay, ignore_errors=True)
        changed = overlay / mutant.file
        changed.parent.mkdir(parents=True)
        changed.write_text(source[:mutant.start] + mutant.after + source[mutant.end:])
        if mutant.file in self.commands:
            files = [mutant.file]
        else:
            files = [f for f in self.commands if self.depends(f, mutant.file, {f})]
        objects = []
        for i, file in enumerate(files):
            objects.append(overlay / f"{i}.o")
            if not self.compile(file, changed if file == mutant.file else ROOT / file, objects[-1],
                                overlay):
                return False
        rest = [self.joined]
        if mutant.file not in self.commands:
            # In what is inline, the tests named after a header see its change.
            tests = [f for f in map(relative, tests_named_after(mutant.file)) if f in self.tests]
            for i, file in enumerate(tests):
                objects.append(overlay / f"test{i}.o")
                if not self.compile(file, ROOT / file, objects[-1], overlay):
                    return False
            rest = [o for f, o in self.tests.items() if f not in tests] if tests else rest
        words = [[*objects, *rest] if w == "CHANGED" else [w] for w in self.link]
        return subprocess.run(sum(words, []), cwd=self.folder, capture_output=True).returncode == 0

    def compile(self, file, path, output, overlay):
        words = self.flags(file)
        # The changed header comes before the one it stands for.
        words[1:1] = [f"-I{overlay}"]
        if file in self.commands:
            words += ["-include", self.common]
        words += ["-o", output, "-c", path]
        return subprocess.run(words, cwd=self.folder, capture_output=True).returncode == 0


def relative(path):
    return path.relative_to(ROOT).as_posix()


def tests_named_after(file):
    return sorted((ROOT / "tests").rglob(f"{pathlib.Path(file).stem}*Test.cpp"))


def run(words, cwd=None):
    result = subprocess.run([str(w) for w in words], cwd=cwd, capture_output=True, text=True)
    if result.returncode != 0:
        sys.stderr.write(result.stdout + result.stderr)
        sys.exit(2)


def memory_of(pid):
    try:
        pages = int(pathlib.Path(f"/proc/{pid}/statm").read_text().split()[1])
    except (OSError, IndexError, ValueError):
        return 0
    return pages * resource.getpagesize()


class Tests:
    def __init__(self, binary, work, without):
        self.binary, self.work, self.without = binary, work, without

    def limit(self, seconds):
        def apply():
            resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds + 1))
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        return apply

    def pass_(self, filters, seconds, more=()):
        """Whether the tests of these filters pass, within so much processor time."""
        scratch = self.work / "tmp"
        scratch.mkdir(exist_ok=True)
        tests = subprocess.Popen(
            [self.binary, "--gtest_brief=1", "--gtest_fail_fast",
             f"--gtest_filter={filters}" if "-" in filters else
             f"--gtest_filter={filters}-{self.without}", *more],
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, stdin=subprocess.DEVNULL,
            preexec_fn=self.limit(seconds), env={**os.environ, "TMPDIR": str(scratch)})
        give_up = time.monotonic() + 60 + 20 * seconds
        while tests.poll() is None:
            try:
                tests.wait(0.1)
            except subprocess.TimeoutExpired:
                if memory_of(tests.pid) > MEMORY or time.monotonic() > give_up:
                    tests.kill()
        shutil.rmtree(scratch, ignore_errors=True)
        return tests.returncode == 0

    def measure(self):
        """Runs everything once, to learn how long it takes and which suites take long."""
        report = self.work / "report.json"
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        if not self.pass_("*", 600, [f"--gtest_output=json:{report}"]):
            print("the tests fail without any change", file=sys.stderr)
            sys.exit(2)
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        self.most = 10 + int(4 * (after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime))
        self.slow = ":".join(f"{suite['name']}.*" for suite in json.loads(report.read_text())["testsuites"]
                             if float(suite["time"].rstrip("s")) > SLOW)

    def named_after(self, file):
        """A filter for the suites in the test sources of a file's name."""
        suites = set()
        for path in tests_named_after(file):
            suites.update(re.findall(r"^TEST(?:_[FP])?\((\w+)", path.read_text(), re.M))
        return ":".join(f"{s}.*:*/{s}.*" for s in sorted(suites))

    def notice(self, mutant, quick):
        near = self.named_after(mutant.file)
        return ((near and not self.pass_(near, 10)) or
                not self.pass_(f"*-{self.slow}:{self.without}", self.most) or
                not (quick or self.pass_(self.slow, self.most)))


def chosen(args):
    patterns = args.files or ["*"]
    all_mutants = [m for file in sources() if any(fnmatch.fnmatch(file, p) for p in patterns)
                   for m in mutants_of(file)]
    if args.at:
        all_mutants = [m for m in all_mutants if f"{m.file}:{m.line}" in args.at]
    if not args.sample:
        return all_mutants
    random.Random(args.seed).shuffle(all_mutants)
    of_line = collections.Counter()  # tables of numbers would crowd out everything else
    few = []
    for mutant in all_mutants:
        of_line[mutant.file, mutant.line] += 1
        if of_line[mutant.file, mutant.line] <= MOST_OF_A_LINE:
            few.append(mutant)
    return few


def change(mutant):
    return f"{mutant.before} -> {mutant.after or '(nothing)'}"


def describe(mutant):
    return f"{mutant.file}:{mutant.line}: {change(mutant)}    {mutant.text}"


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--sample", type=int, help="changes to try, chosen at random")
    parser.add_argument("--seed", type=int, default=1, help="of that choice; the same choice each time")
    parser.add_argument("--skip", type=int, default=0,
                        help="changes of that choice that an earlier run has tried")
    parser.add_argument("--files", nargs="+", metavar="PATTERN")
    parser.add_argument("--at", nargs="+", metavar="FILE:LINE")
    parser.add_argument("--without", default="", metavar="FILTER", help="tests that are not run")
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--quick", action="store_true",
                        help="leave out the suites that take long; what survives may not survive them")
    parser.add_argument("--build", type=pathlib.Path, default=ROOT / "build" / "mutants",
                        help="where to build; a folder that is there is taken as it is configured, "
                        "build/test for one")
    args = parser.parse_args()

    candidates = chosen(args)[args.skip:]
    if args.list:
        for mutant in candidates[:args.sample]:
            print(describe(mutant))
        return 0
    known = known_equivalents()
    counts = collections.Counter()
    started = time.monotonic()
    with tempfile.TemporaryDirectory(prefix="mutants-") as scratch:
        work = pathlib.Path(scratch)
        build = Build(args.build.resolve(), work)
        tests = Tests(work / "tests", work, args.without)
        run([build.joined if w == "CHANGED" else w for w in build.link], cwd=build.folder)
        tests.measure()
        text = {m.file: (ROOT / m.file).read_text() for m in candidates}
        for done, mutant in enumerate(candidates, args.skip + 1):
            if args.sample and counts["tried"] == args.sample:
                break
            if (mutant.file, mutant.text, change(mutant)) in known:
                counts["tried"] += 1
                counts["equivalent"] += 1
                continue
            if not build.make(mutant, text[mutant.file]):
                counts["broken"] += 1
                continue
            counts["tried"] += 1
            if tests.notice(mutant, args.quick):
                counts["noticed"] += 1
            else:
                counts["survived"] += 1
                print(describe(mutant), flush=True)
            if counts["tried"] % 10 == 0:
                print(f"{counts['tried']} tried, {counts['survived']} unnoticed, {counts['equivalent']} "
                      f"make no difference, {time.monotonic() - started:.0f} s; to go on: --skip {done}",
                      file=sys.stderr, flush=True)
    counted = counts["tried"] - counts["equivalent"]
    print(f"{counts['tried']} changes (and {counts['broken']} that do not compile): "
          f"{counts['noticed']} noticed, {counts['equivalent']} known to make no difference, "
          f"{counts['survived']} unnoticed; {100 * counts['noticed'] / max(counted, 1):.1f} % of "
          f"{counted} noticed")
    return 1 if counts["survived"] else 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except (OSError, subprocess.SubprocessError, ValueError) as trouble:
        print(f"mutants.py: {trouble}", file=sys.stderr)
        sys.exit(2)
