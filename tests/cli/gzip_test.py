#!/usr/bin/env python3
"""Runs the command on compressed files. Argument: the command."""

import gzip
import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "support"))
from command_case import (TARN, CommandCase, document, has_zlib, main,  # noqa: E402
                          managed_object, tarn)

GOOD = document(managed_object("A-1", body="<p name='x'>1</p>"))
HAS_ZLIB = has_zlib(TARN)


@unittest.skipUnless(HAS_ZLIB, "the command is built without zlib")
class GzipTest(CommandCase):
    def packed(self, text, name="packed.xml.gz"):
        return self.file(gzip.compress(text if isinstance(text, bytes) else text.encode()), name)

    def test_compressed_input_is_read_as_it_is(self):
        path = self.packed(GOOD)
        self.expect(tarn("check", path), 0, f"{path}: ok\n")
        self.expect(tarn("check", self.packed(GOOD, "other-name")), 0,
                    f"{self.path('other-name')}: ok\n")
        self.expect(tarn("check", "-", input=gzip.compress(GOOD.encode())), 0, "-: ok\n")

    def test_members_behind_one_another_are_one_text(self):
        half = len(GOOD) // 2
        data = gzip.compress(GOOD[:half].encode()) + gzip.compress(GOOD[half:].encode())
        path = self.file(data, "two.xml.gz")
        self.expect(tarn("check", path), 0, f"{path}: ok\n")

    def test_places_are_those_of_the_text(self):
        text = document("\n".join(managed_object(f"A-{n}") for n in range(20000)) + "\n<wrong/>")
        path = self.packed(text)
        self.expect(tarn("check", path), 1, "",
                    f"{path}:20001:7: error: unknown TARN object\n")

    def test_damaged_and_cut_off_files_are_reported(self):
        data = gzip.compress(GOOD.encode())
        damaged = bytearray(data)
        damaged[len(data) // 2] ^= 0xFF
        for content in (data[:-1], data[:-8], data[: len(data) // 2], bytes(damaged), data[:11]):
            path = self.file(content, "cut.xml.gz")
            self.expect(tarn("check", path), 5, "",
                        f"{path}: error: compressed data is damaged or cut off\n")

    def test_output_with_that_name_is_compressed(self):
        out = self.path("out.xml.gz")
        self.expect(tarn("print", self.packed(GOOD), "-o", out), 0)
        printed = tarn("print", self.file(GOOD)).stdout
        self.assertEqual(gzip.decompress(self.read(out)), printed)
        path = self.packed(GOOD)
        self.assertEqual(tarn("set", path, "--everything", "--create", "--set", "x=2", "--in-place").returncode, 0)
        self.assertIn(b'name="x">2<', gzip.decompress(self.read(path)))

    def test_file_that_is_replaced_in_place_stays_what_it_is(self):
        for name in ("packed.xml", "packed.gz", "p"):
            path = self.packed(GOOD, name)
            before = self.read(path)
            self.assertEqual(tarn("set", path, "--everything", "--create", "--set", "x=2", "--in-place=.bak").returncode, 0)
            self.assertIn(b'name="x">2<', gzip.decompress(self.read(path)))
            self.assertEqual(self.read(path + ".bak"), before)
        path = self.file(GOOD, "plain.xml.gz")
        self.assertEqual(tarn("set", path, "--everything", "--create", "--set", "x=2", "--in-place").returncode, 0)
        self.assertIn(b'name="x">2<', self.read(path))

    def test_name_decides_for_an_output(self):
        printed = tarn("print", self.file(GOOD)).stdout
        packed = self.packed(GOOD, "packed.xml")
        self.expect(tarn("print", packed, "-o", packed), 0)
        self.assertEqual(self.read(packed), printed)
        plain = self.file(GOOD, "plain.xml.gz")
        self.expect(tarn("print", plain, "-o", plain), 0)
        self.assertEqual(gzip.decompress(self.read(plain)), printed)

    def test_large_text_survives_both_ways(self):
        text = document("".join(managed_object(f"A-{n}", body=f"<p name='x'>{n * 7919}</p>")
                                for n in range(30000)))
        out = self.path("out.xml.gz")
        self.expect(tarn("print", self.packed(text), "-o", out), 0)
        self.assertEqual(gzip.decompress(self.read(out)),
                         tarn("print", self.file(text)).stdout)


@unittest.skipIf(HAS_ZLIB, "the command is built with zlib")
class WithoutZlibTest(CommandCase):
    def test_compressed_files_are_refused_clearly(self):
        path = self.file(gzip.compress(GOOD.encode()), "packed.xml.gz")
        self.expect(tarn("check", path), 5, "",
                    f"{path}: error: this build cannot read compressed files\n")
        source = self.file(GOOD)
        out = self.path("out.gz")
        self.expect(tarn("print", source, "-o", out), 5, "",
                    f"{out}: error: this build cannot write compressed files\n")
        self.assertFalse(os.path.exists(out))


if __name__ == "__main__":
    main()
