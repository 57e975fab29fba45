"""A real browser without a window, and the records of its requests and its complaints."""
import json
import os

from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import WebDriverWait

MAX_SECONDS = 30


class Browser:
    """Chromium. Use it in a "with" statement, which ends the process."""

    def __init__(self, chromium, driver, profile):
        options = Options()
        options.binary_location = chromium
        for argument in ["--headless=new", "--disable-gpu", "--disable-dev-shm-usage",
                         "--disable-background-networking", f"--user-data-dir={profile}"]:
            options.add_argument(argument)
        if os.geteuid() == 0:
            # Chromium's own sandbox refuses to run as root.
            options.add_argument("--no-sandbox")
        options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
        self.driver = webdriver.Chrome(service=Service(driver), options=options)
        self.resize(1600, 900)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.driver.quit()

    def resize(self, width, height):
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": width, "height": height, "deviceScaleFactor": 1, "mobile": False})

    def prefer(self, scheme):
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {
            "features": [{"name": "prefers-color-scheme", "value": scheme}]})

    def open(self, url):
        """Opens a page from the start, even if only the part after the `#` differs."""
        self.driver.get("about:blank")
        self.driver.get(url)

    def run(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def find(self, selector):
        return self.driver.find_element(By.CSS_SELECTOR, selector)

    def press(self, *keys):
        """Presses keys in the element that has the focus."""
        self.driver.switch_to.active_element.send_keys(*keys)

    def wait_for(self, condition):
        WebDriverWait(self.driver, MAX_SECONDS, 0.01).until(lambda _: condition())

    def complaints(self):
        """Returns the console since the last call: errors, and violations of the policy."""
        return [entry["message"] for entry in self.driver.get_log("browser")]

    def requests(self):
        """Returns the addresses that were requested since the last call."""
        events = [json.loads(entry["message"])["message"]
                  for entry in self.driver.get_log("performance")]
        return [event["params"]["request"]["url"] for event in events
                if event["method"] == "Network.requestWillBeSent"]
