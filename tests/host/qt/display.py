"""A display without a screen, for tests that show real windows."""

import os
import shutil
import subprocess
import sys
import unittest


class DisplayTest(unittest.TestCase):
    """Its tests share one display, whose name is `name`."""

    @classmethod
    def setUpClass(cls):
        read, write = os.pipe()
        cls.display = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write), "-screen", "0", "1024x768x24", "-nolisten", "tcp",
             "-noreset"],
            pass_fds=(write,), stderr=subprocess.DEVNULL)
        os.close(write)
        with os.fdopen(read) as number:
            cls.name = ":" + number.readline().strip()

    @classmethod
    def tearDownClass(cls):
        cls.display.terminate()
        cls.display.wait()


def main(needed):
    """Runs the tests of the calling program; skips them all where a program that they need lacks."""
    missing = [name for name in needed if shutil.which(name) is None]
    if missing:
        print("skipped: not installed:", ", ".join(missing))
        sys.exit(77)
    unittest.main(verbosity=2)
