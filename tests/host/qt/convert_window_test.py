"""Runs `rastrel convert --window` with the real queue program on a display without a screen: the dialog
shows the page and its cut line, and OK makes the file.

usage: convert_window_test.py COMMAND BUILD_TREE
"""

import os
import pathlib
import subprocess
import sys
import tempfile
import time

import display

COMMAND, TREE = (os.path.abspath(sys.argv.pop(1)) for _ in range(2))
NEEDED = ("Xvfb", "xdotool", "gs")

# A blue square, and beside it the outline of a red one.
SIGN = ("%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 144 72\n%%EndComments\n"
        "0 0 1 setrgbcolor 0 0 72 72 rectfill\n"
        "1 0 0 setrgbcolor 90 18 36 36 rectstroke showpage\n")
BLUE, RED, MAGENTA, BLACK = "0000FF", "FF0000", "FF00FF", "000000"


class ConvertWindow(display.DisplayTest):
    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="rastrel-convert-window-")
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)
        for name in ("temporary", "runtime"):
            (self.place / name).mkdir(mode=0o700)
        (self.place / "sign.eps").write_text(SIGN, encoding="ascii")
        self.make_environment(self.place / "home", TREE, self.place / "runtime", LC_ALL="C.UTF-8",
                              TMPDIR=str(self.place / "temporary"))

    def window(self, title):
        for _ in range(400):
            found = self.xdotool("search", "--onlyvisible", "--name", title, check=False)
            if found:
                self.xdotool("windowfocus", "--sync", found.split()[0])
                return found.split()[0]
            time.sleep(0.05)
        self.fail(f"no window {title}")

    def convert(self, name="sign.eps"):
        process = subprocess.Popen([COMMAND, "convert", name, "-o", "sign.svg", "--window"],
                                   cwd=self.place, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   text=True, env=self.environment)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.stderr.close)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process, self.window("^Convert to Bitmap$")

    def see(self, name, window, pixels):
        """Waits until the window shows so many pixels of each color."""
        for _ in range(400):
            picture = self.window_picture(window)
            colors = picture.colors()
            if all(colors.get(color, 0) >= count for color, count in pixels.items()):
                if display.PICTURES:
                    picture.save(f"{display.PICTURES}/{name}.png")
                return colors
            time.sleep(0.05)
        self.fail(f"{name}: {pixels} never came, but {colors}")
        return None

    def left(self):
        """Files in the data root's directories of jobs, and of the system."""
        places = (self.place / "home" / "jobs", self.place / "temporary")
        return [str(path) for place in places for path in place.rglob("*") if not path.is_dir()]

    def test_the_page_and_its_cut_line_are_shown_and_ok_makes_the_file(self):
        process, window = self.convert()
        colors = self.see("convert-page", window, {BLUE: 1000, RED: 50})
        # The cut line is on from its key on; red is picked in the editor.
        self.press("alt+l")
        # The picker of black is not gray any more, once it is enabled.
        self.see("convert-black", window, {BLACK: colors.get(BLACK, 0) + 150})
        self.press("Tab", "Tab", "space")
        self.window("^RGB colour$")
        self.press("alt+r", "ctrl+a")
        self.xdotool("type", "--delay", "20", "255")
        self.press("Return")
        window = self.window("^Convert to Bitmap$")
        self.see("convert-cut-line", window, {BLUE: 1000, MAGENTA: 100})
        self.window("^Convert to Bitmap$")
        self.press("Return")
        output, error = process.communicate(timeout=60)
        self.assertEqual(process.returncode, 0, output + error)
        self.assertTrue((self.place / "sign.svg").exists())
        self.assertNotIn("warning", error, "a colour that was shown once, and met no paint")
        self.assertEqual(self.left(), [])

    def test_a_pdf_has_its_size_and_its_preview(self):
        content = "0 0 1 rg 0 0 72 72 re f /K CS 1 SCN 90 18 36 36 re S"
        objects = ["<</Type/Catalog/Pages 2 0 R>>", "<</Type/Pages/Kids[3 0 R]/Count 1>>",
                   "<</Type/Page/Parent 2 0 R/MediaBox[0 0 144 72]/Contents 4 0 R/Resources<</ColorSpace<</K "
                   "[/Separation/Knife/DeviceRGB<</FunctionType 2/Domain[0 1]/C0[1 1 1]/C1[1 0 0]/N 1>>]>>>>>>",
                   f"<</Length {len(content)}>>stream\n{content}\nendstream"]
        body = "".join(f"{number} 0 obj{thing}endobj\n" for number, thing in enumerate(objects, 1))
        (self.place / "sign.pdf").write_text(f"%PDF-1.4\n{body}trailer<</Root 1 0 R>>\n%%EOF\n")
        process, window = self.convert("sign.pdf")
        self.see("convert-pdf", window, {BLUE: 1000, RED: 50})
        self.press("Return")
        output, error = process.communicate(timeout=60)
        self.assertEqual(process.returncode, 0, output + error)
        svg = (self.place / "sign.svg").read_text()
        self.assertIn('width="50.8mm"', svg)
        self.assertEqual(self.left(), [])

    def test_escape_makes_nothing_and_leaves_nothing(self):
        process, window = self.convert()
        self.see("convert-escape", window, {BLUE: 1000})
        self.press("Escape")
        process.communicate(timeout=60)
        self.assertNotEqual(process.returncode, 0)
        self.assertFalse((self.place / "sign.svg").exists())
        self.assertEqual(self.left(), [])

    def test_escape_while_the_preview_is_drawn_ends_it(self):
        (self.place / "sign.eps").write_text(SIGN.replace("showpage", "{ } loop"), encoding="ascii")
        process, _ = self.convert()
        time.sleep(0.5)
        self.press("Escape")
        process.communicate(timeout=60)
        self.assertNotEqual(process.returncode, 0)
        self.assertEqual(self.left(), [])


if __name__ == "__main__":
    display.main(NEEDED)
