#!/usr/bin/env python3
"""Runs `tarn check` as a user does. Argument: the command; working folder: the repository's."""

import json
import os
import re
import sys
import threading

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "support"))
from command_case import EXAMPLES, CommandCase, document, main, managed_object, tarn  # noqa: E402

NAMELESS = "The 'tarn > cmData > managedObject:A-1 > p > ' element has no attribute 'name'"


class CheckTest(CommandCase):
    def test_good_files_are_reported_in_their_order(self):
        network = os.path.join(EXAMPLES, "network.xml")
        upgrade = os.path.join(EXAMPLES, "upgrade.xml")
        self.expect(tarn("check", upgrade, network), 0, f"{upgrade}: ok\n{network}: ok\n")

    def test_broken_rule_is_reported_with_its_path_and_status_2(self):
        path = self.file(document(managed_object("A-1", body="<p>1</p><p name='x'/>")))
        self.expect(tarn("check", path), 2, "", f"{path}:1:109: A-1: error: {NAMELESS}\n")

    def test_fault_that_comes_first_by_name_is_the_one_reported(self):
        path = self.file(document(managed_object("B-1", body="<p/>") + "\n" +
                                  managed_object("A-1", body="\n<p/>")))
        self.expect(tarn("check", path), 2, "", f"{path}:3:1: A-1: error: {NAMELESS}\n")

    def test_malformed_file_is_reported_with_line_and_byte_column(self):
        for text, place, message in (
                ("", None, None),
                ("<tarn", "1:6", "expected >"),
                ("<tarn>\n", "2:1", "unexpected end of data"),
                ("<tarn>\n  <cmData>\r\n<foo/>", "3:5", "unknown TARN object"),
                ("\ufeff<foo/>", "1:8", "unknown TARN object"),
                ("<tarn\n\nversion='é'&/>", "3:14", "expected ="),
                ("<tarn version='&lt;&lt;&#10;'\n x=1/>", "2:4", "expected ' or \""),
        ):
            path = self.file(text)
            result = tarn("check", path)
            with self.subTest(text=text):
                if place is None:
                    self.assertEqual((result.returncode, result.stdout), (2, b""))
                else:
                    lines = result.stderr.decode().splitlines()
                    self.assertEqual((result.returncode, result.stdout, lines[0]),
                                     (1, b"", f"{path}:{place}: error: {message}"))

    def test_missing_and_wrong_end_tags_are_reported_where_they_were_opened_and_missed(self):
        path = self.file("<tarn>\n <cmData>\n  <p name='x'>1\n </cmData>\n<p")
        self.expect(tarn("check", path), 1, "", f"""\
{path}:5:3: error: expected >
{path}:4:2: error: </p> expected for <p name='x'>, found </cmData>
{path}:3:3: note: <p name='x'> is opened here
{path}:5:3: error: </tarn> expected for <tarn>, found the end of the text
{path}:1:1: note: <tarn> is opened here
""")
        path = self.file(document("\n<managedObject class='C' distName='A-1'>\n<foo/></managedObject>"))
        self.expect(tarn("check", path), 1, "", f"{path}:3:5: A-1: error: unknown TARN object\n")
        # Who missed an end tag may have missed it everywhere.
        path = self.file("<tarn>" + "<c>" * 1000)
        self.assertEqual(tarn("check", path).stderr.decode().count("is opened here"), 10)

    def test_place_behind_many_lines_is_right(self):
        # More than the blocks in which the file is read again.
        text = document("\n".join(managed_object(f"A-{n}", body="\n<p name='x'>1</p>")
                                  for n in range(5000)) + "\n <wrong/>")
        path = self.file(text)
        offset = text.index("<wrong") + 6
        line = text.count("\n", 0, offset) + 1
        column = offset - text.rindex("\n", 0, offset)
        self.expect(tarn("check", path), 1, "",
                    f"{path}:{line}:{column}: error: unknown TARN object\n")

    def test_nul_is_malformed(self):
        path = self.file(document("").encode() + b"\n \0")
        self.expect(tarn("check", path), 1, "", f"{path}:2:2: error: unexpected NUL byte\n")
        path = self.file(b"\0")
        self.expect(tarn("check", path), 1, "", f"{path}:1:1: error: unexpected NUL byte\n")

    def test_pipe_is_read_once_and_its_faults_have_a_place(self):
        pipe = self.path("pipe")
        os.mkfifo(pipe)

        def write():
            with open(pipe, "wb") as file:
                file.write(b"<tarn>\n<cmData \n</tarn>")
        writer = threading.Thread(target=write)
        writer.start()
        result = tarn("check", pipe)
        writer.join()
        self.assertEqual((result.returncode, result.stdout), (1, b""))
        self.assertEqual(result.stderr.decode().splitlines()[0], f"{pipe}:3:1: error: expected >")

    def test_broken_rule_in_a_pipe_has_a_place(self):
        text = document(managed_object("A-1", body="\n<p>1</p>")).encode()
        self.expect(tarn("check", "-", input=text), 2, "", f"-:2:1: A-1: error: {NAMELESS}\n")

    def test_every_file_is_checked_and_the_highest_status_counts(self):
        good = self.file(document(managed_object("A-1")), "good.xml")
        malformed = self.file("<tarn>", "malformed.xml")
        broken = self.file(document(""), "broken.xml")
        missing = self.path("missing.xml")
        result = tarn("check", missing, malformed, broken, good)
        self.assertEqual((result.returncode, result.stdout), (5, f"{good}: ok\n".encode()))
        self.assertEqual([line.split(b": error: ")[0].decode() for line in
                          result.stderr.splitlines() if b": note: " not in line],
                         [missing, f"{malformed}:1:7", f"{malformed}:1:7", f"{broken}:1:40"])
        self.assertEqual(tarn("check", malformed, broken).returncode, 2)
        self.assertEqual(tarn("check", broken, malformed).returncode, 2)
        self.assertEqual(tarn("check", malformed, good).returncode, 1)

    def test_all_reports_every_violation_in_the_order_of_the_text(self):
        path = self.file("""<tarn version='1' xmlns='x'>
<cmData type='actual'><header>
<log/></header>
<managedObject distName='B'><p/></managedObject>
<managedObject/>
</cmData></tarn>""")
        where = "The 'tarn > cmData > "
        self.expect(tarn("check", "--all", path), 2, "", "".join(
            f"{path}:{place}: error: {message}\n" for place, message in (
                ("1:1", "'x' is not a valid value of 'tarn > ' attribute 'xmlns'"),
                ("3:1", where + "header > log > ' element has no attribute 'dateTime'"),
                ("3:1", where + "header > log > ' element has no attribute 'action'"),
                ("4:1: B", where + "managedObject:B > ' element has no attribute 'class'"),
                ("4:1: B", "Invalid distinguished name: 'B'"),
                ("4:29: B", where + "managedObject:B > p > ' element has no attribute 'name'"),
                ("5:1", where + "managedObject > ' element has no attribute 'class'"),
                ("5:1", where + "managedObject > ' element has no attribute 'distName'"))))

    def test_all_goes_on_where_a_load_ends(self):
        path = self.file("""<tarn version='1' xmlns='tarn21.xsd'>
<cmData type='wrong'><header/>
<managedObject class='C' distName='A-1' operation='vanish'>
<p name='x'>1</p>
<p name='x'>2</p>
</managedObject>
<managedObject class='C' distName='A-1'/>
<foo><p/></foo>
<managedObject class='C' distName='A-2'><p/></managedObject>
</cmData></tarn>""")
        self.expect(tarn("check", "--all", path), 1, "", f"""\
{path}:8:5: error: unknown TARN object
{path}:2:1: error: 'wrong' is not a valid value of 'cmData' attribute 'type'
{path}:3:1: A-1: error: 'vanish' is not a valid value of 'managedObject' attribute 'operation'
{path}:5:1: A-1: error: The 'A-1' element already contains a 'p' element with 'name=x'
{path}:4:1: note: the first one is here
{path}:7:1: A-1: error: The 'cmData' element already contains a 'managedObject' element with \
'distName=A-1'
{path}:3:1: note: the first one is here
{path}:9:41: A-2: error: {NAMELESS.replace("A-1", "A-2")}
""")

    # For each rule an element that breaks it, and it alone. "{0}" stands for a number.
    KINDS = {
        "object-class": "<managedObject distName='A-{0}'/>",
        "object-name": None,  # what has no name is a duplicate the second time
        "invalid-object-name": "<managedObject class='C' distName='A{0}'/>",
        "object-operation": "<managedObject class='C' distName='A-{0}' operation='x'/>",
        "duplicate-object": "<managedObject class='C' distName='A-0'/>",
        "parameter-name": "<managedObject class='C' distName='A-{0}'><p/></managedObject>",
        "duplicate-parameter":
            "<managedObject class='C' distName='A-{0}'><p name='a'/><p name='a'/></managedObject>",
        "list-name": "<managedObject class='C' distName='A-{0}'><list/></managedObject>",
        "duplicate-list": "<managedObject class='C' distName='A-{0}'><list name='l'/>"
                          "<list name='l'/></managedObject>",
        "mixed-list": "<managedObject class='C' distName='A-{0}'><list name='l'><p/><item/></list>"
                      "</managedObject>",
        "duplicate-component":
            "<managedObject class='C' distName='A-{0}'><list name='l'><item><p name='a'/>"
            "<p name='a'/></item></list></managedObject>",
        "unknown-element": "<unknown/>",
    }

    def test_fifty_faults_of_every_rule_are_fifty_lines(self):
        lines = ["<tarn>",                       # 1: version, xmlns, number of cmData
                 "<cmData type='plan'/>",        # 2: header, no object
                 "<cmData type='wrong'>",        # 3: type
                 "<header>", "<log action='a'/>", "<log dateTime='d'/>", "</header>",
                 "<managedObject class='C'/>",
                 "<managedObject class='C' distName='A-0'/>"]
        expected = [(1, "root-version"), (1, "root-namespace"), (1, "root-body"),
                    (2, "body-header"), (2, "plan-without-object"), (3, "body-type"),
                    (5, "log-time"), (6, "log-action"), (8, "object-name")]
        kinds = [(rule, text) for rule, text in self.KINDS.items() if text]
        for number in range(1, 51 - len(expected)):
            rule, text = kinds[number % len(kinds)]
            lines.append(text.format(number))
            expected.append((len(lines), rule))
        lines.append("</cmData></tarn>")
        path = self.file("\n".join(lines))
        self.assertEqual(len(expected), 50)
        reported = tarn("check", "--all", path).stderr.decode().splitlines()
        places = [int(line[len(path) + 1:].split(":")[0]) for line in reported
                  if ": error: " in line]
        self.assertEqual(sorted(places), [line for line, _ in expected])
        found = json.loads(tarn("check", "--all", "--json", path).stdout)
        self.assertEqual((found["result"], found["violationCount"]), (1, 50))
        self.assertEqual(sorted((each["line"], each["rule"]) for each in found["violations"]),
                         sorted(expected))
        # Every rule of a document that is XML.
        with open("src/cli/documents/faultRules.cpp", encoding="utf-8") as source:
            ids = re.findall(r'ModelKind::.*:\n\s*return {"([a-z-]*)"', source.read())
        self.assertEqual({rule for _, rule in expected} | {"malformed-xml"}, set(ids))
        for each in found["violations"]:
            with self.subTest(**each):
                column = lines[each["line"] - 1].index("<")
                if each["rule"] in ("parameter-name", "list-name", "mixed-list"):
                    column = lines[each["line"] - 1].index("<", 1)
                elif each["rule"].startswith("duplicate-") and each["rule"] != "duplicate-object":
                    tag = "<list" if each["rule"] == "duplicate-list" else "<p"
                    column = lines[each["line"] - 1].rindex(tag)
                    first = lines[each["line"] - 1].index(tag)
                    self.assertEqual((each["note"]["line"], each["note"]["column"]),
                                     (each["line"], first + 1))
                elif each["rule"] == "unknown-element" and each == found["violations"][0]:
                    column = lines[each["line"] - 1].index("/")  # where the parser ended
                elif each["rule"] == "duplicate-object":
                    self.assertEqual((each["note"]["line"], each["note"]["column"]), (9, 1))
                self.assertEqual(each["column"], column + 1)

    def test_strict_reports_what_other_parsers_refuse(self):
        text = document(managed_object("A-1", body="\n<p name='x' name='y'>a&b</item>\n"))
        path = self.file(text)
        self.expect(tarn("check", path), 0, f"{path}: ok\n")
        self.expect(tarn("check", "--strict", path), 1, "", f"""\
{path}:2:13: error: the attribute name comes twice
{path}:2:4: note: the first one is here
{path}:2:23: error: "&" begins no reference; write &amp;
{path}:2:25: error: </p> expected for <p name='x' name='y'>, found </item>
{path}:2:1: note: <p name='x' name='y'> is opened here
""")
        good = os.path.join(EXAMPLES, "network.xml")
        self.expect(tarn("check", "--strict", good), 0, f"{good}: ok\n")
        # Faults of both kinds, in the order of the text.
        both = self.file(document(managed_object("A-1", body="<p>&x;</p>")), "both.xml")
        found = json.loads(tarn("check", "--strict", "--json", both).stdout)
        self.assertEqual((found["result"], [each["column"] for each in found["violations"]]),
                         (2, [109, 112]))

    def test_other_encodings_are_named(self):
        for encoding, name in (("utf-16", "UTF-16"), ("utf-16-be", "UTF-16"), ("utf-32", "UTF-32")):
            path = self.file(document("").encode(encoding))
            for command in ("check", "print"):
                self.expect(tarn(command, path), 1, "",
                            f"{path}:1:1: error: the text is {name}; convert it to UTF-8\n")

    def test_all_is_limited_and_reports_how_many_are_left_out(self):
        body = "<extension>" + "<p/>" * 150 + "</extension>"
        path = self.file(document(managed_object("A-1", body=body)))
        for limit, reported in ((None, 100), (7, 7), (149, 149), (150, 150), (151, 150), (0, 150)):
            options = [] if limit is None else ["--limit", str(limit)]
            lines = tarn("check", "--all", *options, path).stderr.decode().splitlines()
            with self.subTest(limit=limit):
                self.assertEqual(sum("no attribute 'name'" in line for line in lines), reported)
                left = []
                if reported < 150:
                    word = "violation" if reported == 149 else "violations"
                    left = [f"{path}: error: {150 - reported} more {word}"]
                self.assertEqual(lines[reported:], left)

    def test_messages_that_repeat_a_long_name_are_bounded_by_their_bytes(self):
        # Message and path of a violation take 400 kB: 300 of them would be 120 MB.
        body = "<extension>" + "<p/>" * 300 + "</extension>"
        path = self.file(document(managed_object("A" * 200_000 + "-1", body=body)))
        result = tarn("check", "--all", "--limit", "0", path)
        lines = result.stderr.splitlines()
        self.assertEqual(result.returncode, 2)
        self.assertLess(len(result.stderr), 64 << 20)
        reported = len(lines) - 1
        self.assertIn(reported, range(100, 200))
        self.assertEqual(lines[-1].decode(), f"{path}: error: {300 - reported} more violations")
        found = json.loads(tarn("check", "--all", "--limit", "0", "--json", path).stdout)
        self.assertEqual((len(found["violations"]), found["violationCount"]), (reported, 300))
        few = tarn("check", "--all", "--limit", "3", path).stderr.splitlines()
        self.assertEqual(few, [*lines[:3], f"{path}: error: 297 more violations".encode()])

    def test_all_of_a_good_and_of_a_malformed_file(self):
        good = self.file(document(managed_object("A-1")), "good.xml")
        malformed = self.file("<tarn>", "malformed.xml")
        result = tarn("check", "--all", malformed, good)
        self.expect(result, 1, f"{good}: ok\n", f"""\
{malformed}:1:7: error: unexpected end of data
{malformed}:1:7: error: </tarn> expected for <tarn>, found the end of the text
{malformed}:1:1: note: <tarn> is opened here
""")

    def test_json_has_an_object_a_file(self):
        good = self.file(document(managed_object("A-1")), "good.xml")
        malformed = self.file("<tarn>\n<", "malformed.xml")
        broken = self.file(document(managed_object("A-1", body="<p/>")), "broken.xml")
        unloadable = self.file("<tarn><cmData/></tarn>", "unloadable.xml")
        missing = self.path("missing.xml")
        result = tarn("check", "--json", good, malformed, broken, unloadable, missing)
        self.assertEqual((result.returncode, result.stderr), (5, b""))
        self.assertEqual([json.loads(line) for line in result.stdout.splitlines()], [
            {"file": file, "result": code, "message": message, "line": line, "column": column,
             "path": path, "dn": dn, "rule": rule}
            for file, code, message, line, column, path, dn, rule in (
                (good, 0, None, None, None, None, None, None),
                (malformed, 1, "expected element name", 2, 2, None, None, "malformed-xml"),
                (broken, 2, NAMELESS, 1, 109, "tarn > cmData > managedObject:A-1 > p > ", "A-1",
                 "parameter-name"),
                (unloadable, 2, "The 'cmData' element has no attribute 'type'", 1, 7,
                 "tarn > cmData > ", None, "body-type"),
                (missing, 5, "No such file or directory", None, None, None, None, None))])
        self.expect(tarn("check", "--format", "json", good, malformed, broken, unloadable, missing),
                    5, result.stdout)

    def test_json_of_all_violations(self):
        path = self.file(document("", header="<header><log/></header>"))
        found = json.loads(tarn("check", "--json", "--all", "--limit", "2", path).stdout)
        self.assertEqual(found["violationCount"], 3)
        self.assertEqual([violation["path"] for violation in found["violations"]],
                         ["tarn > cmData > ", "tarn > cmData > header > log > "])
        self.assertEqual(found["message"], found["violations"][0]["message"])
        self.assertEqual(found["result"], 2)

    def test_a_thousand_files_in_one_call_in_their_order(self):
        files = []
        expected_out = []
        expected_err = []
        for number in range(1000):
            good = number % 7 != 0
            files.append(self.file(document(managed_object("A-1") if good else ""),
                                   f"{number}.xml"))
            if good:
                expected_out.append(f"{files[-1]}: ok")
            else:
                expected_err.append(f"{files[-1]}:1:40")
        for jobs in ("0", "1", "8"):
            result = tarn("check", "--jobs", jobs, *files)
            self.assertEqual(result.returncode, 2)
            self.assertEqual(result.stdout.decode().splitlines(), expected_out)
            self.assertEqual([line.split(": error: ")[0] for line in
                              result.stderr.decode().splitlines()], expected_err)

    def test_standard_input(self):
        good = document(managed_object("A-1")).encode()
        self.expect(tarn("check", "-", input=good), 0, "-: ok\n")
        self.expect(tarn("check", "-", input=b"<tarn>\n<foo/></tarn>"), 1, "",
                    "-:2:5: error: unknown TARN object\n")
        with open(self.file("<tarn>\n<foo/></tarn>"), "rb") as file:
            self.expect(tarn("check", "-", stdin=file), 1, "",
                        "-:2:5: error: unknown TARN object\n")

    def test_names_with_control_characters_stay_on_one_line(self):
        path = self.file(document(managed_object("A&#10;&#27;[2J")))
        self.expect(tarn("check", path), 2, "",
                    f"{path}:1:69: A\\x0A\\x1B[2J: error: "
                    "Invalid distinguished name: 'A\\x0A\\x1B[2J'\n")

    def test_log_lines_come_when_asked_for(self):
        path = self.file(document(""))
        message = "The 'tarn > cmData > ' element has 0 child 'managedObject' elements." \
                  "  Expected: 1"
        usual = tarn("check", path).stderr.decode()
        self.assertEqual(usual, f"{path}:1:40: error: {message}\n")
        self.assertEqual(tarn("--log-level", "none", "check", path).stderr.decode(), usual)
        self.assertEqual(tarn("--log-level", "error", "check", path).stderr.decode(), usual)
        lines = tarn("check", "--log-level", "debug", path).stderr.decode().splitlines()
        self.assertEqual([line.split(" ")[0] for line in lines[:-1]], ["DEBUG", "DEBUG", "ERROR"])
        self.assertTrue(lines[2].endswith(f" parseImpl: Validation failed: {message}"))
        self.assertEqual(lines[3] + "\n", usual)
        # A file that is valid has its lines, too.
        good = tarn("check", "--log-level", "debug", self.file(document(managed_object("A-1"))))
        levels = [line.split(" ")[0] for line in good.stderr.decode().splitlines()]
        self.assertEqual(levels, ["DEBUG", "DEBUG", "INFO"])

    def test_wrong_usage_has_status_64(self):
        for arguments, message in (
                ([], "FILE is required"),
                (["--all"], "FILE is required"),
                (["--limit", "3", "x"], "--limit: only with --all or --strict"),
                (["--all", "--limit", "-1", "x"],
                 "--limit: expected a whole number, 0 or more, not '-1'"),
                (["--all", "--limit", "x", "x"],
                 "--limit: expected a whole number, 0 or more, not 'x'"),
                (["--all", "--limit", "9" * 30, "x"], "--limit: too large: " + "9" * 30),
                (["--jobs=-1", "x"], "--jobs: expected a whole number, 0 or more, not '-1'"),
                (["--jobs", "1.5", "x"], "--jobs: expected a whole number, 0 or more, not '1.5'"),
                (["x", "--jobs"], "--jobs needs a value"),
                (["--jobs", "1", "--jobs", "2", "x"], "--jobs is given more than once"),
                (["--all=3", "x"], "--all takes no value"),
                (["x", "--log-level", "loud"],
                 "--log-level: expected debug, error, info or none, not 'loud'"),
                (["--format", "yaml", "x"],
                 "--format: expected text, json, sarif or junit, not 'yaml'"),
                (["--json", "--format", "sarif", "x"],
                 "--json means --format json, but --format sarif is given"),
                (["-", "-"],
                 "standard input is named more than once, but can be read once only")):
            with self.subTest(arguments=arguments):
                self.expect(tarn("check", *arguments, input=b""), 64, "",
                            f"tarn: error: {message}\n")
        good = self.file(document(managed_object("A-1")))
        for arguments in (["--jobs", "3"], ["--strict", "--limit", "3"], ["--all", "--strict"],
                          ["--json", "--format", "json"]):
            self.assertEqual(tarn("check", *arguments, good).returncode, 0)


if __name__ == "__main__":
    main()
