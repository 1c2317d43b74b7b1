#!/usr/bin/env python3
"""Signals, and changes by others, while the command replaces a file.

Arguments: the command, and the library that holds it up while it flushes the new file.
"""

import fcntl
import os
import pty
import signal
import stat
import subprocess
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "support"))
from command_case import CommandCase, document, main, managed_object, run  # noqa: E402

TARN = sys.argv[1]
HELD_DISK = sys.argv[2]

SOURCE = document(managed_object("A-1", body='<p name="a">1</p>'))
CHANGE = ["set", "--everything", "--create", "--set", "a=2", "--in-place"]

# Signals that a process cannot handle, and signals that do not end one without a handler.
NO_ENDING = {signal.SIGKILL, signal.SIGSTOP, signal.SIGCHLD, signal.SIGCONT, signal.SIGURG,
             signal.SIGWINCH, signal.SIGTSTP, signal.SIGTTIN, signal.SIGTTOU}
# Signals that have an effect only after the file has been replaced: those that the C library reserves,
# and one that the command ignores.
LATE = {32: -32, 33: -33, signal.SIGXFSZ: 0}
ENDING = [number for number in range(1, signal.SIGRTMAX + 1) if number not in NO_ENDING]


class HeldCase(CommandCase):
    def setUp(self):
        super().setUp()
        self.mark = self.path("mark")

    def start(self, *arguments, variables=None, **options):
        return subprocess.Popen([TARN, *arguments], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                env=dict(os.environ, LD_PRELOAD=HELD_DISK,
                                         TARN_HELD_FILE=self.mark, **(variables or {})), **options)

    def start_held(self, *arguments, **options):
        """Starts the command and waits until the new file is complete but has not replaced the old one."""
        process = self.start(*arguments, **options)
        self.wait_until_held(process)
        return process

    def wait_until_held(self, process):
        while not os.path.exists(self.mark):
            self.assertIsNone(process.poll(), "the command ended early")
            time.sleep(0.001)

    def finish(self, process):
        """Lets the command continue; returns its status and its output."""
        if os.path.exists(self.mark):
            os.remove(self.mark)
        out, err = process.communicate()
        return process.returncode, out, err

    def expect_untouched(self, path, text=SOURCE):
        self.assertEqual(self.read(path), text.encode())
        self.assertEqual([name for name in os.listdir(self.folder) if "source.xml." in name], [])


class SignalTest(HeldCase):
    def test_no_signal_leaves_a_temporary_file(self):
        self.assertGreater(len(ENDING), 50)
        for number in ENDING:
            with self.subTest(signal=number):
                for name in os.listdir(self.folder):
                    os.remove(self.path(name))
                path = self.file(SOURCE, "source.xml")
                process = self.start_held(*CHANGE, path)
                self.assertEqual(len(os.listdir(self.folder)), 3)
                process.send_signal(number)
                if number in LATE:
                    self.assertEqual(self.finish(process)[0], LATE[number])
                    self.assertIn(b">2<", self.read(path))
                    self.assertEqual(os.listdir(self.folder), ["source.xml"])
                else:
                    process.communicate()
                    self.assertEqual(process.returncode, -number)
                    self.expect_untouched(path)

    def test_ignored_signals_stay_ignored(self):
        numbers = (signal.SIGHUP, signal.SIGUSR1, signal.SIGALRM, signal.SIGRTMIN + 1)

        def ignore():
            for number in numbers:
                signal.signal(number, signal.SIG_IGN)
        path = self.file(SOURCE, "source.xml")
        process = self.start_held(*CHANGE, path, preexec_fn=ignore)
        for number in numbers:
            process.send_signal(number)
        status, _, _ = self.finish(process)
        self.assertEqual(status, 0)
        self.assertIn(b">2<", self.read(path))


class FreshnessTest(HeldCase):
    def refusal(self, path):
        return f"{path}: error: was changed meanwhile and is left as it is\n".encode()

    def test_file_that_changed_meanwhile_is_left(self):
        other = SOURCE.replace(">1<", ">7<")  # as long as before

        def rewrite(path):
            with open(path, "r+b") as file:
                file.write(other.encode())

        def rewrite_with_the_old_time(path):
            status = os.stat(path)
            rewrite(path)
            os.utime(path, ns=(status.st_atime_ns, status.st_mtime_ns))

        def replace(path):
            os.replace(self.file(other, "other"), path)
        for change in (rewrite, rewrite_with_the_old_time, replace):
            for arguments in (["--in-place"], ["-o", "{}"]):
                with self.subTest(change=change.__name__, arguments=arguments):
                    path = self.file(SOURCE, "source.xml")
                    process = self.start_held("set", path, "--everything", "--create", "--set", "a=2",
                                              *(each.format(path) for each in arguments))
                    change(path)
                    status, _, err = self.finish(process)
                    self.assertEqual((status, err), (5, self.refusal(path)))
                    self.expect_untouched(path, other)

    def test_file_whose_rights_changed_or_that_is_gone_is_left(self):
        path = self.file(SOURCE, "source.xml")
        process = self.start_held(*CHANGE, path)
        os.chmod(path, 0o600)
        self.assertEqual(self.finish(process)[0], 5)
        self.expect_untouched(path)
        process = self.start_held(*CHANGE, path)
        os.remove(path)
        status, _, err = self.finish(process)
        self.assertEqual((status, err), (5, self.refusal(path)))
        self.assertEqual(os.listdir(self.folder), [])

    def test_link_that_leads_elsewhere_by_now_is_noticed(self):
        path = self.file(SOURCE, "source.xml")
        other = self.file(SOURCE, "other.xml")
        link = self.path("link")
        os.symlink("source.xml", link)
        process = self.start_held(*CHANGE, link)
        os.remove(link)
        os.symlink("other.xml", link)
        status, _, err = self.finish(process)
        self.assertEqual((status, err), (5, self.refusal(link)))
        self.expect_untouched(path)
        self.expect_untouched(other)

    def test_link_that_leads_to_itself_by_now_is_noticed(self):
        path = self.file(SOURCE, "source.xml")
        process = self.start_held(*CHANGE, path)
        os.remove(path)
        os.symlink("source.xml", path)
        status, _, err = self.finish(process)
        self.assertEqual((status, err), (5, self.refusal(path)))
        self.assertEqual(os.listdir(self.folder), ["source.xml"])

    def test_delta_that_is_the_output_and_changed_is_left(self):
        path = self.file(SOURCE, "a.xml")
        delta = self.file(document(managed_object("A-1", "update")), "source.xml")
        process = self.start_held("merge", path, delta, "-o", delta)
        self.file("changed", "source.xml")
        status, _, err = self.finish(process)
        self.assertEqual((status, err), (5, self.refusal(delta)))
        self.expect_untouched(delta, "changed")

    def test_standard_input_that_was_replaced_meanwhile_is_noticed(self):
        path = self.file(SOURCE, "source.xml")
        other = SOURCE.replace(">1<", ">7<")
        for name in ("-", "/dev/stdin"):
            with open(path, "rb") as file:
                os.replace(self.file(other, "other"), path)
                result = run(TARN, "set", name, "--everything", "--create", "--set", "a=2", "-o", path, stdin=file)
                self.assertEqual((result.returncode, result.stderr), (5, self.refusal(path)))
                self.expect_untouched(path, other)
        # The command does not look at files that it does not read.
        with open(path, "rb") as file:
            os.replace(self.file(SOURCE, "other"), path)
            self.assertEqual(run(TARN, *CHANGE, path, stdin=file).returncode, 0)

    def test_file_that_came_meanwhile_is_replaced(self):
        out = self.path("out")
        process = self.start_held("print", self.file(SOURCE, "source.xml"), "-o", out)
        self.file("something", "out")
        self.assertEqual(self.finish(process)[0], 0)
        self.assertIn(b"<tarn", self.read(out))

    def test_file_that_came_meanwhile_and_was_read_is_left(self):
        fifo = self.path("fifo")
        os.mkfifo(fifo)
        delta = self.path("source.xml")
        process = self.start("merge", fifo, delta, "-o", delta)
        # The command opens the source after the destination.
        with open(fifo, "w", encoding="utf-8") as source:
            self.file(document(managed_object("A-1", "update")), "source.xml")
            source.write(SOURCE)
        self.wait_until_held(process)
        self.file("changed", "source.xml")
        status, _, err = self.finish(process)
        self.assertEqual((status, err), (5, self.refusal(delta)))
        self.expect_untouched(delta, "changed")

    def test_file_that_came_in_place_of_a_fifo_is_left(self):
        source, out = self.path("source"), self.path("source.xml")
        os.mkfifo(source)
        os.mkfifo(out)
        process = self.start("print", source, "-o", out)
        with open(source, "w", encoding="utf-8") as file:
            os.replace(self.file("something", "other"), out)
            file.write(SOURCE)
        status, _, err = self.finish(process)
        self.assertEqual((status, err), (5, self.refusal(out)))
        self.expect_untouched(out, "something")


class KeepTest(HeldCase):
    """--in-place=SUFFIX: the old file is kept."""

    KEEP = ["set", "--everything", "--create", "--set", "a=2", "--in-place=.bak"]
    # How the old file gets its second name: a link, or a copy where links are impossible.
    WAYS = ({}, {"TARN_NO_LINKS": "1"})

    def files(self):
        return {name: self.read(self.path(name)) for name in os.listdir(self.folder)
                if name != os.path.basename(self.mark)}

    def test_copy_is_made_where_a_file_gets_no_second_name(self):
        path = self.file(SOURCE + "\n" * 1_000_000, "source.xml")
        before = self.read(path)
        os.chmod(path, 0o6640)
        self.file("earlier", "source.xml.bak")
        result = run(TARN, *self.KEEP, path,
                     env=dict(os.environ, LD_PRELOAD=HELD_DISK, TARN_NO_LINKS="1"))
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        files = self.files()
        self.assertEqual(sorted(files), ["source.xml", "source.xml.bak"])
        self.assertIn(b">2<", files["source.xml"])
        self.assertEqual(files["source.xml.bak"], before)
        for name in files:
            self.assertEqual(stat.S_IMODE(os.stat(self.path(name)).st_mode), 0o6640)

    def test_there_is_a_file_at_every_moment(self):
        for variables in self.WAYS:
            path = self.file(SOURCE, "source.xml")
            os.replace(self.file("earlier", "earlier"), path + ".bak")
            for number, kept in (("1", b"earlier"), ("2", SOURCE.encode())):
                process = self.start_held(*self.KEEP, path,
                                          variables={"TARN_HELD_RENAME": number, **variables})
                files = self.files()
                self.assertEqual((files["source.xml"], files["source.xml.bak"]),
                                 (SOURCE.encode(), kept))
                process.kill()
                process.communicate()
                os.remove(self.mark)
                self.assertEqual(self.read(path), SOURCE.encode())
                for name in set(self.files()) - {"source.xml", "source.xml.bak"}:
                    os.remove(self.path(name))

    def test_signals_leave_no_temporary_file(self):
        for variables in self.WAYS:
            for number in ("1", "2"):
                path = self.file(SOURCE, "source.xml")
                process = self.start_held(*self.KEEP, path,
                                          variables={"TARN_HELD_RENAME": number, **variables})
                process.send_signal(signal.SIGTERM)
                self.assertEqual(self.finish(process)[0], -signal.SIGTERM)
                files = self.files()
                self.assertEqual(sorted(files), ["source.xml", "source.xml.bak"])
                self.assertEqual(files["source.xml.bak"], SOURCE.encode())
                self.assertEqual(files["source.xml"] == SOURCE.encode(), number == "1")

    def test_file_that_changed_meanwhile_is_left_and_nothing_kept(self):
        other = SOURCE.replace(">1<", ">7<")
        for variables in self.WAYS:
            path = self.file(SOURCE, "source.xml")
            self.file("earlier", "source.xml.bak")
            process = self.start_held(*self.KEEP, path, variables=variables)
            os.replace(self.file(other, "other"), path)
            status, _, err = self.finish(process)
            self.assertEqual((status, err), (
                5, f"{path}: error: was changed meanwhile and is left as it is\n".encode()))
            self.assertEqual(self.files(),
                             {"source.xml": other.encode(), "source.xml.bak": b"earlier"})

    def test_file_that_changed_while_the_old_one_was_kept_is_left(self):
        other = SOURCE.replace(">1<", ">7<")
        for variables in self.WAYS:
            path = self.file(SOURCE, "source.xml")
            process = self.start_held(*self.KEEP, path,
                                      variables={"TARN_HELD_RENAME": "1", **variables})
            os.replace(self.file(other, "other"), path)
            self.assertEqual(self.finish(process)[0], 5)
            self.assertEqual(self.files(), {"source.xml": other.encode(),
                                            "source.xml.bak": SOURCE.encode()})

    def test_place_that_became_a_folder_is_left(self):
        path = self.file(SOURCE, "source.xml")
        process = self.start_held(*self.KEEP, path)
        os.mkdir(self.path("source.xml.bak"))
        status, _, err = self.finish(process)
        self.assertEqual((status, err), (
            5, f"{path}.bak: error: is no regular file, and the old file cannot be kept there\n"
            .encode()))
        self.assertEqual(self.read(path), SOURCE.encode())
        self.assertEqual(sorted(os.listdir(self.folder)), ["source.xml", "source.xml.bak"])


class ReportTest(HeldCase):
    def test_file_is_replaced_only_when_its_report_is_written(self):
        path = self.file(SOURCE, "source.xml")
        with open("/dev/full", "wb") as full:
            result = run(TARN, *CHANGE, path, stdout=full)
        self.assertEqual((result.returncode, result.stderr),
                         (5, b"standard output: error: No space left on device\n"))
        self.expect_untouched(path)
        for restore, status in ((True, -signal.SIGPIPE), (False, 141)):
            reading, writing = os.pipe()
            os.close(reading)
            result = run(TARN, *CHANGE, path, stdout=writing, restore_signals=restore)
            os.close(writing)
            self.assertEqual((result.returncode, result.stderr), (status, b""))
            self.expect_untouched(path)

    def test_closed_standard_streams_are_no_part_of_the_file(self):
        path = self.file(SOURCE, "source.xml")
        result = run("bash", "-c", 'exec "$@" >&-', "bash", TARN, *CHANGE, path)
        self.assertEqual((result.returncode, result.stderr),
                         (5, b"standard output: error: is closed\n"))
        self.expect_untouched(path)
        result = run("bash", "-c", 'exec "$@" <&- 2>&-', "bash", TARN, *CHANGE, path)
        self.assertEqual(result.returncode, 0)
        self.assertTrue(self.read(path).endswith(b"</tarn>\n"))


class ProgressTest(HeldCase):
    def test_work_of_which_nobody_knows_how_much_is_done_is_shown_with_its_seconds(self):
        path = self.file(SOURCE, "source.xml")
        master, slave = pty.openpty()
        self.addCleanup(os.close, master)
        process = subprocess.Popen(
            [TARN, *CHANGE, path], stdout=subprocess.DEVNULL, stderr=slave,
            env=dict(os.environ, LD_PRELOAD=HELD_DISK, TARN_HELD_FILE=self.mark, TERM="xterm",
                     COLUMNS="200"))
        os.close(slave)
        output = b""
        while f"\r\x1b[KWriting {path}: 2 s".encode() not in output:
            output += os.read(master, 1000)
        self.assertIn(f"\r\x1b[KWriting {path}: 1 s".encode(), output)
        os.remove(self.mark)
        self.assertEqual(process.wait(), 0)
        self.assertTrue(os.read(master, 10000).endswith(b"\r\x1b[K"))

    def test_signal_while_it_is_shown_leaves_no_temporary_file(self):
        for number in (signal.SIGTERM, signal.SIGINT, 32):
            path = self.file(SOURCE, "source.xml")
            master, slave = pty.openpty()
            process = subprocess.Popen(
                [TARN, *CHANGE, path], stdout=subprocess.DEVNULL, stderr=slave,
                env=dict(os.environ, LD_PRELOAD=HELD_DISK, TARN_HELD_FILE=self.mark, TERM="xterm"))
            self.wait_until_held(process)
            self.assertEqual(len(os.listdir(f"/proc/{process.pid}/task")), 2)
            process.send_signal(number)
            if number == 32:  # waits until the file has been replaced
                os.remove(self.mark)
            self.assertEqual(process.wait(), -number)
            os.close(slave)
            os.close(master)
            self.assertEqual(b">2<" in self.read(path), number == 32)
            self.assertEqual([name for name in os.listdir(self.folder) if "source.xml." in name], [])
            if os.path.exists(self.mark):
                os.remove(self.mark)


class LockTest(HeldCase):
    def test_second_command_waits_and_works_on_what_the_first_made(self):
        path = self.file(SOURCE, "source.xml")
        first = self.start_held(*CHANGE, path)
        second = subprocess.Popen([TARN, "set", path, "--everything", "--create", "--set", "b=3", "--in-place"],
                                  stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.assertEqual(second.stderr.readline(),
                         f"{path}: note: waiting for another program\n".encode())
        self.assertEqual(self.finish(first)[0], 0)
        second.communicate()
        self.assertEqual(second.returncode, 0)
        text = self.read(path)
        self.assertIn(b'name="a">2<', text)
        self.assertIn(b'name="b">3<', text)
        self.assertEqual(os.listdir(self.folder), ["source.xml"])

    def test_waiting_ends(self):
        path = self.file(SOURCE, "source.xml")
        with open(path, "r+b") as file:
            fcntl.lockf(file, fcntl.LOCK_EX)
            result = run(TARN, *CHANGE, path,
                         env=dict(os.environ, LD_PRELOAD=HELD_DISK, TARN_NO_PAUSE="1"))
        self.assertEqual((result.returncode, result.stdout, result.stderr.decode()), (
            5, b"", f"{path}: note: waiting for another program\n"
            f"{path}: error: another program is changing it\n"))
        self.expect_untouched(path)

    def test_fifo_that_came_while_the_command_waited_is_left(self):
        path = self.file(SOURCE, "source.xml")
        fifo = self.path("fifo")
        os.mkfifo(fifo)
        with open(path, "r+b") as file:
            fcntl.lockf(file, fcntl.LOCK_EX)
            process = subprocess.Popen([TARN, *CHANGE, path], stderr=subprocess.PIPE)
            self.addCleanup(process.kill)
            process.stderr.readline()
            os.replace(fifo, path)
        _, err = process.communicate(timeout=10)
        self.assertEqual((process.returncode, err), (
            5, f"{path}: error: was changed meanwhile and is left as it is\n".encode()))
        self.assertTrue(stat.S_ISFIFO(os.stat(path).st_mode))

    def test_lock_of_the_other_kind_around_the_command_is_no_obstacle(self):
        path = self.file(SOURCE, "source.xml")
        with open(path, "rb") as file:
            fcntl.flock(file, fcntl.LOCK_EX)
            self.assertEqual(run(TARN, *CHANGE, path).returncode, 0)

    def start_writers(self, script, path, changes):
        """Runs `script` in a shell for each change: $0 is the command, $1 the file, $2 the change."""
        return [subprocess.Popen(["bash", "-c", script, TARN, path, change],
                                 stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
                for change in changes]

    def expect_no_loss(self, script, change_of="{}=1".format):
        """Eight writers at once, ten times; `change_of` makes the change from its name."""
        path = self.file(document(managed_object("A-1")), "source.xml")
        for number in range(10):
            names = [f"r{number}w{writer}" for writer in range(8)]
            writers = self.start_writers(script, path, [change_of(name) for name in names])
            succeeded = [writer.wait() == 0 for writer in writers]
            text = self.read(path).decode()
            self.assertEqual([f'"{name}"' in text for name in names], succeeded)
            self.assertIn(True, succeeded)
        return succeeded

    def test_eight_writers_lose_no_change(self):
        succeeded = self.expect_no_loss('exec "$0" set "$1" --everything --create --set "$2" --in-place')
        self.assertNotIn(False, succeeded)
        self.assertEqual(os.listdir(self.folder), ["source.xml"])

    def test_eight_writers_that_keep_the_old_file_lose_no_change(self):
        succeeded = self.expect_no_loss('exec "$0" set "$1" --everything --create --set "$2" --in-place=.bak')
        self.assertNotIn(False, succeeded)
        self.assertEqual(sorted(os.listdir(self.folder)), ["source.xml", "source.xml.bak"])
        self.assertEqual(self.read(self.path("source.xml.bak")).count(b"<p "), 79)

    def test_eight_writers_that_add_objects_lose_none(self):
        def object_file(name):
            return self.file(document(managed_object(name)), name)
        succeeded = self.expect_no_loss('exec "$0" add "$1" "$2" --in-place', object_file)
        self.assertNotIn(False, succeeded)

    def test_eight_writers_that_read_standard_input_lose_no_change(self):
        self.expect_no_loss('exec "$0" set - --everything --create --set "$2" -o "$1" <"$1"')
        self.assertEqual(os.listdir(self.folder), ["source.xml"])

    def test_eight_writers_and_a_program_that_does_not_lock_lose_no_change(self):
        path = self.file(SOURCE, "source.xml")
        for number in range(10):
            held = self.start_held("set", path, "--everything", "--create", "--set", f"held{number}=1", "--in-place")
            names = [f"r{number}w{writer}" for writer in range(7)]
            # They wait for the lock of a file that is another one when they get it.
            writers = self.start_writers('exec "$0" set "$1" --everything --create --set "$2" --in-place', path,
                                         [name + "=1" for name in names])
            given = self.read(path).replace(b"</managedObject>",
                                            b'<p name="given%d">1</p></managedObject>' % number)
            os.replace(self.file(given, "other"), path)
            self.assertEqual(self.finish(held)[0], 5)
            self.assertEqual([writer.wait() for writer in writers], [0] * 7)
            text = self.read(path).decode()
            for name in [*names, f"given{number}"]:
                self.assertIn(f'"{name}"', text)
            self.assertNotIn(f"held{number}", text)
        self.assertEqual(os.listdir(self.folder), ["source.xml"])


if __name__ == "__main__":
    main()
