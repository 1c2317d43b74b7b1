"""share/tarn/tarn21.xsd and `tarn check` accept the same documents.

Compared over the examples, over documents made at random (each with a fault or none), and over the
differences that the schema and docs/format.md name, which must be there as they say."""

import glob
import os
import random
import re
import shutil
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "../cli"))
from support.command_case import CommandCase, document, main, managed_object, tarn

SCHEMA = "share/tarn/tarn21.xsd"
XMLLINT = "xmllint"
SKIPPED = 77


def follow_schema(paths):
    """Returns the files among `paths` that are valid by the schema."""
    result = subprocess.run([XMLLINT, "--noout", "--schema", SCHEMA, *paths],
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    lines = result.stdout.decode(errors="replace").splitlines()
    reported = {match[1]: match[2] for line in lines
            if (match := re.fullmatch(r"(.*) (validates|fails to validate)", line))}
    return {path for path in paths if reported.get(path) == "validates"}


def are_taken(paths):
    """Returns the files among `paths` that `tarn check` accepts."""
    lines = tarn("check", *paths).stdout.decode().splitlines()
    return {path for path in paths if f"{path}: ok" in lines}


class RandomDocument:
    """Returns a random document, which breaks each rule now and then."""

    NAMES = ["cmData", "header", "log", "managedObject", "p", "list", "item", "extension"]

    def __init__(self, seed):
        self.random = random.Random(seed)
        # Most documents break one rule or none: where several are broken, one hides the others.
        self.faults = self.random.choice([0, 0, 1, 1, 1, 3])

    def fault(self):
        if self.faults and self.random.randrange(12) == 0:
            self.faults -= 1
            return True
        return False

    def rare(self):
        return self.random.randrange(8) == 0

    def attributes(self, **values):
        texts = [f'{name}="{value}"' for name, value in values.items() if not self.fault()]
        if self.rare():
            texts.append('remark="&lt;any&gt;"')
        self.random.shuffle(texts)
        return "".join(" " + text for text in texts)

    def other(self, allowed, depth=0):
        """An element where the format has none, with any content."""
        name = self.random.choice(allowed)
        body = self.other(self.NAMES, depth + 1) if depth < 3 and self.rare() else "text"
        return f"<{name}>{body}</{name}>"

    def some(self, make, most, others=()):
        parts = [make() for _ in range(self.random.randrange(most + 1))]
        if others and self.rare():
            parts.insert(self.random.randrange(len(parts) + 1), self.other(others))
        if self.fault():
            parts.append(self.random.choice(["<foo/>", "<P/>", "<tarn/>"]))
        if parts and self.rare():
            parts.append("some text")
        return "".join(parts)

    def names(self):
        """Returns names that differ, except for a fault."""
        number = 0
        while True:
            if not self.fault():
                number += 1
            yield f"n{number}"

    def parameter(self, names):
        return f"<p{self.attributes(name=next(names))}>{self.random.randrange(9)}</p>"

    def parameters(self, others):
        names = self.names()
        return self.some(lambda: self.parameter(names), 3, others)

    def item(self):
        return f"<item>{self.parameters([n for n in self.NAMES if n != 'p'])}</item>"

    def list(self, names):
        others = [name for name in self.NAMES if name not in ("p", "item")]
        kinds = [self.item, lambda: "<p>1</p>"]
        self.random.shuffle(kinds)
        body = self.some(kinds[0], 3, others)
        if self.fault():
            body += kinds[1]()
        return f"<list{self.attributes(name=next(names))}>{body}</list>"

    def extension(self):
        others = [name for name in self.NAMES if name != "p"]
        name = self.attributes(name="e") if self.rare() else ' name="e"'
        return f"<extension{name}>{self.parameters(others)}</extension>"

    def dist_name(self, number):
        if self.fault():
            return self.random.choice(["", "A", "-1", "A-", "A-1/", "/A-1", "A-1//B-2", "A-1/B",
                                       "A-é", "A-1 "])
        return self.random.choice([f"A-{number}", f"A-1/B-{number}", f"A-x-{number}", f"ä-{number}",
                                   f"--{number}", f"any ZNT-1/ {number}", f"A B-{number}"])

    def managed_object(self, number):
        names, list_names = self.names(), self.names()
        values = {"class": "C", "distName": self.dist_name(number)}
        if self.rare():
            values["operation"] = "Update" if self.fault() else self.random.choice(
                ["create", "delete", "update", "auto"])
        body = (self.some(lambda: self.parameter(names), 3)
                + self.some(lambda: self.list(list_names), 2)
                + self.some(self.extension, 2,
                            ["cmData", "header", "log", "managedObject", "item"]))
        return f"<managedObject{self.attributes(**values)}>{body}</managedObject>"

    def header(self):
        def log():
            return f"<log{self.attributes(dateTime='now', action='a')}>text</log>"
        if self.fault():
            return self.random.choice(["", "<header/><header/>"])
        others = [name for name in self.NAMES if name != "log"]
        return f"<header>{self.some(log, 2, others)}</header>"

    def cm_data(self):
        objects = [self.managed_object(i if not self.fault() else 0)
                   for i in range(1 + self.random.randrange(4))]
        objects.insert(self.random.randrange(len(objects) + 1), self.header())
        kind = "Plan" if self.fault() else self.random.choice(["actual", "plan", "defaults"])
        return f"<cmData{self.attributes(type=kind)}>{''.join(objects)}</cmData>"

    def text(self):
        others = [name for name in self.NAMES if name != "cmData"]
        body = self.cm_data() + (self.other(others) if self.rare() else "")
        if self.fault():
            body = self.random.choice(["", body + self.cm_data()])
        xmlns = "tarn20.xsd" if self.fault() else "tarn21.xsd"
        return f'<tarn xmlns="{xmlns}"{self.attributes(version="2.1")}>{body}</tarn>'


class SchemaTest(CommandCase):
    def compare(self, paths):
        taken = are_taken(paths)
        following = follow_schema(paths)
        for path in sorted(taken ^ following):
            self.fail(f"{path} is {'taken' if path in taken else 'not taken'} by tarn check:\n"
                      + self.read(path).decode())
        return taken

    def test_examples(self):
        self.assertEqual(len(self.compare(glob.glob("examples/*.xml"))), 3)

    def test_documents_made_at_random(self):
        paths = [self.file(RandomDocument(seed).text(), f"{seed}.xml") for seed in range(1500)]
        taken = self.compare(paths)
        # There are many of both kinds.
        self.assertGreater(len(taken), 300)
        self.assertLess(len(taken), 1200)

    def test_what_a_schema_cannot_say(self):
        only_schema = [document("", kind="plan")]
        only_check = [
            # No XML: names of end tags, values of attributes, references, second roots and others.
            document(managed_object("A-1")).replace("</managedObject>", "</other>"),
            document(managed_object("A-1<2-1")),
            document(managed_object("A-1", body='<p name="n">&amp &none;</p>')),
            document(managed_object("A-1", body='<p name="n" name="n">1</p>')),
            document(managed_object("A-1", body='<p name="n">\x01</p>')),
            document(managed_object("A-1")).encode() + b"<!-- -- -->",
            document(managed_object("A-1", body='<p name="n">\xe9</p>')).encode("latin-1"),
        ]
        for number, text in enumerate(only_schema):
            path = self.file(text, f"schema{number}.xml")
            self.assertEqual((follow_schema([path]), are_taken([path])), ({path}, set()), text)
        for number, text in enumerate(only_check):
            path = self.file(text, f"check{number}.xml")
            self.assertEqual((follow_schema([path]), are_taken([path])), (set(), {path}), text)


if not shutil.which(XMLLINT):
    sys.exit(SKIPPED)
main()
