#!/usr/bin/env python3
"""Measures how load, print and merge grow on documents made to be slow.

Usage: bench/hostile.py BUILD [--times] [--only REGEX]

Counts instructions under callgrind for each shape that `hostile --list` lists, at one size and at
four times that size. The exit status is 1 if any count grows by more than 4 * 1.25, which is worse
than n log n. With --times it writes a table of nanoseconds for each byte at 4 MiB instead, with
ratios to an ordinary document. --only selects shapes by a regular expression for their names.
"""

import argparse
import concurrent.futures
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

SIZE = 32 << 10
FACTOR = 4
WORST_GROWTH = 1.25
SKIPPED = 77
TIMED_SIZE = 4 << 20
PHASES = ["load", "print", "merge"]
# Printed text grows with the square of the depth.
QUADRATIC_OUTPUT = {"nested lists", "nested objects", "nested bodies"}


def instructions(program, shape, size, phase):
    run = subprocess.run(
        ["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", "--collect-atstart=no",
         f"--toggle-collect=measured_{phase}", program, shape, str(size), phase],
        check=True, capture_output=True, text=True)
    return int(re.search(r"Collected : (\d+)", run.stderr).group(1))


def growth(job):
    program, shape, phase = job
    small, large = (instructions(program, shape, size, phase) for size in (SIZE, FACTOR * SIZE))
    return shape, phase, large / small / FACTOR, large / (FACTOR * SIZE)


def hold(program, shapes):
    jobs = [(program, shape, phase) for shape in shapes for phase in PHASES
            if not (phase == "print" and shape in QUADRATIC_OUTPUT)]
    worst = []
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for shape, phase, grows, each in pool.map(growth, jobs):
            print(f"{shape:40} {phase:6} {each:10.1f} instructions a byte, grows by {grows:.2f}")
            if grows > WORST_GROWTH:
                worst.append(f"{phase} of {shape}")
    for each in worst:
        print(f"worse than n log n: {each}", file=sys.stderr)
    return 1 if worst else 0


def print_times(program, shapes):
    print("| Document of 4 MiB | load | print | merge | memory |\n|---|---|---|---|---|")
    ordinary = None
    for shape in shapes:
        size = TIMED_SIZE // 64 if shape in QUADRATIC_OUTPUT else TIMED_SIZE
        run = subprocess.run([program, shape, str(size), "times"], check=True,
                             capture_output=True, text=True)
        times = [float(each) for each in run.stdout.split()]
        ordinary = ordinary or times
        cells = [f"{time:.2f} ({time / base:.2f})" for time, base in zip(times[:3], ordinary)]
        print(f"| {shape} | {' | '.join(cells)} | {times[3]:.1f} |", flush=True)
    return 0


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=Path)
    parser.add_argument("--times", action="store_true", help="measure times and memory")
    parser.add_argument("--only", default="", metavar="REGEX", help="the shapes to take")
    arguments = parser.parse_args()
    program = str(arguments.build / "bin" / "hostile")
    shapes = subprocess.run([program, "--list"], check=True, capture_output=True,
                            text=True).stdout.splitlines()
    shapes = [shape for shape in shapes if re.search(arguments.only, shape)]
    if not shapes:
        parser.error(f"no shape matches {arguments.only}")
    if arguments.times:
        return print_times(program, shapes)
    if not shutil.which("valgrind"):
        print("valgrind is missing: nothing is counted.", file=sys.stderr)
        return SKIPPED
    return hold(program, shapes)


if __name__ == "__main__":
    sys.exit(main())
