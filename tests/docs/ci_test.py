#!/usr/bin/env python3
"""Runs the command lines of the CI chapter of docs/guide.md: the steps of the jobs and the hooks, in a
git repository with documents. Argument: the command."""

import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree

SKIPPED = 77
TARN = os.path.abspath(sys.argv[1])
EXAMPLE = os.path.abspath("examples/network.xml")
FAULTY = "<tarn xmlns='tarn21.xsd' version='2.1'><cmData type='actual'><header/>\n<p>&x;</p></cmData></tarn>"

if not shutil.which("git"):
    print("git is missing")
    sys.exit(SKIPPED)


def chapter():
    with open("docs/guide.md", encoding="utf-8") as file:
        return re.search(r"## Checking documents in CI\n(.*?)\n## ", file.read(), re.DOTALL)[1]


def blocks(language):
    return re.findall(rf"```{language}\n(.*?)```", chapter(), re.DOTALL)


def command_lines(with_text):
    """The commands of the jobs, from `run:` or a list of `script:`."""
    lines = re.findall(r"^ *(?:run: |- )(.*\btarn check.*)$", "".join(blocks("yaml")), re.MULTILINE)
    return [line for line in lines if with_text in line]


class CiTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        tools = os.path.join(self.folder, "tools")
        self.tree = os.path.join(self.folder, "tree")
        for each in (tools, self.tree):
            os.mkdir(each)
        os.symlink(TARN, os.path.join(tools, "tarn"))
        self.environment = {**os.environ, "PATH": tools + os.pathsep + os.environ["PATH"],
                            "GIT_CONFIG_GLOBAL": os.devnull, "GIT_CONFIG_SYSTEM": os.devnull}
        for name in ("AUTHOR", "COMMITTER"):
            self.environment[f"GIT_{name}_NAME"] = self.environment[f"GIT_{name}_EMAIL"] = "a"
        self.run_line("git init -q")
        shutil.copy(EXAMPLE, os.path.join(self.tree, "a network.xml"))
        self.run_line("git add .")

    def run_line(self, line):
        return subprocess.run(["bash", "-eo", "pipefail", "-c", line], cwd=self.tree, check=False,
                              env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def add_faulty(self):
        with open(os.path.join(self.tree, "faulty.xml"), "w", encoding="utf-8") as file:
            file.write(FAULTY)
        self.run_line("git add .")

    def read(self, name):
        with open(os.path.join(self.tree, name), "rb") as file:
            return file.read()

    def test_sarif_step(self):
        line, = command_lines("sarif")
        self.assertEqual(self.run_line(line).returncode, 0)
        self.assertEqual(json.loads(self.read("tarn.sarif"))["runs"][0]["results"], [])
        self.add_faulty()
        self.assertEqual(self.run_line(line).returncode, 123)  # of xargs
        result, = json.loads(self.read("tarn.sarif"))["runs"][0]["results"]
        self.assertEqual(result["locations"][0]["physicalLocation"],
                         {"artifactLocation": {"uri": "faulty.xml"},
                          "region": {"startLine": 2, "startColumn": 4}})

    def test_junit_step(self):
        line, = command_lines("junit")
        self.add_faulty()
        self.assertEqual(self.run_line(line).returncode, 123)
        suites = xml.etree.ElementTree.fromstring(self.read("tarn.junit.xml"))
        self.assertEqual([(suite.get("name"), suite.get("failures")) for suite in suites],
                         [("a network.xml", "0"), ("faulty.xml", "1")])

    def test_entry_of_the_pre_commit_configuration(self):
        entry, = re.findall(r"entry: (.*)", "".join(blocks("yaml")))
        pattern, = re.findall(r"files: (.*)", "".join(blocks("yaml")))
        self.add_faulty()
        names = [name for name in os.listdir(self.tree) if re.search(pattern, name)]
        self.assertEqual(sorted(names), ["a network.xml", "faulty.xml"])
        self.assertEqual(self.run_line(f"{entry} 'a network.xml'").returncode, 0)
        self.assertEqual(self.run_line(f"{entry} 'a network.xml' faulty.xml").returncode, 1)

    def test_git_hook(self):
        hook = os.path.join(self.tree, ".git/hooks/pre-commit")
        os.makedirs(os.path.dirname(hook), exist_ok=True)
        with open(hook, "w", encoding="utf-8") as file:
            script, = blocks("sh")
            file.write(script)
        os.chmod(hook, 0o755)
        self.assertEqual(self.run_line("git commit -qm 'good ones'").returncode, 0)
        self.add_faulty()
        refused = self.run_line("git commit -qm 'a faulty one'")
        self.assertEqual(refused.returncode, 1)
        self.assertIn(b"faulty.xml:2:4: error: the entity &x; is not declared", refused.stderr)
        self.assertEqual(self.run_line("git rev-list --count HEAD").stdout, b"1\n")

    def test_ids_are_those_of_the_command(self):
        listed = re.findall(r"^\| `([a-z0-9-]+)` \|", chapter(), re.MULTILINE)
        run = json.loads(self.run_line("tarn check --format sarif 'a network.xml'").stdout)["runs"][0]
        self.assertEqual(listed, [rule["id"] for rule in run["tool"]["driver"]["rules"]])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
