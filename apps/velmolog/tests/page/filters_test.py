"""Search and charts."""
from selenium.webdriver.common.keys import Keys

from page_case import PageTest


class Filters(PageTest):
    def test_all_messages_are_counted_and_listed(self):
        self.open("sample")
        self.assertEqual(self.count(), "1,000 messages")
        self.assertEqual(self.bars("severity"), {
            "critical": "11", "error": "44", "warning": "135", "info": "736", "none": "74"})
        self.assertEqual(self.bars("source"), {
            "audit": "871", "none": "74", "net.proxy": "44", "disk": "11"})
        self.assertEqual(self.cells("severity")[:4], ["info", "none", "warning", "error"])
        self.assertEqual(self.cells("line")[:3], ["4", "13", "22"])

    def test_rare_types_are_one_bar_until_it_is_clicked(self):
        self.open("sample")
        self.assertEqual(len(self.bars("type")), 9)
        self.assertEqual(self.bars("type")["35 others"], "62")
        self.browser.find("#type .others").click()
        self.assertEqual(len(self.bars("type")), 43)
        self.assertEqual(sum(int(count) for count in self.bars("type").values()), 1000)

    def test_a_search_finds_text_type_and_arguments_in_any_case(self):
        self.open("sample")
        for words, found in [("TOO LARGE", "135"), ("Connection_Lost", "44"), ("mirror3", "4"),
                             ("/31676/", "1"), ("SIZE", "135"),
                             ("DISK_full", "11"), ("/39595/", "1"), ("Path", "882"),
                             ("no such word", "0")]:
            search = self.browser.find("#search")
            search.clear()
            search.send_keys(words)
            self.assertEqual(self.count(), f"{found} of 1,000 messages", words)
        self.assertTrue(self.browser.find("#empty").is_displayed())
        self.assertEqual(self.cells("text"), [])

    def test_a_search_finds_composed_texts_as_they_are_shown(self):
        self.open("plain", "#q=connection_lost+host%3DMIRROR3+port")
        self.assertEqual(self.count(), "4 of 1,000 messages")
        self.assertEqual(set(self.cells("text")), {"connection_lost host=mirror3 port=8080"})

    def test_bars_filter_and_the_other_charts_follow(self):
        self.open("sample")
        self.click_bar("severity", "error")
        self.assertEqual(self.count(), "44 of 1,000 messages")
        self.assertEqual(set(self.cells("severity")), {"error"})
        self.assertEqual(self.bars("source"), {"net.proxy": "44"})
        self.assertEqual(self.bars("type"), {"connection_lost": "44"})
        self.assertEqual(self.bars("severity")["info"], "736")
        self.click_bar("severity", "critical")
        self.assertEqual(self.count(), "55 of 1,000 messages")
        self.click_bar("source", "disk")
        self.assertEqual(self.count(), "11 of 1,000 messages")
        self.click_bar("type", "disk_full")
        self.assertEqual(self.hash(),
                         "#severity=error&severity=critical&source=disk&type=disk_full")
        self.click_bar("severity", "error")
        self.click_bar("severity", "critical")
        self.assertEqual(self.bars("severity"), {"critical": "11"})
        self.browser.find("#clear").click()
        self.assertEqual(self.count(), "1,000 messages")

    def test_messages_without_a_source_are_a_bar_too(self):
        self.open("sample")
        self.click_bar("source", "none")
        self.assertEqual(self.count(), "74 of 1,000 messages")
        self.open("sample", "#source=")
        self.assertEqual(self.count(), "74 of 1,000 messages")

    def test_several_logs_are_a_chart(self):
        self.open("sample")
        self.assertEqual(self.bars("log"), {
            "/var/log/nightly/audit.xml": "500", "/var/log/nightly/second.xml": "500"})
        self.click_bar("log", "/var/log/nightly/second.xml")
        self.assertEqual(self.count(), "500 of 1,000 messages")
        self.assertEqual(self.cells("line")[0], "4")
        self.open("hostile")
        self.assertFalse(self.browser.find("#log").is_displayed())

    def test_a_clicked_bar_keeps_the_focus(self):
        self.open("sample")
        self.click_bar("source", "disk")
        self.assertEqual(self.browser.run(
            "return document.activeElement.querySelector('.label').textContent"), "disk")
        self.assertEqual(self.browser.run("return document.activeElement.ariaPressed"), "true")

    def test_empty_log(self):
        self.open("empty")
        self.assertEqual(self.count(), "0 messages")
        self.assertTrue(self.browser.find("#empty").is_displayed())
        self.browser.find("#table").click()
        self.browser.press(Keys.ARROW_DOWN, Keys.ENTER, Keys.ESCAPE)
        self.assertFalse(self.is_open())
