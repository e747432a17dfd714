"""The drawing program is within its walls when it reads foreign bytes: code that runs in it opens no
file but libraries and fonts, makes no socket, reaches no other process and executes nothing.

usage: walls_test.py DRAWING_PROGRAM VIOLATING_LIBRARY
"""

import base64
import ctypes
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

DRAWING, VIOLATING = sys.argv.pop(1), sys.argv.pop(1)
LIMIT = 60  # seconds that a run may take
LIMITS = ["60", "600", str(3 << 30)]
PNG = base64.b64decode("iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNk+M9QDwADhgGAWjR9awAAAABJRU5ErkJggg==")


def walls():
    """Whether the kernel has walls around files (Landlock) and around calls (seccomp) for this process."""
    create_ruleset, version = 444, 1
    files = ctypes.CDLL(None, use_errno=True).syscall(create_ruleset, None, 0, version) > 0
    return files, "Seccomp_filters:" in pathlib.Path("/proc/self/status").read_text()


class Walls(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="rastrel-walls-")
        self.addCleanup(place.cleanup)
        self.secret = pathlib.Path(place.name) / "secret"
        self.secret.write_text("secret")
        pathlib.Path(f"{self.secret}.gone").write_text("stays")

    def attempts(self, words, content=b""):
        """The report of the library within that program, by name, and the program's output."""
        done = subprocess.run(words, input=content, capture_output=True, timeout=LIMIT, check=False,
                              env={**os.environ, "LD_PRELOAD": VIOLATING, "LC_RASTREL_SECRET": str(self.secret)})
        line = done.stderr.decode().splitlines()[-1]
        return dict(attempt.split("=") for attempt in line.split()), done.stdout

    def test_a_program_without_walls_lets_all_of_it_through(self):
        found, _ = self.attempts([sys.executable, "-c", "import os; os._exit(0)"])
        for name in ("secret", "overwrite", "make", "remove", "local-socket", "signal", "run"):
            self.assertEqual(found[name], "done", name)

    def test_code_in_the_drawing_program_gets_nowhere(self):
        found, output = self.attempts([DRAWING, *LIMITS, "measure", "png"], PNG)
        self.assertTrue(output.endswith(b"D" + bytes(8)), "it measured the picture all the same")
        files, calls = walls()
        if files:
            for name in ("passwd", "secret", "overwrite", "make", "remove"):
                self.assertEqual(found[name], "EACCES", name)
            self.assertEqual(self.secret.read_text(), "secret")
            self.assertEqual(found["library"], "done")
        if calls:
            for name in ("socket", "local-socket", "signal", "run"):
                self.assertEqual(found[name], "EPERM", name)
        if not files or not calls:
            self.skipTest(f"this machine's walls: files {files}, calls {calls}")


if __name__ == "__main__":
    unittest.main()
