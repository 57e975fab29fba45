"""Logs of many messages."""
import sys

from selenium.webdriver.common.keys import Keys

from page_case import PageTest

MAX_MILLISECONDS = 1000


class Speed(PageTest):
    def assert_fast(self, milliseconds, name):
        print(f"{name}: {milliseconds:.0f} ms", file=sys.stderr)
        self.assertLess(milliseconds, MAX_MILLISECONDS, name)

    def milliseconds(self, action):
        """Returns the time from an action of the user until its frame is drawn."""
        return self.browser.driver.execute_async_script(f"""
            const done = arguments[0];
            const begin = performance.now();
            {action};
            requestAnimationFrame(() => setTimeout(() => done(performance.now() - begin)));""")

    def opening_milliseconds(self):
        self.open("large")
        self.assertEqual(self.count(), "100,000 messages")
        return self.browser.run("return performance.getEntriesByName('first rows')[0].startTime")

    def test_a_hundred_thousand_messages_open(self):
        # Of a few times, the others have the work of other processes in them.
        self.assert_fast(min(self.opening_milliseconds() for _ in range(3)), "opening")

    def test_a_hundred_thousand_messages_are_filtered(self):
        self.open("large")
        search = """
            const search = document.getElementById('search');
            search.value = '{}';
            search.dispatchEvent(new Event('input'))"""
        for name, action in [
                ("first search", search.format("Report")),
                ("second search", search.format("report.txt size=4")),
                ("search without a result", search.format("nothing")),
                ("no search", search.format("")),
                ("severity", "document.querySelector('#severity .is-warning').click()"),
                ("source", "document.querySelector('#source button').click()"),
                ("type", "document.querySelector('#type button').click()"),
                ("language", """
                    const select = document.getElementById('language');
                    select.value = '0';
                    select.dispatchEvent(new Event('change'))"""),
                ("clear", "document.getElementById('clear').click()"),
                ("end", "document.getElementById('table').scrollTop = 1e9")]:
            self.assert_fast(self.milliseconds(action), name)
        self.browser.wait_for(lambda: self.cells("line")[-1] == "449,995")

    def test_few_rows_are_elements(self):
        self.open("large")
        self.assertLess(self.browser.run("return document.querySelectorAll('*').length"), 1500)

    def test_each_of_a_million_messages_can_be_reached(self):
        self.open("huge")
        self.assertEqual(self.count(), "1,000,000 messages")
        self.browser.find("#table").send_keys(Keys.END)
        self.assertEqual(self.active_row(), "1000001")
        self.browser.press(Keys.ARROW_UP)
        self.assertEqual(self.active_row(), "1000000")
        self.browser.run("document.getElementById('table').scrollTop = 7_000_000")
        self.browser.wait_for(lambda: "row-4" in self.browser.run(
            "return document.querySelector('#rows .row').id"))
