"""Foreign text that the command shows: names of files and jobs, titles, colours and records.

None of it may steer the terminal or look like a line of the command's own. What the user asked for as
data stays as it is in a file or a pipe, and is cleaned on a terminal.

usage: shown_text_test.py COMMAND
"""

import json
import os
import pathlib
import pty
import subprocess
import sys
import tempfile
import unittest

COMMAND = os.path.abspath(sys.argv.pop(1))
CSI = "\u009b"  # begins a control sequence, as ESC [ does
EVIL = f"a\x1b[2J\nrastrel: forged\r{CSI}31m\u202egnp.\u2028z"
CLEAN = r"a\x1b[2J\x0arastrel: forged\x0d\u009b31m\u202egnp.\u2028z"
LIMIT = 300  # seconds until a command counts as hanging

INFO = """Rastrel page 1
job: %1B]0;owned%07
printer: Print%0Ar%C2%9B
mode: TIFF/tiff default.ps
page: 1
width: 1
height: 1
x-resolution: 72
y-resolution: 72
bits: 8
colour: separations
plane: 0 page.tif Spot%0A%1B[2J
file: 1 2d711642b726b04401627ca9fbac32f5c8530fb1903cc4db02258717921a4881 page.tif
end
"""

NOTES = f"""<?xml version="1.0" encoding="UTF-8"?>
<JOBNOTESLIST><COMPANY><ADDRESS><NAME>Mill{CSI}2J\u202ebakery</NAME></ADDRESS></COMPANY></JOBNOTESLIST>
"""


class ShownText(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="rastrel-shown-")
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)
        self.home = self.place / "home"
        self.environment = {**os.environ, "RASTREL_HOME": str(self.home), "TERM": "xterm",
                            "NO_COLOR": "1"}

    def run_piped(self, *words):
        return subprocess.run([COMMAND, *words], cwd=self.place, env=self.environment, timeout=LIMIT,
                              stdin=subprocess.DEVNULL, capture_output=True, check=False)

    def on_terminal(self, *words):
        """All that the terminal gets."""
        mine, its = pty.openpty()
        process = subprocess.Popen([COMMAND, *words], cwd=self.place, env=self.environment, stdin=its,
                                   stdout=its, stderr=its)
        os.close(its)
        shown = b""
        while True:
            try:
                part = os.read(mine, 65536)
            except OSError:  # how a terminal without a program ends
                break
            if not part:
                break
            shown += part
        os.close(mine)
        process.wait(LIMIT)
        return shown.decode().replace("\r\n", "\n")

    def expect_clean(self, shown, lines=None):
        """Nothing in it but text and line ends, and perhaps so many lines."""
        for character in shown.replace("\n", "").replace("\t", ""):
            self.assertTrue(character.isprintable(), (character, shown))
        self.assertFalse([line for line in shown.splitlines() if line.startswith("rastrel: forged")])
        if lines is not None:
            self.assertEqual(shown.count("\n"), lines, shown)

    def put_job(self, name):
        self.run_piped("spool", "list")
        page = self.home / "Queue/rip/CFM" / (name + ".cfm") / "p1"
        page.mkdir(parents=True)
        (page / ".info").write_text(INFO)
        (page / "page.tif").write_text("x")

    def test_a_message_about_a_file_is_one_line(self):
        result = self.run_piped("print", EVIL)
        self.assertEqual(result.returncode, 3)
        shown = result.stderr.decode()
        self.expect_clean(shown, 1)
        self.assertIn(CLEAN, shown)

    def test_what_is_printed_is_named_on_one_line(self):
        (self.place / EVIL).write_text("%!PS\nshowpage\n")
        (self.place / "b.ps").write_text("%!PS\nshowpage\n")
        shown = self.run_piped("print", EVIL, "b.ps", "--pages", "7").stderr.decode()
        self.expect_clean(shown)
        self.assertIn(f"printing: {CLEAN}\n", shown)

    def test_the_spool_is_listed_in_one_line_a_job(self):
        self.put_job(EVIL.replace("/", ""))
        for shown in (self.run_piped("spool", "list").stdout.decode(),
                      self.on_terminal("spool", "list")):
            self.expect_clean(shown, 1)
            self.assertTrue(shown.startswith(CLEAN + "\t1 page\t"), shown)

    def test_the_spool_shows_colours_and_printers_with_the_numbers_of_their_controls(self):
        self.put_job("sign")
        shown = self.run_piped("spool", "show", "sign").stdout.decode()
        self.expect_clean(shown, 2)
        self.assertIn("separations (Spot\\x0a\\x1b[2J)", shown)
        self.assertIn("\tPrint\\x0ar\\u009b\t", shown)

    def test_json_has_the_very_names_and_no_control_character(self):
        self.put_job("sign")
        output = self.run_piped("spool", "show", "sign", "--json").stdout.decode()
        self.expect_clean(output, 2)
        page = json.loads(output.splitlines()[1])
        self.assertEqual(page["planes"], ["Spot\n\x1b[2J"])
        self.assertEqual(page["printer"], f"Print\nr{CSI}")

    def test_inspect_cleans_titles_and_names(self):
        # The readers take bytes for Windows-1252, where 81 is a control character, U+0081.
        (self.place / "sign.eps").write_bytes(b"%!PS-Adobe-3.0 EPSF-3.0 \x1b[2J\x81\n"
                                              b"%%BoundingBox: 0 0 72 72\n"
                                              b"%%DocumentCustomColors: (Cut\x81\x07)\n")
        for shown in (self.run_piped("inspect", "sign.eps").stdout.decode(),
                      self.on_terminal("inspect", "sign.eps"),
                      self.run_piped("inspect", "--tsv", "sign.eps").stdout.decode()):
            self.expect_clean(shown)
            self.assertIn("EPSF-3.0 \\x1b[2J\\u0081", shown)
            self.assertIn("Cut\\u0081\\x07", shown)
        (self.place / EVIL).write_text("no PostScript")
        self.expect_clean(self.run_piped("inspect", EVIL).stdout.decode(), 1)

    def test_notes_are_data_in_a_pipe_and_cleaned_on_a_terminal(self):
        (self.place / "notes.xml").write_text(NOTES, encoding="utf-8")
        self.assertIn(f"Mill{CSI}2J\u202ebakery\n",
                      self.run_piped("notes", "notes.xml").stdout.decode())
        shown = self.on_terminal("notes", "notes.xml")
        self.expect_clean(shown)
        self.assertIn("Mill\\u009b2J\\u202ebakery\n", shown)

    def test_the_text_of_a_sheet_is_data_in_a_pipe_and_cleaned_on_a_terminal(self):
        (self.place / "book.fods").write_text(
            '<?xml version="1.0" encoding="UTF-8"?>\n<office:document '
            'xmlns:office="urn:oasis:names:tc:opendocument:xmlns:office:1.0" '
            'xmlns:table="urn:oasis:names:tc:opendocument:xmlns:table:1.0" '
            'xmlns:text="urn:oasis:names:tc:opendocument:xmlns:text:1.0" '
            'office:mimetype="application/vnd.oasis.opendocument.spreadsheet"><office:body>'
            '<office:spreadsheet><table:table table:name="one"><table:table-row>'
            '<table:table-cell office:value-type="string">'
            f'<text:p>Sign{CSI}2J</text:p></table:table-cell></table:table-row></table:table>'
            '</office:spreadsheet></office:body></office:document>', encoding="utf-8")
        for form in ("--faithful", "--as-shown"):
            self.assertIn(f"Sign{CSI}2J", self.run_piped("sheet", form, "book.fods").stdout.decode())
            self.assertIn("Sign\\u009b2J", self.on_terminal("sheet", form, "book.fods"))

    def test_a_log_that_can_not_be_made_is_one_line_and_not_the_logs_own_texts(self):
        (self.place / "bad.xml").write_text("<a>")
        self.environment["RASTREL_HOME"] = "/proc/nowhere"
        result = self.run_piped("notes", "bad.xml")
        self.assertEqual(result.returncode, 3)
        lines = result.stderr.decode().splitlines()
        self.assertEqual(len(lines), 2, lines)
        self.assertRegex(lines[0], "^note: the application log can't be written: open "
                         r"'/proc/nowhere/Queue/rip/Rastrel-\d+\.log': No such file or directory")
        self.assertTrue(lines[1].startswith("rastrel: bad.xml:1:"), lines)

    def test_bytes_that_are_no_characters_are_one_line(self):
        (self.place / "bad.xml").write_bytes(b"<a>\n<b>x\xff</b></a>")
        result = self.run_piped("notes", "bad.xml")
        self.assertEqual(result.stderr.decode(),
                         "rastrel: bad.xml:2:5: the byte 0xFF begins no character of UTF-8\n")


if __name__ == "__main__":
    unittest.main()
