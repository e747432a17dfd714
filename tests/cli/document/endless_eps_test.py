"""A document with placed EPS files that do not end is drawn without them, in bounded time, and its
files are named; nothing of the interpreter's is left.

usage: endless_eps_test.py COMMAND SOURCE_TREE
"""

import base64
import json
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

COMMAND, SOURCES = os.path.abspath(sys.argv.pop(1)), pathlib.Path(sys.argv.pop(1)).absolute()
ENDLESS = b"%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 99 99\n%%EndComments\n{} loop\n"
LIMIT = 120  # seconds that a condition may take


def graphic(number, name, file):
    return {"id": number, "kind": "graphic", "layer": "invisible", "lineColor": "invisible", "lineWidth": 0,
            "lineStyle": 16, "sheetLayer": 1, "pages": [1, 1], "traits": ["visible", "in-document"],
            "fileKind": "eps", "name": name, "width": 3, "height": 3, "file": base64.b64encode(file).decode()}


def processes_with(temporary):
    """Processes whose temporary directory is that one, or that work below it, as the interpreter does."""
    found = []
    for process in pathlib.Path("/proc").iterdir():
        try:
            variables = (process / "environ").read_bytes() if process.name.isdigit() else b""
            works = variables and os.readlink(process / "cwd").startswith(str(temporary))
        except OSError:
            continue
        if works or any(entry.startswith(b"TMPDIR=" + os.fsencode(temporary)) for entry in variables.split(b"\0")):
            found.append((process / "comm").read_text().strip() if (process / "comm").exists() else "")
    return found


def wait_until(condition):
    end = time.monotonic() + LIMIT
    while not condition():
        if time.monotonic() > end:
            return False
        time.sleep(0.01)
    return True


@unittest.skipUnless(shutil.which("gs"), "Ghostscript is not installed")
class EndlessEps(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="rastrel-endless-")
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)
        self.temporary = self.place / "tmp"
        self.temporary.mkdir()
        self.environment = {**os.environ, "TMPDIR": str(self.temporary), "RASTREL_HOME": str(self.place / "home")}

    def write_document(self, *names):
        plates = SOURCES / "examples/plates/name-badge.xml"
        subprocess.run([COMMAND, "import", str(plates), "-o", "sign.rdoc"], cwd=self.place, check=True,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, env=self.environment)
        document = json.loads((self.place / "sign.rdoc").read_text(encoding="utf-8"))
        number = 1000
        for name in names:
            number += 1
            # Files that are alike are opened once.
            document["objects"].append(graphic(number, name, ENDLESS + name.encode()))
        (self.place / "sign.rdoc").write_text(json.dumps(document), encoding="utf-8")

    def test_is_ended_at_the_limit_and_named(self):
        self.write_document("one.eps", "two.eps")
        self.environment["RASTREL_RIP_TIMEOUT"] = "1"
        done = subprocess.run([COMMAND, "view", "sign.rdoc", "-o", "sign.svg"], cwd=self.place, timeout=LIMIT,
                              env=self.environment, capture_output=True, text=True)
        for name in ("one.eps", "two.eps"):
            self.assertIn(f'"{name}" can\'t be drawn: the interpreter took more than 1 second',
                          done.stderr + done.stdout)
        self.assertEqual(list(self.temporary.iterdir()), [])
        self.assertEqual(processes_with(self.temporary), [])

    def test_ends_with_a_command_that_is_killed(self):
        self.write_document("one.eps")
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGKILL):
            with self.subTest(signal=number):
                command = subprocess.Popen([COMMAND, "view", "sign.rdoc", "-o", "sign.svg"], cwd=self.place,
                                           env=self.environment, stdout=subprocess.DEVNULL,
                                           stderr=subprocess.DEVNULL)
                self.assertTrue(wait_until(lambda: command.poll() is not None
                                           or "gs" in processes_with(self.temporary)))
                self.assertIsNone(command.poll(), "it ended by itself")
                command.send_signal(number)
                command.wait(LIMIT)
                self.assertTrue(wait_until(lambda: processes_with(self.temporary) == []))
                self.assertEqual(list(self.temporary.iterdir()), [])


if __name__ == "__main__":
    unittest.main()
