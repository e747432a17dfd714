"""`rastrel separate` with the real children: its planes are those of Ghostscript's own separation
device, and nothing is left of it.

usage: separate_test.py COMMAND
"""

import json
import os
import pathlib
import re
import signal
import struct
import subprocess
import sys
import tempfile
import time
import unittest

COMMAND = sys.argv.pop(1)
PRINTING = pathlib.Path(COMMAND).parents[2] / "bin/rastrel"
DPI = 72
MAXIMUM_PATH = 260  # that GenerateSCObjects reads

# Half the page cyan; a spot over its middle that leaves the cyan below, and yellow that does not.
PAGE = """<< /PageSize [200 100] >> setpagedevice
1 0 0 0 setcmykcolor 0 0 100 100 rectfill
true setoverprint
[ /Separation (Gold Ink) /DeviceCMYK { dup 0.2 mul exch dup 0.3 mul exch 0.9 mul 0 } ] setcolorspace
0.5 setcolor 50 25 100 50 rectfill
false setoverprint
0 0 1 0.25 setcmykcolor 10 10 moveto 30 0 rlineto 0 15 rlineto closepath fill
0.3 setlinewidth 0 0 0 1 setcmykcolor 3 97 moveto 197 55 lineto stroke
showpage
"""
EPS = """%!PS-Adobe-3.0 EPSF-3.0
%%BoundingBox: 20 10 120 60
%%EndComments
0 0.5 0 0 setcmykcolor 20 10 60 50 rectfill
[ /Separation /Varnish /DeviceCMYK { 0 0 0 4 -1 roll } ] setcolorspace 1 setcolor
70 35 20 0 360 arc fill
%%EOF
"""


def tiff_pages(path):
    """Name, width, height and pixels of each page of an uncompressed gray TIFF file."""
    data = path.read_bytes()
    if data[:4] != b"II*\0":
        raise ValueError("not little-endian TIFF")
    at, pages = struct.unpack_from("<I", data, 4)[0], []
    while at:
        count = struct.unpack_from("<H", data, at)[0]
        tags = {}
        for i in range(count):
            tag, kind, number, value = struct.unpack_from("<HHII", data, at + 2 + 12 * i)
            tags[tag] = (kind, number, value)
        width, height = tags[256][2], tags[257][2]
        offsets, sizes = tags[273], tags[279]
        if offsets[1] == 1:
            pixels = data[offsets[2]:offsets[2] + sizes[2]]
        else:
            form = {3: "H", 4: "I"}
            strips = struct.unpack_from(f"<{offsets[1]}{form[offsets[0]]}", data, offsets[2])
            lengths = struct.unpack_from(f"<{sizes[1]}{form[sizes[0]]}", data, sizes[2])
            pixels = b"".join(data[o:o + n] for o, n in zip(strips, lengths))
        assert tags.get(259, (3, 1, 1))[2] == 1, "uncompressed"
        name = ""
        if 285 in tags:
            name = data[tags[285][2]:tags[285][2] + tags[285][1]].rstrip(b"\0").decode()
        pages.append((name, width, height, pixels))
        at = struct.unpack_from("<I", data, at + 2 + 12 * count)[0]
    return pages


class Separate(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="rastrel-separate-")
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)
        self.home = self.place / "home"

    def write(self, name, text):
        path = self.place / name
        path.write_text(text)
        return path

    def run_command(self, *words, **options):
        return subprocess.run([COMMAND, "separate", *map(str, words)], capture_output=True,
                              env=dict(os.environ, RASTREL_HOME=str(self.home)), **options)

    def separate(self, *words, **options):
        ended = self.run_command(*words, "--dpi", DPI, "--json", **options)
        self.assertEqual(ended.returncode, 0, ended.stderr.decode() + ended.stdout.decode())
        return [event for event in map(json.loads, ended.stdout.decode().splitlines())
                if event["event"] in ("plane", "done")]

    def assert_nothing_left(self):
        separation = self.home / "Queue/rip/Separation"
        self.assertEqual(list(separation.glob("*")), [])
        self.assertEqual(list((self.home / "jobs").glob("*")), [])

    def truth(self, source, *options):
        """The planes of the first page, by name, that the separation device paints by itself."""
        folder = self.place / "truth"
        folder.mkdir(exist_ok=True)
        for old in folder.glob("*"):
            old.unlink()
        subprocess.run(["gs", "-q", "-dNOPAUSE", "-dBATCH", "-dSAFER", f"-r{DPI}", *options,
                        "-sDEVICE=tiffsep", "-sCompression=none", "-o", folder / "p%d.tif", source],
                       check=True, capture_output=True)
        planes = {}
        for path in folder.glob("p1(*).tif"):
            name = re.fullmatch(r"p1\((.*)\)\.tif", path.name).group(1)
            planes[name] = tiff_pages(path)[0][1:]
        return planes

    def assert_planes(self, planes, source, *options):
        truth = self.truth(source, *options)
        found = {plane["name"]: plane for plane in planes}
        self.assertEqual(sorted(found), sorted(truth))
        for name, (width, height, pixels) in truth.items():
            with self.subTest(name):
                page = tiff_pages(pathlib.Path(found[name]["paths"][0]))[0]
                self.assertEqual(page[1:3], (width, height))
                self.assertEqual(page[3], pixels, "the same bytes")
                ink = sum(255 - pixel for pixel in pixels) / 255 / len(pixels)
                self.assertAlmostEqual(found[name]["coverage"], 100 * ink, 9)
                area = ink * width * height / DPI / DPI * 2.54 * 2.54
                self.assertAlmostEqual(found[name]["area"], area, 9)

    def print_to_separation(self, source, status=0):
        ended = subprocess.run([PRINTING, "print", source, "--printer", "Separation"],
                               capture_output=True, check=False,
                               env=dict(os.environ, RASTREL_HOME=str(self.home)))
        self.assertEqual(ended.returncode, status, ended.stderr.decode())
        return pathlib.Path(ended.stdout.decode().rstrip("\n"))

    def test_a_job_whose_path_is_too_long_for_the_setting_is_not_kept(self):
        for length in (MAXIMUM_PATH, MAXIMUM_PATH + 1):
            around = len(str(self.place / "Queue/rip/Separation/page.ps")) + 1
            self.home = self.place / ("h" * (length - around))
            kept = self.print_to_separation(self.write("page.ps", "%!PS\n" + PAGE),
                                            status=0 if length == MAXIMUM_PATH else 1)
            directory = self.home / "Queue/rip/Separation"
            self.assertEqual(list(directory.glob("*")),
                             [kept] if length == MAXIMUM_PATH else [])

    def test_a_job_that_was_printed_to_the_separation_printer_is_separated_once(self):
        source = self.write("page.ps", "%!PS\n" + PAGE)
        printed = self.print_to_separation(source)
        self.assertEqual(printed, self.home / "Queue/rip/Separation/page.ps")
        self.assertEqual(printed.read_text(), "%!PS\n" + PAGE)
        self.assert_planes(self.separate("-o", self.place / "out")[:-1], source)
        self.assert_nothing_left()
        again = self.run_command()
        self.assertEqual(again.returncode, 3)
        self.assertIn("nothing is printed to 'Separation'", again.stderr.decode())

    def test_a_printed_job_stays_where_the_setting_keeps_it_and_goes_where_it_fails(self):
        good = self.print_to_separation(self.write("page.ps", "%!PS\n" + PAGE))
        with open(self.home / "settings.ini", "a", encoding="utf-8") as settings:
            settings.write("Delete = 0\n")
        self.separate("-o", self.place / "out")
        self.assertTrue(good.exists())
        settings = self.home / "settings.ini"
        settings.write_text(settings.read_text().replace("Delete = 0", "Delete = 1"))
        bad = self.print_to_separation(self.write("bad.ps", "%!PS\nno.such.operator\n"))
        self.assertEqual(self.run_command().returncode, 1)
        self.assertFalse(bad.exists())
        self.assertTrue(good.exists())

    def test_postscript_has_the_planes_of_the_separation_device(self):
        source = self.write("page.ps", "%!PS\n" + PAGE)
        planes = self.separate(source, "-o", self.place / "out")[:-1]
        self.assertIn("Gold Ink", [plane["name"] for plane in planes])
        self.assert_planes(planes, source)
        self.assertEqual(source.read_text(), "%!PS\n" + PAGE, "the user's own file is left alone")
        self.assert_nothing_left()

    def test_overprint_is_kept(self):
        source = self.write("page.ps", "%!PS\n" + PAGE)
        self.separate(source, "-o", self.place / "out.tif")
        pages = {name: pixels for name, _, _, pixels in tiff_pages(self.place / "out.tif")}
        middle = 50 * 200 + 75  # in the cyan and in the spot
        self.assertEqual(pages["Cyan"][middle], 0, "full cyan below the spot")
        self.assertLess(pages["Gold Ink"][middle], 255)

    def test_eps_is_cropped_to_its_box(self):
        source = self.write("mark.eps", EPS)
        planes = self.separate(source, "-o", self.place / "out")[:-1]
        self.assert_planes(planes, source, "-dEPSCrop")
        self.assertEqual((planes[0]["width"], planes[0]["height"]), (100, 50))

    def test_pdf_has_them_too_though_its_copy_has_another_ending(self):
        self.write("page.ps", "%!PS\n" + PAGE)
        source = self.place / "page.pdf"
        subprocess.run(["gs", "-q", "-dNOPAUSE", "-dBATCH", "-dSAFER", "-sDEVICE=pdfwrite", "-o", source,
                        self.place / "page.ps"], check=True, capture_output=True)
        planes = self.separate(source, "-o", self.place / "out")[:-1]
        self.assert_planes(planes, source)
        self.assertTrue(source.exists())

    def test_several_pages_have_files_of_their_own(self):
        source = self.write("two.ps", "%!PS\n" + PAGE + PAGE.replace("1 0 0 0 set", "0 1 0 0 set"))
        events = self.separate(source, "-o", self.place / "out")
        planes = events[:-1]
        self.assertEqual([plane["page"] for plane in planes], [1] * 5 + [2] * 5)
        names = sorted(path.name for path in (self.place / "out").iterdir())
        self.assertEqual(len(names), 10)
        self.assertEqual(names[0], "two-1-Black.tif")
        self.assertGreater(planes[6]["coverage"], 40, "magenta of page 2")
        self.assertEqual(planes[1]["coverage"], 0, "magenta of page 1")
        self.assertEqual(len(events[-1]["paths"]), 10)
        self.separate(source, "-o", self.place / "two.svg")
        self.assertTrue((self.place / "two-1.svg").exists() and (self.place / "two-2.svg").exists())

    def test_standard_input_is_a_file_as_well(self):
        with open(self.write("page.ps", "%!PS\n" + PAGE), "rb") as file:
            planes = self.separate("-", "--title", "shop", "-o", self.place / "out", stdin=file)[:-1]
        self.assertEqual(len(planes), 5)
        self.assertTrue((self.place / "out/shop-Cyan.tif").exists())
        self.assert_nothing_left()

    def test_each_form_has_each_plane(self):
        source = self.write("page.ps", "%!PS\n" + PAGE)
        inks = ["Cyan", "Magenta", "Yellow", "Black", "Gold Ink"]
        self.separate(source, "-o", self.place / "a.tif")
        self.assertEqual([page[0] for page in tiff_pages(self.place / "a.tif")], inks)
        self.separate(source, "-o", self.place / "a.svg")
        drawing = (self.place / "a.svg").read_text()
        self.assertEqual(re.findall(r'data-layer="([^"]*)"', drawing), inks)
        self.separate(source, "-o", self.place / "a.pdf")
        shown = subprocess.run(["pdfinfo", self.place / "a.pdf"], check=True, capture_output=True,
                               text=True).stdout
        self.assertRegex(shown, r"Pages:\s+5\n")
        self.assertRegex(shown, r"Page size:\s+200 x 100 pts")
        self.separate(source, "-o", self.place / "a.rdoc")
        document = json.loads((self.place / "a.rdoc").read_text())
        objects = document["objects"]
        self.assertEqual([plane["ink"]["name"] for plane in objects], inks)
        self.assertEqual({plane["sheetLayer"] for plane in objects}, {1})
        self.assertEqual([(layer["name"], layer["type"], layer["substrate"])
                          for layer in document["sheetLayers"]], [("Separations", 1, False)])
        self.assertEqual(objects[0]["locks"], {"color": 100, "font": 100, "lineStyle": 100, "size": 100})

    def test_a_document_outlives_the_planes_directory(self):
        source = self.write("page.ps", "%!PS\n" + PAGE)
        self.separate(source, "-o", self.place / "a.rdoc")
        self.separate(source, "-o", self.place / "direct.png")
        self.assert_nothing_left()
        ended = subprocess.run([COMMAND, "import", self.place / "a.rdoc", "-o", self.place / "kept.png",
                                "--dpi", str(DPI)], capture_output=True)
        self.assertEqual(ended.returncode, 0, ended.stderr)
        self.assertEqual((self.place / "kept.png").read_bytes(),
                         (self.place / "direct.png").read_bytes())

    def test_inks_whose_names_are_the_same_in_files_get_numbers(self):
        spots = "".join(f"[ /Separation ({name}) /DeviceCMYK {{ 0 0 0 4 -1 roll }} ] setcolorspace "
                        "1 setcolor 0 0 9 9 rectfill\n" for name in ("Ink", "INK", "a/b", "a_b"))
        source = self.write("s.ps", "%!PS\n<< /PageSize [20 20] >> setpagedevice\n" + spots + "showpage\n")
        planes = self.separate(source, "-o", self.place / "out")[:-1]
        paths = [plane["paths"][0] for plane in planes]
        self.assertEqual(len({path.lower() for path in paths}), len(planes))
        self.assertEqual({os.path.dirname(path) for path in paths}, {str(self.place / "out")})

    def test_names_that_are_taken_are_refused_without_force(self):
        source = self.write("page.ps", "%!PS\n" + PAGE)
        (self.place / "out").mkdir()
        taken = self.place / "out/page-Yellow.tif"
        taken.write_text("mine")
        ended = self.run_command(source, "-o", self.place / "out")
        self.assertEqual(ended.returncode, 2, ended.stderr)
        self.assertIn(b"page-Yellow.tif", ended.stderr)
        self.assertEqual([path.name for path in (self.place / "out").iterdir()], [taken.name])
        self.assertEqual(taken.read_text(), "mine")
        self.separate(source, "-o", self.place / "out", "--force")
        self.assertEqual(len(list((self.place / "out").iterdir())), 5)
        self.assert_nothing_left()

    def test_each_way_to_fail_has_its_status_and_leaves_nothing(self):
        source = self.write("page.ps", "%!PS\n" + PAGE)
        bad = self.write("bad.ps", "%!PS\nthis is no operator\n")
        none = self.write("none.txt", "no job")
        for words, status, message in (
                ((self.place / "missing.ps",), 3, b"missing.ps"),
                ((none,), 3, b"can't separate"),
                ((bad,), 1, b"the separation failed"),
                ((source, "--dpi", "0"), 2, b"--dpi"),
                ((source, "--dpi", "4801"), 2, b"--dpi"),
                ((source, "-o", "-"), 2, b"standard output"),
                ((source, "-o", self.place / "no/such/a.tif"), 1, b"a.tif"),
                ((source, "-o", self.place / "page.ps" / "out"), 2, b"can't be put into")):
            with self.subTest(words):
                ended = self.run_command(*words)
                self.assertEqual(ended.returncode, status, ended.stderr)
                self.assertIn(message, ended.stderr)
                self.assert_nothing_left()
        self.assertEqual(sorted(path.name for path in self.place.iterdir()),
                         ["bad.ps", "home", "none.txt", "page.ps"])

    def start_slow_command(self):
        """A command on a file that does not end, once its working copy is there."""
        source = self.write("slow.ps", "%!PS\n{ } loop\n")
        child = subprocess.Popen([COMMAND, "separate", source], stdout=subprocess.DEVNULL,
                                 stderr=subprocess.PIPE,
                                 env=dict(os.environ, RASTREL_HOME=str(self.home)))
        self.addCleanup(child.stderr.close)
        for _ in range(3000):
            if list((self.home / "Queue/rip/Separation").glob("*/slow.ps")):
                return child
            time.sleep(0.02)
        child.kill()
        child.wait()
        return self.fail("the working copy never came")

    def test_a_killed_command_is_swept_by_the_next(self):
        child = self.start_slow_command()
        child.kill()
        child.wait()
        separation = self.home / "Queue/rip/Separation"
        self.assertTrue(list(separation.iterdir()), "the leftovers of a killed command")
        self.separate(self.write("page.ps", "%!PS\n" + PAGE))
        self.assertEqual(list(separation.iterdir()), [])

    def test_an_interrupt_cancels_and_leaves_nothing(self):
        child = self.start_slow_command()
        child.send_signal(signal.SIGINT)
        _, errors = child.communicate(timeout=250)
        self.assertEqual(child.returncode, 4, errors)
        self.assertIn(b"cancelled", errors)
        self.assert_nothing_left()


if __name__ == "__main__":
    unittest.main()
