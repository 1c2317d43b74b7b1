#!/usr/bin/env python3
"""The files that the command writes: rights, names, which are replaced and which are written to.

Argument: the command. What needs another user is tried as root only.
"""

import os
import socket
import stat
import struct
import subprocess
import sys
import threading
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "support"))
from command_case import TARN, CommandCase, document, main, managed_object, run, tarn  # noqa: E402

SOURCE = document(managed_object("A-1", body='<p name="x">1</p>'))
CHANGE = ["set", "--everything", "--create", "--set", "x=2", "--in-place"]
PRINTED = tarn("print", "-", input=SOURCE.encode()).stdout

ACCESS_LIST = "system.posix_acl_access"
DEFAULT_LIST = "system.posix_acl_default"
OWNER, USER, GROUP, NAMED_GROUP, MASK, OTHERS = 1, 2, 4, 8, 16, 32
NO_ID = 0xFFFFFFFF
NOBODY = 65534
ANOTHER = 12345


def access_list(*entries):
    """(tag, rights) or (tag, rights, id) each."""
    return struct.pack("<I", 2) + b"".join(
        struct.pack("<HHI", tag, rights, identity[0] if identity else NO_ID)
        for tag, rights, *identity in entries)


def mode_of(path):
    return stat.S_IMODE(os.stat(path).st_mode)


def attribute(path, name):
    try:
        return os.getxattr(path, name)
    except OSError:
        return None


def can_have(name, value):
    """Returns true if a file of the tests can have that attribute."""
    case = CommandCase()
    case.setUp()
    try:
        os.setxattr(case.file(""), name, value)
        return True
    except OSError:
        return False
    finally:
        case.doCleanups()


HAS_LISTS = can_have(ACCESS_LIST, access_list((OWNER, 6), (USER, 4, 1), (GROUP, 4), (MASK, 4),
                                              (OTHERS, 4)))


class FilesCase(CommandCase):
    def setUp(self):
        super().setUp()
        self.source = self.file(SOURCE, "source.xml")

    def change(self, path=None, command=tarn):
        path = path or self.source
        result = command(*CHANGE, path)
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        self.assertIn(f"{path}: ".encode(), result.stdout)
        self.assertIn(b">2<", self.read(path))

    def expect_refused(self, result, message, path=None):
        self.expect(result, 5, "", f"{path or self.source}: error: {message}\n")


class RightsTest(FilesCase):
    def test_every_mode_is_kept(self):
        for mode in (0o600, 0o640, 0o644, 0o664, 0o604, 0o7755, 0o4700, 0o2770, 0o1666):
            os.chmod(self.source, mode)
            self.change()
            self.assertEqual(mode_of(self.source), mode)

    def test_extended_attributes_are_kept(self):
        if not can_have("user.note", b"x"):
            self.skipTest("no extended attributes here")
        values = {"user.note": b"value\0\xff", "user.empty": b"", "user.long": b"x" * 1000}
        for name, value in values.items():
            os.setxattr(self.source, name, value)
        self.change()
        self.assertEqual({name: attribute(self.source, name) for name in values}, values)

    @unittest.skipUnless(HAS_LISTS, "no access control lists here")
    def test_access_control_list_is_kept(self):
        entries = access_list((OWNER, 6), (USER, 6, ANOTHER), (GROUP, 0), (NAMED_GROUP, 4, ANOTHER),
                              (MASK, 6), (OTHERS, 0))
        os.setxattr(self.source, ACCESS_LIST, entries)
        self.assertEqual(mode_of(self.source), 0o660)  # the mask, not the group
        self.change()
        self.assertEqual(attribute(self.source, ACCESS_LIST), entries)
        self.assertEqual(mode_of(self.source), 0o660)

    @unittest.skipUnless(HAS_LISTS, "no access control lists here")
    def test_list_of_the_folder_gives_a_replaced_file_nothing(self):
        os.chmod(self.source, 0o640)
        os.setxattr(self.folder, DEFAULT_LIST, access_list(
            (OWNER, 7), (USER, 7, ANOTHER), (GROUP, 7), (MASK, 7), (OTHERS, 7)))
        self.change()
        self.assertEqual(mode_of(self.source), 0o640)
        self.assertIsNone(attribute(self.source, ACCESS_LIST))

    @unittest.skipUnless(HAS_LISTS, "no access control lists here")
    def test_new_file_gets_what_the_list_of_the_folder_says(self):
        for entries in (((OWNER, 7), (USER, 6, ANOTHER), (GROUP, 5), (MASK, 4), (OTHERS, 0)),
                        ((OWNER, 6), (GROUP, 0), (OTHERS, 0)), ((OWNER, 7), (GROUP, 7), (OTHERS, 5))):
            os.setxattr(self.folder, DEFAULT_LIST, access_list(*entries))
            usual = self.file("", "usual")
            out = self.path("out")
            self.expect(tarn("print", self.source, "-o", out), 0)
            self.assertEqual(mode_of(out), mode_of(usual))
            self.assertEqual(attribute(out, ACCESS_LIST), attribute(usual, ACCESS_LIST))
            os.remove(usual)
            os.remove(out)


@unittest.skipUnless(os.geteuid() == 0, "needs to be root")
class RootTest(FilesCase):
    def test_owner_and_group_are_kept_with_the_special_bits(self):
        os.chown(self.source, NOBODY, ANOTHER)
        os.chmod(self.source, 0o6770)
        self.change()
        status = os.stat(self.source)
        self.assertEqual((status.st_uid, status.st_gid, mode_of(self.source)),
                         (NOBODY, ANOTHER, 0o6770))


def other_user(*groups):
    """Runs the command as a user who is not root: nobody, in its own group and `groups`."""
    def command(*arguments, **options):
        return run("setpriv", f"--reuid={NOBODY}", f"--regid={NOBODY}",
                   "--groups=" + ",".join(str(group) for group in groups or (NOBODY,)), TARN,
                   *arguments, **options)
    return command


def can_run_as_other_user():
    if os.geteuid() != 0:
        return False
    try:
        return other_user()("--version").returncode == 0
    except OSError:
        return False


@unittest.skipUnless(can_run_as_other_user(), "needs root, setpriv, and a command open to all")
class OtherUserTest(FilesCase):
    def setUp(self):
        super().setUp()
        os.chmod(self.folder, 0o777)

    def own(self, user, group, mode):
        os.chown(self.source, user, group)
        os.chmod(self.source, mode)

    def expect_owner(self, user, group, mode):
        status = os.stat(self.source)
        self.assertEqual((status.st_uid, status.st_gid, oct(mode_of(self.source))),
                         (user, group, oct(mode)))

    def test_group_that_the_user_is_in_is_kept_without_the_owner(self):
        self.own(0, ANOTHER, 0o664)
        self.change(command=other_user(ANOTHER))
        self.expect_owner(NOBODY, ANOTHER, 0o664)

    def test_special_bits_go_with_the_owner(self):
        self.own(0, ANOTHER, 0o6775)
        self.change(command=other_user(ANOTHER))
        self.expect_owner(NOBODY, ANOTHER, 0o775)

    def test_rights_of_a_group_that_is_not_kept_go_and_others_gain_nothing(self):
        for mode, kept in ((0o666, 0o606), (0o646, 0o604), (0o606, 0o600), (0o6777, 0o707)):
            self.own(NOBODY, ANOTHER, mode)
            self.change(command=other_user())
            self.expect_owner(NOBODY, NOBODY, kept)

    @unittest.skipUnless(HAS_LISTS, "no access control lists here")
    def test_mask_of_a_list_becomes_no_right_of_the_group(self):
        self.own(0, ANOTHER, 0o600)
        os.setxattr(self.source, ACCESS_LIST, access_list(
            (OWNER, 6), (USER, 6, NOBODY), (GROUP, 4), (NAMED_GROUP, 2, 4711), (MASK, 6),
            (OTHERS, 6)))
        self.change(command=other_user())
        self.expect_owner(NOBODY, NOBODY, 0o664)  # in the middle the mask
        self.assertEqual(attribute(self.source, ACCESS_LIST), access_list(
            (OWNER, 6), (USER, 6, NOBODY), (GROUP, 0), (NAMED_GROUP, 2, 4711), (MASK, 6),
            (OTHERS, 4)))

    @unittest.skipUnless(HAS_LISTS, "no access control lists here")
    def test_list_is_kept_with_the_group(self):
        entries = access_list((OWNER, 6), (USER, 6, NOBODY), (GROUP, 4), (MASK, 6), (OTHERS, 0))
        self.own(0, ANOTHER, 0o600)
        os.setxattr(self.source, ACCESS_LIST, entries)
        self.change(command=other_user(ANOTHER))
        self.expect_owner(NOBODY, ANOTHER, 0o660)
        self.assertEqual(attribute(self.source, ACCESS_LIST), entries)

    def test_file_that_the_user_may_not_write_is_not_replaced(self):
        self.own(0, 0, 0o644)
        self.expect_refused(other_user()(*CHANGE, self.source), "Permission denied")
        self.own(NOBODY, NOBODY, 0o444)
        self.expect_refused(other_user()(*CHANGE, self.source), "Permission denied")
        self.assertEqual(self.read(self.source), SOURCE.encode())

    def test_folder_that_the_user_may_not_write_is_named(self):
        self.own(NOBODY, NOBODY, 0o644)
        os.chmod(self.folder, 0o755)
        message = "its folder takes no new file: Permission denied"
        self.expect_refused(other_user()(*CHANGE, self.source), message)
        out = self.path("out")
        self.expect_refused(other_user()("print", self.source, "-o", out), message, out)
        self.assertEqual(self.read(self.source), SOURCE.encode())

    def test_file_that_is_kept_goes_to_nobody_else(self):
        self.own(0, ANOTHER, 0o664)
        self.assertEqual(other_user(ANOTHER)("set", self.source, "--everything", "--create", "--set", "x=2",
                                             "--in-place=.bak").returncode, 0)
        kept = os.stat(self.source + ".bak")
        self.assertEqual((kept.st_uid, kept.st_gid, mode_of(self.source + ".bak")),
                         (0, ANOTHER, 0o664))
        self.expect_owner(NOBODY, ANOTHER, 0o664)

    def test_file_that_the_user_may_only_write_is_replaced(self):
        self.own(0, 0, 0o622)
        given = os.path.join(self.folder, "given.xml")
        os.rename(self.file(SOURCE, "read.xml"), given)
        self.expect(other_user()("print", given, "-o", self.source), 0)
        self.assertEqual(self.read(self.source), PRINTED)

    def test_folder_that_the_user_may_not_list_will_do(self):
        os.chmod(self.folder, 0o733)
        self.own(NOBODY, NOBODY, 0o600)
        self.change(command=other_user())


class NameTest(FilesCase):
    def test_names_may_be_as_long_as_the_file_system_allows(self):
        limit = os.pathconf(self.folder, "PC_NAME_MAX")
        for size in (1, limit - 7, limit - 6, limit - 1, limit):
            for name in ("n" * size, "é" * (size // 2) + "n" * (size % 2)):
                path = self.file(SOURCE, name)
                self.change(path)
                out = self.path(name)
                os.remove(path)
                self.expect(tarn("print", self.source, "-o", out), 0)
                self.assertEqual(self.read(out), PRINTED)
                os.remove(out)
        self.assertEqual(os.listdir(self.folder), ["source.xml"])
        path = self.path("n" * (limit + 1))
        self.expect_refused(tarn("print", self.source, "-o", path), "File name too long", path)

    def test_name_that_ends_as_the_system_marks_removed_files(self):
        marked = self.file(SOURCE, "source.xml (deleted)")
        self.expect(tarn("set", marked, "--everything", "--create", "--set", "y=1", "-o", self.source), 0,
                    f"{marked}: 1 of 1 object changed, 1 value set\n")

    def test_paths_may_be_as_long_as_the_kernel_allows(self):
        limit = os.pathconf(self.folder, "PC_PATH_MAX") - 1
        folder = self.folder
        while limit - len(folder) > 250:
            folder = os.path.join(folder, "f" * 200)
            os.mkdir(folder)
        path = os.path.join(folder, "n" * (limit - len(folder) - 1))
        with open(path, "w", encoding="utf-8") as file:
            file.write(SOURCE)
        self.change(path)

    def test_names_without_a_folder_are_those_of_the_working_folder(self):
        result = run(os.path.abspath(TARN), *CHANGE, "source.xml", cwd=self.folder)
        self.assertEqual(result.returncode, 0)
        self.assertIn(b">2<", self.read(self.source))
        self.assertEqual(os.listdir(self.folder), ["source.xml"])


class KeepTest(FilesCase):
    """--in-place=SUFFIX keeps the old file under its name with the suffix."""

    def keep(self, path=None, suffix=".bak", change="x=2"):
        path = path or self.source
        return tarn("set", path, "--everything", "--create", "--set", change, f"--in-place={suffix}")

    def expect_kept(self, path, kept, before=SOURCE.encode()):
        self.assertEqual(self.read(kept), before)
        self.assertNotEqual(self.read(path), before)

    def test_old_file_is_kept_as_it_was(self):
        os.chmod(self.source, 0o6640)
        os.utime(self.source, ns=(1, 10**18))
        before = os.stat(self.source)
        self.expect(self.keep(), 0, f"{self.source}: 1 of 1 object changed, 1 value set\n")
        self.expect_kept(self.source, self.source + ".bak")
        kept = os.stat(self.source + ".bak")
        for part in ("st_ino", "st_uid", "st_gid", "st_mode", "st_mtime_ns", "st_nlink"):
            self.assertEqual(getattr(kept, part), getattr(before, part), part)
        self.assertEqual(mode_of(self.source), 0o6640)
        self.assertEqual(sorted(os.listdir(self.folder)), ["source.xml", "source.xml.bak"])

    def test_every_command_that_replaces_keeps(self):
        delta = self.file(document(managed_object("B-1", "create")), "delta.xml")
        for suffix, arguments in (("~", ["add", self.source, delta]),
                                  (".2", ["merge", self.source, delta]),
                                  ("true", ["remove", self.source, "A-1"])):
            self.file(SOURCE, "source.xml")
            self.assertEqual(tarn(*arguments, f"--in-place={suffix}").returncode, 0)
            self.expect_kept(self.source, self.source + suffix)

    def test_earlier_kept_file_is_replaced(self):
        self.file("earlier", "source.xml.bak")
        self.assertEqual(self.keep().returncode, 0)
        self.expect_kept(self.source, self.source + ".bak")
        between = self.read(self.source)
        self.assertEqual(self.keep(change="x=3").returncode, 0)
        self.expect_kept(self.source, self.source + ".bak", between)

    def test_what_is_no_regular_file_is_not_replaced(self):
        def link(path):
            os.symlink("source.xml", path)
        for make, remove in ((os.mkdir, os.rmdir), (os.mkfifo, os.remove), (link, os.remove)):
            path = self.path("source.xml.bak")
            make(path)
            self.expect_refused(self.keep(),
                                "is no regular file, and the old file cannot be kept there", path)
            self.assertEqual(self.read(self.source), SOURCE.encode())
            self.assertEqual(sorted(os.listdir(self.folder)), ["source.xml", "source.xml.bak"])
            remove(path)

    def test_input_is_not_replaced(self):
        delta = self.file(document(managed_object("A-1", "update")), "source.xml.bak")
        before = self.read(delta)
        result = tarn("merge", self.source, delta, "--in-place=.bak")
        self.assertEqual((result.returncode, result.stderr.decode()), (
            5, f"{delta}: error: has been read, and the old file cannot be kept there\n"))
        self.assertEqual((self.read(self.source), self.read(delta)), (SOURCE.encode(), before))

    def test_kept_file_that_is_another_name_of_the_file(self):
        os.link(self.source, self.source + ".bak")
        self.expect(self.keep(), 0, f"{self.source}: 1 of 1 object changed, 1 value set\n",
                    f"{self.source}: note: other names of the file keep what it held\n")
        self.expect_kept(self.source, self.source + ".bak")
        self.assertEqual(sorted(os.listdir(self.folder)), ["source.xml", "source.xml.bak"])

    def test_it_is_kept_beside_the_file_that_a_link_leads_to(self):
        os.mkdir(self.path("data"))
        os.rename(self.source, self.path("data/real.xml"))
        os.symlink("data/real.xml", self.source)
        self.assertEqual(self.keep().returncode, 0)
        self.assertTrue(os.path.islink(self.source))
        self.expect_kept(self.source, self.path("data/real.xml.bak"))
        self.assertEqual(sorted(os.listdir(self.path("data"))), ["real.xml", "real.xml.bak"])

    def test_names_may_be_as_long_as_the_file_system_allows(self):
        limit = os.pathconf(self.folder, "PC_NAME_MAX")
        os.remove(self.source)
        for size, suffix in ((limit - 4, ".bak"), (limit - 1, "~"), (limit - 6, ".saved"),
                             (limit - 250, "s" * 250)):
            path = self.file(SOURCE, "n" * size)
            self.assertEqual(self.keep(path, suffix).returncode, 0)
            self.expect_kept(path, path + suffix)
            self.assertEqual(len(os.listdir(self.folder)), 2)
            os.remove(path)
            os.remove(path + suffix)
        for size, suffix in ((limit - 3, ".bak"), (limit, "~")):
            path = self.file(SOURCE, "n" * size)
            self.expect_refused(self.keep(path, suffix), "File name too long", path + suffix)
            self.assertEqual(self.read(path), SOURCE.encode())
            os.remove(path)

    def test_suffix_is_only_what_is_behind_the_equals_sign(self):
        for arguments in ([self.source, "--in-place"], ["--in-place", self.source]):
            self.file(SOURCE, "source.xml")
            self.assertEqual(tarn("set", *arguments, "--everything", "--create", "--set", "x=2").returncode, 0)
            self.assertIn(b">2<", self.read(self.source))
            self.assertEqual(os.listdir(self.folder), ["source.xml"])

    def test_wrong_usage(self):
        for suffix, message in (("", "there is no value behind '--in-place='"),
                                ("a/b", "the SUFFIX of --in-place holds a '/'"),
                                ("/", "the SUFFIX of --in-place holds a '/'")):
            self.expect(self.keep(suffix=suffix), 64, "", f"tarn: error: {message}\n")
        self.assertEqual(tarn("set", self.source, "--everything", "--create", "--set", "x=2", "--in-place=.bak", "-o",
                              self.path("out")).returncode, 64)
        self.assertEqual(self.read(self.source), SOURCE.encode())
        self.assertEqual(os.listdir(self.folder), ["source.xml"])


class StandardInputTest(FilesCase):
    def test_it_is_not_replaced(self):
        for option in ("--in-place", "--in-place=.bak"):
            self.expect(tarn("set", "-", "--everything", "--set", "x=7", option, input=SOURCE.encode()),
                        64, "", "tarn: error: --in-place needs a file, and - is standard input\n")

    TWICE = "tarn: error: standard input is named more than once, but can be read once only\n"

    def test_it_is_read_once_only(self):
        for arguments in (["merge", "-", "-"], ["merge", self.source, "-", "-"],
                          ["merge", "-", self.source, "/dev/stdin"], ["add", "-", "-"],
                          ["add", "-", "/dev/fd/0"], ["set", "-", "--mask", "-", "--set", "x=2"],
                          ["set", "-", "--class", "C", "--values", "-"],
                          ["list", "-", "--dns-from", "-"], ["list", "-", "-"],
                          ["remove", "-", "--dns-from", "-"]):
            with self.subTest(arguments=arguments):
                self.expect(tarn(*arguments, input=SOURCE.encode()), 64, "", self.TWICE)

    def test_file_that_is_standard_input_may_be_opened_again(self):
        with open(self.source, "rb") as file:
            result = tarn("add", "-", "/dev/stdin", stdin=file)
        self.expect(result, 3, "",
                    "/dev/stdin:1:69: A-1: error: there is an object of that name\n")

    def test_closed_standard_input_is_reported(self):
        result = run("bash", "-c", '"$0" print - <&-', TARN)
        self.expect(result, 5, "", "standard input: error: is closed\n")


class MessageTest(FilesCase):
    def test_name_that_is_empty_is_wrong_usage(self):
        for arguments in (["print", ""], ["print", self.source, "-o", ""],
                          ["merge", self.source, ""], ["set", "", "--everything", "--create", "--set", "x=1", "--in-place"]):
            self.expect(tarn(*arguments), 64, "", "tarn: error: the name of a file is empty\n")

    def test_option_with_nothing_behind_its_equals_sign_takes_no_file_for_its_value(self):
        other = self.file(SOURCE, "other.xml")
        self.expect(tarn("merge", "--output=", other, self.source, self.source), 64, "",
                    "tarn: error: there is no value behind '--output='\n")
        self.assertEqual(self.read(other), SOURCE.encode())
        self.assertEqual(tarn("remove", "--", self.source, "--a=").returncode, 4)

    def test_what_cannot_be_read(self):
        for path, message in ((self.path("none"), "No such file or directory"),
                              (self.folder, "Is a directory"),
                              (os.path.join(self.source, "x"), "Not a directory")):
            for command in ("print", "list"):
                self.expect_refused(tarn(command, path), message, path)

    def test_folder_of_the_result_that_does_not_exist(self):
        path = self.path("none/out.xml")
        self.expect_refused(tarn("print", self.source, "-o", path), "its folder does not exist", path)

    def test_help_that_cannot_be_written_is_reported(self):
        for arguments in (["--help"], ["set", "--help"], ["--version"], ["help"]):
            with open("/dev/full", "wb") as full:
                result = tarn(*arguments, stdout=full)
            self.assertEqual((result.returncode, result.stderr),
                             (5, b"standard output: error: No space left on device\n"))


class KindTest(FilesCase):
    def test_in_place_refuses_what_is_no_regular_file(self):
        fifo = self.path("fifo")
        os.mkfifo(fifo)
        listener = socket.socket(socket.AF_UNIX)
        self.addCleanup(listener.close)
        listener.bind(self.path("socket"))
        link = self.path("link")
        os.symlink("fifo", link)
        for path, what in ((fifo, "a FIFO"), (link, "a FIFO"), (self.path("socket"), "a socket"),
                           ("/dev/null", "a device"), ("/dev/stdin", "an open file"),
                           ("/dev/fd/0", "an open file")):
            for command in (CHANGE, ["merge", "--in-place"]):
                arguments = [path, self.source] if command[0] == "merge" else [path]
                self.expect_refused(tarn(*command, *arguments, input=SOURCE.encode(), timeout=60),
                                    f"--in-place cannot replace {what}", path)
        self.assertTrue(stat.S_ISFIFO(os.stat(fifo).st_mode))
        self.expect_refused(tarn(*CHANGE, self.folder), "Is a directory", self.folder)

    def test_fifo_is_written_to(self):
        fifo = self.path("fifo")
        os.mkfifo(fifo)
        read = []
        reader = threading.Thread(target=lambda: read.append(self.read(fifo)))
        reader.start()
        self.expect(tarn("set", self.source, "--everything", "--create", "--set", "y=1", "-o", fifo), 0,
                    f"{self.source}: 1 of 1 object changed, 1 value set\n")
        reader.join()
        self.assertIn(b'name="y"', read[0])
        self.assertTrue(stat.S_ISFIFO(os.stat(fifo).st_mode))


    def test_result_that_has_been_written_is_noted_when_the_report_cannot_be(self):
        fifo = self.path("fifo")
        os.mkfifo(fifo)
        read = []
        reader = threading.Thread(target=lambda: read.append(self.read(fifo)))
        reader.start()
        with open("/dev/full", "wb") as full:
            result = tarn("set", self.source, "--everything", "--create", "--set", "y=1", "-o", fifo, stdout=full)
        reader.join()
        self.assertIn(b'name="y"', read[0])
        self.assertEqual((result.returncode, result.stderr.decode()), (
            5, f"{fifo}: note: the result has been written\n"
               "standard output: error: No space left on device\n"))


class OpenFileTest(FilesCase):
    """Files that are already open, such as /dev/stdout, are written to and never replaced."""

    def test_standard_output_under_every_name(self):
        os.symlink("/dev/stdout", self.path("link"))
        names = ("/dev/stdout", "/dev/fd/1", "/proc/self/fd/1", "/proc/thread-self/fd/1",
                 self.path("link"), "/dev/../dev/stdout")
        for name in names:
            path = self.file("before\n", "out")
            inode = os.stat(path).st_ino
            with self.subTest(name=name), open(path, "ab") as out:
                result = tarn("set", self.source, "--everything", "--set-class", "D", "-o", name,
                              stdout=out)
                self.assertEqual((result.returncode, result.stderr.decode()),
                                 (0, f"{self.source}: 1 of 1 object changed, 1 value set\n"))
                self.assertEqual(self.read(path), b"before\n" + PRINTED.replace(b'"C"', b'"D"'))
                self.assertEqual(os.stat(path).st_ino, inode)
            self.expect(tarn("print", self.source, "-o", name), 0, PRINTED)
        self.assertEqual(sorted(os.listdir(self.folder)), ["link", "out", "source.xml"])

    def test_other_open_files(self):
        path = self.path("out")
        with open(path, "wb") as out:
            os.write(out.fileno(), b"before\n")
            for name in (f"/dev/fd/{out.fileno()}", f"/proc/self/fd/{out.fileno()}"):
                self.expect(tarn("print", self.source, "-o", name, pass_fds=[out.fileno()]), 0)
            result = tarn("print", self.source, "-o", "/dev/stderr")
            self.assertEqual((result.returncode, result.stdout, result.stderr), (0, b"", PRINTED))
        self.assertEqual(self.read(path), b"before\n" + PRINTED * 2)
        with open(path, "rb") as reading:
            name = f"/dev/fd/{reading.fileno()}"
            self.expect_refused(tarn("print", self.source, "-o", name, pass_fds=[reading.fileno()]),
                                "Bad file descriptor", name)

    def test_number_of_no_open_file(self):
        # Also numbers of files that the command opens itself; an emulator has some open, too.
        for number in [99] if "under-emulator" in TARN else range(3, 12):
            name = f"/dev/fd/{number}"
            self.expect_refused(tarn("print", self.source, "-o", name), "Bad file descriptor", name)
        name = "/proc/self/fd/99999999999"
        self.expect_refused(tarn("print", self.source, "-o", name), "No such file or directory",
                            name)
        self.assertEqual(self.read(self.source), SOURCE.encode())

    def test_file_that_another_process_has_open_is_not_replaced(self):
        path = self.file("before", "out")
        inode = os.stat(path).st_ino
        with open(path, "ab") as out:
            name = f"/proc/{os.getpid()}/fd/{out.fileno()}"
            self.expect(tarn("print", self.source, "-o", name), 0)
        self.assertEqual((self.read(path), os.stat(path).st_ino), (PRINTED, inode))

    def test_process_substitution(self):
        result = subprocess.run(
            ["bash", "-c", 'exec 3>&1 >&2; "$0" set "$1" --everything --set x=1 -o >(cat >"$2"; echo done >&3)',
             TARN, self.source, self.path("out")],
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
        self.assertEqual(result.stdout, b"done\n")
        self.assertEqual(self.read(self.path("out")), PRINTED)

    def test_numbers_elsewhere_are_names(self):
        path = self.path("1")
        self.expect(tarn("print", self.source, "-o", path), 0)
        self.assertEqual(self.read(path), PRINTED)


if __name__ == "__main__":
    main()
