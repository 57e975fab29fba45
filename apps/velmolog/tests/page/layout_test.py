"""Widths, alignment, contrast and print."""
import base64
import os
import pathlib
import re

from contrast import LOWEST_CONTRASTS
from page_case import PageTest


class Layout(PageTest):
    VIEWS = ["", "#message=3", "#severity=error&message=4", "#q=nothing"]

    def test_nothing_is_wider_than_the_window(self):
        for width, height in [(360, 740), (700, 900), (1000, 700), (1280, 800), (1600, 900)]:
            self.browser.resize(width, height)
            for kind in ["sample", "hostile"]:
                for view in self.VIEWS:
                    self.open(kind, view)
                    self.assertEqual(self.overflowing(), [], f"{width} {kind} {view}")
                    self.screenshot(f"{kind}{width}{view}")

    def overflowing(self):
        """Returns the elements that leave the window, or their element if it does not scroll."""
        return self.browser.run("""
            const found = [];
            if (document.documentElement.scrollWidth > innerWidth) found.push('page');
            for (const name of ['table', 'facets', 'details', 'controls']) {
              const element = document.getElementById(name);
              if (element.scrollWidth > element.clientWidth) found.push(name);
            }
            for (const element of document.querySelectorAll('header *, #facets *, #details *')) {
              const { left, right, width } = element.getBoundingClientRect();
              const is_cut = element.closest('.label, h1, .hidden');
              if (!is_cut && width > 0 && (left < 0 || right > innerWidth + 0.5))
                found.push(element.outerHTML.slice(0, 80));
            }
            return found;""")

    def test_columns_are_aligned(self):
        for width in [700, 1000, 1600]:
            self.browser.resize(width, 800)
            self.open("sample")
            for name in ["severity", "type", "line"]:
                edges = self.browser.run(
                    "return [...document.querySelectorAll(`.row .${arguments[0]}`)].map((cell) =>"
                    "cell.getBoundingClientRect().left)", name)
                self.assertEqual(len(set(edges)), 1, f"{width} {name}")

    def test_contrast(self):
        for theme in ["light", "dark"]:
            self.open("sample", f"#theme={theme}&severity=error&severity=critical&message=6")
            self.screenshot(theme)
            for name, contrast in self.browser.run(LOWEST_CONTRASTS).items():
                self.assertGreaterEqual(contrast, 3 if name == "bar" else 4.5, f"{theme} {name}")

    def test_windows_can_become_wider(self):
        self.browser.resize(360, 740)
        self.open("sample")
        self.assertFalse(self.browser.find("#severity").is_displayed())
        self.browser.find("summary").click()
        self.click_bar("severity", "error")
        self.assertEqual(self.count(), "44 of 1,000 messages")
        self.browser.find("summary").click()
        self.browser.resize(1600, 900)
        self.browser.wait_for(self.browser.find("#severity").is_displayed)

    def test_printed_rows_have_all_of_their_text(self):
        self.open("hostile")
        self.browser.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"media": "print"})
        self.browser.run("dispatchEvent(new Event('beforeprint'))")
        self.screenshot("print")
        rows = self.browser.run("""
            return [...document.querySelectorAll('#rows .row')].map((row) => {
              const { top, bottom } = row.getBoundingClientRect();
              const lowest = Math.max(...[...row.children].map((cell) =>
                cell.getBoundingClientRect().bottom));
              return [top, bottom, lowest];
            });""")
        self.browser.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"media": ""})
        self.assertEqual(len(rows), 14)
        for (_, bottom, lowest), (top, _, _) in zip(rows, rows[1:]):
            self.assertLessEqual(bottom, top + 0.5)
            self.assertLessEqual(lowest, bottom)
        self.assertGreater(rows[0][1] - rows[0][0], 40)

    def test_print_has_the_first_messages_and_no_controls(self):
        self.open("large", "#theme=dark")
        pdf = base64.b64decode(self.browser.driver.execute_cdp_cmd("Page.printToPDF", {})["data"])
        pages = len(re.findall(rb"/Type\s*/Page\b", pdf))
        self.assertGreater(pages, 20)
        self.assertLess(pages, 200)
        self.assertEqual(self.count(), "100,000 messages")
        self.assertLess(len(self.cells("line")), 100)
        folder = os.environ.get("SCREENSHOTS")
        if folder:
            pathlib.Path(folder, "print.pdf").write_bytes(pdf)
