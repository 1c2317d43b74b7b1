#!/usr/bin/env python3
"""Runs set, add and remove as a user does. Argument: the command."""

import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "support"))
from command_case import CommandCase, document, main, managed_object, tarn  # noqa: E402

SOURCE = document(managed_object("A-1", body='<p name="x">1</p>') + managed_object("A-1/B-1")
                  + managed_object("A-2", body='<p name="x">2</p>', class_name="D"))


class EditCase(CommandCase):
    def setUp(self):
        super().setUp()
        self.source = self.file(SOURCE, "source.xml")

    def listed(self, path):
        return tarn("list", path, "--format", "tsv").stdout.decode().splitlines()

    def value(self, path, name, parameter):
        return tarn("get", path, name, parameter).stdout.decode()

    def expect_refused(self, result, status, err):
        self.expect(result, status, "", err)
        self.assertEqual(self.read(self.source), SOURCE.encode())
        self.assertEqual([name for name in os.listdir(self.folder) if "source.xml." in name], [])


class SetTest(EditCase):
    def test_values_are_set_on_the_selected_objects(self):
        self.expect(tarn("set", self.source, "--under", "A-1", "--set", "x=9", "--create",
                         "--set", "y=a b", "--set-version", "3", "--in-place"), 0,
                    f"{self.source}: 2 of 2 objects changed, 6 values set\n")
        self.assertEqual(self.listed(self.source),
                         ["A-1\tC\t\t3\t2", "A-1/B-1\tC\t\t3\t2", "A-2\tD\t\t\t1"])
        self.assertEqual(self.value(self.source, "A-1", "x"), "9\n")
        self.assertEqual(self.value(self.source, "A-1", "y"), "a b\n")
        self.assertEqual(self.value(self.source, "A-2", "x"), "2\n")

    def test_objects_that_lack_a_value_or_have_it_already_are_counted(self):
        out = self.path("out.xml")
        self.expect(tarn("set", self.source, "--everything", "--set", "x=2", "-o", out), 0,
                    f"{self.source}: 1 of 3 objects changed, 1 value set, 1 object had it already, "
                    "1 object has no 'x'\n")
        self.assertEqual(self.listed(out), self.listed(self.source))
        self.expect(tarn("set", self.source, "--dn", "A-2", "--set", "x=2", "--only-existing",
                         "-o", out), 0,
                    f"{self.source}: 0 of 1 object changed, 0 values set, 1 object had it already\n")

    def test_value_that_no_object_has_is_not_created(self):
        self.expect_refused(tarn("set", self.source, "--everything", "--set", "x=5", "--set", "z=1",
                                 "--in-place"), 4,
                            f"{self.source}: error: none of the 3 objects has a value 'z'\n")
        self.expect_refused(tarn("set", self.source, "--dn", "A-1/B-1", "--set", "x=5",
                                 "--in-place"), 4,
                            f"{self.source}: error: the object has no value 'x'\n")

    def test_class_and_version(self):
        out = self.path("out.xml")
        self.expect(tarn("set", self.source, "--class", "D", "--set-class", "E", "-o", out), 0,
                    f"{self.source}: 1 of 1 object changed, 1 value set\n")
        self.assertEqual(self.listed(out)[2], "A-2\tE\t\t\t1")
        self.expect(tarn("set", self.source, "--class", "D", "--set-class", "E", "--set-version", "7",
                         "-o", out), 0, f"{self.source}: 1 of 1 object changed, 2 values set\n")
        self.expect(tarn("set", self.source, "--class", "D", "--set-class", "D", "-o", out), 0,
                    f"{self.source}: 0 of 1 object changed, 0 values set, 1 object had it already\n")
        result = tarn("set", self.source, "--p", "x", "--set-version", "7")
        self.assertEqual((result.returncode, result.stderr.decode()),
                         (0, f"{self.source}: 2 of 2 objects changed, 2 values set\n"))
        self.assertEqual(result.stdout.count(b'version="7"'), 2)

    def test_paths_are_those_of_get(self):
        path = self.file(document(managed_object("A-1", body=(
            '<p name="x.y">1</p><list name="plain"><p>a</p><p>b</p></list>'
            '<list name="items"><item><p name="k">1</p></item><item><p name="k">3</p></item></list>'
            '<extension name="e"><p name="q">7</p></extension><p name="a&gt;b">o</p>'))), "paths.xml")
        for name, quoted in (("x.y", "x.y"), ("plain[2]", "plain[2]"), ("items[2].k", "items[2].k"),
                             ("e.q", "e.q"), ("a>b", "'a>b'")):
            with self.subTest(name=name):
                self.assertNotEqual(self.value(path, "A-1", name), "new\n")
                self.expect(tarn("set", path, "--dn", "A-1", "--set", quoted + "=new", "--in-place"),
                            0, f"{path}: 1 of 1 object changed, 1 value set\n")
                self.assertEqual(self.value(path, "A-1", name), "new\n")
        for name, message in (("plain", "'plain' is a list; plain[1] is one value of it"),
                              ("items[1]", "'items[1]' is an item; items[1].COMPONENT is one value "
                               "of it")):
            self.expect(tarn("set", path, "--dn", "A-1", "--set", name + "=1", "--create"), 4, "",
                        f"{path}: A-1: error: {message}\n")

    def test_create_does_not_take_a_path_for_a_name(self):
        path = self.file(document(managed_object("A-1", body='<extension name="e"/>')), "paths.xml")
        for name, created in (("e.q", "e.q"), ("'f.q'", "f.q"), ("z", "z")):
            self.expect(tarn("set", path, "--dn", "A-1", "--set", name + "=1", "--create",
                             "--in-place"), 0, f"{path}: 1 of 1 object changed, 1 value set\n")
            self.assertEqual(self.value(path, "A-1", created), "1\n")
        self.assertIn(b'<extension name="e">', self.read(path))
        for name in ("g.q", "l[1]", "l[1].k", "l[", "l]"):
            self.expect(tarn("set", path, "--dn", "A-1", "--set", name + "=1", "--create"), 4, "",
                        f"{path}: error: the object has no value '{name}'\n")

    def test_values_are_taken_exactly(self):
        for value, stored in (("x= 9 ", " 9 "), ("x=", ""), ("x='= <&>'", "= <&>"), ("x=a=b", "a=b")):
            self.assertEqual(tarn("set", self.source, "--dn", "A-1", "--set", value,
                                  "--in-place").returncode, 0)
            self.assertEqual(self.value(self.source, "A-1", "x"), stored + "\n")

    def test_values_of_a_file(self):
        values = self.file("<tarn><cmData type='plan'><managedObject distName='A-7' version='#'"
                           " class='#' operation='update'><list name='l'><p>1</p></list>"
                           "<p name='x'>8</p></managedObject></cmData></tarn>", "values.xml")
        out = self.path("out.xml")
        self.expect(tarn("set", self.source, "--dn-has", "A-1", "--values", values, "-o", out), 4, "",
                    f"{self.source}: error: none of the 2 objects has a value 'l'\n")
        self.expect(tarn("set", self.source, "--dn-has", "A-1", "--values", values, "--create", "-o",
                         out), 0, f"{self.source}: 2 of 2 objects changed, 8 values set\n")
        self.assertEqual(self.listed(out),
                         ["A-2\tD\t\t\t1", "A-7\tC\tupdate\t\t2", "A-7/B-1\tC\tupdate\t\t2"])
        listed = self.file(document(managed_object("A-1", body='<p name="x">1</p>')
                                    + managed_object("A-1/B-1", body='<list name="l"/>')),
                           "listed.xml")
        self.expect(tarn("set", listed, "--dn-has", "A-1", "--values", values, "--in-place"), 0,
                    f"{listed}: 2 of 2 objects changed, 6 values set, 1 object has no 'x', "
                    "1 object has no 'l'\n")
        self.assertEqual(self.value(listed, "A-7", "x"), "8\n")
        self.assertEqual(self.value(listed, "A-7/B-1", "l"), "1\n")
        self.assertEqual(self.listed(listed),
                         ["A-7\tC\tupdate\t\t1", "A-7/B-1\tC\tupdate\t\t1"])

    def test_mask_may_be_standard_input(self):
        values = self.file(document(managed_object("A-8")), "values.xml")
        mask = "<tarn><cmData type='plan'><managedObject distName='A-1' class='#' version='#'/></cmData></tarn>"
        out = self.path("out.xml")
        self.assertEqual(tarn("set", self.source, "--mask", "-", "--values", values, "-o", out,
                              input=mask.encode()).returncode, 0)
        self.assertEqual([line.split("\t")[0] for line in self.listed(out)], ["A-2", "A-8", "A-8/B-1"])

    def test_wrong_usage_is_reported_before_a_file_is_read(self):
        for arguments in (["set", "--set", "x=1"], ["unset", "x"], ["remove"]):
            result = tarn(arguments[0], self.path("none.xml"), *arguments[1:], "--p", "x=>1")
            self.assertEqual((result.returncode, result.stdout), (64, b""), result.stderr)

    def test_nothing_selected_has_status_4(self):
        self.expect_refused(tarn("set", self.source, "--dn", "Z", "--set", "x=1", "--in-place"), 4,
                            f"{self.source}: Z: error: no such object\n")

    def test_names_that_would_meet_are_refused(self):
        source = document(managed_object("A-1") + managed_object("A-1/A-1"))
        path = self.file(source, "meet.xml")
        mask = self.file("<tarn><cmData type='plan'><managedObject distName='/A-1' class='#'"
                         " version='#'/></cmData></tarn>", "mask.xml")
        values = self.file("<tarn><cmData type='plan'><managedObject distName='' class='#'"
                           " version='#'/></cmData></tarn>", "values.xml")
        self.expect(tarn("set", path, "--mask", mask, "--values", values, "--in-place"), 3, "",
                    f"{path}: A-1/A-1: error: two objects would have one name\n")
        self.assertEqual(self.read(path), source.encode())

    def test_wrong_usage(self):
        no_change = ("no change is given; --set NAME=VALUE, --set-class, --set-version and --values "
                     "change, --p, --class and --version select")
        for arguments, message in (
                (["--p", "x=1"], no_change), (["--class", "D", "--p", "x=1"], no_change),
                (["--dn", "A-1", "--version", "3"], no_change), (["--everything"], no_change),
                (["--set", "x=1"], "no objects are selected; --everything selects all"),
                (["--set", "x=1", "--dn", "A-1", "--everything"],
                 "--everything has no meaning beside options that select"),
                (["--everything", "--set", "x=1", "--set", "x=2"], "--set sets 'x' more than once"),
                (["--everything", "--set-class", "#"], "--set-class cannot take #"),
                (["--everything", "--set", "x=1", "--values", self.source], None),
                (["--mask-class", "C", "--class", "D"],
                 "there is no option '--mask-class' any more; use --class"),
                (["--mask-p=x"], "there is no option '--mask-p' any more; use --p"),
                (["--mask-version", "1"],
                 "there is no option '--mask-version' any more; use --version"),
                (["--everything", "--set", "x=1", "--create", "--only-existing"], None),
                (["--everything", "--set", "x=1", "--in-place", "-o", "x"], None)):
            with self.subTest(arguments=arguments):
                result = tarn("set", self.source, *arguments)
                self.assertEqual((result.returncode, result.stdout), (64, b""))
                self.assertEqual(result.stderr.count(b"\n"), 1, result.stderr)
                if message:
                    self.assertEqual(result.stderr.decode(), f"tarn: error: {message}\n")
        takes = "takes NAME=VALUE; quote a name or a value that holds one of = ! < > ~"
        for text, offset, message in (("x", 1, takes), ("x>=1", 1, takes), ("x!=1", 1, takes),
                                      ("x==1", 1, takes), ("=1", 0, "a name is missing")):
            with self.subTest(text=text):
                self.expect(tarn("set", self.source, "--everything", "--set", text), 64, "",
                            f"tarn: error: --set: {message}\n  {text}\n  {' ' * offset}^\n")
        for value in ("  ", "\n"):
            result = tarn("set", self.source, "--everything", "--set", "x=" + value)
            self.assertEqual((result.returncode, result.stdout), (64, b""), value)
        for option, value in (("--set-class", "a\tb"), ("--set", "x=a\rb"), ("--set", "a\nb=1")):
            result = tarn("set", self.source, "--everything", option, value)
            self.assertEqual((result.returncode, result.stdout), (64, b""), value)
            self.assertIn(b"other XML parsers would read another character", result.stderr)
        for value in (b"a\x01", b"a\xff", b"a\xef\xbf\xbf"):
            result = tarn("set", self.source, "--everything", "--set", b"x=" + value)
            self.assertEqual((result.returncode, result.stdout), (64, b""), value)
            self.assertTrue(result.stderr.startswith(b"tarn: error: --set: "), result.stderr)
        for value in (b"a]]>b", "ä\u0085".encode(), b"a\tb\nc"):
            result = tarn("set", self.source, "--everything", "--set", b"x=" + value, "-o",
                          self.path("out.xml"))
            self.assertEqual(result.returncode, 0, value)


class UnsetTest(EditCase):
    def setUp(self):
        super().setUp()
        self.path_of_all = self.file(document(managed_object("A-1", body=(
            '<p name="x">1</p><p name="y">2</p><list name="plain"><p>a</p><p>b</p><p>c</p></list>'
            '<list name="items"><item><p name="k">1</p></item><item><p name="k">3</p></item></list>'
            '<extension name="e"><p name="q">7</p></extension><extension name="f"/>'))
            + managed_object("A-2", body='<p name="x">3</p>')), "all.xml")

    def test_values_are_removed(self):
        result = tarn("unset", self.path_of_all, "x", "plain[1]", "plain[3]", "items[2]", "e.q", "f",
                      "--dn", "A-1")
        self.assertEqual((result.returncode, result.stderr.decode()),
                         (0, f"{self.path_of_all}: 1 of 1 object changed, 6 values removed\n"))
        self.assertIn(b"""  <managedObject class="C" distName="A-1">
   <p name="y">2</p>
   <list name="plain">
    <p>b</p>
   </list>
   <list name="items">
    <item>
     <p name="k">1</p>
    </item>
   </list>
   <extension name="e"></extension>
  </managedObject>""", result.stdout)

    def test_objects_that_lack_a_value_are_counted(self):
        result = tarn("unset", self.path_of_all, "y", "x", "--everything")
        self.assertEqual(result.stderr.decode(), f"{self.path_of_all}: 2 of 2 objects changed, "
                         "3 values removed, 1 object has no 'y'\n")
        self.expect(tarn("unset", self.path_of_all, "y", "z", "--everything"), 4, "",
                    f"{self.path_of_all}: error: none of the 2 objects has a value 'z'\n")

    def test_wrong_usage(self):
        self.expect(tarn("unset", self.path_of_all, "x"), 64, "",
                    "tarn: error: no objects are selected; --everything selects all\n")
        self.expect(tarn("unset", self.path_of_all, "x", "x", "--everything"), 64, "",
                    "tarn: error: 'x' is named more than once\n")
        self.expect(tarn("unset", self.path_of_all, "x=1", "--everything"), 64, "",
                    "tarn: error: NAME: quote a name that holds one of = ! < > ~\n  x=1\n  ^\n")
        self.expect(tarn("unset", self.path_of_all, "items[1].k", "--dn", "A-1"), 64, "",
                    f"{self.path_of_all}: A-1: error: 'items[1].k' is part of an item, which is "
                    "removed as a whole\n")
        self.assertEqual(tarn("unset", self.path_of_all, "--everything").returncode, 64)


class ApplyTest(EditCase):
    def apply(self, table, *options):
        return tarn("apply", self.source, self.file(table, "changes.csv"), *options)

    def test_rows_are_applied(self):
        for table in ("dn,path,value\nA-1,x,7\nA-2,x,2\n", "\ufeffdn,path,value\r\nA-1,x,7\r\nA-2,x,2",
                      'value,"dn",path\n7,"A-1",x\n\n2,A-2,"x"\n'):
            out = self.path("out.xml")
            self.expect(self.apply(table, "-o", out), 0,
                        f"{self.source}: 1 object changed, 1 value set, 1 object had it already\n")
            self.assertEqual(self.value(out, "A-1", "x"), "7\n")
        self.assertEqual(self.apply('dn,path,value\nA-1,x,"a ""b"",\nc"\n', "--in-place").returncode, 0)
        self.assertEqual(self.value(self.source, "A-1", "x"), 'a "b",\nc\n')

    def test_values_are_created_when_asked_for(self):
        table = "dn,path,value\nA-1/B-1,z,1\nA-1,x,1\n"
        self.expect_refused(self.apply(table, "--in-place"), 4,
                            f"{self.path('changes.csv')}:2:1: A-1/B-1: error: nothing named 'z'\n"
                            f"{self.source}: error: 1 change cannot be made; nothing is written\n")
        self.expect(self.apply(table, "--create", "--in-place"), 0,
                    f"{self.source}: 1 object changed, 1 value set, 1 object had it already\n")
        self.assertEqual(self.value(self.source, "A-1/B-1", "z"), "1\n")

    def test_every_bad_row_is_reported(self):
        result = self.apply('dn,path,value\nZ-1,x,1\nA-1,y,1\nA-1,x,5\nA-1,x,6\nA-1,,6\n'
                            'A-2,x\nA-2,x," "\nA-2,x,"a\n\x01"\nA-2,l[1],1\n', "--in-place")
        where = self.path("changes.csv")
        self.expect_refused(result, 4, f"""{where}:2:1: Z-1: error: no such object
{where}:3:1: A-1: error: nothing named 'y'
{where}:5:1: A-1: error: line 4 sets 'x', too
{where}:6:1: A-1: error: the path is empty
{where}:7:1: A-2: error: 2 fields instead of 3
{where}:8:1: A-2: error: a value of blanks alone is read as an empty one
{where}:9:1: A-2: error: the path or the value holds what XML does not allow
{where}:11:1: A-2: error: nothing named 'l[1]'
{self.source}: error: 8 changes cannot be made; nothing is written
""")

    def test_what_is_no_table_is_wrong_usage(self):
        columns = "the columns must be dn, path and value, with commas between them"
        for table, place, message in (
                ("", "", "the header line is missing"), ("dn,path\n", "", columns),
                ("dn;path;value\nA-1;x;1\n", "", columns), ("dn,path,value,more\n", "", columns),
                ("dn,path,value\n", "", "there is no row below the header"),
                ('dn,path,value\nA-1,x,"1\n', ":2:7", "the quote is not closed"),
                ('dn,path,value\nA-1,x,a"1"\n', ":2:8",
                 "a field with a quote in it must be quoted as a whole"),
                ('dn,path,value\n"A-1"x,y,z\n', ":2:6", "a comma or the end of the line is expected"),
                ("dn,path,value\nA-1,x,1\rA-2,x,1\n", ":2:8",
                 "a comma or the end of the line is expected")):
            with self.subTest(table=table):
                self.expect_refused(self.apply(table, "--in-place"), 64,
                                    f"{self.path('changes.csv')}{place}: error: {message}\n")

    def test_list_in_csv_can_be_applied(self):
        listed = tarn("list", self.source, "--p", "x", "--format", "csv", "--columns", "dn,x").stdout
        rows = [line.split(",") for line in listed.decode().split()[1:]]
        table = "dn,path,value\n" + "".join(f"{dn},x,{value}0\n" for dn, value in rows)
        self.assertEqual(self.apply(table, "--in-place").returncode, 0)
        self.assertEqual(self.value(self.source, "A-2", "x"), "20\n")


class AddTest(EditCase):
    def test_objects_are_added_with_all_they_hold(self):
        objects = self.file(document(managed_object("B-2", "create", '<p name="x">1</p>')
                                     + managed_object("B-1")), "objects.xml")
        self.expect(tarn("add", self.source, objects, "--in-place"), 0, "B-1: added\nB-2: added\n")
        self.assertEqual(self.listed(self.source)[3:], ["B-1\tC\t\t\t0", "B-2\tC\tcreate\t\t1"])

    def test_one_that_is_there_refuses_all(self):
        objects = self.file(document(managed_object("B-1") + managed_object("A-2")
                                     + managed_object("A-1")), "objects.xml")
        self.expect_refused(tarn("add", self.source, objects, "--in-place"), 3,
                            f"{objects}:1:125: A-2: error: there is an object of that name\n"
                            f"{objects}:1:181: A-1: error: there is an object of that name\n")

    def test_fault_inside_an_object_is_reported(self):
        objects = self.file(document(managed_object("B-1", body=managed_object("C-1", "wrong"))),
                            "objects.xml")
        self.expect_refused(tarn("add", self.source, objects, "--in-place"), 2,
                            f"{objects}:1:69: B-1: error: 'wrong' is not a valid value of"
                            " 'managedObject' attribute 'operation'\n")

    def test_documents_without_cm_data(self):
        empty = self.file("<tarn/>", "empty.xml")
        self.expect_refused(tarn("add", self.source, empty), 2, f"{empty}: error: has no cmData\n")
        self.expect_refused(tarn("add", empty, self.source), 2, f"{empty}: error: has no cmData\n")


class RemoveTest(EditCase):
    def test_objects_are_removed(self):
        self.expect(tarn("remove", self.source, "A-2", "A-1/B-1", "--in-place"), 0,
                    "A-1/B-1: removed\nA-2: removed\n")
        self.assertEqual(self.listed(self.source), ["A-1\tC\t\t\t1"])

    def test_one_that_is_not_there_refuses_all(self):
        self.expect_refused(tarn("remove", self.source, "A-2", "Y-1", "Z-1", "--in-place"), 4,
                            f"{self.source}: Y-1: error: no such object\n"
                            f"{self.source}: Z-1: error: no such object\n")

    def test_selection_removes(self):
        out = self.path("out.xml")
        self.expect(tarn("remove", self.source, "--class", "D", "-o", out), 0, "A-2: removed\n")
        self.expect(tarn("remove", self.source, "A-2", "--dn", "A-1/B-1", "-o", out), 0,
                    "A-1/B-1: removed\nA-2: removed\n")
        self.expect_refused(tarn("remove", self.source, "--in-place"), 64,
                            "tarn: error: no objects are selected; --everything selects all\n")
        self.expect(tarn("remove", self.source, "--everything", "-o", out), 0,
                    "A-1: removed\nA-1/B-1: removed\nA-2: removed\n")

    def test_objects_without_a_parent_are_noted_or_removed_too(self):
        body = "".join(managed_object(name) for name in (
            "A-1/B-1/C-1", "A-1", "A-10", "A-1/B-1", "A-2/B-1", "A-1-x"))
        path = self.file(document(body), "tree.xml")
        out = self.path("out.xml")
        self.expect(tarn("remove", path, "A-1", "-o", out), 0, "A-1: removed\n",
                    f"{path}: note: 2 objects stay without a parent; --recursive removes them too\n")
        self.expect(tarn("remove", path, "A-1", "A-1/B-1", "-o", out), 0,
                    "A-1: removed\nA-1/B-1: removed\n",
                    f"{path}: note: 1 object stays without a parent; --recursive removes it too\n")
        self.expect(tarn("remove", path, "A-1", "--recursive", "-o", out), 0,
                    "A-1: removed\nA-1/B-1: removed\nA-1/B-1/C-1: removed\n")
        self.assertEqual([line.split("\t")[0] for line in self.listed(out)],
                         ["A-1-x", "A-2/B-1", "A-10"])

    def test_many_removed_objects_are_counted(self):
        path = self.file(document("".join(managed_object(f"A-{i}") for i in range(30))), "many.xml")
        self.expect(tarn("remove", path, "--everything", "-o", self.path("out.xml")), 0,
                    f"{path}: 30 objects removed\n")

    def test_outcomes_go_to_standard_error_when_the_document_goes_out(self):
        result = tarn("remove", self.source, "A-2")
        self.assertEqual((result.returncode, result.stderr), (0, b"A-2: removed\n"))
        self.assertNotIn(b"A-2", result.stdout)
        self.assertIn(b"A-1/B-1", result.stdout)

    def test_names_that_meet_are_a_conflict_whatever_is_logged(self):
        path = self.file(document(managed_object("A-1") + managed_object("A-2")
                                  + managed_object("A-3")))
        mask = self.file(document(managed_object("A-1")), "mask.xml")
        values = self.file(document(managed_object("A-2")), "values.xml")
        for level in ("debug", "info", "error", "none"):
            result = tarn("--log-level", level, "set", path, "--mask", mask, "--values", values,
                          "--in-place")
            self.assertEqual(result.returncode, 3, (level, result))
            self.assertIn(b"two objects would have one name", result.stderr)


if __name__ == "__main__":
    main()
