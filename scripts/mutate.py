#!/usr/bin/env python3
"""Changes one token or statement of a source file at a time and sees whether the tests notice.

Each mutant is built in a tree of its own (build/mutants/tree, a git worktree of the commit that is checked out),
so that the files at hand are never touched. First the tests run that the file names ("Tested by:") or that mirror
it (tests/object/TStream.cpp for src/object/TStream.cpp), then, if those pass, all of the room's. A mutant that does
not compile counts as none. Results are appended to a list, and a mutant that the list has is not tried again.

In the run of all of a room's tests, those stay out that take longer than --slow seconds by themselves: what survives
is to be tried again with --survivors, where every test runs and the row in the list is renewed.
"""

import argparse
import fnmatch
import os
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
LIST = ROOT / "tests" / "mutation" / "mutants.tsv"
KITS = ("ZxBaseKit", "ZxRunKit", "ZxPixelKit", "ZxDrawKit")

# The instruction sets of this processor, of which one alone may be compiled for.
LEVELS = ("SSE2", "SSSE3", "AVX2", "AVX3")

HEAD = ["file", "code", "line", "mutation", "verdict", "by"]

# Functions whose two arguments may change places without a difference.
COMMUTATIVE = ("min", "max", "swap", "And", "Or", "Xor", "Add", "Mul", "Min", "Max", "Eq", "Ne")

# What a token becomes. Spaces keep templates, arrows and shifts out of it.
TOKENS = [
    (r" < ", " <= "), (r" <= ", " < "), (r" > ", " >= "), (r" >= ", " > "), (r" == ", " != "), (r" != ", " == "),
    (r" \+ ", " - "), (r" - ", " + "), (r" \* ", " / "), (r" && ", " || "), (r" \|\| ", " && "), (r" & ", " | "),
    (r" \+= ", " -= "), (r" -= ", " += "), (r"\btrue\b", "false"), (r"\bfalse\b", "true"), (r"(?<![\w.])!(?=[\w(])", ""),
]
NUMBER = re.compile(r"(?<![\w.\"'])(\d+)(?![\w.\"'])")
DECIMAL = re.compile(r"(?<![\w.])(\d+\.\d+)(f?)(?![\w.])")
ARGUMENTS = re.compile(r"\b(\w+)\((\w[\w.\->]*), (\w[\w.\->]*)\)")
STATEMENT = re.compile(r"^\s+(?!return|break|continue|case|using|goto|const |constexpr|static|auto|throw|delete)"
                       r"[\w\[\]().>*&:+\-]+(\s*[+\-*/|&^]?=[^=].*|\(.*\)|\+\+|--)?;$")
SKIPPED = re.compile(r"^\s*(//|#|\*|static_assert|assert|template|using|namespace|extern)|ASSERT|NOLINT")


def mutants(path):
    """(line number from 1, what is changed, the new line) for all that can be done to a file."""
    found = []
    in_comment = False
    for number, line in enumerate((ROOT / path).read_text().splitlines(), 1):
        if "/*" in line:
            in_comment = True
        if in_comment:
            in_comment = "*/" not in line
            continue
        if SKIPPED.search(line):
            continue
        code = line.split("//")[0]
        spans = [m.span() for m in re.finditer(r'"(?:\\.|[^"\\])*"', code)]
        inside = lambda at: any(a <= at < b for a, b in spans)
        for pattern, new in TOKENS:
            for m in re.finditer(pattern, code):
                if not inside(m.start()):
                    found.append((number, f"{m.group().strip()} -> {new.strip() or 'nothing'}",
                                  line[:m.start()] + new + line[m.end():]))
        for m in NUMBER.finditer(code):
            if not inside(m.start()):
                new = str(int(m.group(1)) + 1)
                found.append((number, f"{m.group(1)} -> {new}", line[:m.start(1)] + new + line[m.end(1):]))
        for m in DECIMAL.finditer(code):
            if not inside(m.start()):
                new = repr(float(m.group(1)) * 1.0625 + (0.0625 if float(m.group(1)) == 0 else 0)) + m.group(2)
                found.append((number, f"{m.group()} -> {new}", line[:m.start()] + new + line[m.end():]))
        for m in ARGUMENTS.finditer(code):
            if not inside(m.start()) and m.group(2) != m.group(3) and m.group(1) not in ("if", "while", "for", *COMMUTATIVE):
                new = f"{m.group(1)}({m.group(3)}, {m.group(2)})"
                found.append((number, f"{m.group()} -> {new}", line[:m.start()] + new + line[m.end():]))
        if STATEMENT.match(code):
            found.append((number, f"dropped: {code.strip()}", re.match(r"\s*", line).group() + ";"))
    return found


def program_of(path):
    parts = Path(path).parts
    return "test_" + (parts[1] if parts[0] in ("src", "siblings") else "zxrender")


def filter_of(path):
    """The filter of Google Test for the tests that a file names, or for those that mirror it."""
    text = (ROOT / path).read_text()
    named = re.search(r"Tested by:((?:[^\n]*\n\s*//[^\n]*|[^\n]*)*)", text)
    if named:
        groups = re.findall(r"\(([\w.*, ]+)\)", named.group(1).replace("//", " "))
        return ":".join(name.strip() + ("" if "." in name else ".*") for group in groups for name in group.split(","))
    parts = Path(path).parts
    folder = ROOT / "tests" / parts[1] if parts[0] == "src" else ROOT / parts[0] / parts[1] / "tests"
    mirror = next(folder.glob(Path(path).stem.replace("-inl", "") + ".cpp"), None)
    if not mirror:
        return ""
    suites = set(re.findall(r"^(?:TYPED_)?TEST(?:_F|_P)?\((\w+),", mirror.read_text(), re.MULTILINE))
    return ":".join(f"*{suite}*.*" for suite in sorted(suites))


class Tree:
    def __init__(self, jobs, slow, levels, name):
        self.jobs = jobs
        self.slow = slow
        self.took = {}  # seconds that each test of a program takes as it is
        self.levels = levels
        self.failing = {}  # a program's tests that fail without some instruction set
        self.left_out = {}  # those, and the tests that take longer than is wanted
        self.path = ROOT / "build" / "mutants" / name
        self.build = self.path / "build" / "release"
        if not (self.path / "CMakeLists.txt").exists():
            self.path.parent.mkdir(parents=True, exist_ok=True)
            self.git(ROOT, "worktree", "prune")
            self.git(ROOT, "worktree", "add", "--detach", str(self.path))
        head = subprocess.run(["git", "-C", ROOT, "rev-parse", "HEAD"], check=True, capture_output=True, text=True)
        self.git(self.path, "checkout", "--quiet", "--force", "--detach", head.stdout.strip())
        linker = "-fuse-ld=lld" if shutil.which("ld.lld") else ""
        if self.levels != "all":
            self.lighten()
        # As the release is built and where, so that a compiler cache has all but the mutants.
        self.run(["cmake", "-S", self.path, "-B", self.build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
                  f"-DCMAKE_EXE_LINKER_FLAGS={linker}", f"-DCMAKE_SHARED_LINKER_FLAGS={linker}",
                  "-DZX_BUILD_TESTS=ON", "-DZX_BUILD_TOOLS=OFF"], 600)

    def lighten(self):
        """Without the dearest instruction set and hardly optimised, or for one alone and not optimised at all: kernels that
        take a minute and a half to compile take half of one then, or three seconds."""
        names = self.path / "src" / "types" / "private" / "InstructionSets.h"
        others = "|".join(level for level in LEVELS if level != self.levels)
        without, level = ("AVX3", "-O1") if self.levels == "few" else (f"(?:{others})", "-O0")
        names.write_text(re.sub(rf"(#define ZX_TARGETS_{without}) .*", r"\1 0", names.read_text()))
        with (self.path / "src" / "CMakeLists.txt").open("a") as out:
            out.write(f"set_source_files_properties(${{ZX_KERNEL_SOURCES}} PROPERTIES COMPILE_OPTIONS {level})\n")

    @staticmethod
    def git(folder, *arguments):
        subprocess.run(["git", "-C", folder, *arguments], check=True, stdout=subprocess.DEVNULL)

    @staticmethod
    def run(command, timeout, cpu=resource.RLIM_INFINITY):
        limit = lambda: resource.setrlimit(resource.RLIMIT_CPU, (cpu, resource.RLIM_INFINITY))
        return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace",
                              timeout=timeout, preexec_fn=limit)

    def make(self, program):
        done = self.run(["cmake", "--build", self.build, "-j", str(self.jobs), "--target", program], 3600)
        return done.returncode == 0

    def passes(self, program, tests):
        """None if they pass, otherwise the name of the first test that does not, or how the program ended."""
        command = [self.build / "bin" / program, "--gtest_brief=1", "--gtest_fail_fast"]
        patterns = tests.split("-")[0].split(":")
        usual = sum(s for name, s in self.took[program].items() if any(fnmatch.fnmatchcase(name, p) for p in patterns))
        # Of time that passes, which other processes take, too, and of time on a processor.
        wall, cpu = 60 + 5 * usual, 10 + int(3 * usual)
        try:
            done = self.run(command + [f"--gtest_filter={tests}"], wall, cpu)
        except subprocess.TimeoutExpired:
            return "a test that hangs"
        if done.returncode == 0:
            return None
        if done.returncode == -signal.SIGXCPU:
            return "a test that hangs"
        failed = re.search(r"\[  FAILED  \] (\S+)", done.stdout)
        return failed.group(1).rstrip(",") if failed else f"the end of the program by {done.returncode}"

    def stands(self, program):
        """Whether a program builds and passes as it is; from then on a run that takes far longer hangs."""
        if not self.make(program):
            return False
        done = self.run([self.build / "bin" / program], 3600)
        # With fewer instruction sets those fail that look for each of them.
        failing = re.findall(r"\[  FAILED  \] ([^\s,]+).*ms\)", done.stdout)
        if done.returncode != 0 and (self.levels == "all" or not failing):
            return False
        took = re.findall(r"\[       OK \] (\S+)(?:,.*)? \((\d+) ms\)", done.stdout)
        self.took[program] = {name.rstrip(","): int(ms) / 1000 for name, ms in took}
        slow = [name for name, seconds in self.took[program].items() if self.slow and seconds > self.slow]
        self.failing[program] = ":".join(failing)
        self.left_out[program] = ":".join(failing + slow)
        return True

    def verdict(self, path, line, new):
        """(verdict, by what), with the file put back afterwards."""
        file = self.path / path
        before = file.read_text()
        lines = before.splitlines(keepends=True)
        lines[line - 1] = new + "\n"
        program = program_of(path)
        try:
            file.write_text("".join(lines))
            if not self.make(program):
                return "no mutant", "does not compile"
            own = filter_of(path)
            by = (self.passes(program, f"{own}-{self.failing[program]}") if own else None)
            by = by or self.passes(program, f"*-{self.left_out[program]}")
            return ("killed", by) if by else ("survived", "")
        finally:
            file.write_text(before)


def listed():
    if not LIST.exists():
        return []
    rows = [line.split("\t") for line in LIST.read_text().splitlines()[1:]]
    return [row for row in rows if len(row) >= 5]


def write(rows):
    LIST.parent.mkdir(parents=True, exist_ok=True)
    LIST.write_text("".join("\t".join(row) + "\n" for row in [HEAD, *rows]))


def new_mutants(given):
    """Mutants by chance that the list does not have: (file, code, line, mutation, new line)."""
    known = {(row[0], row[1], row[3]) for row in listed()}
    pool = []
    for named in given.files:
        path, _, span = named.partition(":")
        first, last = map(int, span.split("-")) if span else (1, sys.maxsize)
        lines = (ROOT / path).read_text().splitlines()
        pool += [(path, lines[line - 1].strip(), line, what, new) for line, what, new in mutants(path)
                 if first <= line <= last]
    pool = [m for m in pool if (m[0], m[1], m[3]) not in known]
    random.Random(given.seed).shuffle(pool)
    return pool[:given.count]


def survivors(given):
    """The list's survivors, where their code still stands."""
    found = []
    for path, code, line, what, verdict, *_ in listed():
        if verdict != "survived" or (given.files and path not in given.files):
            continue
        lines = (ROOT / path).read_text().splitlines()
        same = [m for m in mutants(path) if m[1] == what and lines[m[0] - 1].strip() == code]
        same.sort(key=lambda m: abs(m[0] - int(line)))
        if not same:
            print(f"mutate.py: {path} has no line {code!r} any more", file=sys.stderr)
            continue
        found.append((path, code, same[0][0], what, same[0][2]))
    return found


def main():
    options = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    options.add_argument("files", nargs="*", help="sources of src and siblings; FILE:A-B for its lines A to B alone")
    options.add_argument("--count", type=int, default=20, help="how many mutants in all, chosen by chance (20)")
    options.add_argument("--seed", type=int, default=1, help="what chance begins with (1)")
    options.add_argument("--slow", type=float, default=5, help="tests that take more seconds stay out of a room's run (5)")
    options.add_argument("--levels", choices=("all", "few", *LEVELS), default="all",
                         help="compile for all instruction sets, without the dearest, AVX-512, or for one alone")
    options.add_argument("--survivors", action="store_true", help="try the list's survivors again, with every test")
    options.add_argument("--tree", default="tree", help="name of the tree in build/mutants: with two of them two runs go on at a time")
    options.add_argument("--list", action="store_true", help="only print what could be done")
    options.add_argument("-j", "--jobs", type=int, default=os.cpu_count())
    given = options.parse_args()

    pool = survivors(given) if given.survivors else new_mutants(given)
    if given.list:
        for path, _, line, what, _ in pool:
            print(f"{path}:{line}: {what}")
        return 0
    tree = Tree(given.jobs, 0 if given.survivors else given.slow, given.levels, given.tree)
    for program in sorted({program_of(m[0]) for m in pool}):
        if not tree.stands(program):
            print(f"mutate.py: {program} does not pass as it is", file=sys.stderr)
            return 2
    tried = killed = 0
    for index, (path, code, line, what, new) in enumerate(pool, 1):
        begun = time.monotonic()
        verdict, by = tree.verdict(path, line, new)
        print(f"{index}/{len(pool)} {path}:{line}: {what}: {verdict} {by} ({time.monotonic() - begun:.0f} s)", flush=True)
        if verdict == "no mutant":
            continue
        tried += 1
        killed += verdict == "killed"
        rows = listed()
        row = [path, code, str(line), what, verdict, by]
        at = next((i for i, r in enumerate(rows) if given.survivors and (r[0], r[1], r[3]) == (path, code, what)), len(rows))
        rows[at:at + 1] = [row]
        write(rows)
    print(f"{tried} mutants, {killed} killed, {tried - killed} survived")
    return 0


if __name__ == "__main__":
    sys.exit(main())
