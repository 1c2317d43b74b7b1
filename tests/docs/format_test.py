"""Each message that docs/format.md gives is the one that a document which breaks the rule causes."""

import os
import re
import sys

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "../cli"))
from support.command_case import CommandCase, document, main, managed_object, tarn

OBJECT = "tarn > cmData > managedObject:A-1 > "


def in_object(body):
    return document(managed_object("A-1", body=body))


# The message in the documentation, the values of its words in capitals, a document.
BROKEN_RULES = [
    ("The 'tarn > ' element has no attribute 'xmlns'", {}, document("").replace("xmlns", "x")),
    ("'VALUE' is not a valid value of 'tarn > ' attribute 'xmlns'", {"VALUE": "x"},
     document("").replace("tarn21.xsd", "x")),
    ("The 'tarn > ' element has no attribute 'version'", {}, document("").replace("version", "x")),
    ("The 'tarn > ' element has COUNT child 'cmData' elements.  Expected: 1", {"COUNT": "0"},
     '<tarn xmlns="tarn21.xsd" version="2.1"/>'),
    ("The 'cmData' element has no attribute 'type'", {}, document("").replace("type", "x")),
    ("'VALUE' is not a valid value of 'cmData' attribute 'type'", {"VALUE": "x"},
     document("", kind="x")),
    ("The 'PATH' element has COUNT child 'header' elements.  Expected: 1",
     {"PATH": "tarn > cmData > ", "COUNT": "2"}, document("", header="<header/><header/>")),
    ("The 'PATH' element has 0 child 'managedObject' elements.  Expected: 1",
     {"PATH": "tarn > cmData > "}, document("")),
    ("The 'PATH' element has no attribute 'dateTime'",
     {"PATH": "tarn > cmData > header > log > "},
     document("", "<header><log action='a'/></header>", "actual")),
    ("The 'PATH' element has no attribute 'action'",
     {"PATH": "tarn > cmData > header > log > "},
     document("", "<header><log dateTime='now'/></header>", "actual")),
    ("The 'PATH' element has no attribute 'class'", {"PATH": OBJECT},
     document(managed_object("A-1").replace("class", "x"))),
    ("The 'PATH' element has no attribute 'distName'",
     {"PATH": "tarn > cmData > managedObject > "},
     document(managed_object("A-1").replace("distName", "x"))),
    ("Invalid distinguished name: 'VALUE'", {"VALUE": "A"}, document(managed_object("A"))),
    ("The 'cmData' element already contains a 'managedObject' element with 'distName=VALUE'",
     {"VALUE": "A-1"}, document(managed_object("A-1") + managed_object("A-1"))),
    ("'VALUE' is not a valid value of 'managedObject' attribute 'operation'", {"VALUE": "x"},
     document(managed_object("A-1", "x"))),
    ("The 'DISTNAME' element already contains a 'p' element with 'name=VALUE'",
     {"DISTNAME": "A-1", "VALUE": "n"}, in_object("<p name='n'/><p name='n'/>")),
    ("The 'PATH' element has no attribute 'name'", {"PATH": OBJECT + "p > "}, in_object("<p/>")),
    ("The 'PATH' element has no attribute 'name'", {"PATH": OBJECT + "list > "},
     in_object("<list/>")),
    ("The 'PATH' has both 'p' and 'item' children", {"PATH": OBJECT + "list:l > "},
     in_object("<list name='l'><p>1</p><item/></list>")),
    ("The 'DISTNAME(list: NAME)' element already contains a 'p' element with 'name=VALUE'",
     {"DISTNAME": "A-1", "NAME": "l", "VALUE": "n"},
     in_object("<list name='l'><item><p name='n'/><p name='n'/></item></list>")),
]

MALFORMED = {
    "expected <": "<tarn/>x",
    "unexpected end of data": "<tarn>",
    "expected ?>": "<?xml version='1.0'>",
    "expected element name": "<tarn>< p/></tarn>",
    "expected >": "<tarn / >",
    "expected =": "<tarn version/>",
    "expected ' or \"": "<tarn version=2/>",
    "expected ;": "<tarn version='&#65 '/>",
    "invalid numeric character entity": "<tarn version='&#1114112;'/>",
    "unknown TARN object": "<tarn><object/></tarn>",
}


class FormatTest(CommandCase):
    @classmethod
    def setUpClass(cls):
        with open("docs/format.md", encoding="utf-8") as file:
            text = re.sub("```.*?```", "", file.read(), flags=re.DOTALL)
        cls.documented = set(re.findall("`([^`]+)`", re.sub(r"[ \n]+", " ", text)))

    def test_broken_rules(self):
        for template, words, text in BROKEN_RULES:
            with self.subTest(template):
                self.assertTrue(re.sub(" +", " ", template) in self.documented)
                message = template
                for word, meaning in words.items():
                    message = message.replace(word, meaning)
                path = self.file(text)
                result = tarn("check", path)
                self.assertEqual(result.returncode, 2)
                self.assertRegex(result.stderr.decode(),
                                 rf"^{re.escape(path)}:\d+:\d+(: [^:]+)?: error: {re.escape(message)}\n"
                                 r"(.*: note: the first one is here\n)?$")

    def test_each_rule_has_a_row_and_is_asked_by_the_validator(self):
        with open("src/libTARN/model/validation/rules.hpp", encoding="utf-8") as file:
            rules = re.findall(r"^(?:inline )?bool (\w+)\(", file.read(), re.MULTILINE)
        self.assertGreater(len(rules), 10)
        with open("docs/format.md", encoding="utf-8") as file:
            rows = re.findall(r"^\| .+ \| `(\w+)` \|$", file.read(), re.MULTILINE)
        self.assertEqual(rules, rows)
        for user in ["Validator.cpp", "keepsRules.cpp"]:
            with open(f"src/libTARN/model/validation/{user}", encoding="utf-8") as file:
                asked = set(re.findall(r"rules::(\w+)", file.read()))
            self.assertEqual(set(rules), asked, user)

    def test_malformed_texts(self):
        for message, text in MALFORMED.items():
            with self.subTest(message):
                self.assertTrue(message in self.documented)
                result = tarn("check", self.file(text))
                self.assertEqual(result.returncode, 1)
                first = result.stderr.decode().splitlines()[0]
                self.assertTrue(first.endswith(f": error: {message}"), first)

    def test_example_is_taken_and_printed_again(self):
        with open("docs/format.md", encoding="utf-8") as file:
            text = re.search("```xml\n(.*?)```", file.read(), re.DOTALL)[1]
        path = self.file(text)
        self.expect(tarn("check", path), 0, f"{path}: ok\n")
        self.expect(tarn("print", path), 0, text)


main()
