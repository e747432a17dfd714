"""Measures a page that was drawn as SVG, by the rules of SVG and of nothing else.

usage: measure_svg.py FILE

Prints one line each, in millimetres from the page's lower left corner:
    page WIDTH HEIGHT
    plate LEFT BOTTOM RIGHT TOP
    drill-point X Y DIAMETER
    text X Y LENGTH SIZE FAMILY | CONTENT
    arc-text CENTERX CENTERY RADIUS BEGINNING LENGTH SIZE FAMILY | CONTENT
    cut-line COLOUR DASHES, also cut-through-line
    path FILL STROKE WIDTH
    box-of-path LEFT BOTTOM RIGHT TOP of its points, which bound its curves
    graphic LEFT BOTTOM RIGHT TOP

The beginning of a text on a circle is an angle in degrees, counter-clockwise from the circle's top.
"""

import math
import re
import sys
import xml.etree.ElementTree as tree

SVG = "{http://www.w3.org/2000/svg}"
LINK = "{http://www.w3.org/1999/xlink}href"
NUMBER = r"[-+]?(?:\d+\.?\d*|\.\d+)(?:[eE][-+]?\d+)?"
TO_MM = {"mm": 1, "cm": 10, "in": 25.4, "pt": 25.4 / 72, "px": 25.4 / 96, "": 25.4 / 96}


def length(text):
    number, unit = re.fullmatch(f"({NUMBER})([a-z]*)", text).groups()
    return float(number) * TO_MM[unit]


def points(path):
    """The end points of an absolute path of moves, lines and curves."""
    numbers = [float(number) for number in re.findall(NUMBER, path)]
    assert not re.search("[^MLCZ\\s,]", re.sub(NUMBER, "", path)), path
    return list(zip(numbers[0::2], numbers[1::2]))


class Page:
    def __init__(self, root):
        assert root.tag == SVG + "svg", root.tag
        self.width, self.height = length(root.get("width")), length(root.get("height"))
        left, top, width, height = (float(n) for n in re.findall(NUMBER, root.get("viewBox")))
        self.left, self.top = left, top
        self.unit = (self.width / width, self.height / height)
        self.circles = {p.get("id"): p for p in root.iter(SVG + "path") if p.get("id")}
        self.images = {i.get("id"): i for i in root.iter(SVG + "image")}

    def at(self, x, y):
        return (x - self.left) * self.unit[0], self.height - (y - self.top) * self.unit[1]

    def box(self, corners):
        xs, ys = zip(*(self.at(*corner) for corner in corners))
        return min(xs), min(ys), max(xs), max(ys)


def matrix(element):
    if element.get("transform"):
        return [float(n) for n in re.findall(NUMBER, element.get("transform"))]
    return [1, 0, 0, 1, float(element.get("x", 0)), float(element.get("y", 0))]


def mapped(m, x, y):
    return m[0] * x + m[2] * y + m[4], m[1] * x + m[3] * y + m[5]


def arc_text(page, element, on_path):
    """A text on a path of two half circles, clockwise, that begins where the text does."""
    path = page.circles[on_path.get(LINK)[1:]].get("d")
    assert re.sub(NUMBER, "", path).replace(" ", "") == "MAA", path
    numbers = [float(n) for n in re.findall(NUMBER, path)]
    start, middle, end = numbers[0:2], numbers[7:9], numbers[14:16]
    assert start == end and numbers[2] == numbers[3] == numbers[9] == numbers[10], path
    assert numbers[4:7] == numbers[11:14] == [0, 1, 1], path
    m = matrix(element)
    center = mapped(m, (start[0] + middle[0]) / 2, (start[1] + middle[1]) / 2)
    begin = mapped(m, *start)
    angle = math.degrees(math.atan2(center[0] - begin[0], center[1] - begin[1]))
    return (*page.at(*center), math.dist(center, begin) * page.unit[0], angle,
            float(element.get("textLength")) * page.unit[0],
            float(element.get("font-size")) * page.unit[1], element.get("font-family"), "|",
            on_path.text)


def measure(page, group):
    kind = group.get("class")
    for element in group:
        if kind == "plate" and element.tag == SVG + "path":
            yield kind, *page.box(points(element.get("d")))
        elif kind == "drill-point" and element.tag == SVG + "circle":
            x, y = page.at(float(element.get("cx")), float(element.get("cy")))
            yield kind, x, y, 2 * float(element.get("r")) * page.unit[0]
        elif element.find(SVG + "textPath") is not None:
            yield "arc-text", *arc_text(page, element, element.find(SVG + "textPath"))
        elif kind == "text" and element.tag == SVG + "text":
            m = matrix(element)
            x, y = page.at(m[4], m[5])
            yield (kind, x, y, float(element.get("textLength")) * m[0] * page.unit[0],
                   float(element.get("font-size")) * page.unit[1], element.get("font-family"), "|",
                   element.text)
        elif kind in ("cut-line", "cut-through-line"):
            yield kind, element.get("stroke"), element.get("stroke-dasharray", "whole")
        elif kind == "path":
            yield kind, element.get("fill"), element.get("stroke"), element.get("stroke-width")
            yield "box-of-path", *page.box(points(element.get("d")))
        elif kind == "graphic" and element.tag == SVG + "use":
            image = page.images[element.get(LINK)[1:]]
            size = float(image.get("width")), float(image.get("height"))
            m = matrix(element)
            corners = [mapped(m, x, y) for x in (0, size[0]) for y in (0, size[1])]
            yield kind, *page.box(corners)


def main():
    root = tree.parse(sys.argv[1]).getroot()
    page = Page(root)
    print(f"page {page.width:.4f} {page.height:.4f}")
    for group in root.iter(SVG + "g"):
        for row in measure(page, group):
            print(*(f"{x:.4f}" if isinstance(x, float) else x for x in row))


main()
