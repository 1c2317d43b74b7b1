#!/usr/bin/env python3
"""The command in little address space: it succeeds, or reports that there is not enough memory.

Arguments: the command, bench/make_document.py, and "full" for every limit from 20,000 to 400,000 KiB
in steps of 10,000 instead of a few.
"""

import concurrent.futures
import os
import resource
import subprocess
import sys
import tempfile

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "support"))
from command_case import CommandCase, document, has_zlib, main, managed_object  # noqa: E402

TARN = sys.argv[1]
MAKE_DOCUMENT = sys.argv[2]
IS_FULL = sys.argv[3:] == ["full"]
LIMITS = range(20_000, 400_001, 10_000) if IS_FULL else (20_000, 40_000, 70_000, 120_000, 400_000)
SIZE = "20MiB" if IS_FULL else "8MiB"
FILE_ERROR = 5

SMALL = document(managed_object("A-1"))
COMMANDS = {
    "check": ["check", "{large}"],
    "check of several": ["check", "--jobs", "3", "{small}", "{large}", "{small}", "{large}"],
    "check with a log": ["--log-level", "info", "check", "--jobs", "2", "{small}", "{large}"],
    "list": ["list", "{large}", "--format", "json"],
    "print": ["print", "{large}", "-o", "{out}.gz" if has_zlib(TARN) else "{out}"],
    "report": ["report", "{large}", "-o", "{out}"],
    "set": ["set", "{large}", "--class", "CELL", "--create", "--set", "maxTxPower=1", "-o", "{out}"],
    "merge": ["merge", "{large}", "{large2}", "-o", "{out}"],
}


def run_within(kibibytes, arguments):
    def limit():
        resource.setrlimit(resource.RLIMIT_AS, (kibibytes << 10, kibibytes << 10))
    return subprocess.run([TARN, *arguments], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          preexec_fn=limit, check=False)


class AddressSpaceTest(CommandCase):
    def run_command(self, name, limit):
        with tempfile.TemporaryDirectory() as folder:
            result = run_within(limit, [each.format(
                small=self.small, large=self.large, large2=self.large,
                out=os.path.join(folder, "out")) for each in COMMANDS[name]])
            return limit, result, os.listdir(folder)

    def test_every_command_ends_well_or_without_memory(self):
        self.small = self.file(SMALL, "small.xml")
        self.large = self.path("large.xml")
        subprocess.run([sys.executable, MAKE_DOCUMENT, "--size", SIZE, "-o", self.large],
                       check=True)
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            for name in COMMANDS:
                statuses = set()
                for limit, result, left in pool.map(lambda each: self.run_command(name, each),
                                                    LIMITS):
                    where = f"{name}, {limit}: {result.returncode}, {result.stderr}, {left}"
                    statuses.add(result.returncode)
                    if result.returncode == FILE_ERROR:
                        self.assertIn(b"not enough memory", result.stderr, where)
                        self.assertEqual(left, [], where)
                    elif name == "merge":
                        self.assertEqual(result.returncode, 3, where)
                    else:
                        self.assertEqual(result.returncode, 0, where)
                    if name == "check of several":
                        self.assertEqual(result.stdout.count(b"small.xml: ok"), 2, where)
                self.assertTrue(statuses - {FILE_ERROR}, name)
                # A check or a list needs little more than the text.
                self.assertTrue(name.startswith(("check", "list")) or FILE_ERROR in statuses, name)


if __name__ == "__main__":
    main()
