"""Runs `rastrel cut --show` on a display without a screen: looks at its window, closes it, and sees what
is written.

usage: cut_show_test.py COMMAND BUILD_TREE
"""

import os
import pathlib
import sys
import tempfile

import display

COMMAND, TREE = (os.path.abspath(sys.argv.pop(1)) for _ in range(2))
NEEDED = ("Xvfb", "xdotool", "gs")

SIGN = """%!PS-Adobe-3.0 EPSF-3.0
%%BoundingBox: 0 0 288 144
0.2 0.4 0.8 setrgbcolor 0 0 288 144 rectfill
1 0 0 setrgbcolor 2 setlinewidth 20 20 248 104 rectstroke
showpage
"""
RULES = """[[rule]]
name = "contour"
rgb = "#ff0000"
operation = "cut"
"""
BLUE, RED = "3366CC", "FF0000"  # 0.2 0.4 0.8 are 51, 102 and 204 of 255


class CutShow(display.DisplayTest):
    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="rastrel-cut-show-")
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)
        (self.place / "runtime").mkdir(mode=0o700)
        (self.place / "sign.eps").write_text(SIGN, encoding="ascii")
        (self.place / "rules.toml").write_text(RULES, encoding="ascii")
        self.make_environment(self.place / "home", TREE, self.place / "runtime", leaks=False)

    def start(self, *words, **extra):
        return self.started([COMMAND, "cut", "sign.eps", "--rules", "rules.toml", "--show", *words],
                            self.place, **extra)

    def window(self):
        return self.window_named("sign.eps - print and knife")

    def test_print_and_path_are_seen_and_the_result_comes_when_the_window_is_closed(self):
        process = self.start("-o", "sign.json")
        window = self.window()
        self.wait_until("the print", lambda: self.window_picture(window).colors().get(BLUE, 0) > 20_000)
        self.assertGreater(self.window_picture(window).colors().get(RED, 0), 500)
        self.save_picture("cut-show", window)
        self.assertFalse((self.place / "sign.json").exists())
        self.xdotool("windowfocus", "--sync", window)
        self.press("Escape")
        output, error = process.communicate(timeout=30)
        self.assertEqual((process.returncode, output, error), (0, "sign.json\n", ""))
        self.assertTrue((self.place / "sign.json").exists())

    def test_a_job_that_is_only_looked_at_writes_nothing(self):
        process = self.start()
        self.xdotool("windowfocus", "--sync", self.window())
        self.press("ctrl+w")
        self.assertEqual(process.communicate(timeout=30), ("", ""))
        self.assertEqual(process.returncode, 0)
        self.assertEqual(sorted(entry.name for entry in self.place.iterdir()),
                         ["home", "rules.toml", "runtime", "sign.eps"])

    def test_without_a_display_it_says_so_before_it_reads_the_file(self):
        (self.place / "sign.eps").unlink()
        process = self.start(DISPLAY="")
        self.assertEqual(process.communicate(timeout=30), (
            "", "rastrel: --show: no window can be shown: there is no display: the variable DISPLAY is "
            "not set\n"))
        self.assertEqual(process.returncode, 5)


if __name__ == "__main__":
    display.main(NEEDED)
