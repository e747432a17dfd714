"""Shows the dialog of a conversion to a bitmap in a real window on a display without a screen, and fills
it in by keyboard and mouse.

usage: convert_dialog_test.py PROGRAM BUILD_TREE

With RASTREL_TEST_PICTURES the window of each state is saved there, for a person to look at.
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
SCALES = ("1", "2")
START = f"{595 / 72 * 2.54:.17g}"  # the width that the program begins with

# Lines of the program once controls are to be used, and once they are not.
WITH_CUT_LINE, WITHOUT_CUT_LINE = "enabled 2013 1", "enabled 2013 0"
INKS, NAMES = "enabled 2018 1", "enabled 2024 1"


class ConvertDialog(display.DisplayTest):
    def setUp(self):
        self.home = pathlib.Path(tempfile.mkdtemp(prefix="rastrel-convert-"))
        self.addCleanup(shutil.rmtree, self.home)
        self.make_environment(self.home, TREE, self.home, leaks=False, LC_ALL="C.UTF-8")

    def window(self, title):
        """The window with that title, which has the keyboard."""
        for _ in range(400):
            found = self.xdotool("search", "--onlyvisible", "--name", title, check=False)
            if found:
                window = found.split()[0]
                self.xdotool("windowfocus", "--sync", window)
                time.sleep(0.3)
                return window
            time.sleep(0.05)
        self.fail(f"no window {title}")

    def gone(self, title):
        for _ in range(400):
            if not self.xdotool("search", "--onlyvisible", "--name", title, check=False):
                return
            time.sleep(0.05)
        self.fail(f"the window {title} stays")

    def show(self, *options, **extra):
        process = subprocess.Popen([PROGRAM, *options], stdout=subprocess.PIPE, text=True,
                                   env=dict(self.environment, **extra))
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process, self.window("^Convert to Bitmap$")

    def press(self, *keys):
        for key in keys:
            self.xdotool("key", key)
            time.sleep(0.05)

    def type(self, text):
        self.xdotool("type", "--delay", "20", "--", text)
        time.sleep(0.1)

    def answer(self, process):
        """The values at the dialog's end, by their names."""
        output = process.communicate(timeout=60)[0].partition("ended\n")[2]
        return dict(line.partition(" ")[::2] for line in output.splitlines())

    def turn(self, process, key, *lines):
        """Presses a key that turns a switch, and waits until the dialog has enabled these controls."""
        self.press(key)
        missing = set(lines)
        for _ in range(200):
            if not missing:
                return
            missing.discard(process.stdout.readline().strip())
        self.fail(f"{key}: {missing} did not come")

    def picture(self, name, window):
        """Looks at the window: how many pixels have a color."""
        time.sleep(0.3)
        picture = self.window_picture(window)
        if display.PICTURES:
            picture.save(f"{display.PICTURES}/{name}.png")
        return picture.colors()

    def test_enter_takes_the_start_values_as_they_were_set(self):
        process, _ = self.show()
        self.press("Return")
        self.assertEqual(self.answer(process), {
            "result": "1", "size": f"{START} 10", "resolution": "72", "cut": "0",
            "kind": "0", "color": "0 0 0 0", "name": "", "preview": "0 0"})

    def test_escape_cancels(self):
        process, _ = self.show()
        self.press("Escape")
        self.assertEqual(self.answer(process)["result"], "2")

    def test_the_keys_of_the_labels_reach_the_fields(self):
        process, _ = self.show()
        for key, text in (("alt+h", "12.5"), ("alt+w", "8,25"), ("alt+r", "300")):
            self.press(key, "ctrl+a")
            self.type(text)
        self.press("Return")
        values = self.answer(process)
        self.assertEqual(values["size"], "8.25 12.5", "width and height; comma or point")
        self.assertEqual(values["resolution"], "300")

    def test_the_tab_key_goes_from_field_to_field(self):
        process, _ = self.show()
        for text in ("1", "2", "30"):  # the first field has the keyboard
            self.press("ctrl+a")
            self.type(text)
            self.press("Tab")
        self.turn(process, "space", WITH_CUT_LINE)
        self.press("Tab")
        self.turn(process, "Down", INKS)  # from RGB to CMYK
        self.press("Return")
        values = self.answer(process)
        self.assertEqual((values["size"], values["resolution"]), ("2 1", "30"))
        self.assertEqual((values["cut"], values["kind"]), ("1", "1"))
        self.assertEqual(values["color"], "1 1 1 1", "the inks that a new user has")

    def test_the_arrows_step_by_the_control_s_step(self):
        process, _ = self.show()
        self.press("alt+h", "Up", "alt+r", "Up", "Up")
        self.press("Return")
        values = self.answer(process)
        self.assertEqual(values["size"], f"{START} 10.1")
        self.assertEqual(values["resolution"], "74")

    def test_a_value_below_the_minimum_can_not_be_entered(self):
        process, _ = self.show()
        for key, text in (("alt+h", "-5"), ("alt+r", "0"), ("alt+w", "x")):
            self.press(key, "ctrl+a")
            self.type(text)
        self.press("Return")
        values = self.answer(process)
        self.assertEqual(values["size"], f"{START} 5", "the sign was refused")
        self.assertEqual(values["resolution"], "72")

    def test_comma_and_point_are_decimal_marks_in_every_locale(self):
        for locale in ("C.UTF-8", "de_DE.UTF-8", "fr_CH.UTF-8"):
            process, window = self.show(LC_ALL=locale)
            self.press("alt+h", "ctrl+a")
            self.type("1234.5")
            self.press("alt+w", "ctrl+a")
            self.type("0,25")
            self.picture(f"locale-{locale}", window)
            self.press("Return")
            self.assertEqual(self.answer(process)["size"], "0.25 1234.5", locale)

    def test_a_rgb_color_is_edited(self):
        for scale in SCALES:
            process, window = self.show(QT_SCALE_FACTOR=scale)
            self.picture(f"no-names-{scale}", window)
            self.turn(process, "alt+l", WITH_CUT_LINE)
            self.press("Tab", "Tab", "space")
            editor = self.window("^RGB colour$")
            for key, text in (("alt+r", "255"), ("alt+g", "128"), ("alt+b", "300")):
                self.press(key, "ctrl+a")
                self.type(text)
            colors = self.picture(f"rgb-editor-{scale}", editor)
            self.assertGreater(colors.get("FF801E", 0), 500, "30 is the part of 300 that fits")
            self.press("Return")
            self.gone("^RGB colour$")
            window = self.window("^Convert to Bitmap$")
            colors = self.picture(f"rgb-{scale}", window)
            self.assertGreater(colors.get("FF801E", 0), 100, "the picker shows its color")
            self.press("Return")
            values = self.answer(process)
            self.assertEqual((values["cut"], values["kind"]), ("1", "0"))
            self.assertEqual(values["color"], "255 128 30 0")

    def test_inks_are_edited_in_percent(self):
        for scale in SCALES:
            process, window = self.show(QT_SCALE_FACTOR=scale)
            self.turn(process, "alt+l", WITH_CUT_LINE)
            self.turn(process, "alt+c", INKS)
            self.press("Tab", "space")
            editor = self.window("^CMYK colour$")
            for key, text in (("alt+c", "0"), ("alt+m", "100"), ("alt+y", "50.5"), ("alt+k", "0")):
                self.press(key, "ctrl+a")
                self.type(text)
            self.picture(f"cmyk-editor-{scale}", editor)
            self.press("Return")
            self.gone("^CMYK colour$")
            window = self.window("^Convert to Bitmap$")
            colors = self.picture(f"cmyk-{scale}", window)
            self.assertGreater(colors.get("FF007E", 0), 100, "255 (1 - 0.505) is 126")
            self.press("Return")
            values = self.answer(process)
            self.assertEqual((values["cut"], values["kind"]), ("1", "1"))
            self.assertEqual(values["color"], "0 1 0.505 0")
            settings = "".join(path.read_text(errors="replace")
                               for path in self.home.rglob("*.ini"))
            self.assertIn("0.000000, 1.000000, 0.505000, 0.000000,", settings)

    def test_a_cancelled_editor_leaves_the_color(self):
        process, _ = self.show()
        self.turn(process, "alt+l", WITH_CUT_LINE)
        self.press("Tab", "Tab", "space")
        self.window("^RGB colour$")
        self.press("alt+r", "ctrl+a")
        self.type("9")
        self.press("Escape")
        self.gone("^RGB colour$")
        self.window("^Convert to Bitmap$")
        self.press("Return")
        self.assertEqual(self.answer(process)["color"], "0 0 0 0")

    def test_a_named_color_is_chosen_from_the_list(self):
        for scale in SCALES:
            process, window = self.show("names", QT_SCALE_FACTOR=scale)
            self.turn(process, "alt+l", WITH_CUT_LINE)
            self.turn(process, "alt+n", NAMES)
            self.press("Tab", "Down")
            self.picture(f"named-{scale}", window)
            self.press("Return")
            values = self.answer(process)
            self.assertEqual((values["cut"], values["kind"]), ("1", "2"))
            self.assertEqual(values["name"], "Gold")

    def test_a_name_that_is_shown_cleaned_is_returned_as_it_was(self):
        process, window = self.show("names")
        self.turn(process, "alt+l", WITH_CUT_LINE)
        self.turn(process, "alt+n", NAMES)
        self.press("Tab", "Down", "Down")
        self.picture("hostile-name", window)
        self.press("Return")
        output = process.communicate(timeout=60)[0]
        self.assertIn("name two\nlines \u202egnorw\n", output)

    def test_without_bounds_the_sizes_are_hidden(self):
        heights = []
        for options in ((), ("no-bounds",)):
            for scale in SCALES:
                process, window = self.show(*options, QT_SCALE_FACTOR=scale)
                self.picture("-".join(("bounds", *options, scale)), window)
                heights.append(self.geometry(window)[3])
                self.press("ctrl+a")
                self.type("90")
                self.press("Return")
                values = self.answer(process)
                # The first field that is there has the keyboard.
                if options:
                    self.assertEqual((values["size"], values["resolution"]),
                                     (f"{START} 10", "90"))
                else:
                    self.assertEqual((values["size"], values["resolution"]),
                                     (f"{START} 90", "72"))
        self.assertLess(heights[2], heights[0] - 40)

    def test_without_a_cut_line_its_fields_take_no_key(self):
        process, window = self.show("names")
        self.picture("no-cut-line", window)
        self.press("alt+c")
        self.turn(process, "alt+l", WITH_CUT_LINE)
        self.turn(process, "alt+n", NAMES)
        self.turn(process, "alt+l", WITHOUT_CUT_LINE)
        self.picture("cut-line-cleared", window)
        self.press("alt+b", "Return")
        values = self.answer(process)
        self.assertEqual((values["cut"], values["kind"]), ("0", "2"))

    def test_the_preview_follows_the_values(self):
        for scale in SCALES:
            process, window = self.show("preview", QT_SCALE_FACTOR=scale)
            time.sleep(0.5)
            colors = self.picture(f"preview-{scale}", window)
            self.assertGreater(colors.get("FFFFFF", 0), 10000)
            self.turn(process, "alt+l", WITH_CUT_LINE)
            self.press("Tab", "Tab", "space")
            self.window("^RGB colour$")
            self.press("alt+r", "ctrl+a")
            self.type("255")
            self.press("Return")
            self.gone("^RGB colour$")
            window = self.window("^Convert to Bitmap$")
            colors = self.picture(f"preview-red-{scale}", window)
            self.assertGreater(colors.get("FF0000", 0), 2000, "its border has the color")
            self.press("Return")
            self.assertEqual(self.answer(process)["preview"], "1 1")

    def test_the_window_grows_with_the_screen_s_scale(self):
        widths = []
        for scale in SCALES:
            process, window = self.show(QT_SCALE_FACTOR=scale)
            widths.append(self.geometry(window)[2])
            self.press("Escape")
            self.answer(process)
        self.assertAlmostEqual(widths[1] / widths[0], 2, delta=0.1)


if __name__ == "__main__":
    display.main(NEEDED)
