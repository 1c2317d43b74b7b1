#!/usr/bin/env python3
"""The command without memory: whichever allocation fails, it reports that and leaves files unchanged.

Arguments: the command, and the library that lets allocations and starts of threads fail.
"""

import concurrent.futures
import gzip
import itertools
import os
import sys
import tempfile

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "support"))
from command_case import (CommandCase, document, has_zlib, main,  # noqa: E402
                          managed_object, run)

TARN = sys.argv[1]
FAILING_MEMORY = sys.argv[2]
MOST_FAULTS = 100_000
BATCH = 16
FILE_ERROR = 5
NO_MEMORY = "tarn: error: not enough memory\n"

SOURCE = document(managed_object("A-1", body='<p name="a">1</p>') + managed_object("A-2"))
DELTA = document(managed_object("A-1", "update", '<p name="a">2</p>')
                 + managed_object("A-3", "create"))
CONFLICT = document(managed_object("A-2", "create"))

# The commands that are run on the file.
COMMANDS = {
    "check": ["check", "{}"],
    "check of several": ["check", "{}", "{delta}", "{}", "--jobs", "3"],
    "check of a broken one": ["check", "{broken}", "{}", "--json"],
    "list": ["list", "{}"],
    "set": ["set", "{}", "--dn", "A-1", "--set", "a=3", "--in-place"],
    "set and keep": ["set", "{}", "--everything", "--create", "--set", "a=3", "--in-place=.bak"],
    "merge": ["merge", "{}", "{delta}", "--validate", "-o", "{}"],
    "conflict": ["merge", "{}", "{conflict}", "--validate", "-o", "{}"],
    "stats": ["stats", "{}", "--json"],
    "compressed": ["print", "{packed}", "-o", "{made}"],
    "unknown option": ["check", "{}", "--unknown"],
}
if not has_zlib(TARN):
    del COMMANDS["compressed"]
FILES = {"document.xml": SOURCE, "delta.xml": DELTA, "conflict.xml": CONFLICT,
         "broken.xml": SOURCE[:-1]}


def write_files(folder):
    for name, text in FILES.items():
        with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
            file.write(text)
    with gzip.open(os.path.join(folder, "packed.xml.gz"), "wb") as file:
        file.write(SOURCE.encode())


def arguments_in(folder, name):
    paths = {key: os.path.join(folder, key + ".xml") for key in ("delta", "conflict", "broken")}
    paths.update(packed=os.path.join(folder, "packed.xml.gz"),
                 made=os.path.join(folder, "made.xml.gz"))
    return [each.format(os.path.join(folder, "document.xml"), **paths) for each in COMMANDS[name]]


class MemoryFaultTest(CommandCase):
    def run_with_fault(self, name, number, variable, **options):
        """Returns true if the fault happened."""
        with tempfile.TemporaryDirectory() as folder:
            mark = os.path.join(folder, "mark")
            write_files(folder)
            result = run(TARN, *arguments_in(folder, name), env=dict(
                os.environ, LD_PRELOAD=FAILING_MEMORY, TARN_FAULT_FILE=mark,
                **{variable: str(number)}, **options))
            happened = os.path.exists(mark)
            reported = result.stderr.decode()
            where = f"{name}, {variable}={number} {options}: {result}"
            with open(os.path.join(folder, "document.xml"), encoding="utf-8") as file:
                text = file.read()
            if not happened:
                self.results[name] = (result.returncode, text)
            elif result.returncode == FILE_ERROR:
                self.assertIn("not enough memory", reported + result.stdout.decode(), where)
            # Nothing allocates memory after the replacement.
            if result.returncode == FILE_ERROR:
                self.assertEqual(text, SOURCE, where)
            if happened and result.returncode != FILE_ERROR:
                first = self.first_survived.get(name, MOST_FAULTS)
                self.first_survived[name] = min(first, number)
            self.outcomes[name].add((result.returncode, text, where))
            if name == "check of several" and reported != NO_MEMORY and "TARN_FAIL_LASTING" not in options:
                # When one fails, the others get their results.
                self.assertGreaterEqual(result.stdout.decode().count(": ok"), 2, where)
            left = set(os.listdir(folder)) - {"mark", "made.xml.gz", "packed.xml.gz",
                                              "document.xml.bak"}
            self.assertEqual(left, set(FILES), where)
            return happened

    def trace(self, name, **options):
        """Returns each counted call of operator new, by its size and offset in the library."""
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "trace")
            write_files(folder)
            run(TARN, *arguments_in(folder, name), env=dict(
                os.environ, LD_PRELOAD=FAILING_MEMORY, TARN_TRACE_FILE=path, **options))
            with open(path, encoding="utf-8") as file:
                return file.read().splitlines()

    def shared_calls(self, **options):
        """Returns for each command the number of its first calls that an earlier one in COMMANDS has, too.

        They set the command line up, which is nine calls of ten. A run that ends among them cannot
        know which command it would have come to.
        """
        traces = {}
        shared = {}
        for name in COMMANDS:
            calls = self.trace(name, **options)
            shared[name] = max((len(os.path.commonprefix([calls, earlier]))
                                for earlier in traces.values()), default=0)
            traces[name] = calls
        return shared

    def fail_command(self, name, variable, numbers, options):
        """Returns the number of faults."""
        faults = 0
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            for _ in range(MOST_FAULTS // BATCH):
                happened = list(pool.map(
                    lambda number: self.run_with_fault(name, number, variable, **options),
                    itertools.islice(numbers, BATCH)))
                faults += sum(happened)
                if not all(happened):
                    return faults
        raise AssertionError("the faults have no end")

    def fail_every(self, variable, step=1, **options):
        self.results = {}
        self.outcomes = {name: set() for name in COMMANDS}
        self.first_survived = {}
        shared = self.shared_calls(**options) if variable == "TARN_FAIL_NEW" else {}
        faults = 0
        for name in COMMANDS:
            with self.subTest(command=name):
                numbers = itertools.count(1 + shared.get(name, 0) // step * step, step)
                faults += self.fail_command(name, variable, numbers, options)
                status, text = self.results[name]
                for code, found, where in self.outcomes[name]:
                    self.assertIn(code, (status, FILE_ERROR), where)
                    # The file is complete, the old or the new one.
                    self.assertIn(found, (SOURCE, text), where)
        # Otherwise nothing was tried.
        self.assertGreater(faults, 0)
        # Calls that are left out end the run: none of one command alone follows.
        for name, first in self.first_survived.items():
            self.assertGreater(first, shared.get(name, 0), name)

    def test_every_allocation_on_the_heap_may_fail(self):
        self.fail_every("TARN_FAIL_NEW")

    def test_all_allocations_on_the_heap_from_any_one_on_may_fail(self):
        self.fail_every("TARN_FAIL_NEW", step=19, TARN_FAIL_LASTING="1")

    def test_allocations_before_main_may_fail(self):
        self.fail_every("TARN_FAIL_NEW", step=13, TARN_FAIL_EARLY="1")

    def test_every_allocation_of_other_libraries_may_fail(self):
        self.fail_every("TARN_FAIL_MALLOC")
        self.fail_every("TARN_FAIL_MALLOC", TARN_FAIL_LASTING="1")

    def test_every_map_may_fail(self):
        self.fail_every("TARN_FAIL_MAP")
        self.fail_every("TARN_FAIL_MAP", TARN_FAIL_LASTING="1")

    def test_check_does_without_threads(self):
        for lasting in ({}, {"TARN_FAIL_LASTING": "1"}):
            for number in range(1, 5):
                self.results = {}
                self.outcomes = {name: set() for name in COMMANDS}
                self.first_survived = {}
                happened = self.run_with_fault("check of several", number, "TARN_FAIL_THREAD",
                                               **lasting)
                self.assertEqual(happened, number <= 3)
                ((status, _, where),) = self.outcomes["check of several"]
                self.assertEqual(status, 0, where)


if __name__ == "__main__":
    main()
