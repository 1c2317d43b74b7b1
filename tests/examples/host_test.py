"""The programs that the guide shows: what each of them prints."""

import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "../cli"))
from support.command_case import TARN, CommandCase, document, main, managed_object, run

NETWORK = "examples/network.xml"
PROGRAMS = os.path.dirname(TARN)


def program(name, *arguments):
    return run(os.path.join(PROGRAMS, name), *arguments)


class HostTest(CommandCase):
    def test_load_and_check(self):
        self.expect(program("load_and_check", NETWORK), 0, f"{NETWORK}: 228 managed objects\n")
        path = self.file("<?xml version='1.0'?>\n<tarn>\n  <object/></tarn>")
        result = program("load_and_check", path)
        self.assertEqual((result.returncode, result.stdout.decode()),
                         (1, f"{path}:3:10: unknown TARN object\n"))
        path = self.file(document(managed_object("A")))
        result = program("load_and_check", path)
        self.assertEqual((result.returncode, result.stdout.decode()),
                         (2, f"{path}: Invalid distinguished name: 'A'\n"))

    def test_query_by_mask(self):
        self.expect(program("query_by_mask", NETWORK), 0, """\
NET-1/SITE-7, class SITE
  altitude = 42
  latitude = 59.05518
  longitude = 19.88998
  name = Δελφοί
  contact ops7@example.net
  contact noc@example.net
NET-1/SITE-7/POWER-1
  breaker ampere=10 id=1
  breaker ampere=10 id=2
  breaker ampere=20 id=3
NET-1/SITE-3/RADIO-1/CELL-1 transmits with 430
NET-1/SITE-3/RADIO-2/CELL-1 transmits with 430
NET-1/SITE-3/RADIO-2/CELL-2 transmits with 430
NET-1/SITE-3/RADIO-3/CELL-1 transmits with 430
""")

    def test_edit_and_save(self):
        path = self.path("edited.xml")
        self.expect(program("edit_and_save", NETWORK, path), 0, """\
a second rent is refused
NET-1/ is no name
found by its new name
no NET-1/LINK-99
""")
        self.expect(run(TARN, "check", path), 0, f"{path}: ok\n")
        self.expect(run(TARN, "get", path, "NET-1/SITE-70", "name"), 0, "Delphi <north>\n")
        self.expect(run(TARN, "get", path, "NET-1/SITE-70", "rent"), 0, "1200\n")
        self.expect(run(TARN, "get", path, "NET-1/SITE-70", "keys[2].holder"), 0, "landlord\n")
        self.assertEqual(run(TARN, "get", path, "NET-1/SITE-70", "altitude").returncode, 4)
        self.expect(run(TARN, "get", path, "NET-1/SITE-7/POWER-2", "source"), 0, "solar\n")

    def test_merge_deltas(self):
        path = self.path("merged.xml")
        result = program("merge_deltas", NETWORK, path, "examples/upgrade.xml",
                         "examples/conflict.xml")
        self.assertEqual(result.returncode, 3)
        lines = result.stdout.decode().splitlines()
        self.assertEqual(lines[0], "examples/upgrade.xml: applied")
        self.assertRegex(lines[1], "^examples/conflict.xml: refused: .*NET-1/")
        self.assertIn(lines[1].split(": refused: ")[1], result.stderr.decode())
        expected = self.path("expected.xml")
        run(TARN, "merge", NETWORK, "examples/upgrade.xml", "-o", expected)
        self.assertEqual(self.read(path), self.read(expected))

    def test_merge_of_a_valid_delta_that_cannot_be_copied(self):
        path = self.path("merged.xml")
        duplicates = "<p name='n'/><p name='n'/>"
        delta = self.file(document(managed_object(
            "NET-9", body=managed_object("NET-9/SITE-1", body=duplicates))))
        self.expect(run(TARN, "check", delta), 0, f"{delta}: ok\n")
        result = program("merge_deltas", NETWORK, path, delta)
        self.assertEqual(result.returncode, 2)
        self.assertEqual(result.stdout.decode(), f"{delta}: The 'NET-9/SITE-1' element already "
                         "contains a 'p' element with 'name=n'\n")
        self.assertFalse(os.path.exists(path))

    def test_own_rules(self):
        result = program("own_rules", NETWORK)
        self.assertIn(b"validate: Validation failed: Invalid distinguished name", result.stderr)
        self.assertEqual((result.returncode, result.stdout.decode()), (0, """\
altitude = 42
latitude = 59.05518
longitude = 19.88998
name = Δελφοί
kept in vectors
Invalid distinguished name: 'NET-1/SITE-1/CLOCK-1'
"""))

    def test_own_memory(self):
        self.expect(program("own_memory", NETWORK), 0, """\
64 KiB are too few
4096 KiB are enough; the document takes less than 12 times its text
""")

    def test_files_that_cannot_be_read(self):
        for name in ("load_and_check", "query_by_mask"):
            self.assertNotEqual(program(name, self.path("none")).returncode, 0)

    def test_library_loaded_at_run_time(self):
        plugin = os.path.join(PROGRAMS, "../lib/libtarn_plugin.so")
        if not os.path.exists(plugin):
            plugin = os.path.join(PROGRAMS, "../../lib/libtarn_plugin.so")
        self.expect(program("load_at_run_time", plugin, NETWORK), 0, "228 objects\n")
        self.assertEqual(program("load_at_run_time", self.path("none.so"), NETWORK).returncode, 5)


main()
