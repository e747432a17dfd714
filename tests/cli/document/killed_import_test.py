"""An import that is killed leaves nothing in the directory for temporary files.

usage: killed_import_test.py COMMAND
"""

import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time
import unittest

COMMAND = os.path.abspath(sys.argv.pop(1))
LIMIT = 90  # seconds; an import of these files takes longer than any wait here

# The import waits in this graphic's drawing, which is ended after two minutes.
ENDLESS = "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 72 72\n{} loop\n"

TEMPLATES = {
    # The first generation is imported from a copy, beside which its cut line is written.
    "plate.cr2": """<engraving_template><table_size width="10" height="5"/>
<template><placement width="4" height="2"/></template>
<graphics><graphic_location name="art"><file>endless.eps</file></graphic_location></graphics>
<plates><plate><graphic_frame><graphic>art</graphic><placement width="1" height="1"/></graphic_frame>
</plate></plates></engraving_template>""",
    # The second writes its cut line to the host's own directory.
    "plate.zml": """<ENGRAVINGTEMPLATE><table_size width="10" height="5"/>
<template><placement width="4" height="2"/>
<cutline format="FILE" file="endless.eps"><FILE/><placement width="1" height="1"/></cutline></template>
<plates><plate/></plates></ENGRAVINGTEMPLATE>""",
}


def wait_until(condition, event):
    end = time.monotonic() + LIMIT
    while not condition():
        if time.monotonic() > end:
            raise AssertionError(f"{event} did not happen in {LIMIT} seconds")
        time.sleep(0.01)


class KilledImport(unittest.TestCase):
    def leaves_nothing(self, name):
        with tempfile.TemporaryDirectory(prefix="rastrel-killed-") as directory:
            place = pathlib.Path(directory)
            temporary = place / "temporary"
            temporary.mkdir()
            (place / "endless.eps").write_text(ENDLESS, encoding="ascii")
            (place / name).write_text(TEMPLATES[name], encoding="ascii")
            surroundings = dict(os.environ, TMPDIR=str(temporary), RASTREL_HOME=str(place / "home"))
            command = subprocess.Popen([COMMAND, "import", name], cwd=place, env=surroundings,
                                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            try:
                wait_until(lambda: list(temporary.glob("rastrel-import-*/*")), "the copy")
                # Killed before its end, else nothing is shown.
                self.assertIsNone(command.poll())
            finally:
                command.send_signal(signal.SIGKILL)
                command.wait()
            wait_until(lambda: not list(temporary.iterdir()), "the end of all temporary files")

    def test_of_the_first_generation_leaves_nothing(self):
        self.leaves_nothing("plate.cr2")

    def test_of_the_second_generation_leaves_nothing(self):
        self.leaves_nothing("plate.zml")


if __name__ == "__main__":
    unittest.main()
