#!/usr/bin/env python3
"""What the command writes passes `tarn check --strict`, or the command refuses. Argument: the command;
working folder: the repository's."""

import os
import random
import sys

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "support"))
from command_case import CommandCase, document, main, managed_object, tarn  # noqa: E402

REFUSED = "XML parsers would refuse the result, which is not written: "
CONTROL = "the character U+0001 is not allowed in XML"


class WrittenTest(CommandCase):
    def written(self, *arguments, status=0):
        """Returns what the command writes, after a strict check."""
        out = self.path("out.xml")
        result = tarn(*arguments, "-o", out)
        self.assertEqual((result.returncode, result.stderr), (status, b""))
        self.expect(tarn("check", "--strict", out), 0, f"{out}: ok\n")
        return self.read(out).decode()

    def test_document_that_other_parsers_refuse_is_not_written(self):
        # "@" stands before the fault.
        for body, message in (
                ("<p name='ok'>a&b</p>\n<p name='a'>x@&#1;</p>", CONTROL),
                ("<p name='a'>@\x01</p>", CONTROL),
                ("<p name='a@&#27;'/>", "the character U+001B is not allowed in XML"),
                ("<p name='a'>@&#0;</p>", "a NUL byte"),
                ("<p name='a'>@&#xD800;</p>", "the character U+D800 is not allowed in XML"),
                ("<p name='a' @name='b'/>", "the attribute name comes twice"),
                ("<p name='a' @1='b'/>", '"1" cannot begin a name')):
            marked = document("\n" + managed_object("A-1", body=body))
            line = marked[:marked.index("@")].count("\n") + 1
            column = marked.index("@") - marked.rindex("\n", 0, marked.index("@"))
            path = self.file(marked.replace("@", ""))
            before = self.read(path)
            for arguments in (["print", path], ["set", path, "--everything", "--create", "--set",
                                                "b=1", "--in-place"]):
                with self.subTest(body=body, arguments=arguments):
                    self.expect(tarn(*arguments), 1, "",
                                f"{path}:{line}:{column}: A-1: error: {REFUSED}{message}\n")
            self.assertEqual(self.read(path), before)
            self.assertEqual(tarn("check", "--strict", path).returncode, 1)

    def test_invalid_utf_8_is_not_written(self):
        text = document(managed_object("A-1", body="<p name='a'>@</p>"))
        path = self.file(text.encode().replace(b"@", b"\xff"))
        result = tarn("print", path)
        self.expect(result, 1, "", f"{path}:1:{text.index('@') + 1}: A-1: error: {REFUSED}"
                                   "not UTF-8: no character begins with this byte\n")

    def test_fault_outside_of_objects_has_a_place(self):
        text = document("", header="<header><log action='&#1;'/></header>")
        path = self.file(text)
        self.expect(tarn("print", path), 1, "",
                    f"{path}:1:{text.index('&#1;') + 1}: error: {REFUSED}{CONTROL}\n")

    def test_fault_that_is_not_in_the_file_has_its_place_in_the_result(self):
        source = self.file(document(managed_object("A-1")))
        delta = self.file(document(managed_object("A-1", "update", "<p name='a'>x&#1;</p>")),
                          "delta.xml")
        self.expect(tarn("merge", source, delta, "--in-place"), 1, "",
                    f"{source}: A-1: error: {REFUSED}{CONTROL}, at 6:17 of the result\n")
        objects = self.file(document(managed_object("A-2", body="<p name='a'>x&#1;</p>")), "o.xml")
        self.expect(tarn("add", source, objects), 1, "",
                    f"{source}: A-2: error: {REFUSED}{CONTROL}, at 7:17 of the result\n")
        text = document(managed_object("A-1", body="<p name='a'>x&#1;</p>")).encode()
        self.expect(tarn("print", "-", input=text), 1, "",
                    f"-: A-1: error: {REFUSED}{CONTROL}, at 6:17 of the result\n")

    def test_value_of_the_command_line_is_wrong_usage(self):
        path = self.file(document(managed_object("A-1", body="<p name='a'>1</p>")))
        for option, value, shown, place, message in (
                ("--set", "a=x\x01", "x\\x01", 1, CONTROL),
                ("--set", "a\x1b=x", "a\\x1B", 1, "the character U+001B is not allowed in XML"),
                ("--set", b"a=\xff", "\\xFF", 0, "not UTF-8: no character begins with this byte"),
                ("--set-version", "\x7f\ufffe", "\\x7F\ufffe", 4,
                 "the character U+FFFE is not allowed in XML"),
                ("--set-class", "\x02", "\\x02", 0, "the character U+0002 is not allowed in XML")):
            with self.subTest(value=value):
                self.expect(tarn("set", path, "--everything", option, value, "--in-place"), 64, "",
                            f"tarn: error: {option}: {message}\n  {shown}\n  {' ' * place}^\n")
        self.assertIn('<p name="a">&lt;&amp;&gt;]]&gt;&quot;\t\u00e9</p>',
                      self.written("set", path, "--everything", "--set", "a='<&>]]>\"\t\u00e9'",
                                   status=0))

    def test_bad_value_can_be_replaced(self):
        path = self.file(document(managed_object("A-1", body="<p name='a'>&#1;</p>")))
        self.assertIn('<p name="a">2</p>', self.written("set", path, "--everything", "--set", "a=2"))

    def test_what_the_printer_corrects_is_written(self):
        path = self.file("<!-- -- -->" + document(managed_object(
            "A-1", body="<p name='<'>a&b&c;]]></list><![CDATA[x]]>")) + "<?x ?>")
        self.assertIn('<p name="&lt;">a&amp;b&amp;c;]]&gt;</p>', self.written("print", path))

    def test_us_ascii_gets_references(self):
        values = "&#233;x&#x20AC;&#x1F600;"
        path = self.file("<?xml version='1.0' encoding='US-ASCII'?>" + document(managed_object(
            "A-1", body=f"<p name='{values}'>{values}</p>")))
        text = self.written("print", path)
        self.assertTrue(text.isascii())
        self.assertIn('<p name="&#233;x&#8364;&#128512;">&#233;x&#8364;&#128512;</p>', text)
        again = self.file(text, "again.xml")
        self.assertEqual(self.written("print", again), text)
        self.expect(tarn("get", path, "A-1", "\u00e9x\u20ac\U0001F600"), 0,
                    "\u00e9x\u20ac\U0001F600\n")
        # A name cannot have references.
        path = self.file("<?xml version='1.0' encoding='US-ASCII'?>" + document(managed_object(
            "A-1", body="<p name='a' \u00e9='1'/>")))
        self.assertEqual(tarn("print", path).returncode, 1)

    def test_declaration_of_another_encoding_is_not_written(self):
        path = self.file("<?xml version='1.0' encoding='ISO-8859-1'?>" + document(
            managed_object("A-1")))
        self.expect(tarn("print", path), 1, "",
                    f"{path}:1:31: error: {REFUSED}the declared encoding is ISO-8859-1; convert "
                    "the text to UTF-8\n")

    def test_random_documents_are_written_strictly_or_refused(self):
        choose = random.Random(17)
        pieces = ["a", "b", "&#1;", "&#233;", "\u00e9", "&lt;", "&", "<!---->", "\x02", "&#xFFFF;"]
        attributes = ["name='a'", "x='1'", "x='2'", "1='1'", "\u00e9='1'", "a\"='1'"]
        declarations = ["", "", "<?xml version='1.0' encoding='us-ascii'?>", "<?xml version='1.1'?>",
                        "<?xml version='1.0' encoding='latin1'?>"]
        written = 0
        for _ in range(120):
            def some(most, of):
                return [choose.choice(of[:2]) if choose.random() < 0.7 else choose.choice(of)
                        for _ in range(choose.randrange(most))]
            body = (f"<p {' '.join(['name=' + repr('n')] + some(2, attributes[1:]))}>"
                    + "".join(some(6, pieces)) + "</p>")
            path = self.file(choose.choice(declarations) + document(managed_object("A-1", body=body)))
            out = self.path("out.xml")
            result = tarn("print", path, "-o", out)
            with self.subTest(body=body):
                if result.returncode == 0:
                    written += 1
                    self.expect(tarn("check", "--strict", out), 0, f"{out}: ok\n")
                    os.remove(out)
                else:
                    self.assertEqual(result.returncode, 1)
                    self.assertIn(REFUSED.encode(), result.stderr)
                    self.assertFalse(os.path.exists(out))
                    self.assertEqual(tarn("check", "--strict", path).returncode, 1)
        self.assertIn(written, range(20, 110))


if __name__ == "__main__":
    main()
