#!/usr/bin/env python3
"""Uses pages as a reader does, in a real browser: page_test.py CHROMIUM DRIVER MAKE_PAGE VELMOLOG [TEST...]

A TEST is MODULE, MODULE.CLASS or MODULE.CLASS.NAME. Without one, runs all tests.
"""
import os
import sys
import tempfile
import unittest

from browser import Browser
from page_case import PageTest

MODULES = [f"{name}_test" for name in
           ["filters", "views", "keyboard", "safety", "layout", "program", "speed"]]


def main():
    chromium, driver, PageTest.make_page, PageTest.velmolog = map(os.path.abspath, sys.argv[1:5])
    with tempfile.TemporaryDirectory(prefix="velmolog.") as PageTest.folder, \
            Browser(chromium, driver, f"{PageTest.folder}/profile") as PageTest.browser:
        suite = unittest.defaultTestLoader.loadTestsFromNames(sys.argv[5:] or MODULES)
        result = unittest.TextTestRunner(verbosity=2).run(suite)
    sys.exit(not (result.wasSuccessful() and result.testsRun > 0))


if __name__ == "__main__":
    main()
