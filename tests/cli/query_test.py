#!/usr/bin/env python3
"""Runs list, get, tree, stats and print as a user does. Argument: the command."""

import csv
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

    def test_tsv_is_in_natural_order_and_escapes_what_would_break_a_line(self):
        self.expect(tarn("list", self.source, "--format", "tsv"), 0,
                    "\tN\t\t\t0\nA-1\tA\t\t2\t0\nA-1/B-2\tB\t\t1\t2\nA-1/B-10\tB\tupdate\t\t2\n"
                    "t\\tb\\\\\\n\\r\t\t\t\t0\n")
        self.assertEqual(self.names("--byte-order", "--class", "B"), ["A-1/B-10", "A-1/B-2"])

    def test_table_is_the_default_and_aligned(self):
        table = (b"DN        CLASS  OPERATION  VERSION  PARAMETERS\n"
                 b"A-1       A                 2        0\n"
                 b"A-1/B-2   B                 1        2\n"
                 b"A-1/B-10  B      update              2\n")
        self.expect(tarn("list", self.source, "--under", "A-1"), 0, table)
        self.expect(tarn("list", self.source, "--under", "A-1", "--format", "table"), 0, table)

    def test_table_is_aligned_for_wide_characters_and_escapes_control_characters(self):
        path = self.file(document(managed_object("東京-1") + managed_object("é-1")
                                  + managed_object("x&#27;-1")), "wide.xml")
        lines = tarn("list", path).stdout.decode().splitlines()
        self.assertEqual([line.split()[0] for line in lines], ["DN", "x\\x1B-1", "é-1", "東京-1"])
        self.assertEqual(lines[2].index("C") - 1, lines[3].index("C") + 1)

    def test_json_is_an_array_and_jsonl_an_object_a_line(self):
        expected = [
            {"dn": "A-1/B-2", "class": "B", "operation": "", "version": "1", "parameters": 2},
            {"dn": "A-1/B-10", "class": "B", "operation": "update", "version": "", "parameters": 2}]
        result = tarn("list", self.source, "--format", "jsonl", "--dn-has", "B-")
        self.assertEqual([json.loads(line) for line in result.stdout.splitlines()], expected)
        result = tarn("list", self.source, "--format", "json", "--dn-has", "B-")
        self.assertEqual(json.loads(result.stdout), expected)

    def test_json_of_texts_that_are_no_utf8(self):
        path = self.file(document("@").encode().replace(
            b"@", b"<managedObject class='\xff' distName='A-1'/>"), "latin.xml")
        result = tarn("list", path, "--format", "json")
        self.assertEqual(json.loads(result.stdout)[0]["class"], "\ufffd")

    def test_options_select(self):
        for options, expected in (
                (["--class", "A"], ["A-1"]),
                (["--class", "A", "--class", "B"], ["A-1", "A-1/B-2", "A-1/B-10"]),
                (["--class", "A", "--class", "B", "--dn-has", "1/B"], ["A-1/B-2", "A-1/B-10"]),
                (["--dn", "A-1"], ["A-1"]),
                (["--dn", "A-1/B-10", "--dn", "A-1"], ["A-1", "A-1/B-10"]),
                (["--under", "A-1"], ["A-1", "A-1/B-2", "A-1/B-10"]),
                (["--under", "A-1/B-2"], ["A-1/B-2"]),
                (["--under", "A-1", "--under", "A-1/B-2"], ["A-1", "A-1/B-2", "A-1/B-10"]),
                (["--dn-has", "B-1"], ["A-1/B-10"]),
                (["--match", "A-?"], ["A-1"]),
                (["--match", "*/B-*"], ["A-1/B-2", "A-1/B-10"]),
                (["--match", "*/B-[!1]"], ["A-1/B-2"]),
                (["--operation", "update"], ["A-1/B-10"]),
                (["--operation", "none", "--class", "B"], ["A-1/B-2"]),
                (["--version", "1"], ["A-1/B-2"]),
                (["--p", "x=1"], ["A-1/B-2", "A-1/B-10"]),
                (["--p", "x=1", "--p", "y=2"], ["A-1/B-2"]),
                (["--p", "y"], ["A-1/B-2"]),
                (["--p", "l"], ["A-1/B-10"]),
                (["--class", "B", "--p", "x", "--dn-has", "B-2"], ["A-1/B-2"]),
                (["--class", "B", "--dn", "A-1/B-2", "--dn", "A-1"], ["A-1/B-2"]),
                (["--under", "A-1", "--invert"], ["", "t\\tb\\\\\\n\\r"]),
                (["--dn", "A-1", "--class", "A", "--invert"],
                 ["", "A-1/B-2", "A-1/B-10", "t\\tb\\\\\\n\\r"])):
            with self.subTest(options=options):
                self.assertEqual(self.names(*options), expected)

    def test_names_of_a_file_select(self):
        for text in ("A-1/B-10\n\nt\\tb\\\\\\n\\r\n", "A-1/B-10\r\nt\\tb\\\\\\n\\r",
                     "A-1/B-10\0t\tb\\\n\r\0"):
            names = self.file(text, "names")
            self.assertEqual(self.names("--dns-from", names), ["A-1/B-10", "t\\tb\\\\\\n\\r"])
        listed = tarn("list", self.source, "--format", "dn0", "--class", "B")
        self.expect(listed, 0, "A-1/B-2\0A-1/B-10\0")
        result = tarn("list", self.source, "--dns-from", "-", "--count", input=listed.stdout)
        self.expect(result, 0, "2\n")
        wrong = self.file("A-1\nA\\q\n", "wrong")
        self.expect(tarn("list", self.source, "--dns-from", wrong), 64, "",
                    f"{wrong}:2:2: error: after a backslash, a name has t, n, r or a backslash\n")

    def test_what_no_object_meets_is_an_error(self):
        for options, message in (
                (["--class", "Z"], ": error: no object meets --class 'Z'"),
                (["--class", "A", "--class", "Z"], ": error: no object meets --class 'Z'"),
                (["--class", "Z", "--invert"], ": error: no object meets --class 'Z'"),
                (["--under", "A-1/B"], ": error: no object meets --under 'A-1/B'"),
                (["--match", "A-1/"], ": error: no object meets --match 'A-1/'"),
                (["--p", "z"], ": error: no object has a value 'z'"),
                (["--class", "A", "--p", "x"], ": error: none of those objects has a value 'x'"),
                (["--class", "A", "--p", "x!=1", "--invert"],
                 ": error: none of those objects has a value 'x'"),
                (["--dn", "A-1", "--class", "B"], ": error: no object matches"),
                (["--dn", "A-1", "--class", "B", "--invert"],
                 ": error: no object meets all options, so that --invert would select every object"),
                (["--dn", "Z"], ": Z: error: no such object"),
                (["--dn", "B-"],
                 ": B-: error: no such object; --dn-has 'B-' selects the 2 with this text in the "
                 "name")):
            with self.subTest(options=options):
                self.expect(tarn("list", self.source, *options), 4, "",
                            f"{self.source}{message}\n")

    def test_each_missing_name_is_reported(self):
        self.expect(tarn("list", self.source, "--dn", "A-1", "--dn", "Y", "--dn", "Z"), 4, "",
                    f"{self.source}: Y: error: no such object\n"
                    f"{self.source}: Z: error: no such object\n")
        names = self.file("".join(f"X-{i}\n" for i in range(15)), "names")
        result = tarn("list", self.source, "--dns-from", names)
        self.assertEqual((result.returncode, result.stdout, result.stderr.count(b"\n")), (4, b"", 11))
        self.assertIn(b"error: no such object: 5 more names\n", result.stderr)

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
        for arguments, message in (
                (["--operation", "x"], None), (["--format", "yaml"], None),
                (["--invert"], "--invert needs an option that selects"),
                (["--under", ""], "--under takes a text that is not empty"),
                (["--dn-has", ""], "--dn-has takes a text that is not empty"),
                (["--columns", "dn", "--format", "dn"],
                 "--columns has no meaning for a list of names"),
                (["--count-by", "x", "--format", "dn0"],
                 "--count-by has no meaning for a list of names"),
                (["--values"], "--values needs --format json or --format jsonl"),
                (["--count", "--sort", "x"], None), (["--count-by", "x", "--columns", "dn"], None),
                (["--sort", "a,b"], "--sort takes one name"),
                (["--count-by", "x", "--sort", "y"], "--sort takes x or count here")):
            with self.subTest(arguments=arguments):
                result = tarn("list", self.source, *arguments)
                self.assertEqual((result.returncode, result.stdout), (64, b""))
                self.assertEqual(result.stderr.count(b"\n"), 1, result.stderr)
                if message:
                    self.assertEqual(result.stderr.decode(), f"tarn: error: {message}\n")


class ConditionTest(CommandCase):
    VALUES = {"A-1": "5", "A-2": "-7", "A-3": "05.0", "A-4": "12345678901234567890123", "A-5": "abc",
              "A-6": "", "A-7": "ab c", "A-8": "=x"}

    def setUp(self):
        super().setUp()
        def escaped(text):
            return text.replace("=", "&#61;")
        self.source = self.file(document("".join(
            managed_object(name, body=f'<p name="v">{escaped(value)}</p>')
            for name, value in self.VALUES.items())
            + managed_object("B-1", body='<p name="a&#61;b">1</p><p name="c&quot;d\'">2</p>'
                             '<list name="l"><p>1</p><p>20</p></list>'
                             '<list name="i"><item><p name="k">3</p></item></list>'
                             '<extension name="e"><p name="q">4</p></extension>')))

    def names(self, *conditions):
        options = [word for condition in conditions for word in ("--p", condition)]
        result = tarn("list", self.source, "--format", "dn", *options)
        self.assertIn((result.returncode, result.stderr.count(b"\n")), ((0, 0), (4, 1)))
        return result.stdout.decode().split()

    def test_operators(self):
        for condition, expected in (
                ("v=5", ["A-1", "A-3"]), ("v = 5", ["A-1", "A-3"]), ("v!=5", ["A-2", "A-4", "A-5", "A-6", "A-7", "A-8"]),
                ("v<5", ["A-2"]), ("v<=5", ["A-1", "A-2", "A-3"]), ("v>5", ["A-4"]),
                ("v>=5", ["A-1", "A-3", "A-4"]), ("v>-7.5", ["A-1", "A-2", "A-3", "A-4"]),
                ("v>12345678901234567890122.9", ["A-4"]), ("v>12345678901234567890123", []),
                ("v='5'", ["A-1"]), ("v!='5'", [name for name in self.VALUES if name != "A-1"]),
                ("v=abc", ["A-5"]), ("v<abd", ["A-1", "A-2", "A-3", "A-4", "A-5", "A-6", "A-7", "A-8"]),
                ("v>aba", ["A-5"]), ("v=", ["A-6"]), ("v~^a.*c$", ["A-5", "A-7"]), ("v~''", list(self.VALUES)),
                ("v~' '", ["A-7"]), ("v~[0-9]{5}", ["A-4"]), ("v='ab c'", ["A-7"]), ("v='=x'", ["A-8"]),
                ("v=\"=x\"", ["A-8"]), ("'a=b'=1", ["B-1"]), ("\"a=b\"", ["B-1"]),
                ("'c\"d\\''", ["B-1"]), ("c\"d'=2", ["B-1"]),
                ("l=20", ["B-1"]), ("l>20", []), ("l[2]=20", ["B-1"]), ("i[1].k=3", ["B-1"]),
                ("i=3", []), ("i[1]", ["B-1"]), ("e.q>=4", ["B-1"])):
            with self.subTest(condition=condition):
                self.assertEqual(self.names(condition), expected)

    def test_all_conditions_must_be_met(self):
        self.assertEqual(self.names("v>=5", "v<6"), ["A-1", "A-3"])

    def test_what_cannot_be_read_is_marked(self):
        for text, offset, message in (
                ("v>", 2, "a value is missing"), ("v>= ", 4, "a value is missing"),
                ("v=>5", 1, "'=>' is none of = != < <= > >= ~; quote a name or a value that holds "
                 "these characters"),
                ("v==5", 1, None), ("v =~ 5", 2, None), ("v<>5", 1, None), ("v!5", 1, None), ("=1", 0, "a name is missing"),
                ("''=1", 0, "a name is missing"), ("", 0, "a name is missing"),
                ("'v=1", 0, "the quote is not closed"), ("v='1", 2, "the quote is not closed"),
                ("v='1' 2", 6, "nothing may follow a quoted value"),
                ("'v' 2", 4, "an operator is expected"), ("v~(", 2, None), ("v~a{2,1}", 2, None)):
            with self.subTest(text=text):
                result = tarn("list", self.source, "--p", text)
                self.assertEqual((result.returncode, result.stdout), (64, b""))
                lines = result.stderr.decode().split("\n")
                self.assertEqual(lines[1:], ["  " + text, "  " + " " * offset + "^", ""])
                self.assertTrue(lines[0].startswith("tarn: error: --p: "), lines)
                if message:
                    self.assertEqual(lines[0], f"tarn: error: --p: {message}")

    def test_mark_is_below_wide_and_escaped_characters(self):
        result = tarn("list", self.source, "--p", "東\x1b==1")
        self.assertEqual(result.stderr.decode().split("\n")[1:3], ["  東\\x1B==1", "        ^"])


class FormatTest(CommandCase):
    def setUp(self):
        super().setUp()
        self.source = self.file(document(
            managed_object("A-10", body='<p name="n">7</p><p name="t">x, "y"</p>'
                           '<list name="l"><p>1</p><p>2</p></list>')
            + managed_object("A-9", body='<p name="n">30</p><p name="class">own</p>'
                             '<list name="i"><item><p name="k">1</p><p name="j">2</p></item></list>'
                             '<extension name="e"><p name="q">4</p></extension>')
            + managed_object("B-1", body='<p name="n">off</p>', class_name="D")
            + managed_object("B-2", body='<p name="t">a&#10;b</p>', class_name="D")))

    def lines(self, *options):
        result = tarn("list", self.source, *options)
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        return result.stdout.decode().split("\n")[:-1]

    def test_columns(self):
        self.assertEqual(self.lines("--columns", "dn,n,e.q,i[1].j,l,i,'class',version"), [
            "DN    n    e.q  i[1].j  l     i        class  VERSION",
            "A-9   30   4    2             j=2 k=1  own",
            "A-10  7                 1; 2",
            "B-1   off",
            "B-2"])
        self.expect(tarn("list", self.source, "--columns", "dn,none"), 4, "",
                    f"{self.source}: error: none of the objects has a value 'none'\n")
        self.expect(tarn("list", self.source, "--columns", "dn,n,dn"), 64, "",
                    "tarn: error: --columns names 'dn' more than once\n")
        for option in ("--sort", "--count-by"):
            self.expect(tarn("list", self.source, option, "none"), 4, "",
                        f"{self.source}: error: none of the objects has a value 'none'\n")
        self.expect(tarn("list", self.source, "--columns", "dn,,n"), 64, "",
                    "tarn: error: --columns: a name is missing\n  dn,,n\n     ^\n")

    def test_csv_quotes_as_rfc_4180_says(self):
        result = tarn("list", self.source, "--format", "csv", "--columns", "dn,'t',n")
        self.expect(result, 0, 'dn,t,n\r\nA-9,,30\r\nA-10,"x, ""y""",7\r\nB-1,,off\r\n'
                    'B-2,"a\nb",\r\n')
        rows = list(csv.reader(result.stdout.decode().splitlines(keepends=True)))
        self.assertEqual(rows[4], ["B-2", "a\nb", ""])

    def test_json_has_null_for_what_is_not_there(self):
        rows = json.loads("\n".join(self.lines("--format", "json", "--columns", "dn,n,parameters")))
        self.assertEqual(rows[2:], [{"dn": "B-1", "n": "off", "parameters": 1},
                                    {"dn": "B-2", "n": None, "parameters": 1}])

    def test_json_with_all_values(self):
        for form in ("json", "jsonl"):
            text = "\n".join(self.lines("--format", form, "--values", "--dn", "A-9"))
            row = json.loads(text)[0] if form == "json" else json.loads(text)
            self.assertEqual(row, {
                "dn": "A-9", "class": "C", "operation": "", "version": "", "parameters": 3,
                "values": {"class": "own", "n": "30"}, "lists": {"i": [{"j": "2", "k": "1"}]},
                "extensions": [{"name": "e", "values": {"q": "4"}}]})

    def test_sort_orders_numbers_before_texts_and_nothing_last(self):
        def names(*options):
            return self.lines("--format", "dn", *options)
        self.assertEqual(names("--sort", "n"), ["A-10", "A-9", "B-1", "B-2"])
        self.assertEqual(names("--sort", "-n"), ["A-9", "A-10", "B-1", "B-2"])
        self.assertEqual(names("--sort=-dn"), ["B-2", "B-1", "A-10", "A-9"])
        self.assertEqual(names("--sort", "class"), ["A-9", "A-10", "B-1", "B-2"])
        self.assertEqual(names("--sort", "-class", "--limit", "1"), ["B-1"])
        self.assertEqual(names("--limit", "2"), ["A-9", "A-10"])
        self.assertEqual(len(names("--limit", "0")), 4)

    def test_counts(self):
        self.assertEqual(self.lines("--count"), ["4"])
        self.assertEqual(self.lines("--count", "--class", "D"), ["2"])
        self.assertEqual(self.lines("--count-by", "class"), ["CLASS  COUNT", "C      2", "D      2"])
        self.assertEqual(self.lines("--count-by", "n", "--sort", "count", "--format", "tsv"),
                         ["7\t1", "30\t1", "off\t1", "\t1"])
        self.assertEqual(self.lines("--count-by", "'class'", "--sort=-count", "--format", "jsonl"),
                         ['{"class":null,"count":3}', '{"class":"own","count":1}'])

    def test_several_files_have_a_column_for_the_file(self):
        other = self.file(document(managed_object("A-1", class_name="Z")), "other.xml")
        result = tarn("list", other, self.source, "--format", "tsv", "--columns", "file,dn",
                      "--class", "Z", "--class", "D")
        self.expect(result, 0, f"{other}\tA-1\n{self.source}\tB-1\n{self.source}\tB-2\n")
        rows = json.loads(tarn("list", other, self.source, "--format", "json").stdout)
        self.assertEqual([row["file"] for row in rows], [other] + 4 * [self.source])
        self.assertEqual(tarn("list", other, self.source, "--count").stdout.decode(),
                         f"{other}: 1\n{self.source}: 4\n")
        self.expect(tarn("list", other, self.source, "--class", "Q"), 4, "",
                    "all files: error: no object meets --class 'Q'\n")

    def test_document_that_cannot_be_read_object_by_object_is_listed_too(self):
        names = "".join(f'<p name="n{(i * 7919) % 1000}">{i}</p>' for i in range(70))
        body = managed_object("A-1", body=names + '<p name="x&#0;">1</p>') + managed_object("A-2")
        path = self.file(document(body), "odd.xml")
        result = tarn("list", path, "--format", "tsv", "--columns", "dn,n0")
        self.expect(result, 0, "A-1\t0\nA-2\t\n")

    def test_faults_of_a_document_are_reported_as_by_a_load(self):
        for body, status, message in (
                (managed_object("A-1") * 2, 2, "already contains"), ("<p>", 1, ""),
                (managed_object("A-1", "wrong"), 2, "'wrong' is not a valid value")):
            path = self.file(document(body), "wrong.xml")
            result = tarn("list", path)
            self.assertEqual((result.returncode, result.stdout), (status, b""))
            self.assertIn(message, result.stderr.decode())
            self.assertTrue(result.stderr.decode().startswith(f"{path}:1:"), result.stderr)


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
        self.expect(self.get(""), 64, "", "tarn: error: the NAME is empty\n")
        self.expect(self.get("x", "y"), 64, "", "tarn: error: tarn get takes one NAME\n")
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
            ("A-1-x", "A"), ("A-2", "A"), ("D-1/E-1", "E")))))
        self.expect(tarn("tree", path), 0, """A-1 A [2 B, 1 C]
├─ B-1 B [1 C]
│  └─ C-1 C
└─ B-2 B
A-1-x A
A-2 A
A-10 A
D-1 (no object) [1 E]
└─ E-1 E
""")
        self.expect(tarn("tree", path, "--depth", "1"), 0,
                    "A-1 A [2 B, 1 C]\nA-1-x A\nA-2 A\nA-10 A\nD-1 (no object) [1 E]\n")
        self.expect(tarn("tree", path, "--class", "C"), 0,
                    "A-1 A [1 C]\n└─ B-1 B [1 C]\n   └─ C-1 C\n")
        self.expect(tarn("tree", path, "--byte-order", "--depth", "1", "--class", "A"), 0,
                    "A-1 A\nA-1-x A\nA-10 A\nA-2 A\n")
        self.expect(tarn("tree", path, "--dn", "Z"), 4, "",
                    f"{path}: Z: error: no such object\n")

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

    def test_selection(self):
        path = self.file(document(managed_object("A-1", body='<p name="x"/><list name="l"><p/></list>')
                                  + managed_object("A-2", class_name="D")))
        stats = json.loads(tarn("stats", "--json", path, "--class", "C").stdout)
        printed = tarn("get", path, "A-1").stdout
        self.assertEqual([stats[name] for name in ("objects", "objectsOfClass", "elements",
                                                   "parameters", "depth", "textBytes")],
                         [1, {"C": 1}, 4, 2, 3, len(printed)])
        self.expect(tarn("stats", path, "--class", "E"), 4, "",
                    f"{path}: error: no object meets --class 'E'\n")

    def test_broken_document_has_figures_too(self):
        path = self.file("<tarn/>")
        stats = json.loads(tarn("stats", "--json", path).stdout)
        self.assertEqual((stats["valid"], stats["objects"], stats["elements"]), (False, 0, 1))


if __name__ == "__main__":
    main()
