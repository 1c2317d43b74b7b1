#!/usr/bin/env python3
"""Runs the command and the example program as a user does.

Argument: the command. The example program stands beside it; the working folder is the repository's.
"""

import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "support"))
from command_case import EXAMPLES, TARN, CommandCase, main, run, tarn  # noqa: E402

TOUR = os.path.join(os.path.dirname(TARN), "network_tour")

DOCUMENT = """<?xml version="1.0"?>
<tarn xmlns="tarn21.xsd" version="2.1"><cmData type="plan">
<managedObject class="B" distName="A-1/B-2"><p name="x">1</p><p name="y">2</p></managedObject>
<managedObject class="B" distName="A-1/B-10"><p name="x">1</p></managedObject>
<managedObject class="A" distName="A-1"/>
<managedObject distName="t&#9;b\\&#10;&#13;"/>
<managedObject class="N"/>
</cmData></tarn>
"""

PRINTED = """<?xml version="1.0"?>
<tarn xmlns="tarn21.xsd" version="2.1">
 <cmData type="plan">
  <managedObject class="A" distName="A-1"></managedObject>
 </cmData>
</tarn>
"""


class CommandTest(CommandCase):
    def test_print_writes_the_printed_form_with_one_line_feed_behind_the_root(self):
        self.expect(tarn("print", self.file(PRINTED.replace("\n ", " "))), 0, PRINTED.encode())

    def test_print_of_printed_form_is_the_same(self):
        once = tarn("print", os.path.join(EXAMPLES, "network.xml")).stdout
        self.assertGreater(len(once), 10000)
        self.expect(tarn("print", self.file(once)), 0, once)

    def test_malformed_file_is_reported_with_status_1(self):
        path = self.file("<tarn>\n<foo/></tarn>")
        self.expect(tarn("print", path), 1, b"",
                    f"{path}:2:5: error: unknown TARN object\n".encode())

    def test_nul_is_reported_with_line_and_column(self):
        path = self.file(b"<tarn>\n ab\0</tarn>")
        self.expect(tarn("print", path), 1, b"",
                    f"{path}:2:4: error: unexpected NUL byte\n".encode())

    def test_broken_rule_is_reported_with_status_2(self):
        path = self.file("<tarn><cmData/></tarn>")
        self.expect(tarn("print", path), 2, b"",
                    f"{path}:1:7: error: The 'cmData' element has no attribute 'type'\n".encode())

    def test_missing_file_and_folder_are_reported_with_status_5(self):
        path = os.path.join(self.folder, "none.xml")
        self.expect(tarn("print", path), 5, b"",
                    f"{path}: error: No such file or directory\n".encode())
        self.expect(tarn("print", self.folder), 5, b"",
                    f"{self.folder}: error: Is a directory\n".encode())

    def test_full_disk_is_reported_with_status_5(self):
        path = self.file(PRINTED)
        with open("/dev/full", "wb") as full:
            result = tarn("print", path, stdout=full)
        self.assertEqual(result.returncode, 5)
        self.assertEqual(result.stderr, b"standard output: error: No space left on device\n")

    def test_wrong_usage_has_status_64(self):
        for arguments in ([], ["print"], ["nothing"], ["set", "x", "--everything", "--set", "novalue"],
                          ["list", "x", "--p", "=1"]):
            result = tarn(*arguments)
            self.assertEqual((arguments, result.returncode, result.stdout), (arguments, 64, b""))
            self.assertNotEqual(result.stderr, b"")

    def test_help_goes_to_standard_output(self):
        result = tarn("--help")
        self.assertEqual(result.returncode, 0)
        self.assertIn(b"print", result.stdout)

    def test_empty_document_prints_as_a_fresh_one(self):
        self.expect(tarn("print", self.file("")), 0,
                    b'<?xml version="1.0" encoding="UTF-8"?>\n'
                    b'<tarn xmlns="tarn21.xsd" version="2.1"></tarn>\n')

    def test_example_program_reports_classes_and_changes(self):
        result_path = os.path.join(self.folder, "changed.xml")
        result = run(TOUR, os.path.join(EXAMPLES, "network.xml"), result_path)
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        self.assertIn(b"managed objects of", result.stdout)
        self.assertIn(result_path.encode(), result.stdout)
        changed = tarn("list", result_path, "--class", "CELL", "--p",
                       "maxTxPower=400", "--format", "dn")
        self.assertGreater(changed.stdout.count(b"\n"), 0)


if __name__ == "__main__":
    main()
