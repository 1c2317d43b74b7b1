#!/usr/bin/env python3
"""Runs `tarn merge` as a user does. Argument: the command; working folder: the repository's."""

import fcntl
import json
import os
import resource
import stat
import sys

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "support"))
from command_case import (EXAMPLES, TARN, CommandCase, document, main, managed_object,  # noqa: E402
                          run, tarn)

SOURCE = document(managed_object("A-1", body='<p name="x">1</p><p name="y">2</p>')
                  + managed_object("A-2"))
DELTA = document(managed_object("A-1", "update", '<p name="x">7</p>')
                 + managed_object("A-2", "delete") + managed_object("A-3", "create"),
                 header="<header><log dateTime='d' action='a'>t</log></header>")
MERGED = """<?xml version="1.0" encoding="UTF-8"?>
<tarn xmlns="tarn21.xsd" version="2.1">
 <cmData type="plan">
  <header>
   <log dateTime="d" action="a">t</log>
  </header>
  <managedObject class="C" distName="A-1">
   <p name="x">7</p>
   <p name="y">2</p>
  </managedObject>
  <managedObject class="C" distName="A-3" operation="create"></managedObject>
 </cmData>
</tarn>
"""
SUMMARY = "1 created, 1 updated, 1 deleted"


class MergeTest(CommandCase):
    def setUp(self):
        super().setUp()
        self.source = self.file(SOURCE, "source.xml")
        self.delta = self.file(DELTA, "delta.xml")

    def conflict(self):
        return self.file(document(managed_object("A-1", "update") + managed_object("A-9", "delete")),
                         "conflict.xml")

    def expect_untouched(self, result, status, err):
        """Expects that the merge failed, every file is unchanged and none was added."""
        self.expect(result, status, "", err)
        self.assertEqual(self.read(self.source), SOURCE.encode())
        self.assertEqual(self.read(self.delta), DELTA.encode())

    def test_result_goes_to_standard_output(self):
        summary = f"{self.delta}: {SUMMARY}\n"
        self.expect(tarn("merge", self.source, self.delta), 0, MERGED, summary)
        self.expect(tarn("merge", self.source, self.delta, "-o", "-"), 0, MERGED, summary)
        self.assertEqual(self.read(self.source), SOURCE.encode())

    def test_abbreviated_tag_that_breaks_a_rule_once_it_is_copied_is_noted(self):
        delta = self.file(document(managed_object("A-4", "create", "<e><p/></e>")), "short.xml")
        out = self.path("out.xml")
        message = ("merged document: The 'tarn > cmData > managedObject:A-4 > extension > p > ' "
                   "element has no attribute 'name'")
        self.expect(tarn("check", delta), 0, f"{delta}: ok\n")
        self.expect(tarn("merge", self.source, delta, "-o", out), 0,
                    f"{delta}: 1 created, 0 updated, 0 deleted\n",
                    f"{self.source}: note: {message}\n")
        self.expect(tarn("merge", self.source, delta, "--validate", "-o", out), 2, "",
                    f"{self.source}: error: {message}\n")
        # There is no note for a valid document.
        delta = self.file(document(managed_object("A-4", "create", '<e><p name="x"/></e>')), "x.xml")
        self.expect(tarn("merge", self.source, delta, "-o", out), 0,
                    f"{delta}: 1 created, 0 updated, 0 deleted\n")

    def test_result_goes_to_a_new_file_with_the_usual_mode(self):
        out = self.path("out.xml")
        self.expect(tarn("merge", self.source, self.delta, "-o", out), 0,
                    f"{self.delta}: {SUMMARY}\n")
        self.assertEqual(self.read(out), MERGED.encode())
        mask = os.umask(0)
        os.umask(mask)
        self.assertEqual(stat.S_IMODE(os.stat(out).st_mode), 0o666 & ~mask)
        self.assertEqual(sorted(os.listdir(self.folder)), ["delta.xml", "out.xml", "source.xml"])

    def test_in_place_keeps_the_mode(self):
        os.chmod(self.source, 0o640)
        self.expect(tarn("merge", "--in-place", self.source, self.delta), 0,
                    f"{self.delta}: {SUMMARY}\n")
        self.assertEqual(self.read(self.source), MERGED.encode())
        self.assertEqual(stat.S_IMODE(os.stat(self.source).st_mode), 0o640)
        self.assertEqual(sorted(os.listdir(self.folder)), ["delta.xml", "source.xml"])

    def test_deltas_are_applied_in_their_order(self):
        create = self.file(document(managed_object("B-1", "create")), "create.xml")
        delete = self.file(document(managed_object("B-1", "delete")), "delete.xml")
        self.expect(tarn("merge", self.source, create, delete, "--check-only"), 0,
                    f"B-1: created, deleted\n{create}: 1 created, 0 updated, 0 deleted\n"
                    f"{delete}: 0 created, 0 updated, 1 deleted\n")
        self.expect_untouched(
            tarn("merge", "--in-place", self.source, delete, create), 3,
            f"{delete}:1:69: B-1: error: There is no 'managedObject' element with 'distName=B-1' to"
            " delete\n")
        self.expect_untouched(
            tarn("merge", "--in-place", self.source, create, create), 3,
            f"{create}:1:69: B-1: error: A 'managedObject' element with 'distName=B-1' already"
            " exists\n")

    def test_auto_is_counted_as_what_it_came_to(self):
        delta = self.file(document(managed_object("A-1") + managed_object("A-5", "auto")), "auto.xml")
        self.expect(tarn("merge", self.source, delta, "--check-only"), 0,
                    f"A-1: updated\nA-5: created\n{delta}: 1 created, 1 updated, 0 deleted\n")

    def test_check_only_lists_what_would_happen_and_writes_nothing(self):
        more = self.file(document(managed_object("A-10", "create") + managed_object("A-9", "auto")
                                  + managed_object("A-1", "delete")), "more.xml")
        self.expect(tarn("merge", "--check-only", self.source, self.delta, more), 0,
                    "A-1: updated, deleted\nA-2: deleted\nA-3: created\nA-9: created\n"
                    f"A-10: created\n{self.delta}: {SUMMARY}\n"
                    f"{more}: 2 created, 0 updated, 1 deleted\n")
        self.assertEqual(self.read(self.source), SOURCE.encode())

    def test_check_only_has_no_target(self):
        for options in (["--in-place"], ["-o", self.path("out.xml")], ["--dry-run"]):
            result = tarn("merge", "--check-only", self.source, self.delta, *options)
            self.assertEqual((result.returncode, result.stdout), (64, b""))
            self.assertRegex(result.stderr.decode(), "^tarn: error: --.* excludes --.*\n$")

    def test_dry_run_shows_what_changes(self):
        with open(self.source, "r+b") as file:
            fcntl.lockf(file, fcntl.LOCK_EX)
            result = run("timeout", "30", TARN, "merge", self.source, self.delta, "--dry-run",
                         "--in-place")
        self.expect(result, 0, "A-1: x: 1 -> 7\nA-2: removed\nA-3: added\n",
                    f"{self.delta}: {SUMMARY}\n{self.source}: note: a dry run; nothing was written\n")
        create = self.file(document(managed_object("B-1", "create", '<p name="q">1</p>')), "create.xml")
        update = self.file(document(managed_object("B-1", "auto", '<p name="q">2</p>')), "update.xml")
        result = tarn("merge", self.source, create, update, "--dry-run", "--json")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual([list(json.loads(line).values()) for line in result.stdout.splitlines()],
                         [["B-1", "added", None, None, None], ["B-1", "added", "class", None, "C"],
                          ["B-1", "added", "q", None, "2"]])
        self.assertEqual(self.read(self.source), SOURCE.encode())

    def test_dry_run_agrees_with_the_merge(self):
        network, upgrade = (os.path.join(EXAMPLES, name) for name in ("network.xml", "upgrade.xml"))
        shown = tarn("merge", network, upgrade, "--dry-run")
        self.assertEqual(shown.returncode, 0, shown.stderr)
        out = self.path("out.xml")
        self.assertEqual(tarn("merge", network, upgrade, "-o", out).returncode, 0)
        lines = shown.stdout.decode().splitlines()
        added = {line[:-len(": added")] for line in lines
                 if line.endswith(": added") and line.count(": ") == 1}
        removed = {line[:-len(": removed")] for line in lines
                   if line.endswith(": removed") and line.count(": ") == 1}
        before, after = (set(tarn("list", path, "--format", "dn").stdout.decode().splitlines())
                         for path in (network, out))
        self.assertEqual((added, removed), (after - before, before - after))
        changed = [line.split(": ", 2) for line in lines if " -> " in line]
        self.assertGreater(len(changed), 10)
        for name, path, values in changed:
            old, new = values.split(" -> ")
            self.assertEqual((tarn("get", network, name, path).stdout.decode(),
                              tarn("get", out, name, path).stdout.decode()), (old + "\n", new + "\n"))

    def test_conflict_is_reported_with_status_3_and_nothing_written(self):
        path = self.conflict()
        out = self.path("out.xml")
        message = (f"{path}:1:144: A-9: error: There is no 'managedObject' element with"
                   " 'distName=A-9' to delete\n")
        for options in (["--in-place"], ["-o", out], [], ["--check-only"], ["--dry-run"]):
            self.expect_untouched(tarn("merge", *options, self.source, path), 3, message)
        self.assertFalse(os.path.exists(out))

    def conflicts(self):
        """Three deltas: the first fits, the others do not. Their names and the errors."""
        first = self.file(document(managed_object("B-1", "create")), "first.xml")
        second = self.file(document("\n" + managed_object("C-1", "update") + "\n"
                                    + managed_object("A-1", "update") + "\n"
                                    + managed_object("B-1", "create")), "second.xml")
        third = self.file(document("\n" + managed_object("C-2", "delete")), "third.xml")
        errors = (f"{second}:2:1: C-1: error: There is no 'managedObject' element with"
                  " 'distName=C-1' to update\n"
                  f"{second}:4:1: B-1: error: A 'managedObject' element with 'distName=B-1' already"
                  " exists\n"
                  f"{third}:2:1: C-2: error: There is no 'managedObject' element with"
                  " 'distName=C-2' to delete\n")
        return [first, second, third], errors

    def test_every_conflict_of_every_delta_is_reported_with_its_place(self):
        deltas, errors = self.conflicts()
        for options in (["--in-place"], [], ["--check-only"], ["--dry-run"]):
            self.expect_untouched(tarn("merge", *options, self.source, *deltas), 3, errors)
        source = SOURCE.encode()
        self.expect(tarn("merge", "-", *deltas, input=source), 3, "", errors)
        # A pipe can be read only once.
        script = '"$0" merge <(cat "$1") <(cat "$2") "$3" "$4"'
        result = run("bash", "-c", script, TARN, self.source, *deltas)
        self.expect(result, 3, "", errors)

    def test_conflicts_are_reported_beside_a_delta_that_does_not_load(self):
        deltas, errors = self.conflicts()
        bad = self.file(document(managed_object("D-1") + managed_object("D-1")), "bad.xml")
        result = tarn("merge", self.source, *deltas, bad)
        self.assertEqual(result.returncode, 3)
        loaded = tarn("merge", self.source, bad)
        self.assertEqual(loaded.returncode, 2)
        self.assertRegex(loaded.stderr.decode(),
                         f"^{bad}:1:125: D-1: error: .*\n{bad}:1:69: note: the first one is here\n$")
        self.assertEqual(result.stderr, loaded.stderr + errors.encode())
        self.expect(tarn("merge", "--check-only", self.source, deltas[0], bad), 2, "", loaded.stderr)

    def test_class_and_version_of_an_update_are_noted(self):
        source = self.file(document("".join(
            f'<managedObject class="C" distName="A-{i}" version="1"/>' for i in range(8))), "s.xml")
        delta = self.file(document("".join(
            f'\n<managedObject class="D" distName="A-{i}" version="2"/>' for i in range(8))), "d.xml")
        out = self.path("out.xml")
        notes = "".join(
            f"{delta}:{i + 2}:1: A-{i}: note: the class stays 'C', 'D' in the delta is not taken over\n"
            f"{delta}:{i + 2}:1: A-{i}: note: the version stays '1', '2' in the delta is not taken over\n"
            for i in range(5)) + f"{source}: note: 6 more classes and versions are not taken over\n"
        summary = f"{delta}: 0 created, 8 updated, 0 deleted\n"
        self.expect(tarn("merge", source, delta, "-o", out), 0, summary, notes)
        self.expect(tarn("merge", source, delta, "--check-only"), 0,
                    "".join(f"A-{i}: updated\n" for i in range(8)) + summary, notes)
        self.assertNotIn(b'"D"', self.read(out))
        delta = self.file(document('<managedObject class="C" distName="A-1" version="2"/>'), "d.xml")
        self.expect(tarn("merge", self.source, delta, "-o", out), 0,
                    f"{delta}: 0 created, 1 updated, 0 deleted\n",
                    f"{delta}:1:69: A-1: note: the object stays without version, '2' in the delta is"
                    " not taken over\n")

    def test_objects_that_stay_without_a_parent_are_noted(self):
        source = self.file(document("".join(managed_object(name) for name in (
            "A-1", "A-1/B-1", "A-1/B-1/C-1", "A-1/B-2", "A-10/B-1"))), "s.xml")
        delta = self.file(document(managed_object("A-1", "delete")
                                   + managed_object("A-1/B-2", "delete")), "d.xml")
        again = self.file(document(managed_object("A-1", "create")), "again.xml")
        out = self.path("out.xml")
        summary = f"{delta}: 0 created, 0 updated, 2 deleted\n"
        note = f"{source}: note: 2 objects stay without a parent\n"
        self.expect(tarn("merge", source, delta, "-o", out), 0, summary, note)
        self.expect(tarn("merge", source, delta, "--check-only"), 0,
                    "A-1: deleted\nA-1/B-2: deleted\n" + summary, note)
        self.expect(tarn("merge", source, delta, again, "-o", out), 0,
                    summary + f"{again}: 1 created, 0 updated, 0 deleted\n")

    def test_document_without_cm_data_has_status_2(self):
        empty = self.file("<tarn/>", "empty.xml")
        self.expect(tarn("merge", empty, self.delta), 2, "",
                    f"{empty}: error: Source document doesn't have cmData node\n")
        self.expect_untouched(tarn("merge", self.source, empty), 2,
                              f"{empty}: error: Delta document doesn't have cmData node\n")

    def test_faults_of_a_file_are_reported_as_by_check(self):
        malformed = self.file("<tarn>\n<", "malformed.xml")
        broken = self.file("<tarn><cmData type='wrong'/></tarn>", "broken.xml")
        missing = self.path("missing.xml")
        for path, status, message in (
                (malformed, 1, ":2:2: error: expected element name"),
                (broken, 2, ":1:7: error: 'wrong' is not a valid value of 'cmData' attribute 'type'"),
                (missing, 5, ": error: No such file or directory")):
            self.expect_untouched(tarn("merge", "--in-place", self.source, path), status,
                                  f"{path}{message}\n")
            self.expect_untouched(tarn("merge", "--in-place", path, self.delta), status,
                                  f"{path}{message}\n")

    def test_validate_checks_source_deltas_and_result(self):
        bad = self.file(document(managed_object("A")), "bad.xml")
        message = ":1:69: A: error: Invalid distinguished name: 'A'\n"
        self.assertEqual(tarn("merge", self.source, bad).returncode, 0)
        self.expect_untouched(tarn("merge", "--validate", self.source, bad), 2, bad + message)
        self.expect_untouched(tarn("merge", "--validate", bad, self.delta), 2, bad + message)
        delete_all = self.file(document(managed_object("A-1", "delete")
                                        + managed_object("A-2", "delete")), "all.xml")
        self.expect_untouched(
            tarn("merge", "--validate", "--in-place", self.source, delete_all), 2,
            f"{self.source}: error: merged document: The 'tarn > cmData > ' element has 0 child"
            " 'managedObject' elements.  Expected: 1\n")

    def test_rule_broken_while_copying_has_status_2_and_writes_nothing(self):
        body = managed_object("B-1", "no operation")
        delta = self.file(document(managed_object("A-7", "create", body)), "nested.xml")
        self.expect_untouched(
            tarn("merge", "--in-place", self.source, delta), 2,
            f"{delta}:1:69: A-7: error: 'no operation' is not a valid value of 'managedObject' attribute"
            " 'operation'\n")

    def test_source_as_its_own_delta_is_refused_under_any_name(self):
        link = self.path("link.xml")
        os.symlink("source.xml", link)
        hard = self.path("hard.xml")
        os.link(self.source, hard)
        for name in (self.source, self.path("./source.xml"), link, hard):
            self.expect_untouched(tarn("merge", "--in-place", self.source, name), 3,
                                  f"{name}: error: Source and delta are the same document\n")
        copy = self.file(SOURCE, "copy.xml")
        self.expect(tarn("merge", self.source, copy), 0, tarn("print", self.source).stdout,
                    f"{copy}: 0 created, 2 updated, 0 deleted\n")

    def test_other_names_of_the_target_are_reported(self):
        hard = self.path("hard.xml")
        os.link(self.source, hard)
        self.expect(tarn("merge", "--in-place", self.source, self.delta), 0,
                    f"{self.delta}: {SUMMARY}\n",
                    f"{self.source}: note: other names of the file keep what it held\n")
        self.assertEqual(self.read(self.source), MERGED.encode())
        self.assertEqual(self.read(hard), SOURCE.encode())

    def test_folder_that_cannot_be_written_is_reported(self):
        result = tarn("merge", self.source, self.delta, "-o", "/sys/out.xml")
        self.assertEqual((result.returncode, result.stdout), (5, b""))
        self.assertIn(result.stderr, (b"/sys/out.xml: error: its folder takes no new file: Permission denied\n",
                                      b"/sys/out.xml: error: Read-only file system\n"))

    def test_output_may_be_the_delta(self):
        result = tarn("merge", self.source, self.delta, "-o", self.delta)
        self.expect(result, 0, f"{self.delta}: {SUMMARY}\n")
        self.assertEqual(self.read(self.delta), MERGED.encode())

    def test_target_of_a_link_is_replaced_and_the_link_stays(self):
        os.mkdir(self.path("folder"))
        os.symlink("folder/second.xml", self.path("link.xml"))
        os.symlink("../source.xml", self.path("folder/second.xml"))
        link = self.path("link.xml")
        self.assertEqual(tarn("merge", "--in-place", link, self.delta).returncode, 0)
        self.assertTrue(os.path.islink(link))
        self.assertTrue(os.path.islink(self.path("folder/second.xml")))
        self.assertEqual(self.read(self.source), MERGED.encode())

    def test_link_to_nothing_makes_the_file_that_it_names(self):
        os.symlink("made.xml", self.path("link.xml"))
        self.assertEqual(tarn("merge", self.source, self.delta, "-o",
                              self.path("link.xml")).returncode, 0)
        self.assertEqual(self.read(self.path("made.xml")), MERGED.encode())

    def test_links_in_a_cycle_are_reported(self):
        os.symlink("b.xml", self.path("a.xml"))
        os.symlink("a.xml", self.path("b.xml"))
        path = self.path("a.xml")
        self.expect_untouched(
            tarn("merge", self.source, self.delta, "-o", path), 5,
            f"{path}: error: Too many levels of symbolic links\n")

    def test_device_is_written_and_stays_a_device(self):
        self.expect(tarn("merge", self.source, self.delta, "-o", "/dev/null"), 0,
                    f"{self.delta}: {SUMMARY}\n")
        self.assertTrue(stat.S_ISCHR(os.stat("/dev/null").st_mode))
        self.expect_untouched(
            tarn("merge", self.source, self.delta, "-o", "/dev/full"), 5,
            "/dev/full: error: No space left on device\n")

    def test_target_that_cannot_be_written_is_reported(self):
        for path, message in ((self.folder, "Is a directory"),
                              (self.path("none/out.xml"), "its folder does not exist"),
                              (os.path.join(self.source, "out.xml"), "Not a directory")):
            self.expect_untouched(tarn("merge", self.source, self.delta, "-o", path), 5,
                                  f"{path}: error: {message}\n")

    def test_write_that_fails_half_way_leaves_the_target_and_no_stray_file(self):
        def limit():
            resource.setrlimit(resource.RLIMIT_FSIZE, (100, 100))
        for restore in (True, False):  # SIGXFSZ as the shell has it, and ignored
            result = run(TARN, "merge", "--in-place", self.source, self.delta, preexec_fn=limit,
                         restore_signals=restore)
            self.expect_untouched(result, 5, f"{self.source}: error: File too large\n")
            self.assertEqual(sorted(os.listdir(self.folder)), ["delta.xml", "source.xml"])

    def test_wrong_usage_has_status_64(self):
        for arguments in ([], [self.source], ["--in-place", "-o", "x", self.source, self.delta]):
            result = tarn("merge", *arguments)
            self.assertEqual((arguments, result.returncode, result.stdout), (arguments, 64, b""))
            self.assertNotEqual(result.stderr, b"")

    def test_example_does_the_usual_work(self):
        result = run("bash", os.path.join(EXAMPLES, "upgrade.sh"), TARN, self.path("results"))
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertIn(b"examples/upgrade.xml: 14 created, 22 updated, 5 deleted\n", result.stdout)
        self.assertIn(b"network-upgraded.xml: ok\n", result.stdout)
        self.assertIn(b"network-copy.xml is unchanged\n", result.stdout)
        errors = [line for line in result.stderr.splitlines() if line.startswith(b"ERROR")]
        self.assertEqual(errors, [b"ERROR src/libTARN/editor/TarnMerge.cpp:64 doMerge: A"
                                  b" 'managedObject' element with 'distName=NET-1/SITE-7' already"
                                  b" exists"])


if __name__ == "__main__":
    main()
