#!/usr/bin/env python3
"""Opens the page of `tarn report` in a headless browser. Argument: the command.

Screenshots go into the folder that TARN_SCREENSHOTS names, if it is set.
"""

import json
import os
import shutil
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "support"))
from command_case import (EXAMPLES, CommandCase, document, main, managed_object,  # noqa: E402
                          tarn)

try:
    from selenium import webdriver
    from selenium.common.exceptions import StaleElementReferenceException
    from selenium.webdriver.common.by import By
    from selenium.webdriver.support.ui import WebDriverWait
except ImportError:
    webdriver = None

HOSTILE = "</script><img src=x onerror=alert(1)>"
BROWSER = shutil.which("chromium")
DRIVER = shutil.which("chromedriver")


class PageTest(CommandCase):
    """The content of the page, without a browser."""

    def test_page_is_written_whole_and_needs_nothing_else(self):
        source = self.file(document(managed_object("A-1")))
        out = self.path("out.html")
        self.expect(tarn("report", source, "-o", out), 0)
        page = self.read(out).decode()
        self.assertTrue(page.startswith("<!DOCTYPE html>") and page.endswith("</html>\n"))
        self.assertNotIn("http", page)
        self.assertEqual(tarn("report", source, "-o", "-").stdout.decode(), page)

    def test_texts_of_the_document_cannot_leave_the_data(self):
        text = HOSTILE.replace("<", "&lt;")
        source = self.file(document(managed_object("A-1", body=f'<p name="{text}">{text}</p>')))
        page = tarn("report", source, "-o", "-").stdout.decode()
        self.assertNotIn(HOSTILE, page)
        self.assertEqual(page.count("</script>"), 2)
        data = page.split('type="application/json">')[1].split("</script>")[0]
        self.assertEqual(json.loads(data)["objects"][0][4], [[HOSTILE, HOSTILE]])

    def data(self, page):
        return json.loads(page.split(b'type="application/json">')[1].split(b"</script>")[0])

    def test_messages_that_repeat_long_names_are_bounded_and_those_left_out_are_reported(self):
        # 227 kB that would make a page of 100 MB: each message has the name of its object.
        body = "<extension>" + "<p/>" * 1000 + "</extension>"
        source = self.file(document("".join(managed_object(f"{'A' * 4000}-{n}", body=body)
                                            for n in range(28))))
        result = tarn("report", source, "-o", "-")
        self.assertEqual(result.returncode, 0)
        self.assertLess(len(result.stdout), 16 << 20)
        objects = self.data(result.stdout)["objects"]
        self.assertEqual([len(each[7]) + each[8] for each in objects], [1000] * 28)
        left_out = sum(each[8] for each in objects)
        self.assertGreater(left_out, 0)
        self.assertEqual(result.stderr.decode(),
                         f"{source}: note: {left_out} violations are left out of the page\n")

    def test_violations_of_the_document_that_are_left_out_are_reported(self):
        source = self.file(document(managed_object("A-1", body="<p/>"),
                                    header="<header>" + "<log/>" * 600 + "</header>"))
        result = tarn("report", source, "-o", "-")
        data = self.data(result.stdout)
        self.assertEqual((len(data["violations"]), data["leftOut"]), (1000, 200))
        self.assertEqual((len(data["objects"][0][7]), data["objects"][0][8]), (1, 0))
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

    def open(self, source):
        out = self.path("out.html")
        self.expect(tarn("report", source, "-o", out), 0)
        self.browser.get("file://" + out)
        self.wait(lambda: self.browser.find_element(By.TAG_NAME, "body").get_attribute("data-ready"))

    def wait(self, condition):
        WebDriverWait(self.browser, 30, 0.02, ignored_exceptions=[StaleElementReferenceException]).until(
            lambda _: condition())

    def all(self, selector):
        return self.browser.find_elements(By.CSS_SELECTOR, selector)

    def names(self):
        # One call of the browser, not one for each of hundreds of elements.
        return self.browser.execute_script(
            "return Array.from(document.querySelectorAll('#left button.name'),"
            " each => each.innerText)")

    def toggle(self, name):
        self.browser.find_element(
            By.XPATH, f"//button[@aria-label='Open or close {name}']").click()

    def choose(self, name):
        self.all("#left button.name")[self.names().index(name)].click()

    def search(self, text):
        field = self.browser.find_element(By.ID, "search")
        field.clear()
        field.send_keys(text)
        self.wait(lambda: bool(self.all("#left .results")) == bool(text))

    def picture(self, name):
        folder = os.environ.get("TARN_SCREENSHOTS")
        if folder:
            self.browser.save_screenshot(os.path.join(folder, name + ".png"))

    def test_tree_opens_and_closes(self):
        self.open(os.path.join(EXAMPLES, "network.xml"))
        self.assertEqual(self.names()[0], "NET-1")
        self.assertEqual(len(self.names()), 24)  # 12 sites, 11 links
        self.toggle("SITE-3")
        self.assertIn("RADIO-1", self.names())
        self.toggle("RADIO-1")
        self.assertIn("CELL-3", self.names())
        self.choose("CELL-3")
        self.picture("tree")
        self.toggle("SITE-3")
        self.assertNotIn("RADIO-1", self.names())

    def test_chosen_object_shows_what_it_holds(self):
        self.open(os.path.join(EXAMPLES, "network.xml"))
        self.choose("NET-1")
        shown = self.browser.find_element(By.ID, "right").text
        for text in ("NET-1", "Northern region", "List timeServers", "192.0.2.11",
                     "Extension planning", "rate > 40% & rising"):
            self.assertIn(text, shown)
        self.assertEqual(len(self.all("#left button.chosen")), 1)

    def test_search_finds_names_classes_and_parameters(self):
        self.open(os.path.join(EXAMPLES, "network.xml"))
        for text, count, first in (("site-3/radio-2", 4, "NET-1/SITE-3/RADIO-2"),
                                   ("router", 36, "NET-1/SITE-1/ROUTER-1"),
                                   ("timeServers", 1, "NET-1"), ("東京", 1, "NET-1/SITE-8"),
                                   ("nothing of that kind", 0, None)):
            self.search(text)
            found = f"{count} object{'' if count == 1 else 's'} found"
            self.wait(lambda: [self.all("#left .count")[0].text, *self.names()[:1]]
                      == [found, *([first] if first else [])])
        self.search("cell-2")
        self.wait(lambda: self.names()[:1] == ["NET-1/SITE-1/RADIO-1/CELL-2"])
        self.choose("NET-1/SITE-1/RADIO-1/CELL-2")
        self.picture("search")
        self.browser.execute_script("search.value = ''; runSearch()")
        self.assertEqual(self.names()[0], "NET-1")

    def test_violations_are_marked(self):
        source = self.file(document(managed_object("A-1") + managed_object("A-1/B-1", body="<p/>")
                                    + managed_object("C-1"), header="<header><log/></header>"))
        self.open(source)
        self.assertEqual(self.all("#show-violations")[0].text, "3 violations")
        self.assertIn("header > log > ' element has no attribute 'dateTime'",
                      self.browser.find_element(By.ID, "right").text)
        self.assertEqual([element.text.strip() for element in self.all("#left .bad")], ["1 ⚠"])
        self.all("#show-violations")[0].click()
        self.assertEqual(self.names(), ["A-1/B-1"])
        self.choose("A-1/B-1")
        self.assertIn("managedObject:A-1/B-1 > p > ' element has no attribute 'name'",
                      self.browser.find_element(By.ID, "right").text)
        self.picture("violations")

    def test_number_of_violations_left_out_is_shown(self):
        body = "<extension>" + "<p/>" * 1002 + "</extension>"
        source = self.file(document(managed_object("A-1", body=body) + managed_object("B-1")))
        out = self.path("out.html")
        self.assertEqual(tarn("report", source, "-o", out).returncode, 0)
        self.browser.get("file://" + out)
        self.wait(lambda: self.browser.find_element(By.TAG_NAME, "body").get_attribute("data-ready"))
        self.assertEqual(self.all("#show-violations")[0].text, "1002 violations, 2 left out")
        self.choose("A-1")
        self.assertEqual(self.all("#right li")[-1].text, "2 more violations left out")
        self.picture("left-out")

    def test_hostile_texts_are_texts(self):
        text = HOSTILE.replace("<", "&lt;")
        source = self.file(document(managed_object("A-1", body=f'<p name="{text}">{text}</p>')
                                    + managed_object(f"{text}-1", class_name=text)))
        self.open(source)
        self.assertIn(HOSTILE.split("/")[0], self.names()[-1] + self.names()[0])
        self.choose("A-1")
        self.assertEqual(self.all("#right td")[-1].text, HOSTILE)
        self.assertEqual(self.all("img"), [])

    def test_twenty_thousand_objects_are_usable(self):
        objects = "".join(managed_object(f"N-1/S-{n // 100}/C-{n}", body=(
            f"<p name='number'>{n}</p>" + "".join(f"<p name='p{i}'>{n * i % 9973}</p>"
                                                  for i in range(8)))) for n in range(20000))
        self.open(self.file(document(objects)))
        self.toggle("S-42")
        self.assertIn("C-4299", self.names())
        paint = self.browser.execute_script(
            "return performance.getEntriesByType('paint')[0].startTime")
        time = self.browser.execute_script(
            "const start = performance.now(); search.value = 'c-1999'; runSearch();"
            "return performance.now() - start")
        self.assertEqual(self.all("#left .count")[0].text, "11 objects found")
        print(f"20000 objects: first paint {paint:.0f} ms, search {time:.0f} ms", file=sys.stderr)

    def test_many_siblings_come_in_steps(self):
        self.open(self.file(document("".join(managed_object(f"A-{n}") for n in range(1200)))))
        self.assertEqual(len(self.names()), 500)
        for expected in (1000, 1200):
            self.all("#left button.more")[0].click()
            self.assertEqual(len(self.names()), expected)
        self.assertEqual(self.all("#left button.more"), [])


if __name__ == "__main__":
    main()
