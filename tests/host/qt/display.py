"""A display without a screen, for tests that show real windows."""

import os
import subprocess
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
