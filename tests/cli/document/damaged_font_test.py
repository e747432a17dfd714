"""A font that can't be opened ends in an error, and never in a drawing without letters.

usage: damaged_font_test.py COMMAND
"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest
from xml.sax.saxutils import escape

COMMAND = os.path.abspath(sys.argv.pop(1))
FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"
TEMPLATE = """<ABB>
<ENGRAVINGTEMPLATE><PLATES/>
<PLATE><COLOR>Gold</COLOR><WIDTH>3</WIDTH><HEIGHT>1</HEIGHT>
<TEXTCOLOR>Black</TEXTCOLOR><TEXT data='Ada'><FONT name='DejaVuSans.ttf' size='0.2'/></TEXT></PLATE>
</ENGRAVINGTEMPLATE></ABB>
"""


class DamagedFont(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="rastrel-font-")
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)
        (self.place / "fonts").mkdir()
        shutil.copy(FONT, self.place / "fonts")
        (self.place / "plates.xml").write_text(TEMPLATE)
        (self.place / "fonts.conf").write_text(
            '<?xml version="1.0"?><!DOCTYPE fontconfig SYSTEM "fonts.dtd">'
            f"<fontconfig><dir>{escape(str(self.place))}/fonts</dir>"
            f"<cachedir>{escape(str(self.place))}/cache</cachedir></fontconfig>")

    def draw(self, name):
        return subprocess.run([COMMAND, "import", "plates.xml", "-o", name], cwd=self.place,
                              env={**os.environ, "FONTCONFIG_FILE": f"{self.place}/fonts.conf"},
                              capture_output=True, text=True, check=False)

    def test_a_font_that_can_not_be_opened_is_named_and_no_file_is_made(self):
        self.assertEqual(self.draw("whole.png").returncode, 0)
        # The directory stays as it was, so that the list of fonts still has the font.
        (self.place / "fonts/DejaVuSans.ttf").write_bytes(b"no font" * 100)
        for kind in ("png", "pdf", "svg"):
            drawn = self.draw(f"plates.{kind}")
            self.assertEqual(drawn.returncode, 1, kind)
            self.assertEqual(drawn.stderr,
                             "rastrel: a font of the text \"Ada\" can't be opened: \"DejaVu Sans\"\n")
            self.assertFalse((self.place / f"plates.{kind}").exists())


if __name__ == "__main__":
    unittest.main()
