"""Shows the progress dialog in a real window on a display without a screen, presses what a person
would press, and looks at what is left.

usage: windows_test.py PROGRAM BUILD_TREE

With RASTREL_TEST_PICTURES the window is saved there at each step, for a person to look at.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import time

import display

PROGRAM, TREE = sys.argv.pop(1), sys.argv.pop(1)
NEEDED = ("Xvfb", "xdotool")

SLOW = """#!/bin/sh
echo $$ >>"$RASTREL_HOME/children"
say() { echo "$1" >&2; sleep 0.2; }
say 'INFO: INITIALISING'
say 'INFO: INTERPRETING'
say 'PROGRESS: 50%'
touch "$RASTREL_HOME/half"
exec sleep 1000
"""

FLOOD = """#!/bin/sh
echo $$ >>"$RASTREL_HOME/children"
touch "$RASTREL_HOME/half"
exec yes 'PROGRESS: 50%' >&2
"""

QUICK = """#!/bin/sh
echo 'INFO: CONVERTING' >&2
sleep 1
echo 'INFO: CLQ_success' >&2
"""

GONE = """#!/bin/sh
touch "$RASTREL_HOME/half"
exit 0
"""


def alive(process):
    return os.path.exists(f"/proc/{process}/status")


class Windows(display.DisplayTest):
    def setUp(self):
        self.home = pathlib.Path(tempfile.mkdtemp(prefix="rastrel-windows-"))
        self.addCleanup(shutil.rmtree, self.home)
        self.make_environment(self.home, TREE, self.home, leaks=False)
        self.file = self.home / "sign.ps"
        self.file.write_text("%!PS\nshowpage\n")

    def queue(self, script):
        program = self.home / "Queue" / "JobSpool.exe"
        program.parent.mkdir(parents=True, exist_ok=True)
        program.write_text(script)
        program.chmod(0o755)

    def start(self, script, **extra):
        if script is not None:
            self.queue(script)
        process = subprocess.Popen([PROGRAM, str(self.file)], stdout=subprocess.PIPE, text=True,
                                   env=dict(self.environment, **extra))
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def window(self):
        for _ in range(200):
            found = self.xdotool("search", "--onlyvisible", "--name", "Processing", check=False)
            if found:
                return found.split()[0]
            time.sleep(0.05)
        self.fail("no window came")

    def wait_for(self, name):
        for _ in range(200):
            if (self.home / name).exists():
                (self.home / name).unlink()
                return
            time.sleep(0.05)
        self.fail(f"{name} did not come")

    def key(self, window, name):
        # As from a keyboard: a key that goes to a window by name stays down when the window goes first.
        self.xdotool("windowfocus", window)
        time.sleep(0.1)
        self.xdotool("key", name)

    def press_escape(self, window):
        self.key(window, "Escape")

    def press_return(self, window):
        self.key(window, "Return")

    def cancel_twice(self, script, how):
        process = self.start(script)
        for turn in range(2):
            self.wait_for("half")
            window = self.window()
            time.sleep(0.3)
            self.save_picture(f"{how.__name__}-{turn}", window)
            how(window)
            line = process.stdout.readline()
            self.assertRegex(line, "^result 2 cancelled 1")
        self.assertRegex(line, r"threads \+0 descriptors \+0")
        self.assertEqual(process.wait(timeout=20), 0)
        children = self.home / "children"
        if children.exists():
            for child in children.read_text().split():
                self.assertFalse(alive(child), "the child is gone")

    def test_the_button_cancels_while_a_child_works(self):
        self.cancel_twice(SLOW, self.press_cancel)

    def test_escape_cancels(self):
        self.cancel_twice(SLOW, self.press_escape)

    def test_return_presses_the_default_button(self):
        self.cancel_twice(SLOW, self.press_return)

    def test_cancel_works_while_a_child_floods(self):
        self.cancel_twice(FLOOD, self.press_cancel)

    def test_cancel_works_when_the_child_has_gone_without_a_word(self):
        self.cancel_twice(GONE, self.press_cancel)

    def test_the_dialog_closes_by_itself_when_the_work_is_done(self):
        process = self.start(QUICK)
        window = self.window()
        time.sleep(0.2)
        self.save_picture("start", window)
        output, _ = process.communicate(timeout=30)
        self.assertRegex(output, r"result 1 cancelled 0\nresult 1 cancelled 0 threads \+0 "
                                 r"descriptors \+0\n")

    def test_the_window_grows_with_the_screen_s_scale(self):
        sizes = []
        for scale in ("1", "2"):
            process = self.start(SLOW, QT_SCALE_FACTOR=scale)
            self.wait_for("half")
            window = self.window()
            time.sleep(0.3)
            self.save_picture(f"scale-{scale}", window)
            size = self.xdotool("getwindowgeometry", "--shell", window)
            sizes.append(int(re.search(r"WIDTH=(\d+)", size).group(1)))
            process.kill()
            process.wait()
            for child in (self.home / "children").read_text().split():
                subprocess.run(["kill", child], check=False, stderr=subprocess.DEVNULL)
        self.assertAlmostEqual(sizes[1] / sizes[0], 2, delta=0.1)

    def test_without_a_display_it_says_so_and_the_process_lives(self):
        for name in ("", ":99999"):
            process = self.start(QUICK, DISPLAY=name)
            output, _ = process.communicate(timeout=30)
            self.assertEqual(process.returncode, 1)
            self.assertRegex(output, "no window: (there is no display|the display :99999 does not)")

    def test_without_the_component_it_says_so(self):
        process = self.start(None, RASTREL_RESOURCES=str(self.home / "none"))
        output, _ = process.communicate(timeout=30)
        self.assertIn("no window: rastrel-window.so is not installed", output)


if __name__ == "__main__":
    display.main(NEEDED)
