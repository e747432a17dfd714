"""What the examples say, read by Python's own XML reader: the plates, lines and holes that have to be
found in what the command makes of them. All lengths are millimetres."""

import math
import pathlib
import xml.etree.ElementTree as tree

INCH = 25.4


def number(element, name, otherwise=0.0):
    text = element.findtext(name)
    return float(text) if text else otherwise


class Plate:
    def __init__(self, element):
        self.width, self.height = number(element, "WIDTH") * INCH, number(element, "HEIGHT") * INCH
        # Sizes count to the thousandth of an inch.
        self.size = tuple(math.floor(number(element, name) * 1000 + 0.5) for name in ("WIDTH", "HEIGHT"))
        self.margin = (number(element, "TEXTFRAME") or 22) / 100
        self.lines = [line.get("data") for line in element.findall("TEXT") if line.get("data")]
        self.holes = [(number(hole, "XLOC") * INCH, number(hole, "YLOC") * INCH,
                       (number(hole, "DIAMETER") or 0.16) * INCH) for hole in element.findall("DRILLPOINT")]


def plates(path):
    """In the order of the file, each with the size that it is made in: a further pane has that of the
    first of its plate object."""
    made = [Plate(element) for part in tree.parse(path).getroot().findall("ENGRAVINGTEMPLATE")
            for element in part.findall("PLATE")]
    for before, plate in zip(made, made[1:]):
        if plate.size == before.size:
            plate.width, plate.height = before.width, before.height
    return made


def files(folder):
    return sorted(pathlib.Path(folder).glob("*.xml"))
