"""Languages, themes, and addresses of views."""
from page_case import PageTest


class Views(PageTest):
    def test_language_switch(self):
        self.open("sample")
        first = "Size Too large: file_large path=/srv/archive/15838/report.txt size=8192"
        self.assertEqual(self.cells("text")[2], first)
        self.select("language", "0")
        self.assertEqual(self.cells("text")[2], first.replace("Size Too large", "Größe Übersetzt"))
        self.assertEqual(self.hash(), "#lang=de")
        self.assertEqual(self.browser.run("return document.querySelector('#rows .text').lang"), "de")
        self.browser.find("#search").send_keys("übersetzt")
        self.assertEqual(self.count(), "989 of 1,000 messages")
        self.select("language", "1")
        self.assertEqual(self.count(), "0 of 1,000 messages")

    def test_one_text_needs_no_language_switch(self):
        self.open("plain")
        self.assertFalse(self.browser.find("#language").is_displayed())

    def test_an_address_is_a_view(self):
        self.open("sample", "#q=large&severity=warning&source=audit&type=file_large&lang=ar"
                            "&theme=dark&message=3")
        self.assertEqual(self.count(), "135 of 1,000 messages")
        self.assertEqual(self.browser.find("#search").get_attribute("value"), "large")
        self.assertIn("رسالة", self.cells("text")[0])
        self.assertEqual(self.browser.find("#theme").get_attribute("value"), "dark")
        self.assertTrue(self.is_open())
        self.assertIn("/srv/archive/15838/report.txt", self.browser.find("#details").text)

    def test_an_address_of_another_page_is_harmless(self):
        self.open("sample", "#q=%FF%00&severity=x&lang=xx&theme=x&message=1e9&%E0%A4%A=<b>")
        self.assertEqual(self.count(), "0 of 1,000 messages")
        self.browser.find("#clear").click()
        self.assertEqual(self.count(), "1,000 messages")

    def test_back_and_forward(self):
        self.open("sample")
        self.browser.find("#search").send_keys("report")
        self.click_bar("severity", "warning")
        self.select("language", "0")
        self.select("theme", "dark")
        steps = ["#q=report", "#q=report&severity=warning", "#q=report&severity=warning&lang=de",
                 "#q=report&severity=warning&lang=de&theme=dark"]
        self.assertEqual(self.hash(), steps[-1])
        for step in [*steps[-2::-1], ""]:
            self.browser.driver.back()
            self.browser.wait_for(lambda step=step: self.hash() == step)
        self.assertEqual(self.count(), "1,000 messages")
        self.assertEqual(self.browser.find("#search").get_attribute("value"), "")
        for step in steps:
            self.browser.driver.forward()
            self.browser.wait_for(lambda step=step: self.hash() == step)
        self.assertEqual(self.count(), "135 of 1,000 messages")
        self.assertIn("Übersetzt", self.cells("text")[0])

    def test_theme_follows_the_system_until_it_is_chosen(self):
        self.open("sample")
        background = "return getComputedStyle(document.body).backgroundColor"
        light = self.browser.run(background)
        self.browser.prefer("dark")
        dark = self.browser.run(background)
        self.assertNotEqual(light, dark)
        self.select("theme", "light")
        self.assertEqual(self.browser.run(background), light)
        self.browser.prefer("light")
        self.select("theme", "dark")
        self.assertEqual(self.browser.run(background), dark)
        self.browser.prefer("dark")
        self.open("sample", "#theme=light")
        self.assertEqual(self.browser.run(background), light)
