#!/usr/bin/env python3
"""Runs the commands that keep the layout of a document, and the sorted print. Argument: the command."""

import difflib
import gzip
import os
import random
import sys

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "support"))
from command_case import EXAMPLES, CommandCase, has_zlib, main, run, tarn, TARN  # noqa: E402

NETWORK = os.path.join(EXAMPLES, "network.xml")
SEEDS = 60


class LayoutCase(CommandCase):
    def changed(self, text, *arguments, err="", command="set"):
        """The text that a change of a document writes."""
        out = self.path("out.xml")
        result = tarn(command, self.file(text), *arguments, "--keep-layout", "-o", out)
        self.assertEqual((result.returncode, result.stderr.decode()), (0, err))
        return self.read(out).decode()

    def around(self, body):
        return f'<tarn version="2.1"><cmData type="plan">{body}</cmData></tarn>'

    def in_object(self, body, end=""):
        return self.around(f'<managedObject class="C" distName="A-1"{end}>{body}</managedObject>')


class ExampleTest(LayoutCase):
    def test_one_changed_value_is_one_changed_line(self):
        out = self.path("out.xml")
        tarn("set", NETWORK, "--dn", "NET-1", "--set", "owner=A & B", "--keep-layout", "-o", out)
        lines = run("diff", NETWORK, out).stdout.decode().splitlines()
        self.assertEqual(lines[1:], ['<    <p name="owner">Operator\'s own</p>', "---",
                                     '>    <p name="owner">A &amp; B</p>'])

    def test_an_edit_that_changes_nothing_leaves_every_byte(self):
        text = self.read(NETWORK)
        self.assertEqual(self.changed(text, "--everything", "--set", "mcc=244"), text.decode())

    def test_compressed_file_and_standard_input(self):
        with open(NETWORK, "rb") as source:
            result = tarn("set", "-", "--dn", "NET-1", "--set", "mcc=245", "--keep-layout",
                          stdin=source)
        expected = self.read(NETWORK).replace(b">244<", b">245<", 1)
        self.assertEqual(result.stdout, expected)
        if not has_zlib(TARN):
            return
        packed = self.file(gzip.compress(self.read(NETWORK)), "network.xml.gz")
        self.assertEqual(tarn("set", packed, "--dn", "NET-1", "--set", "mcc=245", "--keep-layout",
                              "--in-place").returncode, 0)
        self.assertEqual(gzip.decompress(self.read(packed)), expected)


class PlaceTest(LayoutCase):
    def check(self, body, arguments, expected, **options):
        self.assertEqual(self.changed(self.in_object(body), "--everything", *arguments, **options),
                         self.in_object(expected))

    def test_values(self):
        for old, new in [
                ('<p name="x">1</p>', '<p name="x">a&lt;b</p>'),
                ("<p name='x' />", "<p name='x'>a&lt;b</p>"),
                ("<p\n name = 'x' \n></p >", "<p\n name = 'x' \n>a&lt;b</p >"),
                ('<p name="&#120;"><!-- c -->1<!-- d --></p>',
                 '<p name="&#120;"><!-- c -->a&lt;b<!-- d --></p>'),
                ('<p name="x"><![CDATA[y]]> z <?i j?></p>',
                 '<p name="x"><![CDATA[y]]>a&lt;b<?i j?></p>'),
                ('<p name="x">\n</p>', '<p name="x">a&lt;b</p>'),
                ('<p name="x">a&#60;&#x62;</p>', '<p name="x">a&#60;&#x62;</p>')]:
            with self.subTest(old):
                self.check(old, ["--set", "x=a<b"], new)

    def test_value_that_becomes_empty_takes_later_texts_along(self):
        self.check('<p name="x">1<!-- c -->2</p>', ["--set", "x="], '<p name="x"></p>')

    def test_added_parameter_has_the_indentation_of_its_siblings(self):
        for old, new in [
                ('\r\n\t<p name="y"/> <!-- c -->\r\n',
                 '\r\n\t<p name="y"/> <!-- c -->\r\n\t<p name="x">1</p>\r\n'),
                ('<p name="y"/>', '<p name="y"/><p name="x">1</p>')]:
            with self.subTest(old):
                self.check(old, ["--create", "--set", "x=1"], new)

    def test_empty_object_is_opened(self):
        text = '<tarn>\n  <cmData type="plan">\n    <managedObject class="C" distName="A"/>\n' \
               "  </cmData>\n</tarn>\n"
        self.assertEqual(
            self.changed(text, "--everything", "--create", "--set", "x=1"),
            text.replace("/>", '>\n      <p name="x">1</p>\n    </managedObject>', 1))

    def test_attributes_keep_their_quotes(self):
        text = "<tarn><cmData type='plan'>\n<managedObject  distName = 'A'\n class='C'/>\n" \
               "</cmData></tarn>"
        self.assertEqual(
            self.changed(text, "--everything", "--set-class", "D'\"", "--set-version", "7"),
            text.replace("class='C'", "class='D&apos;\"' version=\"7\""))

    def test_removed_elements_leave_no_empty_line(self):
        body = '\n <!-- a -->\n <managedObject class="C" distName="A-1"/>\t\n' \
               ' <managedObject class="C" distName="A-2"/><!-- b -->\n'
        self.assertEqual(
            self.changed(self.around(body), "A-1", command="remove"),
            self.around('\n <!-- a -->\n <managedObject class="C" distName="A-2"/><!-- b -->\n'))
        self.assertEqual(
            self.changed(self.around(body), "A-2", command="remove"),
            self.around('\n <!-- a -->\n <managedObject class="C" distName="A-1"/>\t\n'
                        " <!-- b -->\n"))

    def test_removed_value_of_a_list_is_one_removed_line(self):
        lines = [f"<p>{number}</p>\n" for number in (1, 2, 2, 3)]
        for number, left in ((1, lines[1:]), (3, lines[:2] + lines[3:]), (4, lines[:3])):
            with self.subTest(number):
                self.assertEqual(
                    self.changed(self.in_object('<list name="l">\n' + "".join(lines) + "</list>"),
                                 "--everything", f"l[{number}]", command="unset"),
                    self.in_object('<list name="l">\n' + "".join(left) + "</list>"))

    def test_table_of_values(self):
        table = self.file("dn,path,value\nA-1,x,2\nA-1,l[1].v,<\n", "changes.csv")
        body = '\n<p name="x">{}</p><list name="l"><item><!-- c --><p name="v">{}</p></item></list>'
        self.assertEqual(self.changed(self.in_object(body.format(1, "")), table, command="apply"),
                         self.in_object(body.format(2, "&lt;")))

    def test_layout_that_cannot_be_kept_is_reported(self):
        text = self.in_object('<p name="x">1</q>')
        note = f"{self.path('document.xml')}: note: the layout is not kept: XML parsers would " \
               "refuse it at "
        out = self.path("out.xml")
        result = tarn("set", self.file(text), "--everything", "--set", "x=2", "--keep-layout", "-o",
                      out)
        self.assertEqual(result.returncode, 0)
        self.assertEqual(result.stderr.decode()[:len(note)], note)
        plain = self.path("plain.xml")
        tarn("set", self.file(text), "--everything", "--set", "x=2", "-o", plain)
        self.assertEqual(self.read(out), self.read(plain))


class OddDocument:
    """A random document whose layout nothing prints."""

    def __init__(self, seed):
        self.random = random.Random(seed)
        self.newline = self.random.choice(["\n", "\r\n"])
        self.count = 0

    def blank(self):
        choice = self.random.random()
        if choice < 0.6:
            return self.newline + self.random.choice(["", " ", "\t", "   "])
        if choice < 0.7:
            return f"<!-- {self.random.randrange(99)} <p> -->"
        if choice < 0.75:
            return self.random.choice(["<?go on?>", self.newline * 2])
        return ""

    def value(self):
        return self.random.choice(["", "1", " 2 ", "&amp;&#65;", "<!-- c -->x", "x<!-- c -->y", "'",
                                   "\u00e4", "a" + self.newline + "b", "<![CDATA[c]]>", "&gt;"])

    def element(self, tag, attributes, content):
        attributes = list(attributes.items())
        self.random.shuffle(attributes)
        start = "<" + tag
        for name, value in attributes:
            quote = self.random.choice("'\"")
            start += self.random.choice([" ", "\t", self.newline]) + name \
                + self.random.choice(["=", " = "]) + quote + value + quote
        if not content and self.random.random() < 0.5:
            return start + self.random.choice(["/>", " />"])
        return start + self.random.choice(["", " "]) + ">" + content + f"</{tag}>"

    def parameter(self, name=None):
        return self.element("p", {"name": name} if name else {}, self.value())

    def list(self, name):
        def item():
            return self.element("item", {}, self.parts([self.parameter("id"), self.parameter("v")]))
        make = self.random.choice([self.parameter, item])
        return self.element("list", {"name": name},
                            self.parts([make() for _ in range(self.random.randrange(4))]))

    def parts(self, elements):
        return "".join(self.blank() + each for each in elements) + self.blank()

    def object(self):
        self.count += 1
        parts = [self.parameter(name) for name in "abc" if self.random.random() < 0.8]
        if self.random.random() < 0.6:
            parts.append(self.list("l"))
        if self.random.random() < 0.4:
            parts.append(self.element("extension", {"name": "e"},
                                      self.parts([self.parameter("q")])))
        self.random.shuffle(parts)
        return self.element("managedObject", {"class": self.random.choice("CD"),
                                              "distName": f"A-{self.count}", "version": "&#49;"},
                            self.parts(parts))

    def text(self):
        body = self.parts([self.object() for _ in range(self.random.randrange(1, 9))])
        return (self.random.choice(["", "\ufeff"])
                + self.random.choice(["", "<!DOCTYPE tarn [<!ELEMENT p ANY>]>"])
                + self.element("tarn", {"version": "2.1"},
                               self.element("cmData", {"type": "plan"}, body) + self.blank()))

    def edit(self):
        """The arguments of a command that changes the document."""
        name = f"A-{self.random.randint(1, self.count)}"
        value = self.random.choice(["", "9", "a<&>", "\"'", "\u20ac"])
        return self.random.choice([
            ["set", "--dn", name, "--create", "--set", f"a={value}"],
            ["set", "--everything", "--create", "--set", f"b={value}", "--set", f"z={value}"],
            ["set", "--class", "C", "--set-class", "E", "--set-version", f"{value}1"],
            ["set", "--everything", "--set", f"l[1]={value}"],
            ["set", "--everything", "--set", f"e.q={value}"],
            ["set", "--everything", "--set", f"l[1].v={value}"],
            ["unset", "--everything", "a"],
            ["unset", "--everything", "l[1]"],
            ["unset", "--everything", "l"],
            ["unset", "--everything", "e", "b"],
            ["remove", "--dn", name],
            ["remove", "--class", "C"],
            ["remove", "--everything"]])


class PropertyTest(LayoutCase):
    def test_result_means_what_the_printed_result_means(self):
        kept = 0
        for seed in range(SEEDS):
            with self.subTest(seed=seed):
                kept += self.check_edit(OddDocument(seed))
        self.assertGreater(kept, SEEDS // 3)

    def check_edit(self, document):
        text = document.text()
        command, *arguments = document.edit()
        source = self.file(text)
        plain = tarn(command, source, *arguments, "-o", self.path("plain.xml"))
        result = tarn(command, source, *arguments, "--keep-layout", "-o", self.path("kept.xml"))
        self.assertEqual((result.returncode, result.stdout, result.stderr),
                         (plain.returncode, plain.stdout, plain.stderr), text)
        if plain.returncode != 0:
            return 0
        self.assertEqual(self.printed("kept.xml"), self.printed("plain.xml"), text)
        self.check_lines(text, self.read(self.path("kept.xml")).decode(), source)
        return 1

    def printed(self, name):
        return tarn("print", self.path(name)).stdout.decode()

    def check_lines(self, old, new, source):
        """Nothing but changed values differs, so as many lines as the printed texts have."""
        def changed_lines(a, b):
            matcher = difflib.SequenceMatcher(None, a.splitlines(), b.splitlines(), False)
            return sum(max(i2 - i1, j2 - j1) for tag, i1, i2, j1, j2 in matcher.get_opcodes()
                       if tag != "equal")
        printed = tarn("print", source).stdout.decode()
        self.assertLessEqual(
            changed_lines(old, new),
            # An element of several lines, and the ends of those that are opened.
            8 * changed_lines(printed, self.printed("plain.xml")), old)


class UntouchedLineTest(LayoutCase):
    def test_objects_that_do_not_change_keep_their_bytes(self):
        for seed in range(SEEDS // 2):
            with self.subTest(seed=seed):
                document = OddDocument(seed)
                newline = document.newline
                objects = [document.object() for _ in range(5)]
                body = newline + newline.join(objects) + newline
                out = self.changed(self.around(body), "--dn", "A-3", "--create", "--set",
                                   f"a={seed}x", "--set", "new=a<")
                before = newline + newline.join(objects[:2]) + newline
                after = newline + newline.join(objects[3:]) + newline
                start, end = self.around("\0").split("\0")
                self.assertEqual(out[:len(start + before)], start + before)
                self.assertEqual(out[-len(after + end):], after + end)


class SortedPrintTest(LayoutCase):
    def sorted(self, text):
        result = tarn("print", self.file(text), "--sort")
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        return result.stdout.decode()

    def test_order(self):
        text = self.around(
            '<managedObject distName="A-10" class="C"/>'
            '<managedObject class="C" distName="A-2"><extension name="e"><p name="b">1</p>'
            '<p name="a"></p></extension><list name="m"><p>2</p><p>1</p></list><list name="l"><item>'
            '<p name="d">&lt;</p><p name="c">2</p></item></list><p name="x10">1</p>'
            '<p name="x2">\n</p></managedObject><header><log action="b"/><log action="a"/></header>')
        self.assertEqual(self.sorted(text).split("\n")[1:], [
            '<tarn version="2.1">',
            ' <cmData type="plan">',
            "  <header>",
            '   <log action="b"></log>',
            '   <log action="a"></log>',
            "  </header>",
            '  <managedObject class="C" distName="A-2">',
            '   <p name="x10">1</p>',
            '   <p name="x2"></p>',
            '   <list name="l">',
            "    <item>",
            '     <p name="c">2</p>',
            '     <p name="d">&lt;</p>',
            "    </item>",
            "   </list>",
            '   <list name="m">',
            "    <p>2</p>",
            "    <p>1</p>",
            "   </list>",
            '   <extension name="e">',
            '    <p name="a"></p>',
            '    <p name="b">1</p>',
            "   </extension>",
            "  </managedObject>",
            '  <managedObject class="C" distName="A-10"></managedObject>',
            " </cmData>",
            "</tarn>", ""])

    def test_sorted_text_is_its_own_normal_form_and_has_the_same_objects(self):
        for seed in range(10):
            with self.subTest(seed=seed):
                text = OddDocument(seed).text()
                once = self.sorted(text)
                self.assertEqual(self.sorted(once), once)
                # The same lines, but for the order of attributes.
                printed = tarn("print", self.file(text)).stdout.decode()
                self.assertEqual(sorted("".join(sorted(line)) for line in printed.split("\n")),
                                 sorted("".join(sorted(line)) for line in once.split("\n")))

    def test_order_of_objects_and_parameters_does_not_count(self):
        texts = set()
        for seed in range(10):
            shuffle = random.Random(seed).shuffle
            objects = []
            for number in (1, 2, 10, 11):
                parts = [f'<p name="{name}">{number}</p>' for name in "abc"]
                parts.append('<list name="l"><p>2</p><p>1</p></list>')
                shuffle(parts)
                attributes = ['class="C"', f'distName="A-{number}"', 'version="1"']
                shuffle(attributes)
                objects.append(f"<managedObject {' '.join(attributes)}>{''.join(parts)}"
                               "</managedObject>")
            shuffle(objects)
            texts.add(self.sorted(self.around("".join(objects))))
        self.assertEqual(len(texts), 1)

    def test_deep_document(self):
        depth = 3000
        text = self.in_object('<list name="l">' + "<item>" * depth + "</item>" * depth + "</list>")
        once = self.sorted(text)
        self.assertEqual(once.count("<item>"), depth)
        out = self.changed(text, "--everything", "--set-class", "D")
        self.assertEqual(out, text.replace('class="C"', 'class="D"'))


if __name__ == "__main__":
    main()
