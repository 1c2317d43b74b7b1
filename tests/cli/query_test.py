#!/usr/bin/env python3
"""Runs list, get, tree, stats and print as a user does. Argument: the command."""

import json
import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "support"))
from command_case import CommandCase, document, main, managed_object, tarn  # noqa: E402

OBJECTS = """<tarn xmlns="tarn21.xsd" version="2.1"><cmData type="plan">
<managedObject class="B" distName="A-1/B-2" version="1"><p name="x">1</p><p name="y">2</p></managedObject>
<managedObject class="B" distName="A-1/B-10" operation="update"><p name="x">1</p><list name="l"/>
</managedObject>
<managedObject class="A" distName="A-1" version="2"/>
<managedObject distName="t&#9;b\\&#10;&#13;"/>
<managedObject class="N"/>
</cmData></tarn>
"""


class ListTest(CommandCase):
    def setUp(self):
        super().setUp()
        self.source = self.file(OBJECTS)

    def names(self, *mask):
        result = tarn("list", self.source, "--format", "dn", *mask)
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        return result.stdout.decode().split("\n")[:-1]

    def test_tsv_is_in_byte_order_and_escapes_what_would_break_a_line(self):
        self.expect(tarn("list", self.source, "--format", "tsv"), 0,
                    "\tN\t\t\t0\nA-1\tA\t\t2\t0\nA-1/B-10\tB\tupdate\t\t2\nA-1/B-2\tB\t\t1\t2\n"
                    "t\\tb\\\\\\n\\r\t\t\t\t0\n")

    def test_table_is_the_default_and_aligned(self):
        table = (b"DN        CLASS  OPERATION  VERSION  PARAMETERS\n"
                 b"A-1       A                 2        0\n"
                 b"A-1/B-10  B      update              2\n"
                 b"A-1/B-2   B                 1        2\n")
        self.expect(tarn("list", self.source, "--dn", "A-1"), 0, table)
        self.expect(tarn("list", self.source, "--dn", "A-1", "--format", "table"), 0, table)

    def test_table_is_aligned_for_wide_characters_and_escapes_control_characters(self):
        path = self.file(document(managed_object("東京-1") + managed_object("é-1")
                                  + managed_object("x&#27;-1")), "wide.xml")
        lines = tarn("list", path).stdout.decode().splitlines()
        self.assertEqual([line.split()[0] for line in lines], ["DN", "x\\x1B-1", "é-1", "東京-1"])
        self.assertEqual(lines[2].index("C") - 1, lines[3].index("C") + 1)

    def test_json_has_an_object_a_line(self):
        result = tarn("list", self.source, "--format", "json", "--dn", "B-")
        rows = [json.loads(line) for line in result.stdout.splitlines()]
        self.assertEqual(rows, [
            {"dn": "A-1/B-10", "class": "B", "operation": "update", "version": "", "parameters": 2},
            {"dn": "A-1/B-2", "class": "B", "operation": "", "version": "1", "parameters": 2}])

    def test_json_of_texts_that_are_no_utf8(self):
        path = self.file(document("@").encode().replace(
            b"@", b"<managedObject class='\xff' distName='A-1'/>"), "latin.xml")
        result = tarn("list", path, "--format", "json")
        self.assertEqual(json.loads(result.stdout)["class"], "\ufffd")

    def test_masks_select(self):
        self.assertEqual(self.names("--class", "A"), ["A-1"])
        self.assertEqual(self.names("--dn", "B-1"), ["A-1/B-10"])
        self.assertEqual(self.names("--operation", "update"), ["A-1/B-10"])
        self.assertEqual(self.names("--version", "1"), ["A-1/B-2"])
        self.assertEqual(self.names("--p", "x=1"), ["A-1/B-10", "A-1/B-2"])
        self.assertEqual(self.names("--p", "x=1", "--p", "y=2"), ["A-1/B-2"])
        self.assertEqual(self.names("--p", "y"), ["A-1/B-2"])
        self.assertEqual(self.names("--class", "B", "--p", "x", "--dn", "B-2"), ["A-1/B-2"])

    def test_mask_of_a_file_is_its_first_object(self):
        mask = self.file("<tarn><cmData type='plan'><managedObject class='B' version='#'>"
                         "<p name='y'>#</p></managedObject><managedObject distName='A-1'/>"
                         "</cmData></tarn>", "mask.xml")
        self.assertEqual(self.names("--mask", mask), ["A-1/B-2"])
        none = self.file("<tarn/>", "none.xml")
        self.expect(tarn("list", self.source, "--mask", none), 2, "",
                    f"{none}: error: holds no managed object\n")

    def test_nothing_matched_is_reported_with_status_4(self):
        self.expect(tarn("list", self.source, "--p", "x=2"), 4, "",
                    f"{self.source}: error: no object matches\n")
        empty = self.file("<tarn/>", "empty.xml")
        self.expect(tarn("list", empty), 4, "",
                    f"{empty}: error: no object matches\n")

    def test_wrong_usage(self):
        for arguments in (["--p", "=1"], ["--p", "a=1", "--p", "a=2"], ["--operation", "x"],
                          ["--format", "yaml"], ["--mask", self.source, "--class", "A"]):
            result = tarn("list", self.source, *arguments)
            self.assertEqual((arguments, result.returncode, result.stdout), (arguments, 64, b""))
            self.assertEqual(result.stderr.count(b"\n"), 1, result.stderr)


class GetTest(CommandCase):
    def setUp(self):
        super().setUp()
        self.source = self.file(document(managed_object("A-1", body=(
            '<p name="x">1 &amp; 2</p><p name="empty"/><list name="plain"><p>a</p><p>b</p></list>'
            '<list name="items"><item><p name="k">1</p><p name="j">2</p></item>'
            '<item><p name="k">3</p></item></list><list name="none"/>'
            '<extension name="e"><p name="q">7</p></extension><p name="odd[1]">o</p>'
            '<extension name="e.f"><p name="g.h">8</p></extension>'))))

    def get(self, *names):
        return tarn("get", self.source, "A-1", *names)

    def test_values(self):
        for name, value in (("x", "1 & 2\n"), ("empty", "\n"), ("plain", "a\nb\n"),
                            ("plain[2]", "b\n"), ("items", "j=2\tk=1\nk=3\n"),
                            ("items[1]", "j=2\tk=1\n"), ("items[2].k", "3\n"), ("none", ""),
                            ("e.q", "7\n"), ("e.f.g.h", "8\n"), ("odd[1]", "o\n")):
            with self.subTest(name=name):
                self.expect(self.get(name), 0, value)

    def test_what_is_not_there_has_status_4_and_writes_nothing(self):
        for name in ("y", "plain[0]", "plain[3]", "plain[1].x", "items[3]", "items[2].j", "items[x]",
                     "items[1]k", "items[", "items[1", "none[1]", "e.r", "e", "f.q", "x[1]", "plain[-1]",
                     "items[99999999999999999999]"):
            with self.subTest(name=name):
                self.expect(self.get(name), 4, "",
                            f"{self.source}: A-1: error: nothing named '{name}'\n")
        self.expect(tarn("get", self.source, "A-2"), 4, "", f"{self.source}: A-2: error: no such object\n")
        empty = self.file("<tarn/>", "empty.xml")
        self.expect(tarn("get", empty, "A-2"), 4, "", f"{empty}: A-2: error: no such object\n")

    def test_object_is_written_as_xml(self):
        path = self.file(document(managed_object("A-1", body="<p name='x'>&lt;</p>")), "one.xml")
        self.expect(tarn("get", path, "A-1"), 0,
                    '<managedObject class="C" distName="A-1">\n <p name="x">&lt;</p>\n'
                    "</managedObject>\n")


class TreeTest(CommandCase):
    def test_names_form_the_tree(self):
        path = self.file(document("".join(managed_object(name, class_name=c) for name, c in (
            ("A-1", "A"), ("A-1/B-1", "B"), ("A-1/B-1/C-1", "C"), ("A-1/B-2", "B"), ("A-10", "A"),
            ("A-1-x", "A"), ("D-1/E-1", "E")))))
        self.expect(tarn("tree", path), 0, """A-1 A [2 B, 1 C]
├─ B-1 B [1 C]
│  └─ C-1 C
└─ B-2 B
A-1-x A
A-10 A
D-1 (no object) [1 E]
└─ E-1 E
""")
        self.expect(tarn("tree", path, "--depth", "1"), 0,
                    "A-1 A [2 B, 1 C]\nA-1-x A\nA-10 A\nD-1 (no object) [1 E]\n")
        self.expect(tarn("tree", path, "--dn", "C-1"), 0,
                    "A-1 A [1 C]\n└─ B-1 B [1 C]\n   └─ C-1 C\n")
        self.expect(tarn("tree", path, "--dn", "Z"), 4, "", f"{path}: error: no object matches\n")

    def test_object_without_name_or_class(self):
        path = self.file("<tarn><cmData type='plan'><managedObject/><managedObject distName='A/'/>"
                         "</cmData></tarn>")
        self.expect(tarn("tree", path), 0,
                    "(no name) \nA (no object) [1 without class]\n└─ (no name) \n")

    def test_very_deep_names_are_drawn_to_a_bound(self):
        path = self.file(document(managed_object("/".join(["A-1"] * 200000))))
        result = tarn("tree", path)
        self.assertEqual((result.returncode, result.stdout.count(b"\n")), (0, 64))


class StatsTest(CommandCase):
    def test_figures(self):
        path = self.file(document(managed_object("A-1", body='<p name="x"/><list name="l"><p/></list>')
                                  + managed_object("A-2", class_name="D")))
        stats = json.loads(tarn("stats", "--json", path).stdout)
        for name in ("memoryBytes", "loadMilliseconds", "validationMilliseconds"):
            self.assertGreater(stats.pop(name), 0)
        printed = tarn("print", path).stdout
        self.assertEqual(stats, {"file": path, "objects": 2, "objectsOfClass": {"C": 1, "D": 1},
                                 "elements": 8, "parameters": 2, "depth": 5,
                                 "textBytes": len(printed), "valid": True})
        text = tarn("stats", path).stdout.decode().splitlines()
        self.assertEqual([line.split()[0] for line in text],
                         [path, "objects", "C", "D", "elements", "parameters", "depth", "text",
                          "memory", "load", "validation", "valid"])

    def test_broken_document_has_figures_too(self):
        path = self.file("<tarn/>")
        stats = json.loads(tarn("stats", "--json", path).stdout)
        self.assertEqual((stats["valid"], stats["objects"], stats["elements"]), (False, 0, 1))


if __name__ == "__main__":
    main()
