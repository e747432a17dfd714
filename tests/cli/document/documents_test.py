"""What the command makes of plates is the same whenever and by whatever road it is made, and other
programs read it.

usage: documents_test.py COMMAND SOURCE_TREE
"""

import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

COMMAND, SOURCES = sys.argv.pop(1), pathlib.Path(sys.argv.pop(1))
EXAMPLES = sorted((SOURCES / "examples/plates").glob("*.xml"))
KINDS = ("svg", "pdf", "png", "rdoc")
BLANK = ("--blank", "60x40cm")


class Documents(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="rastrel-documents-")
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)

    def run_command(self, *words, **variables):
        ended = subprocess.run([COMMAND, *map(str, words)], stdout=subprocess.DEVNULL,
                               stderr=subprocess.PIPE, env=dict(os.environ, **variables))
        self.assertEqual(ended.returncode, 0, (words, ended.stderr.decode("utf-8", "replace")))

    def output(self, *words):
        return subprocess.run([*map(str, words)], check=True, capture_output=True, text=True,
                              encoding="utf-8").stdout

    def made(self, name):
        """The bytes of each page's file."""
        stem, _, extension = name.rpartition(".")
        files = sorted(path for path in self.place.glob(f"{stem}*.{extension}")
                       if re.fullmatch(rf"{stem}(-\d+)?\.{extension}", path.name))
        self.assertTrue(files, name)
        return [path.read_bytes() for path in files]

    def test_saved_and_opened_again_a_document_draws_the_same_bytes(self):
        for example in EXAMPLES:
            document = self.place / f"{example.stem}.rdoc"
            self.run_command("import", example, *BLANK, "-o", document)
            for kind in ("svg", "pdf", "png"):
                with self.subTest(f"{example.stem} {kind}"):
                    self.run_command("view", document, "--dpi", "20", "-o", self.place / f"opened.{kind}")
                    self.run_command("import", example, *BLANK, "--dpi", "20",
                                     "-o", self.place / f"imported.{kind}")
                    self.assertEqual(self.made(f"opened.{kind}"), self.made(f"imported.{kind}"))
            for file in self.place.iterdir():
                file.unlink()

    def test_saved_opened_and_saved_again_a_document_has_the_same_bytes(self):
        for example in EXAMPLES:
            with self.subTest(example.stem):
                self.run_command("import", example, "-o", self.place / "first.rdoc")
                self.run_command("import", self.place / "first.rdoc", "-o", self.place / "second.rdoc")
                self.assertEqual(self.made("first.rdoc"), self.made("second.rdoc"))

    def test_another_time_place_language_and_directory_give_the_same_bytes(self):
        example = SOURCES / "examples/plates/panel.xml"
        for kind in KINDS:
            with self.subTest(kind):
                self.run_command("import", example, "-o", self.place / f"one.{kind}",
                                 TZ="UTC", LC_ALL="C", SOURCE_DATE_EPOCH="")
                self.run_command("import", example, "-o", self.place / f"other.{kind}",
                                 TZ="Asia/Tokyo", LC_ALL="C.UTF-8", HOME="/")
                self.assertEqual(self.made(f"one.{kind}"), self.made(f"other.{kind}"))

    def test_a_page_of_a_pdf_is_as_large_as_the_blank(self):
        for words, width, height in (("60x40cm", 600, 400), ("100x50mm", 100, 50), ("24x16in", 609.6, 406.4)):
            with self.subTest(words):
                self.run_command("import", SOURCES / "examples/plates/name-badge.xml", "--blank", words,
                                 "-o", self.place / "a.pdf")
                size = re.search(r"Page size:\s+([\d.]+) x ([\d.]+) pts",
                                 self.output("pdfinfo", self.place / "a.pdf"))
                points = [float(number) * 25.4 / 72 for number in size.groups()]
                # The program tells thousandths of a point, or six digits.
                self.assertAlmostEqual(points[0], width, delta=0.01)
                self.assertAlmostEqual(points[1], height, delta=0.01)

    def test_a_pdf_has_a_page_for_each_page(self):
        self.run_command("import", SOURCES / "examples/plates/further-pages.xml", *BLANK,
                         "-o", self.place / "a.pdf")
        self.assertRegex(self.output("pdfinfo", self.place / "a.pdf"), r"Pages:\s+2\n")
        second = self.output("pdftotext", "-f", "2", self.place / "a.pdf", "-")
        self.assertIn("Cabinet 5", second)
        self.assertNotIn("Cabinet 4", second)

    def test_text_of_a_pdf_is_found_and_none_where_it_is_outlines(self):
        example = SOURCES / "examples/plates/panel.xml"
        self.run_command("import", example, *BLANK, "-o", self.place / "text.pdf")
        text = self.output("pdftotext", self.place / "text.pdf", "-")
        for line in ("MAIN SWITCH", "Isolate before opening", "PUMP 1", "PUMP 2"):
            self.assertIn(line, text)
        self.run_command("import", example, *BLANK, "--outlines", "-o", self.place / "outlines.pdf")
        self.assertEqual(self.output("pdftotext", self.place / "outlines.pdf", "-").strip(), "")
        self.assertEqual(self.output("pdffonts", self.place / "outlines.pdf").count("\n"), 2)

    def test_a_page_that_is_asked_for_is_that_page(self):
        example = SOURCES / "examples/plates/further-pages.xml"
        self.run_command("import", example, "-o", self.place / "all.svg")
        self.run_command("import", example, "--page", "2", "-o", self.place / "second.svg")
        self.assertEqual(self.made("second.svg"), self.made("all.svg")[1:])


if __name__ == "__main__":
    unittest.main(verbosity=2)
