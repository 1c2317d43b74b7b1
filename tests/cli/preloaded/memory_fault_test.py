#!/usr/bin/env python3
"""The command without memory: whichever allocation fails, it says so and leaves files as they were.

Arguments: the command, and the library that lets allocations fail.
"""

import concurrent.futures
import itertools
import os
import signal
import sys
import tempfile

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "support"))
from command_case import CommandCase, document, main, managed_object, run  # noqa: E402

TARN = sys.argv[1]
FAILING_MEMORY = sys.argv[2]
MOST_FAULTS = 100_000
ASSERTION = "assertion failed: memory"

SOURCE = document(managed_object("A-1", body='<p name="a">1</p>') + managed_object("A-2"))
DELTA = document(managed_object("A-1", "update", '<p name="a">2</p>')
                 + managed_object("A-3", "create"))

# What is run on the file.
COMMANDS = {
    "check": ["check", "{}"],
    "list": ["list", "{}"],
    "set": ["set", "{}", "--dn", "A-1", "--p", "a=3", "--in-place"],
    "merge": ["merge", "{}", "{delta}", "--validate", "-o", "{}"],
    "stats": ["stats", "{}", "--json"],
}


class MemoryFaultTest(CommandCase):
    def run_with_fault(self, name, variable, number):
        """Answers whether it came to the fault."""
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "document.xml")
            delta = os.path.join(folder, "delta.xml")
            mark = os.path.join(folder, "mark")
            for file, text in ((path, SOURCE), (delta, DELTA)):
                with open(file, "w", encoding="utf-8") as out:
                    out.write(text)
            arguments = [each.format(path, delta=delta) for each in COMMANDS[name]]
            result = run(TARN, *arguments, env=dict(
                os.environ, LD_PRELOAD=FAILING_MEMORY, TARN_FAULT_FILE=mark,
                **{variable: str(number)}))
            happened = os.path.exists(mark)
            where = f"{name}, {variable}={number}: {result}"
            told = result.stderr.decode()
            if result.returncode == -signal.SIGABRT:
                self.assertIn(ASSERTION, told, where)
            elif result.returncode != 0:
                self.assertEqual(result.returncode, 5, where)
                self.assertIn("memory", told, where)
            with open(path, encoding="utf-8") as file:
                text = file.read()
            if not happened:
                self.assertEqual(result.returncode, 0, where)
                self.results[name] = text
            # Nothing that takes memory comes behind the replacing.
            if result.returncode != 0:
                self.assertEqual(text, SOURCE, where)
            self.texts[name].add(text)
            left = sorted(os.listdir(folder))
            self.assertEqual([each for each in left if each != "mark"],
                             ["delta.xml", "document.xml"], where)
            return happened

    def fail_every(self, variable):
        self.results = {}
        self.texts = {name: set() for name in COMMANDS}
        faults = 0
        for name in COMMANDS:
            with self.subTest(command=name):
                with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
                    for first in itertools.count(1, 64):
                        self.assertLess(first, MOST_FAULTS)
                        happened = list(pool.map(
                            lambda number: self.run_with_fault(name, variable, number),
                            range(first, first + 64)))
                        if not all(happened):
                            break
                self.assertLessEqual(self.texts[name], {SOURCE, self.results[name]})
                faults += first - 1 + sum(happened)
        # Otherwise nothing was tried.
        self.assertGreater(faults, len(COMMANDS) // 2)

    def test_every_allocation_on_the_heap_may_fail(self):
        self.fail_every("TARN_FAIL_NEW")

    def test_every_map_may_fail(self):
        self.fail_every("TARN_FAIL_MAP")


if __name__ == "__main__":
    main()
