"""Draws every example of plates, and compares the pictures with stored ones and the drawings with what
the files say.

usage: pictures_test.py COMMAND SOURCE_TREE [--store] [unittest arguments]

With --store the pictures are made again and their names printed: open each, and see that it shows what
its file asks for, before it is kept.
"""

import pathlib
import subprocess
import sys
import tempfile
import unittest

import examples_as_written
from png_picture import Picture, difference

COMMAND, SOURCES = sys.argv.pop(1), pathlib.Path(sys.argv.pop(1))
STORED = pathlib.Path(__file__).parent / "pictures"
MEASURE = SOURCES / "tests/host/render/measure_svg.py"
HUNDREDTH = 0.01

# The blank that an example is drawn on, little larger than its plates, and the pixels per inch.
DRAWN = {
    "blank-plates": ("17x6cm", 50),
    "default-margins": ("12x4cm", 75),
    "further-pages": ("60x40cm", 20),
    "hole-sizes": ("12x6cm", 60),
    "line-breaks": ("17x5cm", 60),
    "missing-fonts": ("9x3.5cm", 75),
    "name-badge": ("9x4cm", 75),
    "panel": ("22x13cm", 50),
    "same-sizes": ("12x7cm", 60),
    "several-templates": ("16x7cm", 60),
    "text-frames": ("17x5cm", 60),
    "unknown-colors": ("12x6cm", 60),
    "valve-tags": ("22x9cm", 50),
}


def run(*words):
    subprocess.run([COMMAND, *map(str, words)], check=True, stdout=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL)


def draw(example, folder, extension, *options):
    """The files that the command makes of an example, in the order of its pages."""
    blank, dpi = DRAWN[example.stem]
    run("import", example, "--blank", blank, "--dpi", dpi, "-o",
        pathlib.Path(folder) / f"{example.stem}.{extension}", *options)
    return sorted(pathlib.Path(folder).glob(f"{example.stem}*.{extension}"))


def measure(drawings):
    """Rows of what stands on the drawings; numbers are millimetres from the lower left."""
    rows = []
    for drawing in drawings:
        text = subprocess.run([sys.executable, MEASURE, drawing], check=True, text=True,
                              capture_output=True).stdout
        for line in text.splitlines():
            kind, _, values = line.partition(" ")
            numbers, _, content = values.partition(" | ")
            rows.append((kind, [float(n) for n in numbers.split(" '")[0].split()], content))
    return rows


class Examples(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.examples = examples_as_written.files(SOURCES / "examples/plates")
        with tempfile.TemporaryDirectory(prefix="rastrel-drawings-") as place:
            cls.drawn = {example: measure(draw(example, place, "svg")) for example in cls.examples}

    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="rastrel-pictures-")
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)

    def test_every_example_is_drawn(self):
        self.assertEqual(sorted(example.stem for example in self.examples), sorted(DRAWN))

    def test_every_picture_is_the_stored_one(self):
        made = [picture for example in self.examples for picture in draw(example, self.place, "png")]
        self.assertEqual([p.name for p in made], [p.name for p in sorted(STORED.glob("*.png"))])
        for picture in made:
            with self.subTest(picture.name):
                self.assertIsNone(difference(Picture(picture), Picture(STORED / picture.name)))

    def test_a_hole_or_a_letter_that_is_elsewhere_makes_another_picture(self):
        for name, before, after in (("hole-sizes", "<XLOC>3.5<", "<XLOC>3.45<"),
                                    ("name-badge", "Lovelace", "Lovelade"),
                                    ("panel", "<COLOR>Silver<", "<COLOR>Gray<")):
            with self.subTest(name):
                example = SOURCES / f"examples/plates/{name}.xml"
                changed = self.place / f"{name}.xml"
                text = example.read_text(encoding="utf-8")
                self.assertIn(before, text)
                changed.write_text(text.replace(before, after), encoding="utf-8")
                (picture,) = draw(changed, self.place, "png")
                self.assertIsNotNone(difference(Picture(picture), Picture(STORED / picture.name)))

    def rows(self, example, kind):
        return [(numbers, content) for row, numbers, content in self.drawn[example] if row == kind]

    def test_plates_are_as_large_as_the_file_says_and_inside_the_blank(self):
        for example in self.examples:
            with self.subTest(example.stem):
                (width, height), _ = self.rows(example, "page")[0]
                plates = examples_as_written.plates(example)
                panes = self.rows(example, "plate")
                self.assertEqual(len(panes), len(plates))
                for plate, ((left, bottom, right, top), _) in zip(plates, panes):
                    self.assertAlmostEqual(right - left, plate.width, delta=HUNDREDTH)
                    self.assertAlmostEqual(top - bottom, plate.height, delta=HUNDREDTH)
                    self.assertTrue(0 <= left < right <= width and 0 <= bottom < top <= height)

    def test_holes_are_where_the_file_says_to_a_hundredth_of_a_millimetre(self):
        for example in self.examples:
            with self.subTest(example.stem):
                panes = [numbers for numbers, _ in self.rows(example, "plate")]
                expected = [(pane[0] + x, pane[3] - y, diameter)
                            for plate, pane in zip(examples_as_written.plates(example), panes)
                            for x, y, diameter in plate.holes]
                found = [numbers for numbers, _ in self.rows(example, "drill-point")]
                self.assertEqual(len(found), len(expected))
                for hole, place in zip(found, expected):
                    for measured, said in zip(hole, place):
                        self.assertAlmostEqual(measured, said, delta=HUNDREDTH)

    def test_lines_stand_in_the_middle_between_their_margins(self):
        for example in self.examples:
            with self.subTest(example.stem):
                panes = [numbers for numbers, _ in self.rows(example, "plate")]
                expected = [(data, pane, plate.margin)
                            for plate, pane in zip(examples_as_written.plates(example), panes)
                            for data in plate.lines]
                found = self.rows(example, "text")
                self.assertEqual([content for _, content in found], [data for data, _, _ in expected])
                for ((x, y, length, size), _), (_, pane, margin) in zip(found, expected):
                    left, bottom, right, top = pane
                    inset = margin * (right - left)
                    self.assertGreaterEqual(x, left + inset - HUNDREDTH)
                    self.assertLessEqual(x + length, right - inset + HUNDREDTH)
                    self.assertAlmostEqual(x + length / 2, (left + right) / 2, delta=HUNDREDTH)
                    self.assertTrue(bottom <= y and y + 0.7 * size <= top)


def store():
    for old in STORED.glob("*.png"):
        old.unlink()
    print("Open each of these, and see that it shows what its file asks for:")
    for example in examples_as_written.files(SOURCES / "examples/plates"):
        for picture in draw(example, STORED, "png"):
            print(f"  {picture}  of  {example.relative_to(SOURCES)}")


if __name__ == "__main__":
    if "--store" in sys.argv:
        store()
    else:
        unittest.main(verbosity=2)
