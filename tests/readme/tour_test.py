#!/usr/bin/env python3
"""Runs the console samples of README.md and compares what they print. Argument: the command."""

import os
import re
import subprocess
import sys
import unittest

TARN = sys.argv[1]


def samples():
    with open("README.md", encoding="utf-8") as file:
        for block in re.findall(r"```console\n(.*?)```", file.read(), re.DOTALL):
            yield from re.findall(r"^\$ tarn (.*)\n((?:(?!\$ ).*\n)*)", block, re.MULTILINE)


class TourTest(unittest.TestCase):
    def test_samples_print_what_the_readme_says(self):
        has_zlib = b"libz.so" in subprocess.run(["ldd", TARN], stdout=subprocess.PIPE,
                                                check=False).stdout
        os.makedirs("build", exist_ok=True)
        count = 0
        for arguments, expected in samples():
            if ".gz" in arguments and not has_zlib:
                continue
            result = subprocess.run(["bash", "-c", f'"{TARN}" {arguments} 2>&1'],
                                    stdout=subprocess.PIPE, check=False)
            with self.subTest(arguments=arguments):
                self.assertEqual(result.stdout.decode(), expected)
            count += 1
        self.assertGreater(count, 4)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
