"""What print, preview, queue and pagesize take for a page, and what they refuse, is the same.

usage: page_files_test.py COMMAND SOURCE_TREE
"""

import json
import os
import pathlib
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest

COMMAND, SOURCES = pathlib.Path(sys.argv.pop(1)).resolve(), pathlib.Path(sys.argv.pop(1)).resolve()
sys.path[:0] = [str(SOURCES / "tests/support"), str(SOURCES / "tests/cli/document")]
import pdf_files  # noqa: E402
import png_picture  # noqa: E402

LIMIT = 120  # seconds that no run takes

# A unit of 72 dots per inch is a point.
RESOLUTION = ("--dpi", "72")

RED = (255, 0, 0)


def png_size(path):
    return struct.unpack(">II", path.read_bytes()[16:24])


class PageFiles(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = tempfile.TemporaryDirectory(prefix="rastrel-page-files-")
        cls.addClassCleanup(cls.scratch.cleanup)
        cls.root = pathlib.Path(cls.scratch.name) / "home"
        # Laid out on first use.
        subprocess.run([COMMAND, "doctor"], env=dict(os.environ, RASTREL_HOME=str(cls.root)),
                       stdout=subprocess.DEVNULL, timeout=LIMIT)

    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="rastrel-page-files-")
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)

    def file(self, name, content):
        path = self.place / name
        path.write_bytes(content)
        return path

    def run_command(self, *words, home=None, path=None, **settings):
        environment = {name: value for name, value in os.environ.items()
                       if not name.startswith("RASTREL_")}
        environment["RASTREL_HOME"] = str(home or self.root)
        environment["RASTREL_WARM"] = "0"  # an interpreter that is kept would outlive its data root's copies
        environment["PATH"] = path or environment["PATH"]
        return subprocess.run([COMMAND, *map(str, words)], capture_output=True, text=True,
                              encoding="utf-8", cwd=self.place, env=environment, timeout=LIMIT,
                              **settings)

    def done(self, *words, **settings):
        run = self.run_command(*words, **settings)
        self.assertEqual(run.returncode, 0, run.stderr)
        return run

    def every_command(self, file, *options):
        """Each command on the file, as name and arguments; the files that it makes begin with it."""
        return {"pagesize": ("pagesize", *options, file),
                "queue": ("queue", *options, *RESOLUTION, "--force", "--output", "queue", file),
                "preview": ("preview", *options, "-o", "preview.png", file),
                "print": ("print", *options, "--printer", "PNG files", "--output", "print", file)}

    def expect_refusal(self, file, reason, *options):
        for name, words in self.every_command(file, *options).items():
            with self.subTest(f"{name} {file.name}"):
                run = self.run_command(*words)
                self.assertNotEqual(run.returncode, 0, run.stdout)
                self.assertIn(reason, run.stderr)
                self.assertNotIn("measured", run.stdout)
                self.assertFalse((self.place / "preview.png").exists())
                for folder in ("queue", "print"):
                    self.assertEqual(list((self.place / folder).rglob("*.*")), [])

    def measured(self, file, *options):
        line = json.loads(self.done("pagesize", "--json", *options, file).stdout.splitlines()[0])
        return tuple(round(line[side] * 72 / 2.54, 1) for side in ("width", "height"))

    def converted(self, file, *options):
        folder = self.place / "queue"
        shutil.rmtree(folder, ignore_errors=True)
        self.done("queue", *options, *RESOLUTION, "--output", folder, file)
        return struct.unpack("<ii", next(folder.glob("*.bmp")).read_bytes()[18:26])

    def previewed(self, file, *options):
        (self.place / "preview.png").unlink(missing_ok=True)
        self.done("preview", *options, "-o", "preview.png", file)
        return png_size(self.place / "preview.png")

    def shown(self):
        """The last preview."""
        return png_picture.Picture(self.place / "preview.png")

    def printed(self, file, *options):
        """At the print mode's 300 dots per inch, in points."""
        folder = self.place / "print"
        shutil.rmtree(folder, ignore_errors=True)
        self.done("print", *options, "--printer", "PNG files", "--mode", "RGB/300 dpi", "--output",
                  folder, file)
        pages = sorted(folder.rglob("*.png"))
        self.assertEqual(len(pages), 1, pages)
        return tuple(round(side * 72 / 300, 1) for side in png_size(pages[0]))

    def expect_size(self, file, size, *options):
        """A picture has whole dots; the measure is exact to a part of one."""
        for name, sizes in (("pagesize", self.measured), ("queue", self.converted),
                            ("preview", self.previewed), ("print", self.printed)):
            with self.subTest(f"{name} {file.name}"):
                for made, wanted in zip(sizes(file, *options), size, strict=True):
                    self.assertLessEqual(abs(made - wanted), 1 if name != "pagesize" else 0.1)

    # PDFs that are none

    def test_a_pdf_that_can_not_be_read_is_refused_by_every_command(self):
        for name, content in (("junk.pdf", pdf_files.JUNK), ("cut.pdf", pdf_files.without_end())):
            self.expect_refusal(self.file(name, content), "The PDF can't be read")

    def test_a_pdf_without_pages_is_refused_by_every_command(self):
        self.expect_refusal(self.file("none.pdf", pdf_files.NO_PAGES), "The PDF has no page")

    def test_a_pdf_with_a_wrong_table_is_read(self):
        self.expect_size(self.file("table.pdf", pdf_files.with_wrong_table()), (200, 100))

    def test_a_pdf_page_without_marks_is_a_page(self):
        self.expect_size(self.file("blank.pdf", pdf_files.pdf(content=b"")), (200, 100))

    # Passwords

    def test_a_locked_pdf_is_refused_by_every_command(self):
        locked = self.file("locked.pdf", pdf_files.pdf(password=b"secret"))
        self.expect_refusal(locked, "The PDF is locked, and no password was given")

    def test_a_wrong_password_is_refused_by_every_command(self):
        locked = self.file("locked.pdf", pdf_files.pdf(password=b"secret"))
        wrong = self.file("wrong", b"Secret\n")
        self.expect_refusal(locked, "the password does not open it", "--password-file", wrong)

    def test_the_password_opens_a_locked_pdf(self):
        locked = self.file("locked.pdf", pdf_files.pdf(password=b"se(cr\\et"))
        word = self.file("word", b"se(cr\\et\r\nnot this line\n")
        self.expect_size(locked, (200, 100), "--password-file", word)
        self.assertEqual(self.shown().pixel(100, 50), RED)

    def test_a_password_may_come_through_a_pipe_for_several_files(self):
        locked = self.file("locked.pdf", pdf_files.pdf(password=b"secret"))
        reading, writing = os.pipe()
        with open(writing, "wb") as pipe:
            pipe.write(b"secret\n")
        run = self.done("pagesize", "--password-file", f"/dev/fd/{reading}", locked, locked,
                        pass_fds=(reading,))
        os.close(reading)
        self.assertEqual(len(run.stdout.splitlines()), 2)

    def test_the_password_is_in_no_command_line_and_no_environment(self):
        """Scripts in the places of the RIP, the queue program and the interpreter look at theirs."""
        secret = "Zx9-unmistakable"
        locked = self.file("locked.pdf", pdf_files.pdf(password=secret.encode()))
        word = self.file("word", secret.encode() + b"\n")
        look = ('case "$0 $* $(env)" in\n'
                f"*{secret}*|*{secret.encode().hex()}*) echo it is seen >&2 ;;\n"
                "*) echo it is not seen >&2 ;;\nesac\n")
        read = '[ "$(cat $RASTREL_RIP_PASSWORD_FILE)" = ' + secret + " ] && echo it is read >&2\n"
        gs = self.place / "bin/gs"
        gs.parent.mkdir()
        home = self.place / "home"
        shutil.copytree(self.root, home, symlinks=True)
        for command, program, script in (("preview", gs, look),
                                         ("preview", home / "Queue/rip/corerast.exe", read + look),
                                         ("print", home / "Queue/rip/corerast.exe", read + look),
                                         ("queue", home / "Queue/JobSpool.exe", "true\n")):
            with self.subTest(f"{command} {program.name}"):
                if command == "queue":
                    # The last line that it reports as an error is shown.
                    script = (look + read).replace("echo it is", "echo ERROR: it is")
                program.unlink(missing_ok=True)
                program.write_text("#!/bin/sh\n" + script + "exit 1\n")
                program.chmod(0o755)
                words = self.every_command(locked, "--password-file", word)[command]
                run = self.run_command(*words, home=home, path=f"{gs.parent}:{os.environ['PATH']}")
                self.assertNotEqual(run.returncode, 0)
                text = run.stderr + "".join(log.read_text(errors="replace")
                                            for log in home.glob("Queue/rip/Rastrel-*.log"))
                self.assertIn("it is not seen", text)
                if program != gs:
                    self.assertIn("it is read", text)

    def test_a_password_file_that_can_not_be_read_is_refused(self):
        page = self.file("page.pdf", pdf_files.pdf())
        for name, reason in (("none", "No such file"), ("empty", "empty first line")):
            self.file("empty", b"\nsecret\n")
            for words in self.every_command(page, "--password-file", self.place / name).values():
                run = self.run_command(*words)
                self.assertEqual(run.returncode, 2, run.stderr)
                self.assertIn(reason, run.stderr)

    # Boxes

    def test_the_crop_box_is_the_page_for_every_command(self):
        self.expect_size(self.file("page.pdf", pdf_files.pdf()), (200, 100))
        self.expect_size(self.file("turned.pdf", pdf_files.pdf(rotate=90)), (100, 200))

    def test_another_box_can_be_chosen(self):
        page = self.file("page.pdf", pdf_files.pdf())
        for box, size in (("media", (300, 200)), ("crop", (200, 100)), ("bleed", (190, 90)),
                          ("trim", (180, 80))):
            self.expect_size(page, size, "--box", box)
            # All of it is drawn, to its corners.
            shown = self.shown()
            for x, y in ((0, 0), (shown.width - 1, shown.height - 1)):
                self.assertEqual(shown.pixel(x, y), RED, box)

    def test_a_box_that_a_page_lacks_is_the_next_larger_one(self):
        cropped = self.file("cropped.pdf", pdf_files.pdf(boxes=b"/MediaBox[0 0 300 200]"
                                                               b"/CropBox[50 50 250 150]"))
        plain = self.file("plain.pdf", pdf_files.pdf(boxes=b"/MediaBox[0 0 300 200]"))
        for box in ("crop", "trim", "bleed"):
            self.assertEqual(self.measured(cropped, "--box", box), (200, 100))
            self.assertEqual(self.measured(plain, "--box", box), (300, 200))

    def test_an_unknown_box_is_refused(self):
        page = self.file("page.pdf", pdf_files.pdf())
        for words in self.every_command(page, "--box", "art").values():
            run = self.run_command(*words)
            self.assertEqual(run.returncode, 2)
            self.assertIn("--box art: a page's box is media, crop, trim or bleed", run.stderr)

    # Pages that PostScript leaves open

    # A rectangle of 50 x 30 points; it is black.
    MARKS = b"newpath 100 200 moveto 150 200 lineto 150 230 lineto 100 230 lineto closepath fill\n"
    NOTE = "does not end its page"

    def expect_note(self, file, expected):
        for name, words in self.every_command(file).items():
            with self.subTest(f"{name} {file.name}"):
                self.assertEqual(self.NOTE in self.done(*words).stderr, expected)

    def test_marks_without_showpage_are_a_page_around_them_for_every_command(self):
        for name, end in (("open.ps", b""), ("ended.ps", b"\x04\r\n")):
            file = self.file(name, b"%!PS\n" + self.MARKS + end)
            self.expect_size(file, (50, 30))
            shown = self.shown()
            for x, y in ((1, 1), (shown.width - 2, shown.height - 2)):
                self.assertEqual(shown.pixel(x, y), (0, 0, 0))
            self.expect_note(file, True)

    def test_the_page_lies_around_marks_that_begin_anew(self):
        """The place of the page is not lost where a job sets its matrix back."""
        file = self.file("anew.ps", b"%!PS\n9 9 scale initgraphics -100 -300 translate\n" + self.MARKS)
        self.expect_size(file, (50, 30))
        self.assertEqual(self.shown().pixel(25, 15), (0, 0, 0))

    def test_a_sheet_that_the_job_sets_is_its_page_without_showpage_too(self):
        file = self.file("sheet.ps", b"%!PS\n<< /PageSize [ 300 400 ] >> setpagedevice\n" + self.MARKS)
        self.expect_size(file, (300, 400))
        # From the top: 400 - 200 - 30 and 400 - 200.
        self.assertEqual(self.shown().pixel(125, 185), (0, 0, 0))
        self.assertEqual(self.shown().pixel(125, 165), (255, 255, 255))
        self.expect_note(file, True)

    def test_eps_without_a_box_and_showpage_is_a_page(self):
        file = self.file("open.eps", b"%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 0 0\n" + self.MARKS)
        self.expect_size(file, (50, 30))

    def test_a_file_without_marks_and_showpage_is_no_page_for_any_command(self):
        self.expect_refusal(self.file("none.ps", b"%!PS\n/x 3 def\n"), "The job makes no page")
        self.expect_refusal(self.file("boxed.ps", b"%!PS-Adobe-3.0\n%%BoundingBox: 1 2 30 40\n"),
                            "The job makes no page")

    def test_a_page_that_is_ended_has_no_note(self):
        self.expect_note(self.file("page.ps", b"%!PS\n" + self.MARKS + b"showpage\n"), False)
        # What comes after the last showpage was never a page.
        self.expect_note(self.file("more.ps", b"%!PS\n<< /PageSize [ 300 400 ] >> setpagedevice\n" +
                                   self.MARKS + b"showpage\n" + self.MARKS), False)

    def test_a_page_that_is_left_open_can_be_scaled(self):
        file = self.file("open.ps", b"%!PS\n" + self.MARKS)
        self.done("preview", "--scale", "100x60mm", "-o", "preview.png", file)
        shown = self.shown()
        # 100 and 60 mm at 72 dots per inch.
        self.assertLessEqual(abs(shown.width - 283), 1)
        self.assertLessEqual(abs(shown.height - 170), 1)
        for x, y in ((5, 5), (shown.width - 6, shown.height - 6)):
            self.assertEqual(shown.pixel(x, y), (0, 0, 0))

    def test_damage_in_a_pdf_is_a_note_of_every_command(self):
        # The stream is cut off in its middle, and with it the table.
        whole = pdf_files.pdf(content=b"% " + b"x" * 30000 + b"\n" + pdf_files.RED)
        for name, words in self.every_command(self.file("half.pdf", whole[:20000])).items():
            with self.subTest(name):
                self.assertIn("The PDF is damaged", self.done(*words).stderr)


if __name__ == "__main__":
    unittest.main()
