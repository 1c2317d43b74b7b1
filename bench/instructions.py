#!/usr/bin/env python3
"""Counts the instructions that load, print, merge, plan and comparison take for each byte of a document of
1 MiB.

Instructions do not depend on how busy the machine is, so that a change that makes the library
slower shows although times vary. The figures that hold are in instructions.json, by compiler; with
one that is not there nothing is compared. When one of them grows by more than 3 %, the exit status
is 1. A change that is worth its instructions renews the figures, and says so in its commit:

    bench/instructions.py BUILD --renew

BUILD is the folder of an optimised build.
"""

import argparse
import json
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

HERE = Path(__file__).resolve().parent
FIGURES = HERE / "instructions.json"
PHASES = ["load", "print", "merge", "plan", "apply", "diff", "diff_all"]
TOLERANCE = 0.03
SKIPPED = 77


def compiler(build):
    cache = (build / "CMakeCache.txt").read_text()
    command = re.search(r"^CMAKE_CXX_COMPILER:\w+=(.*)$", cache, re.MULTILINE).group(1)
    version = subprocess.run([command, "-dumpfullversion"], check=True, capture_output=True, text=True)
    machine = subprocess.run([command, "-dumpmachine"], check=True, capture_output=True, text=True)
    return f"{Path(command).name} {version.stdout.strip()} {machine.stdout.strip()}"


def instructions(build, document, phase):
    command = ["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null",
               "--collect-atstart=no", f"--toggle-collect=measured_{phase}",
               str(build / "bin" / "instructions"), str(document), phase]
    run = subprocess.run(command, check=True, capture_output=True, text=True)
    return int(re.search(r"Collected : (\d+)", run.stderr).group(1))


def measure(build):
    with tempfile.TemporaryDirectory() as folder:
        document = Path(folder) / "network.xml"
        subprocess.run([sys.executable, str(HERE / "make_document.py"), "--size", "1MiB",
                        "-o", str(document)], check=True)
        size = document.stat().st_size
        return {phase: round(instructions(build, document, phase) / size, 3) for phase in PHASES}


def compare(measured, figures):
    worse = False
    for phase in PHASES:
        change = measured[phase] / figures[phase] - 1
        print(f"{phase:8} {measured[phase]:8.3f} instructions a byte, {change:+.1%} to the figure")
        worse = worse or change > TOLERANCE
    if worse:
        print(f"More than {TOLERANCE:.0%} worse. If that is what the change is worth: "
              "bench/instructions.py BUILD --renew", file=sys.stderr)
    return 1 if worse else 0


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=Path)
    parser.add_argument("--renew", action="store_true", help="take what is measured as the figures")
    parser.add_argument("--json", action="store_true", help="only print what is measured")
    arguments = parser.parse_args()

    if not shutil.which("valgrind"):
        print("valgrind is not there: nothing is measured.", file=sys.stderr)
        return SKIPPED
    measured = measure(arguments.build)
    if arguments.json:
        print(json.dumps(measured))
        return 0
    figures = json.loads(FIGURES.read_text()) if FIGURES.exists() else {}
    name = compiler(arguments.build)
    if arguments.renew:
        figures[name] = measured
        FIGURES.write_text(json.dumps(figures, indent=2, sort_keys=True) + "\n")
        print(f"{name}: {measured}")
        return 0
    if name not in figures:
        print(f"No figures for {name}: {measured} is not compared.")
        return SKIPPED
    return compare(measured, figures[name])


if __name__ == "__main__":
    sys.exit(main())
