"""Shows the question for a missing font in a real window on a display without a screen, and answers it
by keyboard and mouse.

usage: ask_font_test.py PROGRAM BUILD_TREE

With RASTREL_TEST_PICTURES the window is saved there, for a person to look at.
"""

import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

import display

PROGRAM, TREE = sys.argv.pop(1), sys.argv.pop(1)
NEEDED = ("Xvfb", "xdotool")


class AskFont(display.DisplayTest):
    def setUp(self):
        self.home = pathlib.Path(tempfile.mkdtemp(prefix="rastrel-font-"))
        self.addCleanup(shutil.rmtree, self.home)
        self.make_environment(self.home, TREE, self.home, leaks=False)

    def ask(self):
        """Starts the program and returns it with its window, which has the keyboard."""
        process = subprocess.Popen([PROGRAM], stdout=subprocess.PIPE, text=True,
                                   env=self.environment)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        for _ in range(200):
            found = self.xdotool("search", "--onlyvisible", "--name", "Missing font", check=False)
            if found:
                window = found.split()[0]
                self.xdotool("windowfocus", "--sync", window)
                time.sleep(0.2)
                return process, window
            time.sleep(0.05)
        self.fail("no window came")

    def answer(self, process):
        return process.communicate(timeout=60)[0].strip()

    def test_enter_takes_the_usual_font(self):
        process, window = self.ask()
        self.save_picture("ask-font", window)
        self.press("Return")
        self.assertEqual(self.answer(process), "DejaVu Sans")

    def test_the_list_has_the_keyboard_and_finds_a_font_by_its_first_letters(self):
        process, _ = self.ask()
        self.xdotool("type", "--delay", "20", "dejavu sans m")
        self.press("Return")
        self.assertEqual(self.answer(process), "DejaVu Sans Mono")

    def test_the_keys_of_list_and_button_work(self):
        process, _ = self.ask()
        self.press("Tab", "alt+f")  # to the buttons, and back to the list by its label's key
        self.xdotool("type", "--delay", "20", "dejavu ser")
        self.press("alt+u")
        self.assertEqual(self.answer(process), "DejaVu Serif")

    def test_escape_and_the_cancel_key_cancel(self):
        for keys in (["Escape"], ["alt+c"], ["Tab", "Tab", "space"]):
            process, _ = self.ask()
            self.press(*keys)
            self.assertEqual(self.answer(process), "cancelled", keys)


if __name__ == "__main__":
    display.main(NEEDED)
