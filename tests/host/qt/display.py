"""A display without a screen, for tests that show real windows."""

import collections
import os
import pathlib
import shutil
import struct
import subprocess
import sys
import tempfile
import time
import unittest
import zlib

PICTURES = os.environ.get("RASTREL_TEST_PICTURES")  # where windows are saved, for a person to look at
XWD_COLOR = 12  # bytes of an entry of a dump's color map
XWD_FIELDS = 25  # numbers at its beginning


class Picture:
    """A part of the screen: pixels of four bytes, blue first, in rows from the top."""

    def __init__(self, rows):
        self.rows = rows

    def colors(self):
        """How many pixels have a color, by "RRGGBB"."""
        counts = collections.Counter()
        for row in self.rows:
            counts.update(row[at:at + 3] for at in range(0, len(row), 4))
        return {pixel[::-1].hex().upper(): count for pixel, count in counts.items()}

    def save(self, path):
        """Writes a PNG file."""
        lines = []
        for row in self.rows:
            line = bytearray(len(row) // 4 * 3)
            line[0::3], line[1::3], line[2::3] = row[2::4], row[1::4], row[0::4]
            lines.append(b"\0" + line)

        def chunk(kind, data):
            return (struct.pack(">I", len(data)) + kind + data
                    + struct.pack(">I", zlib.crc32(kind + data)))

        header = struct.pack(">IIBBBBB", len(self.rows[0]) // 4, len(self.rows), 8, 2, 0, 0, 0)
        pathlib.Path(path).write_bytes(
            b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header)
            + chunk(b"IDAT", zlib.compress(b"".join(lines))) + chunk(b"IEND", b""))


class DisplayTest(unittest.TestCase):
    """Its tests share one display, whose name is `name`. A program that shows a window gets
    `environment`, which make_environment makes."""

    @classmethod
    def setUpClass(cls):
        cls.buffers = tempfile.TemporaryDirectory(prefix="rastrel-screen-")
        read, write = os.pipe()
        cls.display = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write), "-screen", "0", "1600x1400x24", "-nolisten", "tcp",
             "-noreset", "-fbdir", cls.buffers.name],
            pass_fds=(write,), stderr=subprocess.DEVNULL)
        os.close(write)
        with os.fdopen(read) as number:
            cls.name = ":" + number.readline().strip()

    @classmethod
    def tearDownClass(cls):
        cls.display.terminate()
        cls.display.wait()
        cls.buffers.cleanup()

    def make_environment(self, home, tree, runtime, *, leaks=True, **more):
        """The environment of a program of the build tree that has its data root at `home`, and a
        private directory for the toolkit. `leaks`: a sanitizer looks for them."""
        # The toolkit's own threads and locks are none of a sanitizer's business: it can't see how they
        # keep each other out, and a leak check crashes itself in those that are left behind.
        sanitizers = {"TSAN_OPTIONS": "ignore_noninstrumented_modules=1"}
        if not leaks:
            sanitizers["ASAN_OPTIONS"] = "detect_leaks=0"
        for name, option in sanitizers.items():
            sanitizers[name] = ":".join([*filter(None, [os.environ.get(name)]), option])
        self.environment = dict(os.environ, DISPLAY=self.name, RASTREL_HOME=str(home),
                                RASTREL_RESOURCES=str(tree), QT_QPA_PLATFORM="xcb", QT_ACCESSIBILITY="0",
                                XDG_RUNTIME_DIR=str(runtime), **sanitizers, **more)

    def xdotool(self, *words, check=True):
        return subprocess.run(["xdotool", *words], env=self.environment, text=True, check=check,
                              capture_output=True).stdout.strip()

    def started(self, command, place, **extra):
        """A program with its output and errors as pipes, which has ended when the test has."""
        process = subprocess.Popen(command, cwd=place, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   text=True, env=dict(self.environment, **extra))
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.stderr.close)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def wait_until(self, what, condition):
        """The condition's first result that is true."""
        for _ in range(600):
            found = condition()
            if found:
                return found
            time.sleep(0.05)
        return self.fail(f"{what} never came")

    def window_named(self, title):
        """The number of the window, once it is seen."""
        return self.wait_until("the window", lambda: self.xdotool(
            "search", "--onlyvisible", "--name", title, check=False)).split()[0]

    def press(self, *keys):
        # As from a keyboard: a key that goes to a window by name stays down when the window goes first.
        for key in keys:
            self.xdotool("key", key)

    def press_cancel(self, window):
        """Clicks the one button of a progress window, which is at the lower right."""
        _, _, width, height = self.geometry(window)
        self.xdotool("mousemove", "--window", window, str(width - 40), str(height - 20), "click", "1")

    @classmethod
    def geometry(cls, window):
        """Left, top, width and height of a window, in pixels of the screen."""
        shown = subprocess.run(["xdotool", "getwindowgeometry", "--shell", window],
                               env=dict(os.environ, DISPLAY=cls.name), text=True, check=True,
                               capture_output=True).stdout
        values = dict(line.split("=") for line in shown.splitlines())
        return [int(values[name]) for name in ("X", "Y", "WIDTH", "HEIGHT")]

    def save_picture(self, name, window):
        """Saves the window, if a person wants to look at it."""
        if PICTURES:
            self.window_picture(window).save(f"{PICTURES}/{name}.png")

    @classmethod
    def window_picture(cls, window):
        """The part of the screen that a window takes."""
        return cls.screen(*cls.geometry(window))

    @classmethod
    def screen(cls, left, top, width, height):
        """A part of the screen as it is now. The display keeps its pixels in a file, as a dump of a
        window: big-endian numbers, a color map, rows of pixels."""
        dump = (pathlib.Path(cls.buffers.name) / "Xvfb_screen0").read_bytes()
        numbers = struct.unpack_from(f">{XWD_FIELDS}I", dump)
        row_bytes = numbers[12]
        begin = numbers[0] + numbers[19] * XWD_COLOR
        height, width = min(height, numbers[5] - top), min(width, numbers[4] - left)
        return Picture([dump[begin + y * row_bytes + left * 4:][:width * 4]
                        for y in range(top, top + height)])


def main(needed):
    """Runs the tests of the calling program; skips them all where a program that they need lacks."""
    missing = [name for name in needed if shutil.which(name) is None]
    if missing:
        print("skipped: not installed:", ", ".join(missing))
        sys.exit(77)
    unittest.main(verbosity=2)
