"""The steps that the tests of pages have in common."""
import os
import pathlib
import subprocess
import unittest
from urllib.parse import unquote


class PageTest(unittest.TestCase):
    """A test of a page. All tests share one browser; each opens its page from the start."""

    browser = None
    folder = None
    make_page = None
    velmolog = None

    @classmethod
    def page(cls, kind):
        """Returns the address of a page of messages, which is written on the first use."""
        path = pathlib.Path(cls.folder, f"{kind}.html")
        if not path.exists():
            path.write_bytes(subprocess.run([cls.make_page, kind], check=True, timeout=400,
                                            stdout=subprocess.PIPE).stdout)
        return path.as_uri()

    def setUp(self):
        self.browser.resize(1600, 900)
        self.browser.prefer("light")
        self.browser.complaints()

    def tearDown(self):
        self.assertEqual(self.browser.complaints(), [])

    def open(self, kind, view=""):
        self.browser.open(self.page(kind) + view)

    def count(self):
        return self.browser.find("#count").text

    def hash(self):
        return unquote(self.browser.run("return location.hash"))

    def cells(self, name):
        """Returns the texts of a column, of the rows in sight."""
        return self.browser.run(
            "return [...document.querySelectorAll(`#rows .${arguments[0]}`)]"
            ".map((cell) => cell.textContent)", name)

    def bars(self, facet):
        """Returns the labels and the counts of a chart."""
        return dict(self.browser.run(
            "return [...document.querySelectorAll(`#${arguments[0]} li`)].map((bar) =>"
            "[bar.querySelector('.label').textContent, bar.querySelector('.number').textContent])",
            facet))

    def click_bar(self, facet, label):
        bars = self.browser.driver.find_elements("css selector", f"#{facet} li button")
        next(bar for bar in bars if bar.text.split("\n")[0] == label).click()

    def active_row(self):
        return self.browser.run(
            "return document.getElementById("
            "document.getElementById('table').getAttribute('aria-activedescendant'))?.ariaRowIndex")

    def is_open(self):
        return self.browser.find("#details").is_displayed()

    def screenshot(self, name):
        """Keeps a picture in the folder SCREENSHOTS, if the environment has it."""
        folder = os.environ.get("SCREENSHOTS")
        if folder:
            self.browser.driver.save_screenshot(f"{folder}/{name.replace('#', '-')}.png")

    def select(self, name, value):
        self.browser.find(f"#{name} option[value='{value}']").click()
