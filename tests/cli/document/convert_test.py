"""Converts files by `rastrel convert` and `rastrel cut`, and holds the results against Ghostscript's own
pixels and against lines that are worked out by hand.

usage: convert_test.py RASTREL_DOCUMENT
"""

import json
import os
import pathlib
import re
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import time
import unittest
import zlib

from png_picture import Picture

PROGRAM = sys.argv.pop(1)
SECONDS = 120

# A page of 200 by 100 points: shapes, a curve, text, and a rectangle in the spot colour Knife.
ART = """0.9 0.95 1 setrgbcolor 0 0 200 100 rectfill
1 0 0 setrgbcolor 10.3 10.7 60.2 30.4 rectfill
0 0.4 0 setrgbcolor newpath 120 50 30 0 360 arc fill
0 0 0.6 setrgbcolor 2.5 setlinewidth 10 80 moveto 60 95 90 60 190 85 curveto stroke
/Helvetica findfont 14 scalefont setfont 0 setgray 80 8 moveto (Sign) show
"""
SPOT = """[/Separation (%s) /DeviceCMYK {0 exch 0 0}] setcolorspace 1 setcolor
%s newpath %s moveto %s lineto %s lineto %s lineto closepath stroke
"""
HEAD = "%!PS-Adobe-3.0\n%%BoundingBox: 0 0 200 100\n%%DocumentCustomColors: (Knife)\n%%EndComments\n"
EPS_HEAD = "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 30 20 230 120\n%%EndComments\n30 20 translate\n"


def knife(name="Knife", corners=("20 20", "100 20", "100 60", "20 60")):
    return SPOT % (name, "0.5 setlinewidth", *corners)


def pdf(pages):
    """A PDF of pages of (width, height, content)."""
    kids = " ".join(f"{3 + 2 * i} 0 R" for i in range(len(pages)))
    objects = ["<</Type/Catalog/Pages 2 0 R>>", f"<</Type/Pages/Kids[{kids}]/Count {len(pages)}>>"]
    space = "[/Separation/Knife/DeviceCMYK<</FunctionType 2/Domain[0 1]/C0[0 0 0 0]/C1[0 1 0 0]/N 1>>]"
    for i, (width, height, content) in enumerate(pages):
        objects.append(f"<</Type/Page/Parent 2 0 R/MediaBox[0 0 {width} {height}]/Contents {4 + 2 * i} 0 R"
                       f"/Resources<</ColorSpace<</Knife {space}>>>>>>")
        objects.append(f"<</Length {len(content)}>>\nstream\n{content}\nendstream")
    file, places = "%PDF-1.4\n", []
    for number, body in enumerate(objects, 1):
        places.append(len(file))
        file += f"{number} 0 obj\n{body}\nendobj\n"
    table = "".join(f"{place:010d} 00000 n \n" for place in places)
    return (f"{file}xref\n0 {len(objects) + 1}\n0000000000 65535 f \n{table}"
            f"trailer<</Size {len(objects) + 1}/Root 1 0 R>>\nstartxref\n{len(file)}\n%%EOF\n")


FIRST_PAGE = (200, 100, "1 0 0 rg 10.3 10.7 60.2 30.4 re f 0 0 0.6 RG 2.5 w 10 80 m 60 95 90 60 190 85 c S "
              "/Knife CS 1 SCN 0.5 w 20 20 80 40 re s")
SECOND_PAGE = (72, 144, "0 0 1 rg 0 0 72 144 re f /Knife CS 1 SCN 36 36 18 18 re s")


SECOND_KNIFE = knife(corners=("36 36", "54 36", "54 54", "36 54"))
TWO_PAGES = (f"save {ART} {knife()} showpage restore\nsave 0 0 1 setrgbcolor 0 0 72 100 rectfill "
             f"{SECOND_KNIFE} showpage restore\n")


class Tiff:
    """A TIFF of one page of compressed strips with differences, read with Python's own library."""

    def __init__(self, path):
        data = pathlib.Path(path).read_bytes()
        order, version, place = struct.unpack("<2sHI", data[:8])
        assert (order, version) == (b"II", 42)
        fields = {}
        (count,) = struct.unpack("<H", data[place:place + 2])
        for number in range(count):
            tag, kind, values, value = struct.unpack("<HHII", data[place + 2 + 12 * number:][:12])
            form = {3: "H", 4: "I", 5: "II"}[kind]
            size = struct.calcsize("<" + form) * values
            if size > 4:
                fields[tag] = struct.unpack(f"<{values * len(form)}{form[0]}", data[value:value + size])
            else:
                fields[tag] = (value,)
        assert list(fields) == sorted(fields)
        assert (fields[259], fields[258], fields[317]) == ((8,), (8, 8, 8), (2,))
        self.width, self.height = fields[256][0], fields[257][0]
        self.dpi = fields[282][0] / fields[282][1]
        body = b"".join(zlib.decompress(data[at:at + size]) for at, size in zip(fields[273], fields[279]))
        self.rows = []
        for y in range(self.height):
            row = bytearray(body[y * self.width * 3:(y + 1) * self.width * 3])
            for x in range(3, len(row)):
                row[x] = (row[x] + row[x - 3]) & 255
            self.rows.append(row)


class Case(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)
        self.home = self.folder / "home"
        self.surroundings = dict(os.environ, RASTREL_HOME=str(self.home), LC_ALL="C")

    def file(self, name, content):
        path = self.folder / name
        path.write_bytes(content if isinstance(content, bytes) else content.encode("latin-1"))
        return path

    def run_program(self, *arguments, **options):
        return subprocess.run([PROGRAM, *map(str, arguments)], cwd=self.folder, capture_output=True,
                              timeout=SECONDS, env=self.surroundings, **options)

    def succeed(self, *arguments, **options):
        done = self.run_program(*arguments, **options)
        self.assertEqual(done.returncode, 0, done.stderr.decode())
        self.assert_nothing_left()
        return done

    def fail_with(self, status, words, *arguments, **options):
        done = self.run_program(*arguments, **options)
        text = done.stderr.decode() + done.stdout.decode()
        self.assertEqual(done.returncode, status, text)
        self.assertIn(words, text)
        self.assert_nothing_left()
        return done

    def assert_nothing_left(self):
        """Neither working copies nor pages remain in the data root."""
        left = [path for place in ("jobs", "Queue/rip", "Queue/rip/System/c-out")
                for path in (self.home / place).glob("*")
                if path.name not in ("CFM", "System", "corerast.exe", "coreodalis.exe")
                and not path.name.endswith(".log")]
        self.assertEqual(left, [])

    def bare(self, file, *options, size=None, dpi):
        """The picture that Ghostscript paints by itself."""
        target = self.folder / "bare.png"
        page = [f"-g{size[0]}x{size[1]}"] if size else []
        subprocess.run(["gs", "-q", "-dSAFER", "-dBATCH", "-dNOPAUSE", "-sDEVICE=png16m", f"-r{dpi}",
                        f"-sOutputFile={target}", *page, *options, str(file)],
                       check=True, timeout=SECONDS, capture_output=True)
        return Picture(target)

    def assert_equal_within_one_level(self, ours, bare):
        self.assertEqual((ours.width, ours.height, ours.channels), (bare.width, bare.height, 3))
        for y, (one, other) in enumerate(zip(ours.rows, bare.rows)):
            apart = max(abs(a - b) for a, b in zip(one, other))
            self.assertLessEqual(apart, 1, f"row {y}")


class Bitmaps(Case):
    def test_postscript_has_the_pixels_of_bare_ghostscript(self):
        file = self.file("art.ps", HEAD + ART + "showpage\n")
        self.succeed("convert", file, "--dpi", 216, "-o", "out.png")
        self.assert_equal_within_one_level(Picture(self.folder / "out.png"),
                                           self.bare(file, size=(600, 300), dpi=216))

    def test_eps_has_the_pixels_of_bare_ghostscript(self):
        file = self.file("art.eps", EPS_HEAD + ART + "showpage\n")
        self.succeed("convert", file, "--dpi", 144, "-o", "out.png")
        self.assert_equal_within_one_level(Picture(self.folder / "out.png"),
                                           self.bare(file, "-dEPSCrop", dpi=144))

    def test_pdf_has_the_pixels_of_bare_ghostscript(self):
        file = self.file("art.pdf", pdf([FIRST_PAGE, SECOND_PAGE]))
        for page, options in ((1, []), (2, ["--page", 2])):
            self.succeed("convert", file, "--dpi", 216, "-o", "out.png", *options)
            bare = self.bare(file, f"-dFirstPage={page}", f"-dLastPage={page}", dpi=216)
            self.assert_equal_within_one_level(Picture(self.folder / "out.png"), bare)

    def test_a_page_of_postscript_is_that_of_bare_ghostscript(self):
        file = self.file("art.ps", HEAD + TWO_PAGES)
        for page in 1, 2:
            self.succeed("convert", file, "--dpi", 216, "-o", "out.png", "--page", page)
            bare = self.bare(file, f"-sPageList={page}", size=(600, 300), dpi=216)
            self.assert_equal_within_one_level(Picture(self.folder / "out.png"), bare)

    def test_a_page_of_postscript_without_a_declared_size_has_its_own(self):
        file = self.file("open.ps", "%!PS\n<</PageSize [72 144]>> setpagedevice\n" + ART + "showpage\n"
                         "<</PageSize [144 36]>> setpagedevice\n" + ART + "showpage\n")
        for options, size in (((), (144, 36)), (("--size", "4xin"), (288, 72))):
            self.succeed("convert", file, "--dpi", 72, "-o", "out.png", "--page", 2, *options)
            picture = Picture(self.folder / "out.png")
            self.assertEqual((picture.width, picture.height), size)

    def test_a_size_may_have_any_unit_and_one_side(self):
        files = [self.file("art.ps", HEAD + ART + "showpage\n"), self.file("art.pdf", pdf([FIRST_PAGE]))]
        for file in files:
            for size, pixels in (("10x8cm", (1000, 800)), ("100xmm", (1000, 500)), ("x2in", (1016, 508)),
                                 ("x144pt", (1016, 508))):
                self.succeed("convert", file, "--size", size, "--dpi", 254, "-o", "out.png")
                picture = Picture(self.folder / "out.png")
                self.assertEqual((picture.width, picture.height), pixels, (file.name, size))

    def test_a_file_that_says_no_size_may_be_given_one(self):
        file = self.file("open.ps", "%!PS\n<</PageSize [72 144]>> setpagedevice\n" + ART + "showpage\n")
        self.succeed("convert", file, "--dpi", 72, "-o", "out.png")
        self.assertEqual(Picture(self.folder / "out.png").width, 72)
        self.succeed("convert", file, "--size", "4xin", "--dpi", 72, "-o", "out.png")
        picture = Picture(self.folder / "out.png")
        self.assertEqual((picture.width, picture.height), (288, 576))

    def test_the_cut_line_is_on_the_picture_in_its_place(self):
        sources = [self.file("art.ps", HEAD + ART + knife() + "showpage\n"),
                   self.file("art.eps", EPS_HEAD + ART + knife() + "showpage\n"),
                   self.file("art.pdf", pdf([FIRST_PAGE]))]
        for source in sources:
            self.succeed("convert", source, "--cut-color", "spot:Knife", "--dpi", 144, "-o", "out.svg")
            svg = (self.folder / "out.svg").read_text()
            self.assertIn('class="cut-line"', svg)
            path = re.search(r'class="cut-line".*?<path d="([^"]*)"', svg, re.S).group(1)
            numbers = [float(number) for number in re.findall(r"-?[\d.]+", path)]
            xs, ys = sorted(numbers[0::2]), sorted(numbers[1::2])
            # 20 to 100 points across and 20 to 60 up, of 100, in millimetres from the top.
            for found, points in ((xs[0], 20), (xs[-1], 100), (ys[0], 40), (ys[-1], 80)):
                self.assertAlmostEqual(found, points * 25.4 / 72, delta=0.1, msg=source.name)

    def test_each_form_is_a_file_of_its_kind(self):
        file = self.file("art.ps", HEAD + ART + "showpage\n")
        for name, begin in (("o.png", b"\x89PNG"), ("o.tif", b"II*\0"), ("o.tiff", b"II*\0"),
                            ("o.pdf", b"%PDF"), ("o.svg", b"<?xml"), ("o.rdoc", b"{")):
            done = self.succeed("convert", file, "-o", name)
            self.assertEqual(done.stdout.decode(), name + "\n")
            self.assertTrue((self.folder / name).read_bytes().startswith(begin), name)

    def test_a_tiff_has_the_same_pixels_and_the_resolution(self):
        file = self.file("art.ps", HEAD + ART + "showpage\n")
        self.succeed("convert", file, "--dpi", 300, "-o", "o.png")
        self.succeed("convert", file, "--dpi", 300, "-o", "o.tif")
        tiff, picture = Tiff(self.folder / "o.tif"), Picture(self.folder / "o.png")
        self.assertEqual((tiff.width, tiff.height, tiff.dpi), (833, 417, 300))
        self.assertEqual([bytes(row) for row in tiff.rows], [bytes(row) for row in picture.rows])

    def test_standard_streams(self):
        page = (HEAD + ART + "showpage\n").encode()
        done = self.succeed("convert", "-", "-o", "-", input=page)
        self.file("out.png", done.stdout)
        self.assertEqual(Picture(self.folder / "out.png").width, 200)
        done = self.succeed("convert", "-", "--title", "sheet", input=page)
        self.assertEqual(done.stdout, b"sheet.png\n")

    def test_json_tells_the_result(self):
        file = self.file("art.ps", HEAD + ART + knife() + "showpage\n")
        done = self.succeed("convert", file, "--cut-color", "spot:Knife", "--json", "-o", "o.pdf")
        last = json.loads(done.stdout.splitlines()[-1])
        self.assertEqual(last["event"], "done")
        self.assertEqual(last["paths"], ["o.pdf"])
        self.assertEqual((last["width"], last["height"]), (200, 100))
        self.assertAlmostEqual(last["width_cm"], 200 * 2.54 / 72)
        self.assertTrue(last["cut_lines"])

    def test_options_of_one_command_are_not_those_of_the_next(self):
        file = self.file("art.ps", HEAD + ART + "showpage\n")
        self.succeed("convert", file, "--dpi", 144, "-o", "o.png")
        self.succeed("convert", file, "-o", "o.png")
        self.assertEqual(Picture(self.folder / "o.png").width, 200)

    def test_a_spot_colour_that_nothing_has_is_warned_of(self):
        file = self.file("art.ps", HEAD + ART + "showpage\n")
        done = self.succeed("convert", file, "--cut-color", "spot:Nowhere", "-o", "o.png")
        self.assertIn(b"Nowhere", done.stderr)


class Refusals(Case):
    def test_wrong_use(self):
        file = self.file("art.ps", HEAD + ART + "showpage\n")
        for words, *options in (("has to end in", "-o", "x.jpg"), ("--size 0x1cm", "--size", "0x1cm"),
                                ("--dpi 0", "--dpi", 0), ("--page 0", "--page", 0),
                                ("--window asks", "--window", "--dpi", 72)):
            self.fail_with(2, words, "convert", file, *options)
        self.fail_with(2, "a cut colour is needed", "cut", file)
        self.fail_with(2, "has to end in", "cut", file, "--cut-color", "spot:Knife", "-o", "x.png")

    def test_an_input_that_is_none(self):
        self.fail_with(3, "missing.ps", "convert", "missing.ps")
        self.fail_with(3, "note.txt", "convert", self.file("note.txt", "hello"))

    def test_a_file_that_was_not_named_is_not_replaced(self):
        file = self.file("art.ps", HEAD + ART + "showpage\n")
        mine = self.file("art.png", "mine")
        self.fail_with(2, "art.png", "convert", file)
        self.assertEqual(mine.read_text(), "mine")
        self.succeed("convert", file, "--force")
        self.assertEqual(Picture(mine).width, 200)

    def test_a_page_that_a_file_lacks(self):
        for file, words in ((self.file("art.pdf", pdf([FIRST_PAGE])), "it has 1"),
                            (self.file("art.ps", HEAD + TWO_PAGES), "The job has no page 3; it has 2"),
                            (self.file("open.ps", "%!PS\n" + TWO_PAGES), "The job has no page 3; it has 2"),
                            (self.file("art.eps", EPS_HEAD + ART + "showpage\n"), "no page 3; it has 1")):
            self.fail_with(1, words, "convert", file, "--page", 3, "-o", "o.png")
            self.assertFalse((self.folder / "o.png").exists())
        self.fail_with(3, "page 3 can't be measured: The job has no page 3; it has 2",
                       "convert", "open.ps", "--page", 3, "--size", "4xin")
        for name, status in (("art.ps", 1), ("open.ps", 3)):
            self.fail_with(status, "no page 3; it has 2", "cut", name, "--page", 3, "--cut-color", "spot:Knife")

    def test_separated_eps_is_refused_by_name(self):
        dcs = ("%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 10 10\n%%CyanPlate: a.c\n%%MagentaPlate: a.m\n"
               "%%YellowPlate: a.y\n%%BlackPlate: a.k\n%%EndComments\n0 0 10 10 rectfill\nshowpage\n")
        self.fail_with(3, "DCS-EPS file cannot be converted", "convert", self.file("a.eps", dcs))

    def test_a_job_that_fails(self):
        self.fail_with(1, "the conversion failed", "convert",
                       self.file("bad.ps", HEAD + "(unfinished\n"), "-o", "o.png")
        self.assertFalse((self.folder / "o.png").exists())

    def test_a_result_that_can_not_be_written(self):
        file = self.file("art.ps", HEAD + ART + "showpage\n")
        self.fail_with(1, "none/o.png", "convert", file, "-o", "none/o.png")

    def spoil(self, commands):
        """Puts a program between the command and the queue program that changes its files."""
        self.run_program("convert", "missing.ps")
        queue = self.home / "Queue"
        shutil.copy(queue / "JobSpool.exe", queue / "Whole.exe")
        script = queue / "JobSpool.exe"
        script.unlink()
        # The file's name is in small letters, which the directories above it need not be.
        script.write_text('#!/bin/sh\nfor file do :; done\nfile=$(printf %s "$file" | tr "\\\\" /)\n'
                          f'file="{self.home}/jobs/${{file##*/jobs/}}"\nstem=${{file%.*}}\n'
                          f'"{queue}/Whole.exe" "$@" 2>"{self.folder}/reports"\nstatus=$?\n{commands}\n'
                          f'cat "{self.folder}/reports" >&2\nexit $status\n')
        script.chmod(0o700)

    def test_pixels_that_can_not_be_read_have_a_status_of_their_own(self):
        self.spoil('rm "$stem.cfm/page.ppm"')
        file = self.file("art.ps", HEAD + ART + "showpage\n")
        self.fail_with(8, "can't be read", "convert", file, "-o", "o.png")

    def test_a_damaged_archive_has_a_status_of_its_own(self):
        self.spoil('truncate -s -5 "$stem.cut"')
        for name, content in (("art.ps", HEAD + ART + knife() + "showpage\n"), ("art.pdf", pdf([FIRST_PAGE]))):
            file = self.file(name, content)
            self.fail_with(9, "can't be read", "convert", file, "--cut-color", "spot:Knife", "-o", "o.png")
            self.fail_with(9, "can't be read", "cut", file, "--cut-color", "spot:Knife", "-o", "o.dxf")


class Ends(Case):
    def start(self):
        """A conversion that does not end, once the queue program works on it."""
        file = self.file("endless.ps", HEAD + "{} loop\n")
        command = subprocess.Popen([PROGRAM, "convert", str(file), "-o", "o.png"], cwd=self.folder,
                                   env=self.surroundings, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        self.addCleanup(command.stderr.close)
        for line in command.stderr:
            if line.startswith(b"Interpreting"):
                return command
        self.fail("the conversion did not begin")

    def test_a_signal_cancels(self):
        command = self.start()
        command.send_signal(signal.SIGTERM)
        self.assertEqual(command.wait(SECONDS), 4)
        self.assertFalse((self.folder / "o.png").exists())
        self.assert_nothing_left()

    def test_a_later_command_removes_what_a_killed_one_left(self):
        command = self.start()
        command.kill()
        command.wait(SECONDS)
        self.assertNotEqual(list((self.home / "jobs").iterdir()), [])
        for _ in range(SECONDS * 10):  # until the guardian has removed its own files
            self.run_program("convert", "missing.ps")
            if not list((self.home / "jobs").iterdir()):
                break
            time.sleep(0.1)
        self.assert_nothing_left()


class Several(Case):
    PAGE = HEAD + ART + knife() + "showpage\n"

    def two(self):
        wide = self.file("wide.ps", self.PAGE)
        tall = self.file("tall.ps", "%!PS\n%%BoundingBox: 0 0 50 150\n" + ART + knife() + "showpage\n")
        return wide, tall

    def sizes(self, *names):
        return [(picture.width, picture.height)
                for picture in (Picture(self.folder / name) for name in names)]

    def test_each_has_a_result_of_its_name_and_they_are_told_in_order(self):
        done = self.succeed("convert", *self.two())
        self.assertEqual(done.stdout, b"wide.png\ntall.png\n")
        self.assertEqual(self.sizes("wide.png", "tall.png"), [(200, 100), (50, 150)])
        lines = done.stderr.decode().splitlines()
        self.assertEqual([line.split("/")[-1] for line in lines], ["wide.ps", "tall.ps"])

    def test_a_directory_is_made_and_takes_them(self):
        done = self.succeed("convert", *self.two(), "-o", "out/", "--jobs", 1)
        self.assertEqual(done.stdout, b"out/wide.png\nout/tall.png\n")
        self.assertEqual(self.sizes("out/wide.png", "out/tall.png"), [(200, 100), (50, 150)])

    def test_a_pattern_names_them(self):
        (self.folder / "out").mkdir()
        self.succeed("convert", *self.two(), "-o", "out/{name}-small.tif", "--dpi", 36)
        self.assertEqual(sorted(path.name for path in (self.folder / "out").iterdir()),
                         ["tall-small.tif", "wide-small.tif"])
        self.assertEqual(Tiff(self.folder / "out/wide-small.tif").width, 100)

    def test_one_file_may_go_to_a_directory_or_by_a_pattern_too(self):
        wide, _ = self.two()
        (self.folder / "out").mkdir()
        self.assertEqual(self.succeed("convert", wide, "-o", "out").stdout, b"out/wide.png\n")
        self.assertEqual(self.succeed("convert", wide, "-o", "{name}.svg").stdout, b"wide.svg\n")

    def test_cut_takes_them_too(self):
        done = self.succeed("cut", *self.two(), "--cut-color", "spot:Knife", "-o", "{name}.json")
        self.assertEqual(done.stdout, b"wide.json\ntall.json\n")
        heights = [json.loads((self.folder / name).read_text())["height"] for name in ("wide.json", "tall.json")]
        self.assertAlmostEqual(heights[1] / heights[0], 1.5)

    def test_a_bad_one_does_not_keep_the_others_back(self):
        wide, tall = self.two()
        bad = self.file("bad.ps", HEAD + "(unfinished\n")
        done = self.fail_with(3, "missing.ps", "convert", wide, "missing.ps", bad, tall)
        self.assertEqual(done.stdout, b"wide.png\ntall.png\n")
        self.assertIn(b"the conversion failed", done.stderr)
        self.fail_with(1, "the conversion failed", "convert", bad, "missing.ps", wide, "--force")

    def test_json_has_an_object_for_each_after_one_that_names_it(self):
        wide, tall = self.two()
        done = self.fail_with(3, "missing.ps", "convert", wide, "missing.ps", tall, "--json")
        objects = [json.loads(line) for line in done.stdout.splitlines()]
        self.assertEqual([(thing["event"], pathlib.Path((thing.get("paths") or [thing.get("path", "")])[0]).name)
                          for thing in objects if thing["event"] in ("job", "done", "failed")],
                         [("job", "wide.ps"), ("done", "wide.png"), ("job", "missing.ps"), ("failed", ""),
                          ("job", "tall.ps"), ("done", "tall.png")])

    def test_one_result_for_two_files_is_refused_before_any_work(self):
        (self.folder / "other").mkdir()
        wide, _ = self.two()
        same = self.file("other/wide.ps", self.PAGE)
        for options in ((), ("-o", "out/"), ("-o", "{name}.svg"), ("--force",)):
            self.fail_with(2, "would both become", "convert", wide, same, *options)
        self.fail_with(2, "would both become", "convert", *self.two(), wide)
        self.fail_with(2, "need a directory", "convert", *self.two(), "-o", "one.png")
        self.fail_with(2, "standard output takes one file", "convert", *self.two(), "-o", "-")
        self.fail_with(2, "--window asks for one file", "convert", *self.two(), "--window")
        self.fail_with(2, "--jobs", "convert", *self.two(), "--jobs", 0)
        self.assertFalse((self.folder / "out").exists())
        self.assertEqual(list(self.folder.glob("*.png")) + list(self.folder.glob("*.svg")), [])

    def test_what_no_option_named_is_not_replaced(self):
        (self.folder / "out").mkdir()
        mine = self.file("out/wide.png", "mine")
        done = self.fail_with(2, "out/wide.png", "convert", *self.two(), "-o", "out")
        self.assertEqual(mine.read_text(), "mine")
        self.assertEqual(done.stdout, b"out/tall.png\n")
        self.succeed("convert", *self.two(), "-o", "out", "--force")
        self.assertEqual(Picture(mine).width, 200)

    def test_standard_input_may_be_one_of_them(self):
        wide, _ = self.two()
        done = self.succeed("convert", wide, "-", "--title", "sheet", input=self.PAGE.encode())
        self.assertEqual(done.stdout, b"wide.png\nsheet.png\n")

    def test_a_page_is_chosen_of_each(self):
        files = [self.file(name, HEAD + TWO_PAGES) for name in ("a.ps", "b.ps")]
        self.succeed("convert", *files, "--page", 2)
        bare = self.bare(files[0], "-sPageList=2", size=(200, 100), dpi=72)
        for name in "a.png", "b.png":
            self.assert_equal_within_one_level(Picture(self.folder / name), bare)

    def test_a_signal_ends_all(self):
        files = [self.file(f"endless{i}.ps", HEAD + "{} loop\n") for i in range(3)]
        command = subprocess.Popen([PROGRAM, "convert", *map(str, files), "--jobs", "2"], cwd=self.folder,
                                   env=self.surroundings, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        self.addCleanup(command.stderr.close)
        for _ in range(SECONDS * 10):  # until two work at a time
            if len(list((self.home / "jobs").glob("*/*.ps"))) == 2:
                break
            time.sleep(0.1)
        else:
            self.fail("the conversions did not begin")
        command.send_signal(signal.SIGINT)
        self.assertEqual(command.wait(SECONDS), 4)
        self.assertEqual(list(self.folder.glob("*.png")), [])
        self.assert_nothing_left()


class Lines(Case):
    # Two knives: 20 to 100 points across and 20 to 60 up, and a triangle.
    TWO = ART + knife() + knife("Deep", ("120 20", "180 20", "180 80", "120 20"))

    def cut(self, file, *options):
        self.succeed("cut", file, "--cut-color", "spot:Knife", "-o", "o.json", *options)
        return json.loads((self.folder / "o.json").read_text())

    def assert_box(self, thing, *points):
        found = [point for run in thing["runs"] for point in run["points"]]
        xs, ys = [x for x, _ in found], [y for _, y in found]
        for value, point in zip((min(xs), min(ys), max(xs), max(ys)), points):
            self.assertAlmostEqual(value, point * 2.54 / 72, delta=0.01)

    def test_lines_lie_where_the_file_has_them(self):
        for name, content in (("art.ps", HEAD + self.TWO + "showpage\n"),
                              ("art.eps", EPS_HEAD + self.TWO + "showpage\n"),
                              ("art.pdf", pdf([FIRST_PAGE]))):
            lines = self.cut(self.file(name, content))
            self.assertAlmostEqual(lines["width"], 200 * 2.54 / 72, delta=0.01, msg=name)
            self.assertEqual([thing["kind"] for thing in lines["objects"]], ["cut"], name)
            self.assert_box(lines["objects"][0], 20, 20, 100, 60)

    def test_the_second_colour_is_cut_through(self):
        file = self.file("art.ps", HEAD + self.TWO + "showpage\n")
        lines = self.cut(file, "--half-cut-color", "spot:Deep")
        self.assertEqual([thing["kind"] for thing in lines["objects"]], ["cut", "cut-through"])
        self.assert_box(lines["objects"][1], 120, 20, 180, 80)

    def test_a_page_of_a_pdf(self):
        lines = self.cut(self.file("art.pdf", pdf([FIRST_PAGE, SECOND_PAGE])), "--page", 2)
        self.assertAlmostEqual(lines["height"], 144 * 2.54 / 72, delta=0.01)
        self.assert_box(lines["objects"][0], 36, 36, 54, 54)

    def test_a_page_of_postscript(self):
        lines = self.cut(self.file("art.ps", HEAD + TWO_PAGES), "--page", 2)
        self.assertAlmostEqual(lines["height"], 100 * 2.54 / 72, delta=0.01)
        self.assert_box(lines["objects"][0], 36, 36, 54, 54)

    def test_a_page_of_postscript_without_a_declared_size(self):
        content = ("%!PS\n<</PageSize [200 100]>> setpagedevice\n" + knife() + "showpage\n"
                   "<</PageSize [72 144]>> setpagedevice\n" + SECOND_KNIFE + "showpage\n")
        file = self.file("open.ps", content)
        lines = self.cut(file)
        self.assertAlmostEqual(lines["height"], 100 * 2.54 / 72, delta=0.01)
        self.assert_box(lines["objects"][0], 20, 20, 100, 60)
        lines = self.cut(file, "--page", 2)
        self.assertAlmostEqual(lines["height"], 144 * 2.54 / 72, delta=0.01)
        self.assert_box(lines["objects"][0], 36, 36, 54, 54)

    def test_a_preview_is_of_the_chosen_page(self):
        file = self.file("art.ps", HEAD + TWO_PAGES)
        for name, page in (("one.rdoc", 1), ("two.rdoc", 2)):
            self.succeed("cut", file, "--cut-color", "spot:Knife", "--dpi", 72, "--preview", "--page", page,
                         "-o", name.replace("rdoc", "svg"))
        self.assertNotEqual(*(re.search(r"<image.*?>", (self.folder / name).read_text(), re.S).group()
                              for name in ("one.svg", "two.svg")))

    def test_each_form_tells_the_kinds_apart(self):
        file = self.file("art.ps", HEAD + self.TWO + "showpage\n")
        colours = ["--cut-color", "spot:Knife", "--half-cut-color", "spot:Deep"]
        for name, marks in (("o.svg", ["cut-line", "cut-through-line"]), ("o.dxf", ["CUT", "CUT_THROUGH"]),
                            ("o.hpgl", ["SP1;", "SP2;"]), ("o.plt", ["SP1;", "SP2;"])):
            self.succeed("cut", file, *colours, "-o", name)
            text = (self.folder / name).read_text()
            for mark in marks:
                self.assertIn(mark, text, name)
        self.succeed("cut", file, *colours, "-o", "o.pdf")
        self.assertTrue((self.folder / "o.pdf").read_bytes().startswith(b"%PDF"))

    def test_a_preview_is_below_the_lines(self):
        for name, content in (("art.ps", HEAD + self.TWO + "showpage\n"), ("art.pdf", pdf([FIRST_PAGE]))):
            file = self.file(name, content)
            options = ["--cut-color", "spot:Knife", "--dpi", 72]
            self.succeed("cut", file, *options, "-o", "bare.svg")
            self.succeed("cut", file, *options, "--preview", "-o", "with.svg")
            self.assertNotIn("<image", (self.folder / "bare.svg").read_text())
            svg = (self.folder / "with.svg").read_text()
            self.assertIn("<image", svg)
            self.assertLess(svg.index("<image"), svg.index("cut-line"))

    def test_json_counts_the_lines(self):
        file = self.file("art.ps", HEAD + self.TWO + "showpage\n")
        done = self.succeed("cut", file, "--cut-color", "spot:Knife", "--half-cut-color", "spot:Deep",
                            "--json", "-o", "o.dxf")
        last = json.loads(done.stdout.splitlines()[-1])
        self.assertEqual((last["event"], last["cut"], last["cut_through"], last["lines"]), ("done", 1, 1, 0))

    def test_a_colour_that_nothing_has_leaves_nothing_to_cut(self):
        file = self.file("art.ps", HEAD + ART + "showpage\n")
        done = self.fail_with(9, "nothing to cut", "cut", file, "--cut-color", "spot:Nowhere", "-o", "o.dxf")
        self.assertIn(b"Nowhere", done.stderr)
        self.assertFalse((self.folder / "o.dxf").exists())


if __name__ == "__main__":
    if shutil.which("gs") is None:
        print("Ghostscript is not installed")
        sys.exit(0)
    unittest.main()
