"""What `rastrel view` and `rastrel import` show on a terminal that takes pictures, and on others.

usage: terminal_test.py COMMAND SOURCE_TREE
"""

import base64
import fcntl
import os
import pathlib
import pty
import re
import select
import subprocess
import sys
import tempfile
import termios
import unittest

from png_picture import Picture, difference

COMMAND, SOURCES = os.path.abspath(sys.argv.pop(1)), pathlib.Path(sys.argv.pop(1)).resolve()
EXAMPLE = SOURCES / "examples/plates/further-pages.xml"


class Terminal(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="rastrel-terminal-")
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)
        self.temporary = self.place / "temporary"
        self.temporary.mkdir()

    def environment(self, pictures):
        gone = ("DISPLAY", "WAYLAND_DISPLAY", "TMUX", "STY")
        return {**{name: value for name, value in os.environ.items() if name not in gone},
                "TMPDIR": str(self.temporary), "RASTREL_HOME": str(self.place / "home"),
                "RASTREL_PICTURES": pictures, "TERM": "xterm"}

    def on_terminal(self, pictures, *words):
        """Exit status, and all that the terminal got."""
        mine, its = pty.openpty()
        process = subprocess.Popen([COMMAND, *map(str, words)], stdin=its, stdout=its, stderr=its,
                                   env=self.environment(pictures))
        os.close(its)
        shown = b""
        while True:
            try:
                part = os.read(mine, 65536)
            except OSError:  # what the other end of a terminal says when it has closed
                break
            if not part:
                break
            shown += part
        os.close(mine)
        return process.wait(), shown

    def picture_in(self, shown):
        """The file that the graphics protocol of kitty carries."""
        parts = re.findall(rb"\x1b_G[^;]*;([^\x1b]*)\x1b\\", shown)
        self.assertTrue(parts, "no picture came")
        file = self.place / "shown.png"
        file.write_bytes(base64.b64decode(b"".join(parts)))
        return Picture(file)

    def drawn(self, *words):
        file = self.place / "drawn.png"
        ended = subprocess.run([COMMAND, "view", EXAMPLE, *map(str, words), "-o", file],
                               stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        self.assertEqual(ended.returncode, 0, ended.stderr)
        return Picture(file)

    def test_view_shows_the_first_page_and_leaves_no_file(self):
        status, shown = self.on_terminal("kitty", "view", EXAMPLE, "--dpi", "20")
        self.assertEqual(status, 0, shown[-2000:])
        self.assertIsNone(difference(self.picture_in(shown), self.drawn("--page", 1, "--dpi", 20)))
        self.assertIn(b"2 pages of 60 by 40 cm: 6 plates, 6 texts, 12 drill points\r\n", shown)
        self.assertNotIn(b"written to", shown)
        self.assertEqual(list(self.temporary.iterdir()), [])

    def test_view_shows_the_page_that_is_asked_for(self):
        status, shown = self.on_terminal("kitty", "view", EXAMPLE, "--page", "2", "--dpi", "20")
        self.assertEqual(status, 0, shown[-2000:])
        self.assertIsNone(difference(self.picture_in(shown), self.drawn("--page", 2, "--dpi", 20)))

    def test_import_without_a_file_to_make_shows_the_page_no_larger_than_a_screen(self):
        status, shown = self.on_terminal("kitty", "import", EXAMPLE)
        self.assertEqual(status, 0, shown[-2000:])
        self.assertIn(b"2 pages of 60 by 40 cm", shown)
        self.assertTrue(1000 < self.picture_in(shown).width <= 1600)
        self.assertEqual(list(self.temporary.iterdir()), [])

    def test_nothing_is_shown_where_a_file_or_json_is_asked_for(self):
        for words in (("import", EXAMPLE, "-o", self.place / "a.svg"), ("import", EXAMPLE, "--json")):
            status, shown = self.on_terminal("kitty", *words)
            self.assertEqual(status, 0, shown[-2000:])
            self.assertNotIn(b"\x1b", shown)
            self.assertEqual(list(self.temporary.iterdir()), [])

    def test_a_terminal_without_pictures_gets_the_name_of_a_file_that_stays(self):
        status, shown = self.on_terminal("none", "view", EXAMPLE, "--dpi", "20")
        self.assertEqual(status, 0, shown[-2000:])
        self.assertNotIn(b"\x1b", shown)
        name = re.search(r"written to (.+?)\s*$", shown.decode(), re.M).group(1)
        self.assertIsNone(difference(Picture(name), self.drawn("--page", 1, "--dpi", 20)))

    def test_a_document_too_large_for_a_picture_is_imported_all_the_same(self):
        status, shown = self.on_terminal("kitty", "import", EXAMPLE, "--blank", "99999x99999cm")
        self.assertEqual(status, 0, shown[-2000:])
        self.assertIn(b"1 page of 99999 by 99999 cm", shown)
        self.assertNotIn(b"\x1b", shown)
        self.assertEqual(list(self.temporary.iterdir()), [])

    def test_a_view_that_can_not_be_drawn_leaves_no_file(self):
        status, shown = self.on_terminal("none", "view", EXAMPLE, "--blank", "99999x99999cm")
        self.assertEqual(status, 1, shown[-2000:])
        self.assertNotIn(b"written to", shown)
        self.assertEqual(list(self.temporary.iterdir()), [])

    def converse(self, words, *steps):
        """Waits for each step's text and types its answer. Exit status, and all that was shown."""
        mine, its = pty.openpty()
        process = subprocess.Popen([COMMAND, *words], stdin=its, stdout=its, stderr=its,
                                   cwd=self.place, start_new_session=True,
                                   env=self.environment("none"),
                                   preexec_fn=lambda: fcntl.ioctl(0, termios.TIOCSCTTY, 0))
        os.close(its)
        self.addCleanup(os.close, mine)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        whole, shown = b"", b""
        for text, typed in (*steps, (None, None)):
            while text is None or text not in shown:
                self.assertTrue(select.select([mine], [], [], 60)[0], f"{text} does not come")
                try:
                    part = os.read(mine, 65536)
                except OSError:
                    part = b""
                if not part and text is None:
                    return process.wait(timeout=60), whole
                self.assertTrue(part, f"{text} did not come: {whole}")
                shown += part
                whole += part
            shown = b""
            os.write(mine, typed)
        return None

    def ask_for_a_font(self, *answers):
        """Imports a plate whose font is not there, and answers the question."""
        (self.place / "plates.cr2").write_text(
            "<engraving_template><table_size width='12' height='6' origin='bottom left'/>"
            "<template spacing='0.25'><placement width='4' height='2'/></template><plates><plate>"
            "<text_frame><placement x='1' y='1' width='2' height='1' origin='top left'/>"
            "<font face='No\x9bSuch' size='0.3'><line>Ada</line></font></text_frame></plate></plates>"
            "</engraving_template>", encoding="utf-8")
        return self.converse(["import", "plates.cr2", "-o", "plates.rdoc"],
                             *((b"q: cancel the import", answer) for answer in answers))

    def test_a_missing_font_is_asked_for_and_its_name_can_not_steer_the_terminal(self):
        status, shown = self.ask_for_a_font(b"no such\n", b"?\n", b"dejavu serif\n")
        self.assertEqual(status, 0, shown)
        self.assertIn(b'no font, or more than one, begins with "no such"', shown)
        self.assertIn(b"  DejaVu Sans Mono\r\n", shown, "the list")
        self.assertNotIn("\x9b".encode(), shown)
        self.assertIn('"replacement": "DejaVu Serif"', (self.place / "plates.rdoc").read_text())

    def test_an_empty_answer_takes_the_usual_font(self):
        status, shown = self.ask_for_a_font(b"\n")
        self.assertEqual(status, 0, shown)
        self.assertIn('"replacement": "DejaVu Sans"', (self.place / "plates.rdoc").read_text())

    def test_q_and_the_end_of_the_input_cancel_the_import(self):
        for answer in (b"q\n", b"\x04"):
            status, shown = self.ask_for_a_font(answer)
            self.assertNotEqual(status, 0, shown)
            self.assertNotIn(b"DejaVu Sans stands in", shown)

    def test_ctrl_c_at_the_question_leaves_no_file(self):
        status, _ = self.ask_for_a_font(b"\x03")
        self.assertNotEqual(status, 0)
        self.assertFalse((self.place / "plates.rdoc").exists())
        self.assertEqual([path.name for path in self.place.iterdir()
                          if path.name not in ("home", "temporary", "plates.cr2")], [])

    def ask_for_a_conversion(self, *steps):
        (self.place / "sign.eps").write_text(
            "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 144 72\n%%EndComments\n"
            "1 0 0 setrgbcolor 18 18 36 36 rectstroke showpage\n")
        return self.converse(["convert", "sign.eps", "-o", "sign.svg", "--ask"], *steps)

    def test_a_conversion_is_asked_for_line_by_line(self):
        status, shown = self.ask_for_a_conversion(
            (b"Height (cm) [2.54]: ", b"5.08\n"), (b"Width (cm) [5.08]: ", b"wide\n"),
            (b"please", b"10,16\n"), (b"Resolution (dpi) [72]: ", b"100\n"),
            (b"Cut line, y or n [n]: ", b"y\n"), (b"Number [1]: ", b"\n"),
            (b"RGB colour [rgb:0,0,0]: ", b"rgb:255,0,0\n"))
        self.assertEqual(status, 0, shown)
        self.assertIn(b"234.4 KB", shown, "400 by 200 pixels of 3 bytes")
        self.assertIn('width="101.6mm"', (self.place / "sign.svg").read_text())

    def ask_for_a_pdf(self, *steps):
        """A page of 144 by 72 points with a frame in the spot colour Knife."""
        objects = ["<</Type/Catalog/Pages 2 0 R>>", "<</Type/Pages/Kids[3 0 R]/Count 1>>",
                   "<</Type/Page/Parent 2 0 R/MediaBox[0 0 144 72]/Contents 4 0 R/Resources<</ColorSpace<</K "
                   "[/Separation/Knife/DeviceCMYK<</FunctionType 2/Domain[0 1]/C0[0 0 0 0]/C1[0 1 0 0]/N 1>>]"
                   ">>>>>>", "<</Length 32>>stream\n/K CS 1 SCN 2 w 18 18 36 36 re S\nendstream"]
        body = "".join(f"{number} 0 obj{thing}endobj\n" for number, thing in enumerate(objects, 1))
        (self.place / "sign.pdf").write_text(f"%PDF-1.4\n{body}trailer<</Root 1 0 R>>\n%%EOF\n")
        return self.converse(["convert", "sign.pdf", "-o", "sign.svg", "--ask"], *steps)

    def test_a_pdf_is_asked_for_with_its_own_size_and_spot_colours(self):
        status, shown = self.ask_for_a_pdf(
            (b"Height (cm) [2.54]: ", b"5.08\n"), (b"Width (cm) [5.08]: ", b"10.16\n"),
            (b"Resolution (dpi) [72]: ", b"100\n"), (b"Cut line, y or n [n]: ", b"y\n"),
            (b"Number [1]: ", b"3\n"), (b"Knife", b"\n"))
        self.assertEqual(status, 0, shown)
        svg = (self.place / "sign.svg").read_text()
        self.assertIn('width="101.6mm"', svg)
        self.assertIn('class="cut-line"', svg)

    def test_a_pdf_may_be_cancelled_at_its_questions(self):
        status, shown = self.ask_for_a_pdf((b"Height (cm) [2.54]: ", b"q\n"))
        self.assertEqual(status, 4, shown)
        self.assertFalse((self.place / "sign.svg").exists())

    def test_a_conversion_is_cancelled_by_each_key_and_leaves_nothing(self):
        for key in (b"q\n", b"\x03", b"\x04"):
            status, shown = self.ask_for_a_conversion((b"Height (cm) [2.54]: ", b"\n"),
                                                      (b"Width (cm) [5.08]: ", key))
            self.assertEqual(status, 4, shown)
            self.assertIn(b"cancelled", shown)
            self.assertEqual(sorted(path.name for path in self.place.iterdir()
                                    if path.name != "home"), ["sign.eps", "temporary"])

    def test_nobody_to_ask_is_said_so(self):
        for words, reason in (([], "are not both a terminal"), (["--json"], "has no questions"),
                              (["--dpi", "72"], "give it without --dpi"),
                              (["--window"], "exclude each other")):
            (self.place / "sign.eps").write_text("%!PS-Adobe-3.0 EPSF-3.0\nshowpage\n")
            ended = subprocess.run([COMMAND, "convert", "sign.eps", "--ask", *words],
                                   stdin=subprocess.DEVNULL, capture_output=True, text=True,
                                   cwd=self.place, env=self.environment("none"), timeout=60)
            self.assertEqual(ended.returncode, 2, ended.stderr)
            self.assertIn(reason, ended.stdout + ended.stderr)


if __name__ == "__main__":
    unittest.main(verbosity=2)
