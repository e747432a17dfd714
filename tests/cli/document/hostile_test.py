"""Templates that mean harm end in a document or in a reason, in bounded memory.

usage: hostile_test.py COMMAND [--measured]

With --measured the memory of each run is held against its limit; instrumented programs take more than
the files ask for. Time is the test's own limit, which nothing quadratic would keep.
"""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

COMMAND = os.path.abspath(sys.argv.pop(1))
MEASURED = "--measured" in sys.argv
if MEASURED:
    sys.argv.remove("--measured")
MEGABYTE = 1 << 20
MARK = "measured:"
# A process of its own and small: a child's memory counts from what its parent had.
MEASURE = f"""
import os, resource, sys
status = os.spawnv(os.P_WAIT, sys.argv[1], sys.argv[1:])
usage = resource.getrusage(resource.RUSAGE_CHILDREN)
print("{MARK}", round(usage.ru_utime, 2), usage.ru_maxrss, status)
"""
FONT = "<FONT name='DejaVuSans.ttf' size='0.2'/>"


def template(inside, plates="<PLATES/>"):
    return f"<ABB>\n<ENGRAVINGTEMPLATE>{plates}\n{inside}\n</ENGRAVINGTEMPLATE>\n</ABB>\n"


def plate(width, height, inside=""):
    return f"<PLATE><COLOR>Gold</COLOR><WIDTH>{width}</WIDTH><HEIGHT>{height}</HEIGHT>{inside}</PLATE>\n"


def text(data):
    return f"<TEXTCOLOR>Black</TEXTCOLOR><TEXT data='{data}'>{FONT}</TEXT>"


def hole(x, y, diameter=0.1):
    return (f"<DRILLPOINT><COLOR>Red</COLOR><XLOC>{x}</XLOC><YLOC>{y}</YLOC>"
            f"<DIAMETER>{diameter}</DIAMETER></DRILLPOINT>")


class Hostile(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="rastrel-hostile-")
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)

    def run_on(self, content, *options, most=128):
        """Exit status, output and error of an import; it may take that many megabytes."""
        (self.place / "plates.xml").write_text(content, encoding="utf-8")
        measured = subprocess.run([sys.executable, "-S", "-c", MEASURE, COMMAND, "import", "plates.xml",
                                   *options], cwd=self.place, check=True, capture_output=True, text=True)
        *_, seconds, kilobytes, status = measured.stdout.splitlines()[-1].split()
        told, why = measured.stdout.rpartition(MARK)[0], measured.stderr
        status = int(status)
        self.assertIn(status, (0, 1, 3), why)
        print(f"{status} {seconds:>6} s {int(kilobytes) // 1024:4} MB of {most} {' '.join(options)}",
              file=sys.stderr)
        if MEASURED:
            self.assertLess(int(kilobytes) * 1024, most * MEGABYTE, told + why[:200])
        return status, told, why

    def test_a_hundred_thousand_plates_of_one_size_are_one_document(self):
        status, told, why = self.run_on(template(plate(1, 1) * 100_000), "-o", "all.pdf")
        self.assertEqual((status, why), (0, ""))
        # 23 by 15 stand on a page.
        self.assertRegex(told, "^290 pages of 60 by 40 cm: 100000 plates")

    def test_a_hundred_thousand_plates_of_as_many_sizes_are_one_document(self):
        plates = "".join(plate(0.1 + i % 1000 * 0.001, 0.1 + i // 1000 * 0.001) for i in range(100_000))
        for options, most in (((), 192), (("-o", "all.pdf"), 192), (("-o", "all.rdoc"), 512)):
            status, told, why = self.run_on(template(plates), *options, most=most)
            self.assertEqual((status, why), (0, ""))
            self.assertIn(": 100000 plates", told)

    def test_two_sizes_in_turn_are_a_plate_object_each(self):
        status, told, _ = self.run_on(template((plate(1, 1) + plate(2, 1)) * 25_000), "--page", "1",
                                      "-o", "one.svg")
        self.assertEqual(status, 0)
        self.assertIn(": 50000 plates", told)

    def test_twenty_thousand_plates_with_text_are_drawn(self):
        plates = template("".join(plate(2, 1, text(f"Plate {i}")) for i in range(20_000)))
        for extra in ((), ("--outlines",)):
            status, told, _ = self.run_on(plates, "-o", "all.pdf", *extra, most=192)
            self.assertEqual(status, 0)
            self.assertIn(": 20000 plates, 20000 texts", told)

    def test_a_million_holes_are_more_than_a_document_may_take_and_a_hundred_thousand_are_not(self):
        status, _, why = self.run_on(template(plate(2, 1, hole(0.5, 0.5) * 1_000_000)), most=192)
        self.assertEqual(status, 3)
        self.assertRegex(why, r"plates\.xml:3:\d+: the document takes more than \d+ bytes of memory")
        holes = "".join(hole(i % 1000 / 500, i // 1000 / 100) for i in range(100_000))
        status, told, why = self.run_on(template(plate(2, 1, holes)), "-o", "holes.svg")
        self.assertEqual((status, why), (0, ""))
        self.assertIn("100000 drill points", told)

    def test_ten_megabytes_of_text_in_an_attribute_are_refused(self):
        status, _, why = self.run_on(template(plate(2, 1, text("x" * 10_000_000))), most=64)
        self.assertEqual(status, 3)
        self.assertRegex(why, r"plates\.xml:3:\d+: a tag, comment, instruction or CDATA section has more "
                              r"than \d+ bytes")

    def test_ten_megabytes_of_text_in_lines_are_cut_off_and_told(self):
        lines = f"<TEXT data='{'x' * 255}'>{FONT}</TEXT>" * 40_000
        status, _, why = self.run_on(template(plate(2, 1, lines)), "-o", "lines.svg", most=192)
        self.assertEqual(status, 1)
        self.assertIn("a text of more than 1000000 characters is cut off there", why)

    def test_elements_deep_inside_each_other_are_refused(self):
        for depth in (257, 100_000):
            nested = "<ENGRAVINGTEMPLATE>" * depth + "</ENGRAVINGTEMPLATE>" * depth
            status, _, why = self.run_on(f"<ABB>{nested}</ABB>", most=64)
            self.assertEqual(status, 3)
            self.assertIn("elements are more than 256 deep", why)

    def test_as_many_fonts_and_colours_as_plates_are_each_told_once(self):
        plates = "".join(plate(2, 1, f"<TEXTCOLOR>Colour {i}</TEXTCOLOR><TEXT data='x'>"
                                     f"<FONT name='NoSuchFont{i % 5000}.ttf' size='0.2'/></TEXT>")
                         for i in range(20_000))
        status, _, why = self.run_on(template(plates), "-o", "all.pdf")
        self.assertEqual(status, 0)
        self.assertEqual(why.count("can't be had"), 5000)

    def test_plates_that_fit_no_blank_are_all_left_out(self):
        status, told, why = self.run_on(template("".join(plate(100 + i, 1) for i in range(50_000))),
                                        most=192)
        self.assertEqual(status, 1)
        self.assertIn("0 pages of 60 by 40 cm: 0 plates", told)
        self.assertEqual(why.count("does not fit on the blank"), 50_000)

    def test_a_plate_that_says_nothing_is_left_out_once_for_all(self):
        status, told, why = self.run_on(template("<PLATE/>" * 1000), "-o", "none.svg", most=64)
        self.assertEqual(status, 1)
        self.assertIn(": 0 plates", told)
        self.assertEqual(why, "rastrel: left out: a plate of 0 by 0 cm has no area\n")

    def test_numbers_of_every_kind_end_in_a_drawing_of_what_can_be_made(self):
        numbers = ["1e308", "-1e308", "1e-308", "nan", "-nan", "inf", "-inf", "9" * 400, "1e400", "0x10",
                   "-1", "0", "-0", "", " ", "1,5", "1e", ".", "2147483648", "-2147483649", "1" * 4000]
        for value in numbers:
            inside = (f"<TEXTFRAME>{value}</TEXTFRAME><TEXTCOLOR>Black</TEXTCOLOR>"
                      f"<TEXT line='{value}' data='A&#10;&#13;B'><FONT name='DejaVuSans.ttf' size='{value}'/>"
                      f"</TEXT>{text('b')}{hole(value, value, value)}{hole(1, value)}")
            content = template(plate(value, 1) + plate(1, value) + plate(2, 1, inside) + plate(value, value))
            for name in ("a.svg", "a.pdf", "a.png", "a.rdoc"):
                with self.subTest(f"{value[:20]} {name}"):
                    status, told, _ = self.run_on(content, "--dpi", "10", "-o", name, most=64)
                    self.assertIn(status, (0, 1))
                    self.assertIn(f"written to {name}", told)

    def test_a_blank_without_area_is_wrong_use(self):
        (self.place / "plates.xml").write_text(template(plate(1, 1)), encoding="utf-8")
        for blank in ("0x0cm", "0x10cm", "-1x10cm", "nanx10cm", "infxinfcm", "1e300x1e300cm"):
            ended = subprocess.run([COMMAND, "import", "plates.xml", f"--blank={blank}"], cwd=self.place,
                                   capture_output=True, text=True, check=False)
            self.assertEqual(ended.returncode, 2, blank)
            self.assertIn("--blank", ended.stderr)


if __name__ == "__main__":
    unittest.main(verbosity=2)
