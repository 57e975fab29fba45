"""A page that velmolog itself writes of a log."""
import pathlib
import subprocess

from page_case import PageTest

MESSAGE = """ <msg tool="{source}">
  <arg name="path">{path}</arg>
  <type>{type}</type>
  <severity>{severity}</severity>
 </msg>
"""


class Program(PageTest):
    def write_page(self, name, log, *arguments):
        """Returns the address of the page of a log."""
        folder = pathlib.Path(self.folder, name)
        folder.mkdir()
        folder.joinpath("log.xml").write_text(log, encoding="utf-8")
        page = folder.joinpath("page.html")
        result = subprocess.run(
            [self.velmolog, "html", "log.xml", "-o", page, *arguments], cwd=folder, timeout=60,
            stderr=subprocess.PIPE)
        return page.as_uri(), result

    def test_a_log_is_a_page(self):
        log = "<log>" + "".join(
            MESSAGE.format(source="audit", path=f"/home/\u017dofie/{i}", type=f"type{i % 3}",
                           severity="ERROR" if i % 10 == 0 else "INFO")
            for i in range(1000)) + "</log>"
        address, result = self.write_page("sound", log, "--not-type", "type2")
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        self.browser.open(address)
        self.assertEqual(self.count(), "667 messages")
        self.assertEqual(self.bars("type"), {"type0": "334", "type1": "333"})
        self.assertEqual(self.bars("severity"), {"error": "67", "info": "600"})
        self.assertIn("/home/\u017dofie/0", self.cells("text")[0])
        self.click_bar("severity", "error")
        self.assertEqual(self.count(), "67 of 667 messages")

    def test_a_damaged_hostile_log_is_a_page_without_effects(self):
        hostile = "&lt;/script&gt;&lt;img src=x onerror=&quot;document.title='run'&quot;&gt;"
        log = "<log>" + MESSAGE.format(source=hostile, path=hostile, type=hostile, severity="INFO") \
            + " & </msg>" + MESSAGE.format(source="a", path="b", type="c", severity="WARNING")
        address, result = self.write_page("hostile", log)
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"log.xml:6: an ampersand", result.stderr)
        self.browser.open(address)
        self.assertEqual(self.count(), "2 messages")
        self.assertEqual(self.cells("type"),
                         ["</script><img src=x onerror=\"document.title='run'\">", "c"])
        self.assertEqual(self.browser.driver.title, "log.xml \u2013 velmolog")
