#!/usr/bin/env python3
"""The generator of documents: its promises, and that the command reads its documents.

Argument: the command. The working folder is the repository's.
"""

import itertools
import os
import subprocess
import sys
import tempfile
import unittest

TARN = sys.argv[1]
GENERATOR = os.path.join("bench", "make_document.py")
SIZE = 256 << 10


def make(*arguments):
    return subprocess.run([sys.executable, GENERATOR, "--size", str(SIZE), *arguments],
                          capture_output=True, check=True).stdout


class MakeDocumentTest(unittest.TestCase):
    def names(self, text):
        """Returns the names of the objects in byte order, as the command lists them, and in document order."""
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "document.xml")
            with open(path, "wb") as file:
                file.write(text)
            listed = subprocess.run([TARN, "list", path, "--format", "dn"], capture_output=True,
                                    check=True).stdout
        marker = b' distName="'
        written = [part.split(b'"', 1)[0] for part in text.split(marker)[1:]]
        return listed.splitlines(), written

    def test_every_shape_loads_and_has_about_the_size(self):
        for shape, order in itertools.product(("network", "mixed", "attributes", "text", "tiny", "wide"),
                                              ("sorted", "shuffled", "reversed")):
            with self.subTest(shape=shape, order=order):
                text = make("--shape", shape, "--order", order)
                self.assertLess(abs(len(text) - SIZE), SIZE // 5)
                listed, written = self.names(text)
                self.assertEqual(listed, sorted(written))

    def test_objects_stand_in_the_order_that_is_asked_for(self):
        for shape in ("mixed", "tiny"):
            with self.subTest(shape=shape):
                listed, written = self.names(make("--shape", shape, "--order", "sorted"))
                self.assertEqual(written, listed)
                listed, written = self.names(make("--shape", shape, "--order", "reversed"))
                self.assertEqual(written, listed[::-1])
                listed, written = self.names(make("--shape", shape, "--order", "shuffled"))
                self.assertNotIn(written, (listed, listed[::-1]))

    def test_same_seed_gives_the_same_bytes(self):
        self.assertEqual(make("--seed", "7"), make("--seed", "7"))
        self.assertNotEqual(make("--seed", "7"), make("--seed", "8"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
