"""Draws every example of the formats besides plate XML, and the merges, measures the drawings by what the
files say, and compares the pictures with stored ones.

usage: formats_test.py COMMAND SOURCE_TREE [--store] [unittest arguments]

With --store the pictures are made again and their names printed: open each, and see that it shows what
its file asks for, before it is kept.
"""

import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

from png_picture import Picture, difference

COMMAND, SOURCES = sys.argv.pop(1), pathlib.Path(sys.argv.pop(1))
PLATES = SOURCES / "examples/plates"
MERGE = SOURCES / "examples/merge"
STORED = pathlib.Path(__file__).parent / "pictures/formats"
MEASURE = SOURCES / "tests/host/render/measure_svg.py"
INCH = 25.4
HUNDREDTH = 0.01

BLANK = ("--blank", "25x12cm")
DPI = ("--dpi", "60")

# What makes each drawing.
DRAWN = {
    "door-plates": ("import", PLATES / "cro/door-plates.cro", *BLANK),
    "metric-with-graphics": ("import", PLATES / "cro/metric-with-graphics.cro", "--allow-outside", *BLANK),
    "cabinet-labels": ("import", PLATES / "cro/cabinet-labels.cro", *BLANK),
    "round-seal": ("import", PLATES / "llx/round-seal.llx", "--allow-outside"),
    "justified-arcs": ("import", PLATES / "llx/justified-arcs.llx", "--allow-outside"),
    "notice": ("import", PLATES / "bright-star/notice.xml"),
    "from-the-center": ("import", PLATES / "bright-star/from-the-center.xml"),
    "award": ("import", PLATES / "crown-trophy/award.cr2", "--allow-outside"),
    "colours": ("import", PLATES / "crown-trophy/colours.cr2", "--allow-outside"),
    "hex-colours": ("import", PLATES / "crown-trophy/hex-colours.zml"),
    "tags": ("import", PLATES / "crown-trophy/tags.zml"),
    "badge": ("merge", MERGE / "badge.xml", "--data", MERGE / "names.csv", *BLANK),
    "price-label": ("merge", MERGE / "price-label.cro", "--data", SOURCES / "examples/price-list.fods",
                    *BLANK),
}


def run(*words):
    return subprocess.run([COMMAND, *map(str, words)], check=True, text=True, capture_output=True).stdout


def draw(name, folder, extension):
    picture = pathlib.Path(folder) / f"{name}.{extension}"
    run(*DRAWN[name], *DPI, "-o", picture)
    return picture


def measure(drawing):
    """(kind, numbers, content) of what is on a drawing; millimetres from the lower left."""
    rows = []
    text = subprocess.run([sys.executable, MEASURE, drawing], check=True, text=True, capture_output=True)
    for line in text.stdout.splitlines():
        kind, _, values = line.partition(" ")
        numbers, _, content = values.partition(" | ")
        found = []
        for word in numbers.split():
            try:
                found.append(float(word))
            except ValueError:
                break
        rows.append((kind, found, content))
    return rows


class Formats(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        with tempfile.TemporaryDirectory(prefix="rastrel-formats-") as place:
            drawings = {name: draw(name, place, "svg") for name in DRAWN}
            cls.drawn = {name: measure(drawing) for name, drawing in drawings.items()}
            cls.svg = {name: drawing.read_text() for name, drawing in drawings.items()}

    def rows(self, name, kind):
        return [(numbers, content) for row, numbers, content in self.drawn[name] if row == kind]

    def near(self, measured, said):
        self.assertEqual(len(measured), len(said))
        for one, other in zip(measured, said):
            self.assertAlmostEqual(one, other, delta=HUNDREDTH)

    def plates(self, name, expected):
        found = [numbers for numbers, _ in self.rows(name, "plate")]
        self.assertEqual(len(found), len(expected))
        for plate, said in zip(found, expected):
            self.near(plate, said)
        return found

    def texts_are(self, name, expected):
        self.assertEqual([content for _, content in self.rows(name, "text")], expected)

    def plate_fills_are(self, name, expected):
        plates = re.search('<g class="plate">(.*?)</g>', self.svg[name], re.DOTALL)[1]
        self.assertEqual(re.findall(' fill="(.*?)"', plates), expected)

    def text_fills_are(self, name, expected):
        self.assertEqual(re.findall('<text .*? fill="(.*?)">', self.svg[name]), expected)

    def test_every_example_is_drawn(self):
        folders = [PLATES / folder for folder in ("cro", "llx", "bright-star", "crown-trophy")]
        files = [file for folder in folders for file in folder.iterdir()]
        files += [MERGE / "badge.xml", MERGE / "price-label.cro"]
        self.assertEqual(sorted(file.stem for file in files), sorted(DRAWN))

    def test_every_picture_is_the_stored_one(self):
        self.assertEqual(sorted(file.stem for file in STORED.glob("*.png")), sorted(DRAWN))
        with tempfile.TemporaryDirectory(prefix="rastrel-formats-") as place:
            for name in DRAWN:
                with self.subTest(name):
                    made = draw(name, place, "png")
                    self.assertIsNone(difference(Picture(made), Picture(STORED / made.name)))

    def test_door_plates_are_in_a_row_from_the_top_left(self):
        width, height, top = 3 * INCH, 1.5 * INCH, 120
        panes = self.plates("door-plates", [(i * width, top - height, (i + 1) * width, top)
                                            for i in range(3)])
        self.texts_are("door-plates", ["101", "Reception", "102", "Workshop", "103", "Paint store"])
        for i, ((x, _, length, _), _) in enumerate(self.rows("door-plates", "text")):
            pane = panes[i // 2]
            self.assertAlmostEqual(x + length / 2, (pane[0] + pane[2]) / 2, delta=HUNDREDTH)

    def test_metric_plates_are_as_large_as_their_centimetres(self):
        self.plates("metric-with-graphics", [(i * 90, 0, (i + 1) * 90, 40) for i in range(2)])
        self.texts_are("metric-with-graphics", ["First", "Ada Byron", "Second", "Mary Evans"])

    def test_lines_of_given_heights_are_spread_and_turned_with_their_plate(self):
        panes = self.plates("cabinet-labels", [(i * 4 * INCH, 0, (i + 1) * 4 * INCH, 2 * INCH)
                                               for i in range(2)])
        self.texts_are("cabinet-labels", ["A-01", "Fuses", "A-02", "Relays"])
        rows = [numbers for numbers, _ in self.rows("cabinet-labels", "text")]
        # A line takes 1.2 times its height, 0.25 of that height below its base line and 0.95 above. Of the rest
        # of the plate, less its margins, half is between the lines. Turned, the first line is the lower one.
        for pane, (first, second), upper in zip(panes, (rows[:2], rows[2:]), (0.4, 0.6)):
            lower, room = 0.2, 2 - 2 * 0.2
            between = (room - 1.2 * (upper + lower)) / 2
            self.assertAlmostEqual(second[1] - first[1],
                                   (0.25 * upper + between + 0.95 * lower) * INCH, delta=HUNDREDTH)
            for (x, _, length, size), height in ((first, upper), (second, lower)):
                self.assertLess(length, 0)
                self.assertAlmostEqual(x + length / 2, (pane[0] + pane[2]) / 2, delta=HUNDREDTH)
                self.assertAlmostEqual(size, height * INCH, delta=HUNDREDTH)
        self.assertEqual(re.findall("font-family=\"'DejaVu (.*?)'\"", self.svg["cabinet-labels"]),
                         ["Sans", "Sans", "Sans", "Serif"])

    def test_a_seal_is_its_own_blank_and_its_letters_are_on_the_circle(self):
        (page, _), = self.rows("round-seal", "page")
        self.near(page, (4 * INCH, 4 * INCH))
        self.plates("round-seal", [(0, 0, 4 * INCH, 4 * INCH)])
        arcs = self.rows("round-seal", "arc-text")
        self.assertEqual([content for _, content in arcs], ["TOWN OF HARLOW", "since 1947"])
        for numbers, _ in arcs:
            self.near(numbers[:3], (2 * INCH, 2 * INCH, 1.4 * INCH))

    def test_arcs_are_on_their_circles(self):
        arcs = self.rows("justified-arcs", "arc-text")
        self.assertEqual([content for _, content in arcs], ["begins", "centred", "ends"])
        for (numbers, _), (x, y) in zip(arcs, ((1.5, 1.2), (3, 0.6), (4.5, 1.2))):
            self.near(numbers[:3], (x * INCH, y * INCH, 1.2 * INCH))

    def test_frames_of_a_notice_count_from_the_top_left(self):
        frames = {"NOTICE": (0.25, 0.25, 5.75, 1.25), "Hard hats": (0.25, 1.5, 2.75, 3.5),
                  "must be worn beyond this point": (0.25, 1.5, 2.75, 3.5),
                  "Visitors": (3.25, 1.5, 5.75, 3.5), "report to the office": (3.25, 1.5, 5.75, 3.5)}
        texts = self.rows("notice", "text")
        self.assertEqual([content for _, content in texts], list(frames))
        for (x, y, length, _), content in texts:
            left, upper, right, lower = (value * INCH for value in frames[content])
            self.assertGreaterEqual(x, left - HUNDREDTH)
            self.assertLessEqual(x + length, right + HUNDREDTH)
            self.assertTrue(4 * INCH - lower <= y <= 4 * INCH - upper)
        (x, _, length, _), _ = texts[0]
        self.assertAlmostEqual(x + length / 2, 3 * INCH, delta=HUNDREDTH)
        (x, _, length, _), _ = texts[3]
        self.assertAlmostEqual(x + length, 5.75 * INCH, delta=HUNDREDTH)

    def test_frames_from_the_center_count_both_ways_across_and_downward(self):
        # The blank is 6 by 4 inches, so that its center is 3 and 2 inches from its sides.
        places = {"STAIRS": (-2.5, -1.5, 2.5, -0.5), "up": (-2.5, 0.5, -0.5, 1.5), "down": (0.5, 0.5, 2.5, 1.5)}
        texts = self.rows("from-the-center", "text")
        self.assertEqual([content for _, content in texts], list(places))
        part_at = {"STAIRS": 0.5, "up": 0, "down": 1}
        for (x, y, length, _), content in texts:
            left, upper, right, lower = places[content]
            part = part_at[content]
            self.assertAlmostEqual(x + length * part, (3 + left + (right - left) * part) * INCH, delta=HUNDREDTH)
            self.assertTrue((2 - lower) * INCH <= y <= (2 - upper) * INCH)

    def test_colours_of_each_format_are_seen_and_those_of_the_output_filter_are_left_out(self):
        edge, width, height = 0.25 * INCH, 2.5 * INCH, 1.5 * INCH
        panes = self.plates("colours", [(x, 4 * INCH - edge - height, x + width, 4 * INCH - edge)
                                        for x in (edge, 2 * edge + width)])
        # Yellow 40 and black 10 percent leave 229.5, 229.5 and 137.7 of 255.
        self.plate_fills_are("colours", ["#e6e68a"] * 2)
        self.texts_are("colours", ["by name", "by CMYK"])
        self.text_fills_are("colours", ["#0000ff", "#ff0000"])
        paths = re.findall('<path [^>]* fill="(#\\w+)" stroke="(#(?!999999)\\w+)"',
                           self.svg["colours"].split('<g class="plate">')[1].split("</g>", 1)[1])
        self.assertEqual(paths, [("#c0c0c0", "#ff0000")] * 2 + [("#ff00ff", "#808080")] * 2)
        boxes = [numbers for numbers, _ in self.rows("colours", "box-of-path")]
        # The crest is 32 wide and 33 high, and as high as its frame.
        for box, x in zip(boxes[::2], (0.15, 1.65)):
            left, top, size = panes[1][0] + x * INCH, panes[1][3] - 0.4 * INCH, 0.7 * INCH
            self.near(box, (left, top - size, left + size * 32 / 33, top))

    def test_hex_colours_are_rgb_of_six_digits_and_cmyk_of_eight(self):
        panes = self.plates("hex-colours", [((0.25 + i * 2.5) * INCH, 1.75 * INCH, (2.25 + i * 2.5) * INCH,
                                             2.75 * INCH) for i in range(2)])
        self.plate_fills_are("hex-colours", ["none"] * 2)
        # Hexadecimal 64 is 100 percent of cyan.
        self.texts_are("hex-colours", ["B02020", "64000000"])
        self.text_fills_are("hex-colours", ["#b02020", "#00ffff"])
        for ((x, _, length, size), _), pane in zip(self.rows("hex-colours", "text"), panes):
            self.assertAlmostEqual(x + length / 2, (pane[0] + pane[2]) / 2, delta=HUNDREDTH)
            self.assertAlmostEqual(size, 0.1 * 2.54 * INCH, delta=HUNDREDTH)

    def test_award_plates_and_their_frames_are_where_the_table_puts_them(self):
        (page, _), = self.rows("award", "page")
        self.near(page, (12 * INCH, 6 * INCH))
        width, height, edge, gap = 4 * INCH, 2 * INCH, 0.25 * INCH, 0.25 * INCH
        places = [(edge, edge), (edge + width + gap, edge), (edge, edge + height + gap)]
        panes = self.plates("award", [(x, y, x + width, y + height) for x, y in places])
        self.texts_are("award", ["CUP 2026", "Ada Byron", "first\u00a0", "1:59", "Café & Bar", "Level ² ©"])
        # The last frame is 3.4 inches from 0.3 inches to the right, and justified there.
        (x, _, length, _), _ = self.rows("award", "text")[4]
        self.assertAlmostEqual(x + length, panes[1][0] + 3.7 * INCH, delta=HUNDREDTH)

    def test_tags_have_gaps_of_their_own_across_and_texts_in_their_middle(self):
        panes = self.plates("tags", [(5 + i * 64, 5, 65 + i * 64, 45) for i in range(2)])
        texts = self.rows("tags", "text")
        self.assertEqual([content for _, content in texts], ["PUMP 1", "intake", "PUMP 2"])
        for ((x, _, length, _), _), pane in zip(texts, (panes[0], panes[0], panes[1])):
            self.assertAlmostEqual(x + length / 2, (pane[0] + pane[2]) / 2, delta=HUNDREDTH)

    def test_a_sheet_of_names_becomes_a_blank_of_badges(self):
        self.assertEqual(len(self.rows("badge", "plate")), 4)
        self.texts_are("badge", ["Ada Byron", "Engraving", "Bartholomew Featherstonehaugh-Cholmondeley",
                                 "Accounts", "Zoë Müller", "Paint & <Finish>", "Ito Kenji"])

    def test_prices_are_those_that_the_spreadsheet_shows(self):
        self.texts_are("price-label", ["Shop front", "€ 1,249.50", "Brass plate, engraved", "€ 89.00"])


def store():
    for old in STORED.glob("*.png"):
        old.unlink()
    print("Open each of these, and see that it shows what its file asks for:")
    STORED.mkdir(exist_ok=True)
    for name in DRAWN:
        print(f"  {draw(name, STORED, 'png')}  of  {DRAWN[name][1].relative_to(SOURCES)}")


if __name__ == "__main__":
    if "--store" in sys.argv:
        store()
    else:
        unittest.main(verbosity=2)
