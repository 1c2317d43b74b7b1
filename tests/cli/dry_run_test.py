#!/usr/bin/env python3
"""Runs commands with --dry-run as a user does. Argument: the command."""

import fcntl
import json
import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "support"))
from command_case import TARN, CommandCase, document, main, managed_object, run, tarn  # noqa: E402

SOURCE = document(
    managed_object("A-10", body='<p name="x">1</p><list name="l"><p>a</p><p>b</p></list>')
    + managed_object("A-2", body='<p name="x">2</p><p name="n">one\ntwo\\\x7f</p>', class_name="D")
    + managed_object("A-2/B-1", "create"))


class DryRunCase(CommandCase):
    def setUp(self):
        super().setUp()
        self.source = self.file(SOURCE, "source.xml")

    def tearDown(self):
        self.assertEqual(self.read(self.source), SOURCE.encode())

    def expect_changes(self, result, out, report):
        """Expects the changes on standard output, the report and a note on standard error."""
        self.expect(result, 0, out,
                    f"{self.source}: {report}\n{self.source}: note: a dry run; nothing was written\n")

    def changes(self, *arguments):
        """The changes in JSON, as lists of their values."""
        result = tarn(*arguments, "--dry-run", "--json")
        self.assertEqual(result.returncode, 0, result.stderr)
        lines = [json.loads(line) for line in result.stdout.splitlines()]
        for line in lines:
            self.assertEqual(list(line), ["dn", "kind", "path", "old", "new"])
        return [list(line.values()) for line in lines]


class EditDryRunTest(DryRunCase):
    def test_set_shows_old_and_new_values_in_natural_order(self):
        self.expect_changes(
            tarn("set", self.source, "--p", "x", "--set", "x=5", "--set", "l[2]=c", "--set", "y=",
                 "--create", "--set-version", "4", "--dry-run"),
            "A-2: version: added: 4\nA-2: x: 2 -> 5\nA-2: y: added: ''\n"
            "A-10: version: added: 4\nA-10: x: 1 -> 5\nA-10: y: added: ''\nA-10: l[2]: b -> c\n",
            "2 of 2 objects changed, 7 values set, 1 object has no 'l[2]'")

    def test_values_are_escaped_in_text_and_exact_in_json(self):
        change = ("set", self.source, "--dn", "A-2", "--set", "n=  -> ")
        self.expect_changes(tarn(*change, "--dry-run"),
                            "A-2: n: one\\ntwo\\\\\\x7F ->   -> \n",
                            "1 of 1 object changed, 1 value set")
        self.assertEqual(self.changes(*change),
                         [["A-2", "changed", "n", "one\ntwo\\\x7f", "  -> "]])

    def test_value_that_stays_is_no_change(self):
        self.expect_changes(tarn("set", self.source, "--dn", "A-2", "--set", "x=2", "--dry-run"), "",
                            "0 of 1 object changed, 0 values set, 1 object had it already")

    def test_unset_shows_what_is_removed(self):
        self.expect_changes(tarn("unset", self.source, "l", "x", "--dn", "A-10", "--dry-run"),
                            "A-10: x: removed: 1\nA-10: l: removed\nA-10: l[1]: removed: a\n"
                            "A-10: l[2]: removed: b\n",
                            "1 of 1 object changed, 2 values removed")
        self.assertEqual(self.changes("unset", self.source, "l[1]", "--dn", "A-10"),
                         [["A-10", "changed", "l[1]", "a", "b"], ["A-10", "removed", "l[2]", "b", None]])

    def test_added_and_removed_objects_are_a_line_of_text_and_complete_in_json(self):
        more = self.file(document(managed_object("A-9", "update", '<p name="q">1</p>')), "more.xml")
        self.expect_changes(tarn("add", self.source, more, "--dry-run"), "A-9: added\n",
                            "1 object added")
        self.assertEqual(self.changes("add", self.source, more),
                         [["A-9", "added", None, None, None], ["A-9", "added", "class", None, "C"],
                          ["A-9", "added", "operation", None, "update"],
                          ["A-9", "added", "q", None, "1"]])
        self.expect_changes(tarn("remove", self.source, "A-2", "--recursive", "--dry-run"),
                            "A-2: removed\nA-2/B-1: removed\n", "2 objects removed")
        self.assertEqual(self.changes("remove", self.source, "A-2/B-1"),
                         [["A-2/B-1", "removed", None, None, None],
                          ["A-2/B-1", "removed", "class", "C", None],
                          ["A-2/B-1", "removed", "operation", "create", None]])

    def test_targets_are_not_used_and_nothing_is_locked(self):
        out = self.path("out.xml")
        change = ["set", self.source, "--dn", "A-2", "--set", "x=5", "--dry-run"]
        with open(self.source, "r+b") as file:
            fcntl.lockf(file, fcntl.LOCK_EX)  # a command that wanted the lock would wait for it
            for target in ([], ["--in-place"], ["--in-place=.bak"], ["-o", out], ["-o", self.source],
                           ["-o", self.path("none/out.xml")]):
                self.expect_changes(run("timeout", "30", TARN, *change, *target), "A-2: x: 2 -> 5\n",
                                    "1 of 1 object changed, 1 value set")
        self.assertEqual(os.listdir(self.folder), ["source.xml"])

    def test_document_may_come_from_a_pipe(self):
        result = tarn("set", "-", "--dn", "A-2", "--set", "x=5", "--dry-run", input=SOURCE.encode())
        self.expect(result, 0, "A-2: x: 2 -> 5\n", "-: 1 of 1 object changed, 1 value set\n"
                    "-: note: a dry run; nothing was written\n")

    def test_faults_are_those_of_the_change(self):
        bad = ["set", self.source, "--dn", "A-2", "--set", "z=5"]
        wanted = tarn(*bad)
        self.assertEqual(wanted.returncode, 4)
        self.expect(tarn(*bad, "--dry-run"), 4, "", wanted.stderr)
        path = self.file(document(managed_object("A-1", body='<p name="x">\x01</p>')), "control.xml")
        change = ["set", path, "--everything", "--set-version", "2"]
        wanted = tarn(*change)
        self.assertEqual(wanted.returncode, 1)
        self.expect(tarn(*change, "--dry-run"), 1, "", wanted.stderr)

    def test_json_needs_a_dry_run(self):
        self.expect(tarn("remove", self.source, "A-2", "--json"), 64, "",
                    "tarn: error: --json: only with --dry-run\n")


if __name__ == "__main__":
    main()
