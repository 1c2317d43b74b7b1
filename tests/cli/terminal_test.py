#!/usr/bin/env python3
"""The command on a terminal, in pipes, and under signals. Argument: the command."""

import concurrent.futures
import fcntl
import json
import os
import pty
import random
import signal
import struct
import subprocess
import sys
import termios
import threading
import time
import unicodedata

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "support"))
from command_case import (EXAMPLES, TARN, CommandCase, document, main, managed_object,  # noqa: E402
                          tarn)

GOOD = document(managed_object("A-1"))
GREEN_OK = b"\x1b[32mok\x1b[0m"
RED_ERROR = b"\x1b[1;31merror:\x1b[0m"
# Seconds; progress is shown when an action takes one.
LONGER_THAN_UNSHOWN = 1.4


def read_terminal(controller):
    """Returns what is written to a pseudo-terminal until its other end is closed."""
    output = b""
    while True:
        try:
            block = os.read(controller, 65536)
        except OSError:  # the other end is closed
            break
        if not block:
            break
        output += block
    os.close(controller)
    return output


def on_terminal(*arguments, terminal_for="both", environment=None, feed=None, columns=0):
    """Runs the command on a pseudo-terminal; returns its status and its output.

    Of 0 `columns` the terminal does not say how many it has.
    """
    master, slave = pty.openpty()
    fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
    streams = {"both": (slave, slave), "stderr": (subprocess.DEVNULL, slave)}[terminal_for]
    clean = {name: value for name, value in os.environ.items() if name not in ("NO_COLOR", "COLUMNS")}
    clean["TERM"] = "xterm"
    process = subprocess.Popen([TARN, *arguments], stdin=subprocess.DEVNULL, stdout=streams[0],
                               stderr=streams[1], env={**clean, **(environment or {})})
    os.close(slave)
    feeder = threading.Thread(target=feed or (lambda: None))
    feeder.start()
    output = read_terminal(master)
    feeder.join()
    return process.wait(), output


class ColorTest(CommandCase):
    def setUp(self):
        super().setUp()
        self.good = self.file(GOOD, "good.xml")
        self.bad = self.file("<", "bad.xml")

    def test_terminal_gets_colour(self):
        self.assertEqual(on_terminal("check", self.good),
                         (0, self.good.encode() + b": " + GREEN_OK + b"\r\n"))
        self.assertEqual(on_terminal("check", self.bad),
                         (1, self.bad.encode() + b":1:2: " + RED_ERROR
                          + b" expected element name\r\n"))

    def test_no_color_and_never_switch_it_off(self):
        for options, environment in ((["--color", "never"], {}), ([], {"NO_COLOR": "1"})):
            status, output = on_terminal("check", *options, self.good, environment=environment)
            self.assertEqual((status, output), (0, self.good.encode() + b": ok\r\n"))
        self.assertIn(GREEN_OK, on_terminal("check", self.good, environment={"NO_COLOR": ""})[1])

    def test_terminal_that_knows_no_colours_gets_none(self):
        for kind in ("dumb", ""):
            environment = {"TERM": kind}
            self.assertEqual(on_terminal("check", self.good, self.bad, environment=environment), (
                1, f"{self.good}: ok\r\n{self.bad}:1:2: error: expected element name\r\n".encode()))
            self.assertIn(GREEN_OK, on_terminal("check", "--color", "always", self.good,
                                                environment=environment)[1])

    def test_always_colours_a_pipe_even_with_no_color(self):
        result = tarn("check", "--color", "always", self.good, self.bad,
                      env={**os.environ, "NO_COLOR": "1"})
        self.assertIn(GREEN_OK, result.stdout)
        self.assertIn(RED_ERROR, result.stderr)

    def test_pipe_gets_none(self):
        result = tarn("check", self.good, self.bad)
        self.assertNotIn(b"\x1b", result.stdout + result.stderr)


def feed_slowly(path):
    """Writes GOOD into the pipe at `path`, so slowly that the command shows progress."""
    with open(path, "wb") as file:
        file.write(GOOD[:40].encode())
        file.flush()
        time.sleep(LONGER_THAN_UNSHOWN)
        file.write(GOOD[40:].encode())


CLEAR = b"\r\x1b[K"


def check_slowly(path, **options):
    return on_terminal("check", path, terminal_for="stderr", feed=lambda: feed_slowly(path), **options)


def lines_of(output):
    """The lines that the progress has shown one after the other."""
    return [line.decode() for line in output.split(CLEAR) if line]


def width_of(line):
    return sum(0 if unicodedata.combining(c) else 2 if unicodedata.east_asian_width(c) in "WF" else 1
               for c in line)


class ProgressTest(CommandCase):
    def pipe(self, name="pipe"):
        path = self.path(name)
        os.mkfifo(path)
        return path

    def test_slow_reading_is_shown_on_a_terminal_and_gone_at_the_end(self):
        path = self.pipe()
        status, output = check_slowly(path)
        self.assertEqual(status, 0)
        self.assertIn(b"Reading " + path.encode() + b": 0 MiB", output)
        self.assertTrue(output.endswith(CLEAR))

    def lines_on(self, *terminals):
        """For each terminal the only line that reading a pipe with a long name shows there, or None."""
        name = "a-folder-of-the-network-\u6771\u4eac\u6771\u4eac-and-its-name-e\u0301\u0301.xml"

        def line_on(number):
            os.mkdir(self.path(f"{number:02}"))
            path = self.pipe(f"{number:02}/{name}")
            status, output = check_slowly(path, **terminals[number])
            lines = set(lines_of(output))
            self.assertEqual((status, len(lines) < 2), (0, True))
            return path, lines.pop() if lines else None
        with concurrent.futures.ThreadPoolExecutor(len(terminals)) as pool:
            return list(pool.map(line_on, range(len(terminals))))

    def test_line_fits_the_terminal(self):
        widths = {20: {"columns": 20}, 40: {"columns": 40}, 41: {"columns": 41}, 80: {"columns": 80},
                  42: {"environment": {"COLUMNS": "42"}},
                  39: {"columns": 39, "environment": {"COLUMNS": "200"}}}
        for (columns, (_, line)) in zip(widths, self.lines_on(*widths.values())):
            with self.subTest(columns=columns):
                # The last column stays free, and one more when a wide character does not fit.
                width = width_of(line)
                self.assertIn(columns - width, (1, 2) if columns > 20 else (6,))
                self.assertRegex(line, "^Reading /.*\\.\\.\\..*e\u0301\u0301\\.xml: 0 MiB$" if columns > 20
                                 else "^Reading: 0 MiB$")

    def test_terminal_that_does_not_say_its_width_has_80_columns(self):
        for _, line in self.lines_on({}, {"environment": {"COLUMNS": "wide"}}):
            self.assertIn(80 - width_of(line), (1, 2))

    def test_line_on_a_wide_terminal_is_whole_and_on_a_narrow_one_loses_parts(self):
        (path, whole), (_, amount), (_, none) = self.lines_on(
            {"columns": 200}, {"columns": 8}, {"columns": 5})
        self.assertEqual((whole, amount, none), (f"Reading {path}: 0 MiB", "0 MiB", None))

    def test_it_is_not_shown_on_a_terminal_that_cannot_clear_it(self):
        path = self.pipe()
        for kind in ("dumb", ""):
            self.assertEqual(check_slowly(path, environment={"TERM": kind}), (0, b""))

    def test_it_is_cleared_before_other_lines(self):
        good = self.file(GOOD, "good.xml")
        path = self.pipe()
        status, output = on_terminal("check", "--jobs", "1", good, path, good, feed=lambda: feed_slowly(path))
        self.assertEqual(status, 0)
        shown = output.replace(b"\r\n", b"\n")
        self.assertIn(b"Reading " + path.encode(), shown)
        lines = [line.split(CLEAR)[-1] for line in shown.split(b"\n")]
        self.assertEqual(lines, [each.encode() + b": " + GREEN_OK for each in (good, path, good)]
                         + [b""])

    def test_output_on_the_terminal_and_into_a_pipe_has_no_progress(self):
        objects = "".join(managed_object(f"A-{n}", body=f"<p name='x'>{'y' * 100}</p>")
                          for n in range(2000))
        source = self.file(document(objects), "source.xml")
        path = self.pipe()
        delta = document(managed_object("B-1", "create"))

        def feed():
            with open(path, "w", encoding="utf-8") as file:
                time.sleep(LONGER_THAN_UNSHOWN)
                file.write(delta)
        _, output = on_terminal("merge", source, path, feed=feed)
        document_text = output.replace(b"\r\n", b"\n").split(CLEAR)[-1]
        self.assertEqual(document_text.count(b"<managedObject"), 2001)
        self.assertNotIn(b"Writing standard output", output)

    def test_slow_writing_is_shown_too(self):
        source = self.file(document(managed_object("A-1", body="<p name='x'>" + "x" * 12000000
                                                   + "</p>")))
        out = self.pipe("out")
        read = []

        def take():
            with open(out, "rb") as file:
                time.sleep(LONGER_THAN_UNSHOWN)
                read.append(len(file.read()))
        status, output = on_terminal("print", source, "-o", out, terminal_for="stderr", feed=take)
        self.assertEqual(status, 0)
        self.assertGreater(read[0], 12000000)
        self.assertRegex(output, b"Writing " + out.encode() + rb": \d+ %")

    def test_it_is_not_shown_in_a_pipe(self):
        path = self.pipe()
        thread = threading.Thread(target=feed_slowly, args=(path,))
        thread.start()
        self.expect(tarn("check", path), 0, f"{path}: ok\n")
        thread.join()

    def test_quick_reading_is_not_shown(self):
        path = self.file(GOOD)
        self.assertEqual(on_terminal("check", path, terminal_for="stderr"), (0, b""))


class PipeTest(CommandCase):
    def test_reader_that_closes_early_ends_the_command_quietly(self):
        path = self.file(document("".join(managed_object(f"A-{n}") for n in range(50000))))
        for restore in (True, False):  # SIGPIPE as the shell has it, and ignored
            process = subprocess.Popen([TARN, "list", path, "--format", "tsv"],
                                       stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                       restore_signals=restore)
            self.assertEqual(process.stdout.readline(), b"A-0\tC\t\t\t0\n")
            process.stdout.close()
            self.assertEqual(process.stderr.read(), b"")
            process.stderr.close()
            self.assertIn(process.wait(), (-signal.SIGPIPE, 141))

    def test_closed_standard_output_is_reported(self):
        result = subprocess.run(["bash", "-c", '"$0" check "$1" >&-', TARN, self.file(GOOD)],
                                stderr=subprocess.PIPE, check=False)
        self.assertEqual((result.returncode, result.stderr),
                         (5, b"standard output: error: is closed\n"))


class SignalTest(CommandCase):
    def test_interrupt_leaves_the_target_whole_and_no_stray_file(self):
        objects = [managed_object(f"A-{n}", body=f"<p name='x'>{n}</p>") for n in range(10000)]
        source = self.file(tarn("print", self.file(document("".join(objects)))).stdout, "source.xml")
        before = self.read(source)
        delta = self.file(document(managed_object("A-1", "update", "<p name='x'>new</p>")),
                          "delta.xml")
        reference = tarn("merge", source, delta).stdout
        files = sorted(os.listdir(self.folder))
        start = time.monotonic()
        tarn("merge", source, delta, "--check-only")
        duration = time.monotonic() - start
        rng = random.Random(4)
        outcomes = set()
        for number in range(30):
            process = subprocess.Popen([TARN, "merge", "--in-place", source, delta],
                                       stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
            time.sleep(duration * rng.uniform(0, 2.5))
            process.send_signal((signal.SIGINT, signal.SIGTERM, signal.SIGHUP)[number % 3])
            process.communicate()
            content = self.read(source)
            self.assertIn(content, (before, reference))
            self.assertEqual(sorted(os.listdir(self.folder)), files)
            outcomes.add(content == before)
            self.file(before, "source.xml")
        self.assertIn(True, outcomes)


class QuestionTest(CommandCase):
    """A change of more than 1,000 objects asks in a terminal."""

    def setUp(self):
        super().setUp()
        self.source = self.file(document("".join(
            managed_object(f"A-{i}", body='<p name="x">1</p>') for i in range(1001))))
        self.before = self.read(self.source)

    def ask(self, answer, *arguments):
        """Runs a change with a terminal, on which `answer` is typed. Returns status and terminal."""
        controller, terminal = pty.openpty()
        process = subprocess.Popen([TARN, "set", self.source, "--set", "x=2", "--in-place", *arguments],
                                   stdin=terminal, stdout=subprocess.DEVNULL, stderr=terminal)
        os.close(terminal)
        os.write(controller, answer)
        shown = read_terminal(controller)
        return process.wait(), shown.decode()

    def test_no_answer_but_yes_leaves_the_file(self):
        for answer in (b"n\n", b"\n", b"yesterday\n", b"\x04"):
            status, shown = self.ask(answer, "--everything")
            self.assertEqual(status, 64, shown)
            self.assertIn(f"Change 1001 objects of {self.source}? [y/N] ", shown)
            self.assertIn("not confirmed; nothing was written", shown)
            self.assertEqual(self.read(self.source), self.before)

    def test_yes_changes(self):
        for answer in (b"y\n", b"yes\n", b"Y\n"):
            self.file(self.before)
            self.assertEqual(self.ask(answer, "--everything")[0], 0)
            self.assertEqual(self.read(self.source).count(b">2<"), 1001)

    def test_nobody_is_asked_for_less_or_with_the_option_or_without_a_terminal(self):
        for arguments in (["--everything", "--yes"], ["--dn", "A-5", "--invert"]):
            self.file(self.before)
            status, shown = self.ask(b"", *arguments)
            self.assertEqual(status, 0)
            self.assertNotIn("?", shown)
        self.file(self.before)
        result = tarn("set", self.source, "--everything", "--set", "x=2", "--in-place")
        self.assertEqual((result.returncode, result.stderr), (0, b""))


class EscapeTest(CommandCase):
    """Control characters are escaped, in names of files and in texts of documents."""

    # Each with its escaped form: C0, DEL, C1, a direction, a line separator, bytes of invalid UTF-8
    # (alone, truncated, overlong, half of a pair, beyond the last character).
    UNPRINTABLE = {b"\x1b[2J": b"\\x1B[2J", b"\n": b"\\x0A", b"\x7f": b"\\x7F",
                   b"\xc2\x9b": b"\\xC2\\x9B", b"\xc2\x80": b"\\xC2\\x80",
                   b"\xe2\x80\xae": b"\\xE2\\x80\\xAE", b"\xe2\x81\xa6": b"\\xE2\\x81\\xA6",
                   b"\xe2\x80\xa8": b"\\xE2\\x80\\xA8", b"\xd8\x9c": b"\\xD8\\x9C",
                   b"\x9b": b"\\x9B", b"\xe9": b"\\xE9", b"\xe6\x9d": b"\\xE6\\x9D",
                   b"\xc1\x9b": b"\\xC1\\x9B", b"\xe0\x82\x9b": b"\\xE0\\x82\\x9B",
                   b"\xed\xa0\x80": b"\\xED\\xA0\\x80", b"\xf4\x90\x80\x80":
                   b"\\xF4\\x90\\x80\\x80", b"\xff": b"\\xFF"}
    # U+00A0 and U+00E9 stand next to C1, U+200D joins characters; the others are long ones.
    PRINTABLE = "\u00a0\u00e9~\u200d\u6771\u202f\U0001f600".encode()

    def test_every_unprintable_character_is_escaped_in_the_name_of_a_file(self):
        for name, shown in self.UNPRINTABLE.items():
            path = os.fsencode(self.folder) + b"/a" + name + self.PRINTABLE
            with open(path, "w", encoding="utf-8") as file:
                file.write(GOOD)
            shown_path = os.fsencode(self.folder) + b"/a" + shown + self.PRINTABLE
            with self.subTest(name=name):
                self.expect(tarn("check", path), 0, shown_path + b": ok\n")
                self.expect(tarn("check", path + b"-"), 5, b"",
                            shown_path + b"-: error: No such file or directory\n")

    def test_names_of_files_are_escaped_in_every_line(self):
        path = self.file(GOOD, "a\x1b[2J")
        shown = self.path("a\\x1B[2J")
        delta = self.file(document(managed_object("B-1", "create")), "d\u0090")
        shown_delta = self.path("d\\xC2\\x90")
        bad = self.file("<tarn/>\n<", "bad\x07")
        os.link(path, self.path("other"))
        self.expect(tarn("set", path, "--everything", "--create", "--set", "x=1", "--in-place"), 0,
                    f"{shown}: 1 of 1 object changed, 1 value set\n",
                    f"{shown}: note: other names of the file keep what it held\n")
        self.expect(tarn("merge", path, delta, "--check-only"), 0,
                    f"B-1: created\n{shown_delta}: 1 created, 0 updated, 0 deleted\n")
        self.expect(tarn("check", bad), 1, "",
                    f"{self.path('bad')}\\x07:2:2: error: expected element name\n")
        self.expect(tarn("remove", path, "Z-1\u009b"), 4, "",
                    f"{shown}: Z-1\\xC2\\x9B: error: no such object\n")
        self.assertTrue(tarn("stats", path).stdout.startswith(f"{shown}\n".encode()))
        self.assertEqual(tarn("check", path, "--no\u009boption").stderr,
                         b"tarn: error: tarn check has no option '--no\\xC2\\x9Boption'\n")

    def test_texts_of_a_document_are_escaped(self):
        path = self.file(document(managed_object("A-1\u009b2J", class_name="C\u202e")))
        shown = b"A-1\\xC2\\x9B2J"
        self.assertIn(shown, tarn("list", path).stdout)
        self.assertIn(b"C\\xE2\\x80\\xAE", tarn("list", path).stdout)
        self.assertIn(shown, tarn("tree", path).stdout)
        broken = self.file(document(managed_object("A\u009b")))
        result = tarn("--log-level", "debug", "check", broken)
        self.assertEqual(result.stderr.count(b"A\\xC2\\x9B"), 3)
        self.assertNotIn(b"\xc2\x9b", result.stderr)

    def test_json_stays_json(self):
        path = self.file(GOOD, "a\x1b\u009b\u202e\u6771\x7f")
        result = tarn("check", "--json", path)
        self.assertEqual(json.loads(result.stdout)["file"], path)
        self.assertIn("\\u001b\\u009B\\u202E\u6771\\u007F".encode(), result.stdout)
        objects = self.file(document(managed_object("A-1\u0085")))
        result = tarn("list", "--format", "json", objects)
        self.assertEqual(json.loads(result.stdout)[0]["dn"], "A-1\u0085")
        self.assertNotIn(b"\xc2\x85", result.stdout)

    def test_progress_shows_the_name_escaped(self):
        path = self.path("a\u009b")
        os.mkfifo(path)
        status, output = check_slowly(path)
        self.assertEqual(status, 0)
        self.assertIn(b"Reading " + self.path("a\\xC2\\x9B").encode() + b": 0 MiB", output)


class HelpTest(CommandCase):
    def test_nearest_command_and_option_are_reported(self):
        for arguments, message in (
                (["chek", "x"], "no command 'chek', did you mean 'check'?"),
                (["--log-level", "info", "lst"], "no command 'lst', did you mean 'list'?"),
                (["frobnicate"], "no command 'frobnicate'"),
                (["check", "x", "--al"], "tarn check has no option '--al', did you mean '--all'?"),
                (["merge", "a", "b", "--in-palce"],
                 "tarn merge has no option '--in-palce', did you mean '--in-place'?"),
                (["list", "x", "--fromat=dn"],
                 "tarn list has no option '--fromat', did you mean '--format'?"),
                (["check", "x", "--zzzzzzzzz"], "tarn check has no option '--zzzzzzzzz'"),
                (["help", "tre"], "no command 'tre', did you mean 'tree'?")):
            with self.subTest(arguments=arguments):
                self.expect(tarn(*arguments), 64, "", f"tarn: error: {message}\n")

    def test_wrong_value_of_an_option_is_reported_in_words(self):
        for arguments, message in (
                (["check", "x", "--jobs", "-1"], "--jobs: expected a whole number, 0 or more, not '-1'"),
                (["check", "x", "--jobs=1x"], "--jobs: expected a whole number, 0 or more, not '1x'"),
                (["check", "x", "--jobs", str(2**32)], f"--jobs: too large: {2**32}"),
                (["tree", "x", "--depth", "0"], "--depth: expected a whole number, 1 or more, not '0'"),
                (["list", "x", "--format", "1"],
                 "--format: expected csv, dn, dn0, json, jsonl, table or tsv, not '1'"),
                (["--color", "red", "check", "x"],
                 "--color: expected always, auto or never, not 'red'"),
                (["list", "x", "--operation", "drop"],
                 "--operation: expected create, delete, update, auto or none, not 'drop'")):
            with self.subTest(arguments=arguments):
                self.expect(tarn(*arguments), 64, "", f"tarn: error: {message}\n")

    def test_help_of_a_command_is_what_its_option_says(self):
        for command in ("check", "print", "list", "get", "set", "unset", "apply", "add", "remove",
                        "merge", "stats", "tree", "report"):
            result = tarn("help", command)
            self.assertEqual((result.returncode, result.stderr), (0, b""))
            self.assertIn(f"Usage: tarn {command}".encode(), result.stdout)
            self.assertEqual(result.stdout, tarn(command, "--help").stdout)
        overview = tarn("help").stdout
        self.assertIn(b"Subcommands:", overview)
        self.assertEqual(overview, tarn("--help").stdout)

    def test_version(self):
        result = tarn("--version")
        self.assertEqual((result.returncode, result.stdout[:5]), (0, b"tarn "))

    def test_no_command_is_wrong_usage_in_one_line(self):
        result = tarn()
        self.assertEqual((result.returncode, result.stdout, result.stderr.count(b"\n")), (64, b"", 1))

    def test_every_option_is_in_the_manual_and_the_completions(self):
        texts = {}
        for path in ("docs/man/tarn.1.scd", "share/completions/tarn.bash",
                     "share/completions/_tarn", "share/completions/tarn.fish"):
            with open(path, encoding="utf-8") as file:
                texts[path] = file.read()
        commands = ("check", "print", "list", "get", "set", "unset", "apply", "add", "remove",
                    "merge", "stats", "tree", "report", "help")
        for command in commands:
            for line in tarn("help", command).stdout.decode().splitlines():
                words = line.strip().split()
                if not words or not words[0].startswith("-"):
                    continue
                option = words[0].split(",")[-1]
                for path, text in texts.items():
                    wanted = f"-l {option[2:]} " if path.endswith("fish") else option
                    self.assertIn(wanted, text, f"{path}: {command} {option}")
        for path, text in texts.items():
            for command in commands:
                self.assertIn(command, text, path)

    def test_bash_completes(self):
        def complete(*words):
            script = ("source share/completions/tarn.bash; compopt() { :; }; "
                      "COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); _tarn; printf '%s\\n' "
                      "\"${COMPREPLY[@]}\"")
            result = subprocess.run(["bash", "-c", script, "bash", "tarn", *words],
                                    stdout=subprocess.PIPE, check=True)
            return sorted(result.stdout.decode().split())
        self.assertEqual(complete("me"), ["merge"])
        self.assertEqual(complete("merge", "a", "--val"), ["--validate"])
        self.assertEqual(complete("list", "a", "--format", ""),
                         ["csv", "dn", "dn0", "json", "jsonl", "table", "tsv"])
        self.assertEqual(complete("check", os.path.join(EXAMPLES, "netw")),
                         ["examples/network.xml", "examples/network_tour.cpp"])


if __name__ == "__main__":
    main()
