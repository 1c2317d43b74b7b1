#!/usr/bin/env python3
"""Opens the page of `tarn report` in a headless browser. Argument: the command.

Screenshots go into the folder that TARN_SCREENSHOTS names, if it is set.
"""

import json
import os
import re
import shutil
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "support"))
from command_case import (EXAMPLES, CommandCase, document, main, managed_object,  # noqa: E402
                          tarn)

try:
    from selenium import webdriver
    from selenium.webdriver.common.action_chains import ActionChains
    from selenium.webdriver.common.by import By
    from selenium.webdriver.common.keys import Keys
    from selenium.webdriver.support.ui import WebDriverWait
except ImportError:
    webdriver = None

HOSTILE = "--></script><img src=x onerror=alert(1)>"
# Right-to-left override, left-to-right mark, line separator, escape.
MARKS = "a\u202eb\u200ec\u2028d\x1be"
NETWORK = os.path.join(EXAMPLES, "network.xml")
BROWSER = shutil.which("chromium")
DRIVER = shutil.which("chromedriver")

# Ratio of contrast between each text in view and what is behind it, as WCAG 2 defines it: the lowest
# ratio with its text.
LEAST_CONTRAST = """
const canvas = new OffscreenCanvas(1, 1).getContext("2d", {willReadFrequently: true});
const rgba = color => {
  canvas.clearRect(0, 0, 1, 1);
  canvas.fillStyle = color;
  canvas.fillRect(0, 0, 1, 1);
  const [red, green, blue, alpha] = canvas.getImageData(0, 0, 1, 1).data;
  return [red, green, blue, alpha / 255];
};
const over = (top, below) => top.map((value, i) => i === 3 ? 1 : value * top[3] + below[i] * (1 - top[3]));
const behind = element => {
  const own = rgba(getComputedStyle(element).backgroundColor);
  if (own[3] === 1) return own;
  return over(own, element.parentElement ? behind(element.parentElement) : [255, 0, 255, 1]);
};
const luminance = color => color.slice(0, 3).map(value => value / 255)
  .map(value => value <= 0.04045 ? value / 12.92 : ((value + 0.055) / 1.055) ** 2.4)
  .reduce((sum, value, i) => sum + value * [0.2126, 0.7152, 0.0722][i], 0);
const ratio = (color, back) => {
  const lights = [luminance(over(rgba(color), back)), luminance(back)].sort((a, b) => b - a);
  return (lights[0] + 0.05) / (lights[1] + 0.05);
};
const least = [Infinity, "", 0];
const note = (element, color, text) => {
  const its = ratio(color, behind(element));
  ++least[2];
  if (its < least[0]) { least[0] = its; least[1] = text; }
};
for (const element of document.body.querySelectorAll("*")) {
  if (!element.checkVisibility() || ["SCRIPT", "STYLE"].includes(element.tagName)) continue;
  const text = Array.from(element.childNodes, node => node.nodeType === 3 ? node.data : "").join("").trim();
  if (text) note(element, getComputedStyle(element).color, text);
  if (element.placeholder) note(element, getComputedStyle(element, "::placeholder").color, element.placeholder);
  if (element.tagName === "INPUT") note(element, getComputedStyle(element).color, "the field");
}
return least;
"""


def report(*arguments):
    return tarn("report", *arguments, "-o", "-")


class Page:
    """The data of a page."""

    def __init__(self, text):
        self.text = text.decode()
        self.index = json.loads(re.search(r'<div id="index" hidden><!--(.*?)--></div>', self.text, re.DOTALL)[1])

    def lines(self, kind):
        blocks = re.findall(rf'<div hidden data-lines="{kind}" data-first="(\d+)"><!--(.*?)--></div>', self.text,
                            re.DOTALL)
        found = []
        for first, block in blocks:
            assert int(first) == len(found)
            found += [json.loads(line) for line in block.split("\n")]
        return found

    def violations(self):
        """How many messages each object has, and how many of its violations are left out."""
        return [(len(messages), left_out) for left_out, messages in self.lines("violation")]


class PageTest(CommandCase):
    """The content of the page, without a browser."""

    def test_page_is_written_whole_and_needs_nothing_else(self):
        source = self.file(document(managed_object("A-1")))
        out = self.path("out.html")
        self.expect(tarn("report", source, "-o", out), 0)
        page = self.read(out).decode()
        self.assertTrue(page.startswith("<!DOCTYPE html>") and page.endswith("</html>\n"))
        self.assertNotIn("://", page)
        self.assertEqual(report(source).stdout.decode(), page)

    def test_selection_makes_the_page_of_a_part(self):
        source = self.file(document("".join(managed_object(f"A-{i}", class_name="D" if i % 2 else "C")
                                            for i in range(12))))
        def names(*options):
            return [each[0] for each in Page(report(source, *options).stdout).lines("objects")]
        self.assertEqual(names("--class", "D"), ["A-1", "A-3", "A-5", "A-7", "A-9", "A-11"])
        self.assertEqual(names("--match", "A-1*", "--byte-order"), ["A-1", "A-10", "A-11"])
        self.expect(report(source, "--class", "E"), 4, "",
                    f"{source}: error: no object meets --class 'E'\n")

    def test_title_is_the_name_of_the_file(self):
        text = document(managed_object("A-1"))
        for name, title in (("network.xml", "network.xml"), ("a<b>&c\u202e.xml", "a&lt;b&gt;&amp;c\\xE2\\x80\\xAE.xml")):
            page = report(self.file(text, name)).stdout.decode()
            self.assertEqual(re.search("<title>(.*)</title>", page)[1], title)
        page = tarn("report", "-", "-o", "-", input=text.encode()).stdout.decode()
        self.assertIn("<title>standard input</title>", page)

    def test_texts_of_the_document_cannot_leave_the_data(self):
        text = HOSTILE.replace("<", "&lt;")
        source = self.file(document(managed_object("A-1", body=f'<p name="{text}">{text}</p>')
                                    + managed_object(MARKS, class_name=MARKS)))
        page = Page(report(source).stdout)
        self.assertNotIn(HOSTILE[3:], page.text)
        self.assertEqual(page.text.count("</script>"), 1)
        for mark in MARKS[1::2]:
            self.assertNotIn(mark, page.text)
        first, second = page.lines("objects")
        self.assertEqual((page.lines("names")[first[4][0]], first[4][1:]), ([HOSTILE], [HOSTILE]))
        self.assertEqual(second[:2], [MARKS, MARKS])

    def test_names_form_a_tree_whatever_their_order(self):
        # "-" is before "/" in the order of bytes, so that A-1/B-1 does not follow A-1.
        names = ["A-1", "A-1-x", "A-1/B-1", "C-1/D-1/E-1", "C-1/D-2", "C-1/D-1/F//"]
        page = Page(report(self.file(document("".join(managed_object(name) for name in names)))).stdout)
        index = page.index
        self.assertEqual(list(zip(index["segments"], index["depths"], index["classOf"])),
                         [("A-1", 0, 0), ("B-1", 1, 0), ("A-1-x", 0, 0), ("C-1", 0, -1), ("D-1", 1, -1), ("E-1", 2, 0),
                          ("F", 2, -1), ("", 3, -1), ("", 4, 0), ("D-2", 1, 0)])
        self.assertEqual([line[0] for line in page.lines("objects")],
                         ["A-1", "A-1/B-1", "A-1-x", "C-1/D-1/E-1", "C-1/D-1/F//", "C-1/D-2"])

    def test_objects_of_many_blocks_and_their_common_names(self):
        body = "".join(f"<p name='aLongNameOfAParameter{i}'>{'v' * 40}{i}</p>" for i in range(20))
        objects = "".join(managed_object(f"A-{n:06}", body=body) for n in range(3000))
        page = Page(report(self.file(document(objects))).stdout)
        lines = page.lines("objects")
        self.assertGreater(page.text.count('data-lines="objects"'), 2)
        self.assertEqual([line[0] for line in lines], [f"A-{n:06}" for n in range(3000)])
        self.assertEqual(page.text.count("aLongNameOfAParameter7"), 1)
        self.assertEqual(len(page.lines("names")[lines[-1][4][0]]), 20)

    def test_names_nest_to_any_depth(self):
        deep = "/".join(["A"] * 100000)
        page = Page(report(self.file(document(managed_object(deep)))).stdout)
        self.assertEqual(page.index["depths"], list(range(100000)))

    def test_a_large_page_is_noted(self):
        value = "x" * 100_000_000
        source = self.file(document(managed_object("A-1", body=f"<p name='n'>{value}</p>")))
        result = tarn("report", source, "-o", "/dev/null")
        self.expect(result, 0, err=f"{source}: note: the page has 100 MB; a browser opens it slowly\n")

    def test_messages_that_repeat_long_names_are_bounded_and_those_left_out_are_reported(self):
        # 227 kB that would make a page of 100 MB: each message has the name of its object.
        body = "<extension>" + "<p/>" * 1000 + "</extension>"
        source = self.file(document("".join(managed_object(f"{'A' * 4000}-{n}", body=body)
                                            for n in range(28))))
        result = report(source)
        self.assertEqual(result.returncode, 0)
        self.assertLess(len(result.stdout), 16 << 20)
        page = Page(result.stdout)
        self.assertEqual([shown + left_out for shown, left_out in page.violations()], [1000] * 28)
        self.assertEqual(page.index["marks"][0]["counts"], [1000] * 28)
        left_out = sum(each[1] for each in page.violations())
        self.assertGreater(left_out, 0)
        self.assertEqual(page.index["leftOut"], left_out)
        self.assertEqual(result.stderr.decode(),
                         f"{source}: note: {left_out} violations are left out of the page\n")

    def test_violations_of_the_document_that_are_left_out_are_reported(self):
        source = self.file(document(managed_object("A-1", body="<p/>"),
                                    header="<header>" + "<log/>" * 600 + "</header>"))
        result = report(source)
        page = Page(result.stdout)
        self.assertEqual((len(page.index["own"]["messages"]), page.index["own"]["leftOut"]), (1000, 200))
        self.assertEqual(page.violations(), [(1, 0)])
        self.assertEqual(result.stderr.decode(),
                         f"{source}: note: 200 violations are left out of the page\n")

    def test_missing_output_is_wrong_usage(self):
        self.assertEqual(tarn("report", self.file(document(""))).returncode, 64)


@unittest.skipUnless(webdriver and BROWSER and DRIVER, "no browser to drive")
class BrowserTest(CommandCase):
    @classmethod
    def setUpClass(cls):
        options = webdriver.ChromeOptions()
        options.binary_location = BROWSER
        for argument in ("--headless=new", "--no-sandbox", "--disable-gpu",
                         "--disable-dev-shm-usage", "--window-size=1200,760"):
            options.add_argument(argument)
        cls.browser = webdriver.Chrome(options=options)

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()

    def setUp(self):
        super().setUp()
        self.set_view("light", 1200)

    def set_view(self, scheme, width):
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {
            "features": [{"name": "prefers-color-scheme", "value": scheme}]})
        self.browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": width, "height": 760, "deviceScaleFactor": 1, "mobile": False})

    def open(self, source, link="", status=0):
        out = self.path("out.html")
        self.assertEqual(tarn("report", source, "-o", out).returncode, status)
        self.browser.get("about:blank")
        self.browser.get("file://" + out + link)
        self.wait(lambda: self.script("return document.body.dataset.ready && document.body.dataset.complete"))

    def script(self, text, *arguments):
        return self.browser.execute_script(text, *arguments)

    def wait(self, condition):
        WebDriverWait(self.browser, 30, 0.02).until(lambda _: condition())

    # One call of the browser each: rows come and go.
    def texts(self, selector):
        return self.script("return Array.from(document.querySelectorAll(arguments[0]), each => each.innerText)", selector)

    def names(self):
        return self.script("return Array.from(document.querySelectorAll('#list .row'), row =>"
                           " (row.querySelector('.above')?.innerText ?? '') + row.querySelector('.name').innerText)")

    def row(self, name):
        return self.browser.find_elements(By.CSS_SELECTOR, "#list .row")[self.names().index(name)]

    def toggle(self, name):
        self.row(name).find_element(By.CSS_SELECTOR, ".toggle").click()

    def choose(self, name):
        self.row(name).find_element(By.CSS_SELECTOR, ".name").click()
        self.wait_for_object(name)

    def wait_for_object(self, name):
        self.wait(lambda: (self.texts("h2") or [""])[0].endswith(name))

    def shown(self):
        return self.script("return document.getElementById('right').innerText")

    def search(self, text):
        field = self.browser.find_element(By.ID, "search")
        field.clear()
        field.send_keys(text + Keys.ENTER)
        self.wait(lambda: self.script("return count.innerText.endsWith('found')") == bool(text))

    def press(self, *keys):
        ActionChains(self.browser).send_keys(*keys).perform()

    def focused(self):
        return self.script("return document.activeElement.querySelector('.name')?.innerText ?? document.activeElement.id")

    def chosen(self):
        return self.texts("#list [aria-selected=true] .name")

    def picture(self, name):
        folder = os.environ.get("TARN_SCREENSHOTS")
        if folder:
            self.browser.save_screenshot(os.path.join(folder, name + ".png"))

    def test_tree_opens_and_closes(self):
        self.open(NETWORK)
        self.assertEqual(self.names()[0], "NET-1")
        self.assertEqual(len(self.names()), 24)  # 12 sites, 11 links
        self.toggle("SITE-3")
        self.assertIn("RADIO-1", self.names())
        self.toggle("RADIO-1")
        self.choose("CELL-3")
        self.picture("tree")
        self.toggle("SITE-3")
        self.assertNotIn("RADIO-1", self.names())

    def test_tree_has_the_semantics_of_one(self):
        self.open(NETWORK)
        self.toggle("SITE-3")
        box = self.browser.find_element(By.ID, "list")
        self.assertEqual(box.get_attribute("role"), "tree")
        for name, expected in (("NET-1", ["treeitem", "1", "true", "1", "1"]),
                               ("SITE-4", ["treeitem", "2", "false", "15", "23"]),
                               ("LINK-10", ["treeitem", "2", None, "9", "23"]),
                               ("CLOCK-1", ["treeitem", "3", None, "1", "6"])):
            row = self.row(name)
            self.assertEqual([row.get_attribute(each) for each in (
                "role", "aria-level", "aria-expanded", "aria-posinset", "aria-setsize")], expected, name)
        self.assertEqual(self.texts("#list .row[tabindex='0'] .name"), ["SITE-3"])

    def test_keys_do_what_the_mouse_does(self):
        self.open(NETWORK)
        self.press(Keys.TAB, "/")
        self.assertEqual(self.focused(), "search")
        self.press("cell-2", Keys.ENTER)
        self.wait(lambda: self.names()[:1] == ["NET-1/SITE-1/RADIO-1/CELL-2"])
        self.press(Keys.ARROW_DOWN, Keys.ARROW_DOWN, Keys.ENTER)
        self.wait_for_object("NET-1/SITE-1/RADIO-2/CELL-2")
        self.assertEqual(self.focused(), "CELL-2")
        self.press(Keys.ESCAPE)  # the tree, with the object in view and the focus on it
        self.assertEqual((self.focused(), self.chosen()), ("CELL-2", ["CELL-2"]))
        for key, name in ((Keys.ARROW_LEFT, "RADIO-2"), (Keys.ARROW_LEFT, "RADIO-2"), (Keys.ARROW_LEFT, "SITE-1"),
                          (Keys.ARROW_RIGHT, "CLOCK-1"), (Keys.HOME, "NET-1"), (Keys.END, "SITE-12"),
                          (Keys.ARROW_UP, "SITE-11"), (Keys.ARROW_DOWN, "SITE-12"), (Keys.ARROW_RIGHT, "SITE-12"),
                          (Keys.ARROW_RIGHT, "CLOCK-1")):
            self.press(key)
            self.assertEqual(self.focused(), name)
        self.press(Keys.ENTER)
        self.wait_for_object("NET-1/SITE-12/CLOCK-1")

    def test_chosen_object_shows_what_it_holds(self):
        self.open(NETWORK)
        self.choose("NET-1")
        for text in ("NET-1", "Northern region", "List timeServers", "192.0.2.11",
                     "Extension planning", "rate > 40% & rising"):
            self.assertIn(text, self.shown())
        self.assertEqual(self.chosen(), ["NET-1"])

    def test_link_shows_its_object(self):
        name = "A-1/ü% #?<b>-1"
        source = self.file(document(managed_object("A-1") + managed_object(name.replace("<", "&lt;"))))
        link = "#A-1/%C3%BC%25%20%23%3F%3Cb%3E-1"
        self.open(source, link)
        self.wait_for_object(name)
        self.assertEqual(self.chosen(), [name[4:]])
        self.choose("A-1")
        self.assertTrue(self.browser.current_url.endswith("#A-1"))
        self.browser.back()
        self.wait_for_object(name)
        self.assertTrue(self.browser.current_url.endswith(link))
        self.open(source, "#A-1/B-%")
        self.assertIn('No object has the name "A-1/B-%".', self.shown())

    def test_search_finds_texts_values_and_segments(self):
        self.open(NETWORK)
        for text, count, first in (("site-3/radio-2", 4, "NET-1/SITE-3/RADIO-2"),
                                   ("router", 36, "NET-1/SITE-1/ROUTER-1"),
                                   ("timeServers", 1, "NET-1"), ("東京", 1, "NET-1/SITE-8"),
                                   ("rate > 40% & rising", 1, "NET-1"), ("nothing of that kind", 0, None),
                                   (",", 0, None), ('"', 24, "NET-1/SITE-1/ROUTER-1/PORT-1"), ("\\", 0, None),
                                   ("/SITE-1", 18, "NET-1/SITE-1"), ("/site-1/radio-2/", 4, "NET-1/SITE-1/RADIO-2"),
                                   ("/SITE", 0, None), ("timeServers=192.0.2.11", 1, "NET-1"),
                                   ("timeServers=192.0.2.1", 0, None), ("timeServers=", 1, "NET-1"),
                                   ("nam=", 0, None), ("class=NET", 1, "NET-1"), ('"=',  0, None),
                                   ("breakers.ampere=", 12, "NET-1/SITE-1/POWER-1"),
                                   ("ampere=", 12, "NET-1/SITE-1/POWER-1")):
            self.search(text)
            found = f"{count} object{'' if count == 1 else 's'} found"
            self.assertEqual([*self.texts("#count"), *self.names()[:1]], [found, *([first] if first else [])], text)
        listed = tarn("list", NETWORK, "--class", "CELL", "--p", "maxTxPower=400", "--format", "dn").stdout.decode()
        self.search("maxTxPower=400")
        self.assertEqual(sorted(self.names()), sorted(listed.split()))
        self.assertGreater(len(self.names()), 1)

    def test_choice_stays_when_the_search_is_cleared(self):
        self.open(NETWORK)
        self.search("/CELL-2")
        self.choose("NET-1/SITE-1/RADIO-1/CELL-2")
        self.picture("search")
        self.search("")
        self.assertEqual(self.names()[:1], ["NET-1"])
        self.assertEqual(self.chosen(), ["CELL-2"])
        self.assertIn("NET-1/SITE-1/RADIO-1/CELL-2", self.shown())

    def test_search_reads_texts_as_they_are_in_the_document(self):
        values = ["a,b", 'x"y', "[1]", "back\\slash", "n=1", "/s", "ŞİR", MARKS.replace("\x1b", ""), "u003c", "1 &lt; 2"]
        source = self.file(document("".join(managed_object(f"N-{n}", body=f"<p name='v{n}'>{value}</p>")
                                            for n, value in enumerate(values)) + managed_object("N-l<".replace("<", "&lt;"))))
        self.open(source)
        found = self.script("""const read = {objects: new Lines("objects"), names: new Lines("names")};
            read.namesOf = number => read.names.at(number);
            return arguments[0].map(text => [...matchesIn(read, queryOf(text.toLowerCase()))].filter(each => each !== null));""",
            ["a,b", ",", '"y', "[", "k\\s", '"n=1"', '"/s"', "ŞİR", MARKS.replace("\x1b", ""), "u003c", "1 < 2", "v3", "v3=back\\slash",
             "v7=", "0"])
        self.assertEqual(found, [[0], [0], [1], [2], [3], [4], [5], [6], [7], [8], [9], [3], [3], [7], [0, 8]])

    def test_violations_are_marked(self):
        source = self.file(document(managed_object("A-1") + managed_object("A-1/B-1", body="<p/>")
                                    + managed_object("C-1"), header="<header><log/></header>"))
        self.open(source)
        self.assertEqual(self.texts("#marks button"), ["3 violations"])
        self.assertIn("header > log > ' element has no attribute 'dateTime'", self.shown())
        self.assertEqual(self.texts("#list .bad"), ["1 ⚠"])
        self.browser.find_element(By.CSS_SELECTOR, "#marks button").click()
        self.assertEqual(self.names(), ["A-1/B-1"])
        self.choose("A-1/B-1")
        self.assertIn("managedObject:A-1/B-1 > p > ' element has no attribute 'name'", self.shown())
        self.picture("violations")
        self.browser.find_element(By.CSS_SELECTOR, "#marks button").click()
        self.assertEqual(self.names(), ["A-1", "B-1", "C-1"])
        # Those of the document are shown instead of the chosen object.
        self.browser.find_element(By.CSS_SELECTOR, "#marks button").click()
        self.assertIn("Violations of the document", self.shown())
        self.assertEqual(self.chosen(), [])
        self.browser.back()
        self.wait_for_object("A-1/B-1")

    def test_number_of_violations_left_out_is_shown(self):
        body = "<extension>" + "<p/>" * 1002 + "</extension>"
        self.open(self.file(document(managed_object("A-1", body=body) + managed_object("B-1"))))
        self.assertEqual(self.texts("#marks button"), ["1002 violations, 2 left out"])
        self.choose("A-1")
        self.assertEqual(self.texts("#right li")[-1], "2 more violations left out")

    def test_hostile_texts_are_texts(self):
        text = HOSTILE.replace("<", "&lt;")
        source = self.file(document(managed_object("A-1", body=f'<p name="{text}">{text}</p><p name="m">{MARKS}</p>')
                                    + managed_object("B-" + "x" * 1000000) + managed_object(MARKS)
                                    + managed_object(f"{text}-1", class_name=text)))
        self.open(source)
        self.assertIn("--><", self.names())
        self.assertIn("a⟨U+202E⟩b⟨U+200E⟩c⟨U+2028⟩d⟨U+001B⟩e", self.names())
        self.choose("A-1")
        self.assertEqual(self.texts("#right td")[-2:], [HOSTILE, "a⟨U+202E⟩b⟨U+200E⟩c⟨U+2028⟩d⟨U+001B⟩e"])
        self.assertEqual(self.browser.find_elements(By.TAG_NAME, "img"), [])
        self.assertEqual(self.script("return performance.getEntriesByType('resource').length"), 0)
        self.assertEqual(self.browser.get_log("browser"), [])
        self.assertEqual(self.script("return [right.scrollWidth <= right.clientWidth, document.title]"),
                         [True, "document.xml"])

    def test_texts_have_contrast_in_both_schemes(self):
        source = self.file(document(managed_object("A-1", body="<list name='l'><item><p name='c'>1</p></item></list>"
                                                   + "<p name='n'>" + "v" * 30000 + "</p>")
                                    + managed_object("B-1/C-1", body="<p/>"), header="<header><log/></header>"))
        for scheme in ("light", "dark"):
            self.set_view(scheme, 1200)
            self.open(source)
            self.script("document.getElementById('help').open = true")
            for action in (lambda: None, lambda: self.choose("A-1"), lambda: self.toggle("B-1"), lambda: self.choose("C-1"),
                           lambda: self.hover("#list .row:last-of-type"), lambda: self.hover("#marks button"),
                           lambda: self.search("-1")):
                action()
                ratio, text, texts = self.script(LEAST_CONTRAST)
                self.assertGreaterEqual(ratio, 4.5, f"{text}, {scheme}")
                self.assertGreater(texts, 25)
        # The measure finds what is wrong.
        self.script("const bad = make('p', '', 'too faint'); bad.style.cssText = 'color: #888; background: #fff';"
                    "right.append(bad)")
        ratio, text, _ = self.script(LEAST_CONTRAST)
        self.assertEqual((round(ratio, 2), text), (3.54, "too faint"))

    def hover(self, selector):
        ActionChains(self.browser).move_to_element(self.browser.find_element(By.CSS_SELECTOR, selector)).perform()

    def test_narrow_page_stacks_and_does_not_scroll_sideways(self):
        self.set_view("light", 390)
        def items(count):
            return "<item>" + "".join(f"<p name='component{n}'>{n * 'value'}</p>" for n in range(count)) + "</item>"
        name = "A-1/" + "B" * 300 + "/C-1"
        body = f"<list name='l'>{items(8)}</list><list name='{'L' * 200}'>{items(30)}</list><p name='p'>{'v' * 500}</p>"
        self.open(self.file(document(managed_object(name, body=body), header="<header><log/></header>")), "#" + name)
        self.wait_for_object("C-1")
        nav, article = (self.script("return document.querySelector(arguments[0]).getBoundingClientRect()", each)
                        for each in ("nav", "article"))
        self.assertLessEqual(nav["bottom"], article["top"])
        self.assertEqual((nav["width"], article["width"]), (390, 390))
        self.script("document.getElementById('help').open = true")
        self.search("C-1")
        self.picture("narrow")
        self.assertEqual(self.script("""return ["html", "body", "header", "#help", "#list", "article"].filter(each => {
            const element = document.querySelector(each);
            return element.scrollWidth > element.clientWidth || element.clientWidth > 390; })"""), [])

    def test_only_rows_in_view_are_elements(self):
        objects = "".join(managed_object(f"N-1/S-{n // 100:03}/C-{n:05}", body=f"<p name='number'>{n}</p>")
                          for n in range(20000))
        self.open(self.file(document(objects)))
        self.toggle("S-004")
        self.assertIn("C-00401", self.names())
        self.script("list.box.scrollTop = list.box.scrollHeight")
        self.wait(lambda: self.names()[-1] == "S-199")
        self.assertLess(len(self.names()), 80)
        self.assertEqual(self.names()[0], "S-004")  # the current row, which keeps the focus
        self.assertEqual(self.focused(), "S-004")
        self.search("c-1999")
        self.assertEqual(self.texts("#count"), ["10 objects found"])
        self.press(Keys.ARROW_DOWN, Keys.END, Keys.ENTER)
        self.wait_for_object("C-19999")

    def test_rows_higher_than_a_browser_allows_are_reached(self):
        self.open(self.file(document("".join(managed_object(f"A-{n:04}") for n in range(2000)))))
        # Rows so high that the limit is passed, as a million of usual height would.
        self.script("document.documentElement.style.setProperty('--row', '20000px'); list.update()")
        self.script("list.goTo(1500, true)")
        self.assertEqual(self.focused(), "A-1500")
        self.assertTrue(self.script("const row = document.activeElement.getBoundingClientRect(),"
                                    " box = list.box.getBoundingClientRect();"
                                    "return row.top < box.bottom && row.bottom > box.top"))
        self.script("list.box.scrollTop = list.box.scrollHeight")
        self.wait(lambda: self.names()[-1] == "A-1999")

    def test_many_values_come_in_steps(self):
        body = "".join(f"<p name='p{n:05}'>{n}</p>" for n in range(1200)) + "<p name='q'>" + "x" * 20001 + "</p>"
        self.open(self.file(document(managed_object("A-1", body=body))))
        self.choose("A-1")
        for expected in (501, 1001, 1201):  # with that of the class; without that with a button
            self.assertEqual(len(self.texts("#right td")) - len(self.texts("#right td .more")), expected)
            self.script("document.querySelector('#right .more')?.click()")
        self.assertEqual(len(self.texts("#right td")[-1]), 20001)
        self.assertEqual(self.texts("#right .more"), [])


if __name__ == "__main__":
    main()
