#!/usr/bin/env python3
"""Measures `tarn report` and how Chromium opens its page, beside other builds of the command.

Usage: bench/report_page.py COMMAND [--beside COMMAND]... [--count N] [--rounds N]

Each round writes and opens the page of the same document with each command, in a new browser. Figures
are medians:

  written   seconds and memory of the command
  page      its size
  tree      seconds from the start of the navigation until the tree can be used
  loaded    until the browser has read the whole page
  memory    of the browser's process for the page, resident, when it is loaded
  search    seconds that a search over all objects takes
  blocked   longest time in it in which the page did not react
"""

import argparse
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

from selenium import webdriver
from selenium.webdriver.support.ui import WebDriverWait

HERE = Path(__file__).resolve().parent
SEARCH = "handovermode"
MIB = 1 << 20
# Notes the time at which the page says that its tree is there.
WATCH = """
new MutationObserver((_, observer) => {
  if (!document.body?.dataset.ready) return;
  window.readyTime = performance.now();
  observer.disconnect();
}).observe(document, {subtree: true, childList: true, attributes: true, attributeFilter: ["data-ready"]});
"""
RUN_SEARCH = """
const done = arguments[arguments.length - 1], start = performance.now();
let latest = start, blocked = 0;
const field = document.getElementById("search");
const timer = setInterval(() => {
  const now = performance.now();
  blocked = Math.max(blocked, now - latest);
  latest = now;
  const count = document.querySelector("#count, #left .count");
  if (!count?.textContent.endsWith("found")) return;
  clearInterval(timer);
  done([(now - start) / 1000, blocked / 1000]);
}, 1);
field.value = arguments[0];
field.dispatchEvent(new Event("input"));
"""


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("command")
    parser.add_argument("--beside", action="append", default=[], metavar="COMMAND", help="another build; repeatable")
    parser.add_argument("--count", default="165000", help="objects of the document (165000)")
    parser.add_argument("--shape", default="network", help="of the document, see make_document.py (network)")
    parser.add_argument("--rounds", type=int, default=3, help="medians of so many (3)")
    return parser.parse_args()


def write_page(command, document, page):
    start = time.perf_counter()
    child = subprocess.Popen([command, "report", document, "-o", page], stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(child.pid, 0)
    child.returncode = os.waitstatus_to_exitcode(status)
    if child.returncode != 0:
        raise RuntimeError(f"{command} gives {child.returncode}")
    return {"written, s": time.perf_counter() - start, "written, MiB": usage.ru_maxrss / 1024,
            "page, MB": os.path.getsize(page) / 1e6}


def new_browser():
    options = webdriver.ChromeOptions()
    options.binary_location = shutil.which("chromium")
    for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                     "--window-size=1280,800"):
        options.add_argument(argument)
    return webdriver.Chrome(options=options)


def children_of(process):
    for tasks in Path(f"/proc/{process}/task").glob("*/children"):
        for child in tasks.read_text().split():
            yield child
            yield from children_of(child)


def page_memory(browser):
    """Of the largest process for pages."""
    sizes = []
    for process in children_of(browser.service.process.pid):
        folder = Path(f"/proc/{process}")
        if b"--type=renderer" in (folder / "cmdline").read_bytes():
            pages = int((folder / "statm").read_text().split()[1])
            sizes.append(pages * os.sysconf("SC_PAGE_SIZE") / MIB)
    return max(sizes)


def open_page(page):
    browser = new_browser()
    try:
        browser.set_script_timeout(300)
        browser.execute_cdp_cmd("Page.addScriptToEvaluateOnNewDocument", {"source": WATCH})
        browser.get(f"file://{page}")
        WebDriverWait(browser, 120, 0.05).until(lambda _: browser.execute_script("return window.readyTime"))
        tree, loaded = browser.execute_script(
            "const {loadEventEnd, navigationStart} = performance.timing;"
            "return [readyTime / 1000, (loadEventEnd - navigationStart) / 1000]")
        figures = {"tree, s": tree, "loaded, s": loaded, "memory, MiB": page_memory(browser)}
        figures["search, s"], figures["blocked, s"] = browser.execute_async_script(RUN_SEARCH, SEARCH)
        return figures
    finally:
        browser.quit()


def main():
    arguments = parse_arguments()
    commands = [arguments.command, *arguments.beside]
    results = {command: [] for command in commands}
    with tempfile.TemporaryDirectory() as folder:
        document, page = os.path.join(folder, "document.xml"), os.path.join(folder, "page.html")
        subprocess.run([sys.executable, str(HERE / "make_document.py"), "--shape", arguments.shape, "--count",
                        arguments.count, "--order", "sorted", "-o", document], check=True)
        print(f"{arguments.count} objects, {os.path.getsize(document) / MIB:.0f} MiB")
        for _ in range(arguments.rounds):
            for command in commands:
                results[command].append({**write_page(command, document, page), **open_page(page)})
    names = list(results[commands[0]][0])
    print("| Command | " + " | ".join(names) + " |\n" + "|---" * (len(names) + 1) + "|")
    for command in commands:
        medians = (statistics.median(each[name] for each in results[command]) for name in names)
        print(f"| {command} | " + " | ".join(f"{median:.2f}" for median in medians) + " |")


if __name__ == "__main__":
    main()
