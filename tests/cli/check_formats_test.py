#!/usr/bin/env python3
"""Runs `tarn check --format sarif` and `--format junit`, and reads what they write as CI servers do.
Argument: the command; working folder: the repository's.

support/sarif-2.1.0.json is the schema that OASIS publishes with the standard, as the npm package
@microsoft/jest-sarif 1.0.0-beta.0 carries it, without its descriptions."""

import json
import os
import re
import shutil
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "support"))
from command_case import EXAMPLES, CommandCase, document, main, managed_object, tarn  # noqa: E402

SKIPPED = 77
try:
    import jsonschema
    import junitparser
except ImportError as missing:
    print(missing)
    sys.exit(SKIPPED)
if not shutil.which("xmllint"):
    print("xmllint is missing")
    sys.exit(SKIPPED)

SCHEMA = os.path.join(os.path.dirname(__file__), "support", "sarif-2.1.0.json")
DUPLICATE = "The 'A-1' element already contains a 'p' element with 'name=x'"
# Everything that is awkward in a text, in a name that messages repeat.
AWKWARD = "A&lt;&amp;&quot;'&#1;&#10;&#27;[31m&#xFFFE;&#xFFFF;&#xD800;&#x202E;]]&gt;\u00e9\U0001F600"


class FormatsTest(CommandCase):
    @classmethod
    def setUpClass(cls):
        with open(SCHEMA, encoding="utf-8") as file:
            cls.validator = jsonschema.Draft4Validator(json.load(file))

    def sarif(self, *arguments, status):
        """Returns the run of a valid document."""
        result = tarn("check", "--format", "sarif", *arguments)
        self.assertEqual((result.returncode, result.stderr), (status, b""))
        log = json.loads(result.stdout)
        self.assertEqual([error.message for error in self.validator.iter_errors(log)], [])
        self.assertEqual((log["version"], len(log["runs"])), ("2.1.0", 1))
        run = log["runs"][0]
        self.assertEqual(run["columnKind"], "utf16CodeUnits")
        self.assertEqual(run["invocations"][0]["exitCode"], status)
        rules = run["tool"]["driver"]["rules"]
        for each in run["results"]:
            self.assertEqual(rules[each["ruleIndex"]]["id"], each["ruleId"])
        return run

    def junit(self, *arguments, status):
        """Returns the test suites, as a reader of CI servers has them."""
        result = tarn("check", "--format", "junit", *arguments)
        self.assertEqual((result.returncode, result.stderr), (status, b""))
        checked = subprocess.run(["xmllint", "--noout", "-"], input=result.stdout,
                                 stderr=subprocess.PIPE, check=False)
        self.assertEqual((checked.returncode, checked.stderr), (0, b""))
        return list(junitparser.JUnitXml.fromstring(result.stdout))

    def test_sarif_schema_refuses_what_is_wrong(self):
        for wrong in ({}, {"version": "2.1.0"}, {"version": "2.1.0", "runs": [{}]}):
            self.assertFalse(self.validator.is_valid(wrong))

    def test_sarif_has_place_object_and_second_place(self):
        path = self.file(document("\n" + managed_object(
            "A-1", body="\n<p name='x'/>\n  <p name='x'/>")), "d.xml")
        run = self.sarif(path, status=2)
        uri = "file://" + path

        def location(line, column):
            return {"artifactLocation": {"uri": uri},
                    "region": {"startLine": line, "startColumn": column}}
        self.assertEqual([{key: value for key, value in each.items() if key != "ruleIndex"}
                          for each in run["results"]], [
            {"ruleId": "duplicate-parameter", "level": "error", "message": {"text": DUPLICATE},
             "locations": [{"physicalLocation": location(4, 3), "logicalLocations": [
                 {"fullyQualifiedName": "A-1", "kind": "object"}]}],
             "relatedLocations": [{"physicalLocation": location(3, 1),
                                   "message": {"text": "the first one is here"}}]}])
        self.assertEqual(run["invocations"], [{"executionSuccessful": True, "exitCode": 2}])

    def test_sarif_without_results_is_valid(self):
        run = self.sarif(os.path.join(EXAMPLES, "network.xml"), status=0)
        self.assertEqual(run["results"], [])

    def test_sarif_is_one_run_of_all_files(self):
        broken = self.file(document(""), "broken.xml")
        malformed = self.file("<tarn>\n<", "malformed.xml")
        nul = self.file(b"<tarn>\n\xc3\xa9\0", "nul.xml")
        good = self.file(document(managed_object("A-1")), "good.xml")
        missing = self.path("missing.xml")
        many = self.file(document(managed_object("A-1", body="<p/>" * 3)), "many.xml")
        run = self.sarif("--all", "--limit", "2", "--jobs", "3", broken, malformed, missing, good,
                         nul, many, status=5)
        found = [(os.path.basename(each["locations"][0]["physicalLocation"]["artifactLocation"]
                                   ["uri"]), each["ruleId"]) for each in run["results"]]
        self.assertEqual(found, [
            ("broken.xml", "plan-without-object"), ("malformed.xml", "malformed-xml"),
            ("malformed.xml", "end-tag-missing"), ("nul.xml", "encoding"),
            ("many.xml", "parameter-name"), ("many.xml", "parameter-name")])
        invocation = run["invocations"][0]
        self.assertFalse(invocation["executionSuccessful"])
        self.assertEqual([(each["descriptor"]["id"], each["level"], each["message"]["text"])
                          for each in invocation["toolExecutionNotifications"]],
                         [("unreadable-file", "error", "No such file or directory"),
                          ("left-out", "warning", "3 more violations")])

    def test_sarif_columns_are_utf_16_code_units(self):
        for before in ("", "e", "\u00e9", "\u20ac", "\U0001F600", "\u00e9\U0001F600x"):
            text = document(managed_object("A-1", body=f"<p name='a'>{before}</p><p/>"))
            for mark in ("", "\ufeff"):
                line = mark + text
                run = self.sarif(self.file(line), status=2)
                region = run["results"][0]["locations"][0]["physicalLocation"]["region"]
                units = len(text[:text.index("<p/>")].encode("utf-16-le")) // 2
                self.assertEqual(region, {"startLine": 1, "startColumn": units + 1})
        # Many places in one long line.
        text = document(managed_object("A-1", body="\u00e9<p/>" * 20_000))
        run = self.sarif("--all", "--limit", "0", self.file(text), status=2)
        columns = [each["locations"][0]["physicalLocation"]["region"]["startColumn"]
                   for each in run["results"] if each["ruleId"] == "parameter-name"]
        self.assertEqual(columns, [match.start() + 1 for match in re.finditer("<p/>", text)])

    def test_sarif_uris_are_escaped(self):
        os.mkdir(self.path("a b"))
        path = self.file(document(""), "a b/c#\u00e9%:.xml")
        result = tarn("check", "--format", "sarif", path)
        self.assertIn(b"/a%20b/c%23%C3%A9%25%3A.xml", result.stdout)
        relative = os.path.join("a b", os.path.basename(path))
        command = os.path.abspath(sys.argv[1])
        found = subprocess.run([command, "check", "--format", "sarif", relative], cwd=self.folder,
                               stdout=subprocess.PIPE, check=False)
        self.assertIn(b'"uri":"a%20b/c%23%C3%A9%25%3A.xml"', found.stdout)

    def test_any_text_makes_a_valid_document(self):
        body = f"<p/><p name='{AWKWARD}'/><p name='{AWKWARD}'/>"
        texts = [document(managed_object(AWKWARD, body=body)).encode(),
                 document(managed_object("A-1", body=body)).encode() + b"\xff\xfe<",
                 b"<tarn><\x01\xff&<>\"'/>", b"\xff\xfe<\0", b"\0", b""]
        for text in texts:
            path = self.file(text, "<&\"'\x01\n\udcff\uffff>.xml".encode(
                "utf-8", "surrogateescape").decode("utf-8", "surrogateescape"))
            for options in ([], ["--all"], ["--strict"]):
                with self.subTest(text=text, options=options):
                    status = tarn("check", *options, path).returncode
                    self.assertGreater(len(self.sarif(*options, path, status=status)["results"]), 0)
                    suite, = self.junit(*options, path, status=status)
                    self.assertEqual(suite.failures, len(list(suite)))

    def test_junit_has_a_suite_a_file_and_a_case_a_fault(self):
        good = self.file(document(managed_object("A-1")), "good.xml")
        broken = self.file(document(managed_object(
            "A-1", body="\n<p name='x'/>\n  <p name='x'/><p/>")), "broken.xml")
        missing = self.path("missing.xml")
        suites = self.junit("--all", good, broken, missing, status=5)
        self.assertEqual([(suite.name, suite.tests, suite.failures, suite.errors, suite.skipped)
                          for suite in suites],
                         [(good, 1, 0, 0, 0), (broken, 2, 2, 0, 0), (missing, 1, 0, 1, 0)])
        self.assertEqual([case.result for case in suites[0]], [[]])
        cases = list(suites[1])
        self.assertEqual([(case.classname, case.name) for case in cases],
                         [(broken, "duplicate-parameter at 3:3"), (broken, "parameter-name at 3:16")])
        failure, = cases[0].result
        self.assertIsInstance(failure, junitparser.Failure)
        self.assertEqual((failure.type, failure.message), ("duplicate-parameter", DUPLICATE))
        self.assertEqual(failure.text, f"{broken}:3:3: A-1: error: {DUPLICATE}\n"
                                       f"{broken}:2:1: note: the first one is here")
        case, = suites[2]
        error, = case.result
        self.assertIsInstance(error, junitparser.Error)
        self.assertEqual(error.message, "No such file or directory")

    def test_junit_reports_how_many_are_left_out(self):
        path = self.file(document(managed_object("A-1", body="<p/>" * 5)))
        suite, = self.junit("--all", "--limit", "8", path, status=2)
        self.assertEqual([case.name for case in suite][-1], "left-out")
        self.assertEqual([case.result[0].message for case in suite][-1], "1 more violation")
        self.assertEqual(suite.tests, 9)

    def test_what_long_names_make_is_bounded(self):
        body = "<extension>" + "<p/>" * 300 + "</extension>"
        path = self.file(document(managed_object("A" * 200_000 + "-1", body=body)))
        for form in ("sarif", "junit"):
            result = tarn("check", "--all", "--limit", "0", "--format", form, path)
            self.assertEqual(result.returncode, 2)
            self.assertLess(len(result.stdout), 128 << 20)
            self.assertIn(b" more violations", result.stdout)


if __name__ == "__main__":
    main()
