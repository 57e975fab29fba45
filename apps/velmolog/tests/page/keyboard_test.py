"""Everything without a pointer."""
from selenium.webdriver.common.keys import Keys

from page_case import PageTest


class Keyboard(PageTest):
    def test_slash_goes_to_the_search_and_is_a_character_in_it(self):
        self.open("sample")
        self.browser.press("/")
        self.browser.press("srv/archive/31676")
        self.assertEqual(self.hash(), "#q=srv/archive/31676")
        self.assertEqual(self.count(), "1 of 1,000 messages")

    def test_keys_move_in_the_table(self):
        self.open("sample")
        self.browser.find("#search").send_keys(Keys.ENTER)
        rows = []
        for key in [Keys.ARROW_DOWN, Keys.ARROW_DOWN, Keys.ARROW_UP, Keys.END, Keys.ARROW_DOWN,
                    Keys.PAGE_UP, Keys.PAGE_DOWN, Keys.HOME, Keys.ARROW_UP]:
            self.browser.press(key)
            rows.append(int(self.active_row()))
            self.assertTrue(self.is_active_row_in_sight(), key)
        page = 1001 - rows[5]
        self.assertEqual(rows, [3, 4, 3, 1001, 1001, 1001 - page, 1001, 2, 2])
        self.assertGreater(page, 10)

    def is_active_row_in_sight(self):
        return self.browser.run("""
            const row = document.querySelector('#rows [aria-selected=true]')
              .getBoundingClientRect();
            const table = document.getElementById('table').getBoundingClientRect();
            const head = document.getElementById('head').getBoundingClientRect();
            return row.top >= head.bottom - 1 && row.bottom <= table.bottom + 1;""")

    def test_enter_opens_the_details_and_escape_closes_them(self):
        self.open("sample")
        self.browser.find("#table").send_keys(Keys.ARROW_DOWN, Keys.ARROW_DOWN, Keys.ENTER)
        details = self.browser.find("#details").text
        for text in ["warning", "file_large", "path\n/srv/archive/15838/report.txt", "size\n8192",
                     "timestamp\n2026-11-21T14:10:07Z", "tool\naudit",
                     "log\n/var/log/nightly/audit.xml", "line\n22", "offset\n553",
                     "Size\nToo large: file_large"]:
            self.assertIn(text, details)
        self.assertEqual(self.hash(), "#message=3")
        self.browser.press(Keys.ARROW_DOWN)
        self.assertIn("host\nmirror3", self.browser.find("#details").text)
        self.browser.press(Keys.ESCAPE)
        self.assertFalse(self.is_open())
        self.assertEqual(self.browser.run("return document.activeElement.id"), "table")
        self.browser.driver.back()
        self.browser.wait_for(self.is_open)
        self.browser.driver.back()
        self.browser.wait_for(lambda: not self.is_open())

    def test_a_click_opens_the_details(self):
        self.open("sample")
        self.browser.find("#row-5").click()
        self.assertIn("disk_full", self.browser.find("#details").text)
        self.browser.find("#details button").click()
        self.assertFalse(self.is_open())

    def test_tab_reaches_each_control_and_the_focus_is_visible(self):
        self.open("sample", "#severity=error&message=4")
        self.browser.run("document.activeElement.blur()")
        seen = []
        for _ in range(30):
            self.browser.press(Keys.TAB)
            seen.append(self.browser.run("""
                const style = getComputedStyle(document.activeElement);
                if (document.activeElement === document.body) return 'body';
                if (style.outlineStyle === 'none') throw new Error('no outline');
                return document.activeElement.id || document.activeElement.closest('[id]').id;"""))
            if seen.count("search") == 2 or seen[-1] == "body":
                break
        for name in ["search", "language", "theme", "severity", "source", "type", "log", "clear", "table",
                     "details"]:
            self.assertIn(name, seen)
