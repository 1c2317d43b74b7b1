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
    def test_values_are_set_on_the_objects_that_match(self):
        self.expect(tarn("set", self.source, "--dn", "A-1", "--p", "x=9", "--p", "y=a=b",
                         "--version", "3", "--in-place"), 0, f"{self.source}: 2 objects matched\n")
        self.assertEqual(self.listed(self.source),
                         ["A-1\tC\t\t3\t2", "A-1/B-1\tC\t\t3\t2", "A-2\tD\t\t\t1"])
        self.assertEqual(self.value(self.source, "A-1", "x"), "9\n")
        self.assertEqual(self.value(self.source, "A-1", "y"), "a=b\n")
        self.assertEqual(self.value(self.source, "A-2", "x"), "2\n")

    def test_masks_have_a_prefix_where_values_have_the_name(self):
        out = self.path("out.xml")
        self.expect(tarn("set", self.source, "--mask-class", "D", "--class", "E", "-o", out), 0,
                    f"{self.source}: 1 object matched\n")
        self.assertEqual(self.listed(out)[2], "A-2\tE\t\t\t1")
        self.expect(tarn("set", self.source, "--mask-p", "x=1", "--p", "x=5", "-o", out), 0,
                    f"{self.source}: 1 object matched\n")
        self.assertEqual(self.value(out, "A-1", "x"), "5\n")
        result = tarn("set", self.source, "--mask-p", "x", "--version", "7")
        self.assertEqual((result.returncode, result.stderr.decode()),
                         (0, f"{self.source}: 2 objects matched\n"))
        self.assertEqual(result.stdout.count(b'version="7"'), 2)

    def test_values_of_a_file(self):
        values = self.file("<tarn><cmData type='plan'><managedObject distName='A-7' version='#'"
                           " class='#' operation='update'><list name='l'><p>1</p></list>"
                           "</managedObject></cmData></tarn>", "values.xml")
        self.expect(tarn("set", self.source, "--dn", "A-1", "--values", values, "--in-place"), 0,
                    f"{self.source}: 2 objects matched\n")
        self.assertEqual(self.listed(self.source),
                         ["A-2\tD\t\t\t1", "A-7\tC\tupdate\t\t2", "A-7/B-1\tC\tupdate\t\t1"])

    def test_nothing_matched_has_status_4(self):
        self.expect_refused(tarn("set", self.source, "--dn", "Z", "--p", "x=1", "--in-place"), 4,
                            f"{self.source}: error: no object matches\n")

    def test_names_that_would_meet_are_refused(self):
        source = document(managed_object("A-1") + managed_object("A-1/A-1"))
        path = self.file(source, "meet.xml")
        mask = self.file("<tarn><cmData type='plan'><managedObject distName='/A-1' class='#'"
                         " version='#'/></cmData></tarn>", "mask.xml")
        values = self.file("<tarn><cmData type='plan'><managedObject distName='' class='#'"
                           " version='#'/></cmData></tarn>", "values.xml")
        self.expect(tarn("set", path, "--mask", mask, "--values", values, "--in-place"), 3, "",
                    f"{path}: error: two objects would have one name\n")
        self.assertEqual(self.read(path), source.encode())

    def test_wrong_usage(self):
        for arguments in (["--p", "x"], ["--p", "=1"], ["--p", "x=1", "--p", "x=2"],
                          ["--values", self.source, "--class", "x"], ["--in-place", "-o", "x"]):
            result = tarn("set", self.source, *arguments)
            self.assertEqual((arguments, result.returncode, result.stdout), (arguments, 64, b""))


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
                            f"{self.source}: A-1: error: there is an object of that name\n"
                            f"{self.source}: A-2: error: there is an object of that name\n")

    def test_fault_inside_an_object_is_reported(self):
        objects = self.file(document(managed_object("B-1", body=managed_object("C-1", "wrong"))),
                            "objects.xml")
        self.expect_refused(tarn("add", self.source, objects, "--in-place"), 2,
                            f"{self.source}: B-1: error: 'wrong' is not a valid value of"
                            " 'managedObject' attribute 'operation'\n")

    def test_documents_without_cm_data(self):
        empty = self.file("<tarn/>", "empty.xml")
        self.expect_refused(tarn("add", self.source, empty), 2, f"{empty}: error: has no cmData\n")
        self.expect_refused(tarn("add", empty, self.source), 2, f"{empty}: error: has no cmData\n")


class RemoveTest(EditCase):
    def test_objects_are_removed(self):
        self.expect(tarn("remove", self.source, "A-2", "A-1/B-1", "--in-place"), 0,
                    "A-2: removed\nA-1/B-1: removed\n")
        self.assertEqual(self.listed(self.source), ["A-1\tC\t\t\t1"])

    def test_one_that_is_not_there_refuses_all(self):
        self.expect_refused(tarn("remove", self.source, "A-2", "A-2", "Z-1", "--in-place"), 4,
                            f"{self.source}: A-2: error: no such object\n"
                            f"{self.source}: Z-1: error: no such object\n")

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
