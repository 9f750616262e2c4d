#!/usr/bin/env python3
"""Counts the lines and branches of src and siblings that a build's tests have run, room by room.

A line or branch of the source counts once, however often it is compiled: as a template, in an inline function, or for
each instruction set. What any of these copies ran is run. Left out are the branches that only an exception takes, with
the calls that they belong to; those that the compiler adds where no condition is written (what is destroyed after an
exception, whether a static was made, whether what is deleted is null); and lines that hold nothing but a brace.

What is not run and has a reason stands in docs/coverage.md, as the line's own text:

    ## src/room/File.cpp

    - `the line`: why no test can run it, or take that branch.

The count fails if a line that is not run has no entry there, or if an entry fits no such line any more. Branches without
an entry are listed, and fail the count only where they keep a room from its aim.
"""

import argparse
import json
import os
import re
import subprocess
import sys
from collections import defaultdict
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
REASONS = ROOT / "docs" / "coverage.md"

# Rooms by the first pattern that fits, each with its aim: the per cent of branches that are run or have a reason.
ROOMS = [
    ("object reader and writer", 100, r"src/object/TObject(Reader|Writer)\.|src/object/private/ObjectAccess\."),
    ("streams", 100, r"src/object/(private/)?(T\w*)?Stream"),
    ("variant storage", 100, r"src/object/VariantStorage\."),
    ("the rest of src/object", 97, r"src/object/"),
    ("text to numbers", 100, r"src/util/(private/)?Text"),
    ("the rest of src/util", 97, r"src/util/"),
    ("image readers and writers (ZxPixelKit)", 100, r"siblings/ZxPixelKit/"),
    ("the other siblings", 97, r"siblings/"),
    ("clipping", 100, r"src/render/stages/Clipping\."),
    ("pixel transfer", 100, r"src/render/stages/PixelTransfer\."),
    ("kernels", 90, r"src/render/kernels/"),
    ("the rest of src/render", 97, r"src/render/"),
    ("src/math", 97, r"src/math/"),
    ("src/types and src/module", 97, r"src/(types|module)/"),
]
# What a condition of its own begins with, or a further one.
CONDITION = re.compile(r"\b(?:if constexpr|if|while|for) \(|&& |&&$|\|\| |\|\|$| \? |^\? ")
# What is compiled once for each instruction set, by routines that are mostly inlined.
KERNEL = re.compile(r"/kernels/|-inl\.h$|src/math/(CubeSpline1D|InverseEx|LineSysGauss|Product|SolveGauss)\.cpp$")
SOURCE = re.compile(r"^(src|siblings/[^/]+/(src|include))/")
ENTRY = re.compile(r"^- (`+) ?(.+?) ?\1: .+")


class TFile:
    def __init__(self, name):
        self.name = name
        self.text = (ROOT / name).read_text().splitlines()
        self.lines = defaultdict(int)  # number -> runs
        self.copies = defaultdict(list)  # number -> the runs of each branch, for each copy of the line

    def add(self, number, count, branches):
        text = self.line(number)
        if not re.search(r"\w", text):
            return
        self.lines[number] += count
        if branches:
            self.copies[number].append(branches)

    def branches(self):
        """For each line with conditions, the runs of its branches, summed over its copies. Where functions are compiled
        into others, the copies of a line come as one list, of a multiple of what the line has. Where the compiler has
        decided conditions of some copies, that is no multiple: in what is compiled for several instruction sets, such
        a line then counts as one condition, and elsewhere as it stands."""
        isKernel = KERNEL.search(self.name)
        for number, copies in sorted(self.copies.items()):
            text = self.line(number)
            written = 2 * len(CONDITION.findall(text))
            size = min(len(copy) for copy in copies)
            if written == 0 and (isKernel or not text.startswith("switch (")):
                continue
            if written and all(len(copy) % written == 0 for copy in copies):
                size = written
            elif isKernel:
                size = 2
            sums = [0] * size
            for copy in copies:
                for i, runs in enumerate(copy if len(copy) % size == 0 else []):
                    sums[i % size] += runs
            yield number, sums

    def line(self, number):
        return self.text[number - 1].strip()


def chosen(branches):
    """The runs of those branches that a condition chooses between: of a call that may throw, gcov lists the return
    and the exception as two branches, one after the other."""
    kept = []
    for branch in branches:
        if not branch["throw"]:
            kept.append(branch["count"])
        elif kept:
            kept.pop()
    return kept if len(kept) > 1 else []


def count(build, jobs):
    files = {}
    # As paths from the build's folder, where gcov finds the notes beside the data.
    data = sorted(path.relative_to(build) for path in build.rglob("*.gcda"))

    def report(path):
        run = subprocess.run(["gcov", "--json-format", "--stdout", "--branch-probabilities", str(path)],
                             cwd=build, stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
        if run.returncode != 0:
            sys.exit(f"count-coverage.py: gcov failed for {path}:\n{run.stderr.decode()}")
        return [json.loads(line) for line in run.stdout.splitlines() if line.startswith(b"{")]

    with ThreadPoolExecutor(jobs) as pool:
        for reports in pool.map(report, data):
            for one in reports:
                for entry in one["files"]:
                    path = (build / entry["file"]).resolve()
                    if not path.is_relative_to(ROOT):
                        continue
                    name = str(path.relative_to(ROOT))
                    if not SOURCE.match(name):
                        continue
                    file = files.setdefault(name, TFile(name))
                    for line in entry["lines"]:
                        file.add(line["line_number"], line["count"], chosen(line["branches"]))
    return files


def read_reasons():
    """The lines' texts that have an entry, by file."""
    reasons = defaultdict(set)
    name = ""
    for text in REASONS.read_text().splitlines() if REASONS.exists() else []:
        if text.startswith("## "):
            name = text[3:].strip().strip("`")
        elif (entry := ENTRY.match(text)) and SOURCE.match(name):
            reasons[name].add(entry.group(2))
    return reasons


def percent(part, whole):
    return 100.0 if whole == 0 else 100.0 * part / whole


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build", type=Path)
    parser.add_argument("-j", "--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--only", default="", help="list what is not run only of files whose name has this in it")
    arguments = parser.parse_args()
    files = count(arguments.build.resolve(), arguments.jobs)
    if not files:
        sys.exit(f"count-coverage.py: no test has run in {arguments.build}")
    reasons = read_reasons()
    used = defaultdict(set)
    listed = []
    failures = []
    # lines, lines run, branches, branches run, branches with a reason
    rooms = {name: [0, 0, 0, 0, 0] for name, _, _ in ROOMS}
    for file in (files[name] for name in sorted(files)):
        room = rooms[next(name for name, _, pattern in ROOMS if re.match(pattern, file.name))]
        for number, runs in sorted(file.lines.items()):
            room[0] += 1
            room[1] += runs != 0
            if runs == 0:
                text = file.line(number)
                if text in reasons[file.name]:
                    used[file.name].add(text)
                else:
                    listed.append((file.name, number, "not run", text))
                    failures.append(f"{file.name}:{number} is not run and has no reason")
        for number, runs in file.branches():
            taken = sum(1 for one in runs if one != 0)
            text = file.line(number)
            room[2] += len(runs)
            room[3] += taken
            if taken == len(runs):
                continue
            if text in reasons[file.name]:
                used[file.name].add(text)
                room[4] += len(runs) - taken
            elif file.lines[number] != 0:
                which = " ".join("+" if one else "-" for one in runs)
                listed.append((file.name, number, which, text))
    for name, number, what, text in listed:
        if arguments.only in name:
            print(f"{name}:{number}: {what}: {text}")
    for name, texts in reasons.items():
        failures += [f"docs/coverage.md names a line of {name} that is run, or is not there: {text}"
                     for text in sorted(texts - used[name])]

    print()
    print("| room | lines | not run | branches | taken | taken or with a reason | aim |")
    print("|---|---:|---:|---:|---:|---:|---:|")
    total = [0, 0, 0, 0, 0]
    for name, aim, _ in ROOMS:
        lines, run, branches, taken, excused = room = rooms[name]
        total = [a + b for a, b in zip(total, room)]
        reached = percent(taken + excused, branches)
        print(f"| {name} | {lines:,} | {lines - run} | {branches:,} | {percent(taken, branches):.1f} % "
              f"| {reached:.1f} % | {aim} % |")
        if reached < aim:
            failures.append(f"{name}: {reached:.2f} % of the branches, of {aim} % aimed at")
    lines, run, branches, taken, excused = total
    print(f"| all | {lines:,} | {lines - run} | {branches:,} | {percent(taken, branches):.1f} % "
          f"| {percent(taken + excused, branches):.1f} % | |")
    if failures:
        print()
        print("\n".join(failures))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
