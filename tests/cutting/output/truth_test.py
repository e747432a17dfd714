"""Holds every form of a cut job against Ghostscript's separation of the same ink.

usage: truth_test.py RASTREL_CUTTING

Two shapes are painted in a separation and given as a cut job. The separation at 1,200 dpi has gray edges, so that an
edge is measured to a fraction of a pixel along the normal of a path. Lines of HPGL (as hp2xx draws them), DXF (as ezdxf
reads it) and G-code are to lie on the edge; so are the middles of the strokes of SVG (as rsvg-convert draws it) and PDF
(as poppler draws it). A form whose judge is missing is left out, and all are (status 77) without Ghostscript.
"""

import json
import math
import pathlib
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import zlib

WIDTH, HEIGHT = 24, 18
DPI = 1200
PIXEL = 25.4 / DPI
# Positions of HPGL have steps of 0.025 mm.
LIMITS = {"plt": 0.04}
LIMIT = 0.02
K = 0.5522847498307936


def circle(x, y, r):
    k = K * r
    return [(x + r, y), (x + r, y + k, x + k, y + r, x, y + r), (x - k, y + r, x - r, y + k, x - r, y),
            (x - r, y - k, x - k, y - r, x, y - r), (x + k, y - r, x + r, y - k, x + r, y)]


def letter(x, y, h):
    return [(x, y), (x + h / 3, y), (x + h * .6, y, x + h * .8, y + h * .2, x + h * .8, y + h / 2),
            (x + h * .8, y + h * .8, x + h * .6, y + h, x + h / 3, y + h), (x, y + h), (x, y)]


SHAPES = [circle(7.3, 9.1, 5.17), letter(14.2, 4.4, 9.3)]
CORNERS = [(14.2, 4.4), (14.2, 13.7)]


def flatten(shape):
    points = [shape[0]]
    for segment in shape[1:]:
        start = points[-1]
        if len(segment) == 2:
            steps = max(1, round(math.dist(start, segment) / 0.1))
            points += [(start[0] + (segment[0] - start[0]) * i / steps, start[1] + (segment[1] - start[1]) * i / steps)
                       for i in range(1, steps + 1)]
            continue
        x1, y1, x2, y2, x3, y3 = segment
        for i in range(1, 101):
            t, u = i / 100, 1 - i / 100
            points.append(tuple(u * u * u * a + 3 * u * u * t * b + 3 * u * t * t * c + t * t * t * d
                                for a, b, c, d in ((start[0], x1, x2, x3), (start[1], y1, y2, y3))))
    return points


def artwork():
    scale = 72 / 25.4
    content = "/Ink cs 1 scn\n"
    for shape in SHAPES:
        for index, segment in enumerate(shape):
            operator = "m" if index == 0 else "l" if len(segment) == 2 else "c"
            content += " ".join(f"{value * scale:.6f}" for value in segment) + f" {operator}\n"
        content += "h f\n"
    space = "[/Separation /CutContour /DeviceCMYK << /FunctionType 2 /Domain [0 1] /C0 [0 0 0 0] /C1 [0 1 0 0] /N 1 >>]"
    bodies = ["<< /Type /Catalog /Pages 2 0 R >>", "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
              f"<< /Type /Page /Parent 2 0 R /MediaBox [0 0 {WIDTH * scale:.6f} {HEIGHT * scale:.6f}] /Contents 4 0 R "
              f"/Resources << /ColorSpace << /Ink {space} >> >> >>",
              f"<< /Length {len(content)} >>\nstream\n{content}endstream"]
    text, offsets = "%PDF-1.4\n", []
    for number, body in enumerate(bodies, 1):
        offsets.append(len(text))
        text += f"{number} 0 obj\n{body}\nendobj\n"
    table = len(text)
    text += f"xref\n0 {len(bodies) + 1}\n0000000000 65535 f \n" + "".join(f"{o:010} 00000 n \n" for o in offsets)
    return text + f"trailer\n<< /Size {len(bodies) + 1} /Root 1 0 R >>\nstartxref\n{table}\n%%EOF\n"


def job():
    return json.dumps({"format": "rastrel-cut-job", "version": 1, "unit": "mm", "width": WIDTH, "height": HEIGHT,
                       "paths": [{"operation": "cut", "contours": [
                           {"closed": True, "start": shape[0], "segments": shape[1:]} for shape in SHAPES]}]})


class Picture:
    """Ink from 0 to 1 by position in millimetres, of rows of bytes from the top."""

    def __init__(self, rows):
        self.rows = rows
        self.paper = rows[0][0]
        self.full = max((abs(value - self.paper) for row in rows for value in row), default=0)
        if self.full < 100:
            sys.exit("a picture has no ink")

    def pixel(self, column, row):
        if not (0 <= row < len(self.rows) and 0 <= column < len(self.rows[0])):
            return 0
        return abs(self.rows[row][column] - self.paper) / self.full

    def ink(self, x, y):
        column, row = x / PIXEL - 0.5, (HEIGHT - y) / PIXEL - 0.5
        c, r = math.floor(column), math.floor(row)
        u, v = column - c, row - r
        return ((1 - v) * ((1 - u) * self.pixel(c, r) + u * self.pixel(c + 1, r)) +
                v * ((1 - u) * self.pixel(c, r + 1) + u * self.pixel(c + 1, r + 1)))

    def along(self, place, normal, reach):
        steps = round(reach / 0.005)
        return [(i * 0.005, self.ink(place[0] + normal[0] * i * 0.005, place[1] + normal[1] * i * 0.005))
                for i in range(-steps, steps + 1)]


def edge(separation, place, normal):
    """How far the edge lies from the place."""
    ink = [value for _, value in separation.along(place, normal, 0.15)]
    if ink[0] < ink[-1]:
        ink.reverse()
    if ink[0] < 0.9 or ink[-1] > 0.1:
        return math.inf
    return (sum(ink) - (ink[0] + ink[-1]) / 2) * 0.005 - 0.15


def stroke(picture, place, normal):
    """How far the middle of a stroke lies from the place."""
    ink = picture.along(place, normal, 0.3)
    total = sum(value for _, value in ink)
    return sum(s * value for s, value in ink) / total if total * 0.005 > 0.1 else math.inf


def places(line):
    """Places every quarter of a millimetre along a line, with the normal there, away from corners."""
    for (ax, ay), (bx, by) in zip(line, line[1:]):
        length = math.dist((ax, ay), (bx, by))
        if length == 0:
            continue
        normal = ((by - ay) / length, (ax - bx) / length)
        steps = max(1, round(length / 0.25))
        for i in range(steps):
            t = (i + 0.5) / steps
            place = (ax + (bx - ax) * t, ay + (by - ay) * t)
            if all(math.dist(place, corner) > 0.4 for corner in CORNERS):
                yield place, normal


def read_tiff(path):
    data = path.read_bytes()
    order = "<" if data[:2] == b"II" else ">"
    at, = struct.unpack_from(order + "I", data, 4)
    count, = struct.unpack_from(order + "H", data, at)
    tags = {}
    for i in range(count):
        tag, kind, number = struct.unpack_from(order + "HHI", data, at + 2 + 12 * i)
        size = {3: 2, 4: 4}.get(kind, 1)
        where = at + 10 + 12 * i
        if size * number > 4:
            where, = struct.unpack_from(order + "I", data, where)
        if kind in (3, 4):
            tags[tag] = struct.unpack_from(order + str(number) + {3: "H", 4: "I"}[kind], data, where)
    width, per_strip = tags[256][0], tags[278][0]
    rows = []
    for offset in tags[273]:
        for row in range(min(per_strip, tags[257][0] - len(rows))):
            rows.append(data[offset + row * width:offset + (row + 1) * width])
    return Picture(rows)


def read_png(path):
    """The green channel of eight bits: all the strokes' colors lack green, and paper has it."""
    data = path.read_bytes()
    at, pixels = 8, b""
    while at < len(data):
        size, = struct.unpack_from(">I", data, at)
        kind, body = data[at + 4:at + 8], data[at + 8:at + 8 + size]
        if kind == b"IHDR":
            width, height, depth, color = struct.unpack_from(">IIBB", body)
        pixels += body if kind == b"IDAT" else b""
        at += size + 12
    channels = {0: 1, 2: 3, 4: 2, 6: 4}[color]
    assert depth == 8
    raw, stride = zlib.decompress(pixels), width * channels
    above, rows = bytearray(stride), []
    for row in range(height):
        kind, line = raw[row * (stride + 1)], bytearray(raw[row * (stride + 1) + 1:(row + 1) * (stride + 1)])
        for i in range(stride):
            left = line[i - channels] if i >= channels else 0
            up, corner = above[i], above[i - channels] if i >= channels else 0
            if kind == 1:
                line[i] = (line[i] + left) & 255
            elif kind == 2:
                line[i] = (line[i] + up) & 255
            elif kind == 3:
                line[i] = (line[i] + (left + up) // 2) & 255
            elif kind == 4:
                guess = left + up - corner
                line[i] = (line[i] + min((left, up, corner), key=lambda value: abs(guess - value))) & 255
        above = line
        rows.append(bytes(line[1 if channels >= 3 else 0::channels]))
    return Picture(rows)


def plotted_lines(place):
    """hp2xx draws in points, and the places are the box of all positions."""
    numbers = re.findall(r"P[UD]([\d,]+);", (place / "out.plt").read_text())
    positions = [tuple(int(value) / 40 for value in pair.split(",")) for text in numbers
                 for pair in re.findall(r"\d+,\d+", text)]
    left, top = min(x for x, _ in positions), max(y for _, y in positions)
    subprocess.run(["hp2xx", "-q", "-t", "-m", "svg", "-f", "plt.svg", "out.plt"], cwd=place, check=True)
    point = 25.4 / 72
    drawn = [[(float(x) * point, float(y) * point) for x, y in re.findall(r"[ML]\s*(-?[\d.]+),\s*(-?[\d.]+)", path)]
             for path in re.findall(r'd="([^"]*)"', (place / "plt.svg").read_text())]
    least_x, least_y = (min(at[axis] for line in drawn for at in line) for axis in (0, 1))
    return [[(left + x - least_x, top - (y - least_y)) for x, y in line] for line in drawn]


def drawn_lines(place, name):
    judge = pathlib.Path(__file__).with_name("dxf_judge.py")
    result = subprocess.run(["/usr/bin/python3", "-B", judge, place / name], capture_output=True, text=True)
    if result.returncode == 77:
        return None
    lines = []
    for line in result.stdout.splitlines()[1:]:
        _, _, closed, *numbers = line.split()
        values = [float(number) for number in numbers]
        points = list(zip(values[::2], values[1::2]))
        lines.append(points + points[:1] if closed == "closed" else points)
    return lines


def programmed_lines(place):
    lines, position, is_on = [], None, False
    for line in (place / "out.gcode").read_text().splitlines():
        is_on = line.startswith("M3") or (is_on and not line.startswith("M5"))
        move = re.fullmatch(r"G[01] X([-\d.]+) Y([-\d.]+)", line)
        if not move:
            continue
        target = (float(move[1]), float(move[2]))
        if is_on:
            lines.append([position, target])
        position = target
    return lines


def main():
    if not shutil.which("gs"):
        sys.exit(77)
    with tempfile.TemporaryDirectory() as folder:
        place = pathlib.Path(folder)
        (place / "art.pdf").write_text(artwork())
        (place / "job.json").write_text(job())
        # Made four times as fine and then averaged.
        subprocess.run(["gs", "-q", "-dSAFER", "-dNOPAUSE", "-dBATCH", "-sDEVICE=tiffsep", f"-r{4 * DPI}",
                        "-dDownScaleFactor=4", "-sCompression=none", "-sOutputFile=art.tif", "art.pdf"],
                       cwd=place, check=True)
        separation = read_tiff(place / "art(CutContour).tif")
        for name, options in (("out.plt", []), ("out.dxf", []), ("r12.dxf", ["--dxf-version", "r12"]),
                              ("out.gcode", []), ("out.svg", []), ("out.pdf", [])):
            subprocess.run([sys.argv[1], "cut", "job.json", "-o", name, *options], cwd=place, check=True,
                           stdout=subprocess.DEVNULL)
        faults = []

        def judge(name, distances, expected):
            distances = list(distances)
            farthest = max(distances, default=math.inf)
            limit = LIMITS.get(name, LIMIT)
            print(f"{name}: {len(distances)} places, {farthest:.4f} mm at most, {limit} allowed")
            if len(distances) < expected or farthest > limit:
                faults.append(name)

        def judge_lines(name, lines):
            length = sum(math.dist(a, b) for line in lines for a, b in zip(line, line[1:]))
            true_length = sum(math.dist(a, b) for shape in SHAPES for a, b in zip(flatten(shape), flatten(shape)[1:]))
            if abs(length - true_length) > 0.05:
                faults.append(f"{name}: its lines are {length:.3f} mm long, and not {true_length:.3f}")
            judge(name, (abs(edge(separation, *at)) for line in lines for at in places(line)), 150)

        def judge_strokes(name, picture):
            judge(name, (max(abs(stroke(picture, *at)), abs(stroke(picture, *at) - edge(separation, *at)))
                         for shape in SHAPES for at in places(flatten(shape))), 150)

        if shutil.which("hp2xx"):
            judge_lines("plt", plotted_lines(place))
        for name in ("out.dxf", "r12.dxf"):
            lines = drawn_lines(place, name)
            if lines is not None:
                judge_lines(name, lines)
        judge_lines("gcode", programmed_lines(place))
        if shutil.which("rsvg-convert"):
            subprocess.run(["rsvg-convert", "-d", str(DPI), "-p", str(DPI), "-b", "white", "out.svg", "-o", "svg.png"],
                           cwd=place, check=True)
            judge_strokes("svg", read_png(place / "svg.png"))
        if shutil.which("pdftocairo"):
            subprocess.run(["pdftocairo", "-png", "-singlefile", "-r", str(DPI), "out.pdf", "pdf"], cwd=place,
                           check=True)
            judge_strokes("pdf", read_png(place / "pdf.png"))
        if faults:
            sys.exit("not on the ink's edge: " + ", ".join(faults))


main()
