"""Runs `rastrel queue --window` with the real queue program on a display without a screen, presses the
window's button, and looks for what is left.

usage: queue_window_test.py COMMAND BUILD_TREE
"""

import os
import pathlib
import shutil
import signal
import sys
import tempfile
import time

import display

COMMAND, TREE = (os.path.abspath(sys.argv.pop(1)) for _ in range(2))
NEEDED = ("Xvfb", "xdotool", "gs")

ENDLESS = "%!PS-Adobe-3.0\n%%BoundingBox: 0 0 72 72\n0 0 72 72 rectfill\n{ } loop\nshowpage\n"
SHORT = "%!PS-Adobe-3.0\n%%BoundingBox: 0 0 72 72\n0 0 72 72 rectfill\nshowpage\n"


class QueueWindow(display.DisplayTest):
    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="rastrel-queue-window-")
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)
        self.root = self.place / "home"
        for name in ("output", "temporary", "runtime"):
            (self.place / name).mkdir(mode=0o700)
        self.make_environment(self.root, TREE, self.place / "runtime",
                              TMPDIR=str(self.place / "temporary"))

    def start(self, content, **extra):
        (self.place / "sign.ps").write_text(content, encoding="ascii")
        return self.started([COMMAND, "queue", "--window", "--output", "output", "sign.ps"],
                            self.place, **extra)

    def processes(self, process):
        """Name by number of all that the command has started, and that these have."""
        children = {}
        for entry in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                name, _, rest = (entry / "stat").read_text().rpartition(")")
            except OSError:
                continue
            children.setdefault(int(rest.split()[1]), {})[int(entry.name)] = name.partition("(")[2]
        found, parents = {}, [process.pid]
        while parents:
            of_one = children.get(parents.pop(), {})
            found.update(of_one)
            parents += of_one
        return found

    def window(self):
        return self.window_named("Processing")

    def wait_for_interpreter(self, process):
        """All that works then."""
        self.wait_until("the interpreter", lambda: "gs" in self.processes(process).values())
        return self.processes(process)

    def assert_cancelled(self, process, working):
        output, error = process.communicate(timeout=30)
        self.assertEqual(process.returncode, 4, error)
        self.assertEqual(output, "")
        self.assertIn("cancelled; what was unfinished has been removed", error)
        self.wait_until("the end of every process",
                        lambda: not any(os.path.exists(f"/proc/{number}") for number in working))
        self.assertEqual(list((self.place / "output").iterdir()), [])
        self.assertEqual(list((self.place / "temporary").iterdir()), [])
        self.assertEqual(list((self.root / "jobs").iterdir()), [])
        self.assertEqual([str(path) for path in self.root.rglob("*vk*")], [])

    def test_the_button_cancels_and_leaves_no_child_no_file_and_no_thread(self):
        process = self.start(ENDLESS)
        window = self.window()
        working = self.wait_for_interpreter(process)
        self.assertIn("JobSpool.exe", working.values())
        time.sleep(0.3)
        self.save_picture("queue-window", window)
        self.press_cancel(window)
        self.assert_cancelled(process, working)

    def test_a_request_to_end_cancels_as_the_button_does(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            with self.subTest(number):
                process = self.start(ENDLESS)
                self.window()
                working = self.wait_for_interpreter(process)
                process.send_signal(number)
                self.assert_cancelled(process, working)

    def test_a_conversion_that_succeeds_closes_the_window_and_puts_its_files_out(self):
        process = self.start(SHORT)
        output, error = process.communicate(timeout=60)
        self.assertEqual(process.returncode, 0, error)
        self.assertEqual(sorted(output.split()), sorted(f"output/{path.name}" for path in
                                                        (self.place / "output").iterdir()))
        self.assertNotEqual(output, "")

    def test_without_a_display_it_says_so_and_starts_nothing(self):
        process = self.start(SHORT, DISPLAY="")
        output, error = process.communicate(timeout=30)
        self.assertEqual(process.returncode, 5)
        self.assertEqual(output, "")
        self.assertRegex(error, "^rastrel: --window: no window can be shown: there is no display")
        self.assertEqual(list((self.place / "output").iterdir()), [])

    def test_without_the_component_it_says_so(self):
        tree = self.place / "tree"
        shutil.copytree(pathlib.Path(TREE) / "libexec", tree / "libexec",
                        ignore=shutil.ignore_patterns("rastrel-window*"), symlinks=True)
        (tree / "share").symlink_to(pathlib.Path(TREE) / "share")
        process = self.start(SHORT, RASTREL_RESOURCES=str(tree))
        _, error = process.communicate(timeout=30)
        self.assertEqual(process.returncode, 5, error)
        self.assertIn("no window can be shown: rastrel-window.so is not installed", error)


if __name__ == "__main__":
    display.main(NEEDED)
