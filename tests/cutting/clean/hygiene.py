"""Cut jobs with known faults, and sound ones, the same in every run.

    python3 hygiene.py DIRECTORY

writes NAME.json for each, and list.txt: a line for each job with its name, and then for each fault
that is in it: kind, path (from 0), x and y in millimetres, length, and how far the place may be
off. 60 jobs have a fault or two, and 200 have none.
"""

import json
import math
import os
import random
import sys

WIDTH = 600.0
HEIGHT = 400.0
KAPPA = 0.5522847498307936


def line(x, y):
    return ("line", x, y)


class Shape:
    """A contour: its start, segments of lines and curves, and whether it closes."""

    def __init__(self, start, segments, closed=True):
        self.start = start
        self.segments = segments
        self.closed = closed

    def moved(self, dx, dy):
        def move(segment):
            numbers = segment[1:]
            shifted = [n + (dy if i % 2 else dx) for i, n in enumerate(numbers)]
            return (segment[0], *shifted)

        return Shape((self.start[0] + dx, self.start[1] + dy), [move(s) for s in self.segments],
                     self.closed)


def polygon(corners, closed=True):
    return Shape(corners[0], [line(*c) for c in corners[1:]], closed)


def rectangle(x, y, w, h):
    return polygon([(x, y), (x + w, y), (x + w, y + h), (x, y + h)])


def circle(x, y, r, turn=0.0):
    """Four curves, from an angle on."""
    def at(a, b):
        c, s = math.cos(turn), math.sin(turn)
        return (x + a * c - b * s, y + a * s + b * c)

    k = KAPPA * r
    quarters = [((r, k), (k, r), (0, r)), ((-k, r), (-r, k), (-r, 0)),
                ((-r, -k), (-k, -r), (0, -r)), ((k, -r), (r, -k), (r, 0))]
    return Shape(at(r, 0), [("curve", *at(*a), *at(*b), *at(*c)) for a, b, c in quarters])


def rounded(x, y, w, h, r):
    k = r * (1 - KAPPA)
    return Shape((x + r, y), [
        line(x + w - r, y), ("curve", x + w - k, y, x + w, y + k, x + w, y + r),
        line(x + w, y + h - r), ("curve", x + w, y + h - k, x + w - k, y + h, x + w - r, y + h),
        line(x + r, y + h), ("curve", x + k, y + h, x, y + h - k, x, y + h - r),
        line(x, y + r), ("curve", x, y + k, x + k, y, x + r, y)])


def ring(rng, x, y, r, corners):
    """A star-shaped polygon: its corners lie around the middle, so that it never crosses itself."""
    points = []
    for i in range(corners):
        angle = 2 * math.pi * (i + 0.6 * rng.random()) / corners
        radius = r * (0.6 + 0.4 * rng.random())
        points.append((x + radius * math.cos(angle), y + radius * math.sin(angle)))
    return polygon(points)


# Outlines in a square of 10 by 14: contours of straight and bent strokes.
LETTERS = {
    "L": [[(0, 0), (8, 0), (8, 2), (2, 2), (2, 14), (0, 14)]],
    "T": [[(4, 0), (6, 0), (6, 12), (10, 12), (10, 14), (0, 14), (0, 12), (4, 12)]],
    "A": [[(0, 0), (2, 0), (3, 4), (7, 4), (8, 0), (10, 0), (6, 14), (4, 14)],
          [(3.5, 6), (5, 11.5), (6.5, 6)]],
    "E": [[(0, 0), (9, 0), (9, 2), (2, 2), (2, 6), (7, 6), (7, 8), (2, 8), (2, 12), (9, 12), (9, 14),
           (0, 14)]],
    "V": [[(4, 0), (6, 0), (10, 14), (8, 14), (5, 3), (2, 14), (0, 14)]],
}


def letter(name, x, y, scale):
    if name == "O":
        outer, inner = circle(x + 5 * scale, y + 7 * scale, 5 * scale), circle(
            x + 5 * scale, y + 7 * scale, 3 * scale, 0.4)
        return [outer, inner]
    return [polygon([(x + a * scale, y + b * scale) for a, b in contour])
            for contour in LETTERS[name]]


def sound_cell(rng, x, y, size):
    """One or more contours of one path that keep 1 mm from the edges of their cell."""
    kind = rng.randrange(7)
    middle, half = (x + size / 2, y + size / 2), size / 2 - 1
    if kind == 0:
        return [ring(rng, *middle, half, rng.randrange(5, 40))]
    if kind == 1:
        return [circle(*middle, half, rng.random() * 6)]
    if kind == 2:
        return [rectangle(x + 1, y + 1, 2 * half, half + half * rng.random())]
    if kind == 3:
        return [rounded(x + 1, y + 1, 2 * half, half * 1.5, half * 0.4)]
    if kind == 4:
        return letter(rng.choice("LTAEVO"), x + 1, y + 1, (size - 2) / 15)
    if kind == 5:  # nested
        return [circle(*middle, half), circle(*middle, half * 0.9), rounded(
            x + size * 0.3, y + size * 0.3, size * 0.4, size * 0.4, size * 0.05)]
    # Neighbours that touch in a point.
    quarter = half / 2
    touching = rng.randrange(3)
    if touching == 0:
        return [circle(middle[0] - quarter, middle[1], quarter),
                circle(middle[0] + quarter, middle[1], quarter)]
    if touching == 1:
        return [rectangle(x + 1, y + 1, half, half), rectangle(*middle, half, half)]
    return [circle(*middle, half), circle(middle[0] + half / 2, middle[1], half / 2)]


def sound_paths(rng, columns, rows, left_free=0):
    size = min(WIDTH / columns, HEIGHT / rows)
    cells = [(c * size, r * size) for r in range(rows) for c in range(columns)]
    rng.shuffle(cells)
    paths = [sound_cell(rng, x, y, size) for x, y in cells[left_free:]]
    return paths, [(x, y, size) for x, y in cells[:left_free]]


def split(shape, t):
    """The same line with each segment in two."""
    segments, at = [], shape.start
    for s in shape.segments:
        def between(a, b):
            return (a[0] + (b[0] - a[0]) * t, a[1] + (b[1] - a[1]) * t)
        if s[0] == "line":
            segments += [line(*between(at, s[1:])), s]
        else:
            p1, p2, p3 = s[1:3], s[3:5], s[5:7]
            a, b, c = between(at, p1), between(p1, p2), between(p2, p3)
            d, e = between(a, b), between(b, c)
            m = between(d, e)
            segments += [("curve", *a, *d, *m), ("curve", *e, *c, *p3)]
        at = s[-2:]
    return Shape(shape.start, segments, shape.closed)


def backward(shape):
    points = [shape.start] + [s[-2:] for s in shape.segments]
    segments = []
    for i in range(len(shape.segments), 0, -1):
        s = shape.segments[i - 1]
        end = points[i - 1]
        segments.append(line(*end) if s[0] == "line" else ("curve", *s[3:5], *s[1:3], *end))
    return Shape(points[-1], segments, shape.closed)


CIRCLE = 2 * math.pi


# Each makes the paths of one fault in a cell, and the fault: kind, number of the path among them,
# place, length, and by how much the place may be off.
def open_outline(rng, x, y, s):
    a, b = rng.uniform(0.2, 0.3) * s, rng.uniform(0.6, 0.8) * s
    return [[polygon([(x + a, y + a), (x + b, y + a), (x + b, y + b)], False)]], (
        "open", 0, x + a, y + a, 2 * (b - a), 1e-6)


def gap(rng, x, y, s):
    g = rng.uniform(0.01, 0.09)
    a, b = 0.2 * s, 0.8 * s
    return [[polygon([(x + a, y + a), (x + b, y + a), (x + b, y + b), (x + a, y + b),
                      (x + a, y + a + g)], False)]], (
        "unjoined-ends", 0, x + a, y + a + g / 2, g, 1e-6)


def duplicate(rng, x, y, s):
    r = s * 0.3
    first = circle(x + s / 2, y + s / 2, r)
    copy = rng.choice([first, backward(first), split(first, rng.uniform(0.2, 0.8)),
                       backward(split(first, 0.5))])
    return [[first], [copy]], ("duplicate", 1, *copy.start, CIRCLE * r, 1e-6)


def overlap(rng, x, y, s):
    w = 0.3 * s
    low = rng.uniform(0.1, 0.3) * s
    return [[rectangle(x + 0.1 * s, y + 0.1 * s, w, 0.8 * s)],
            [rectangle(x + 0.4 * s, y + low + 0.1 * s, w, 0.4 * s)]], (
        "overlap", 1, x + 0.4 * s, y + low + 0.3 * s, 0.4 * s, 0.05)


def tiny(rng, x, y, s):
    a = rng.uniform(0.05, 0.25)
    return [[rectangle(x + s / 2, y + s / 2, a, a)]], ("tiny", 0, x + s / 2, y + s / 2, 4 * a, 1e-6)


def spike(rng, x, y, s):
    out = rng.uniform(1, 0.15 * s)
    width = rng.choice([0, 0.02, 0.04])
    a, b = 0.2 * s, 0.7 * s
    tip = (x + b + out, y + s / 2)
    return [[polygon([(x + a, y + a), (x + b, y + a), (x + b, y + s / 2), tip,
                      (x + b, y + s / 2 + width), (x + b, y + b), (x + a, y + b)])]], (
        "spike", 0, *tip, out, 1e-6)


def self_crossing(rng, x, y, s):
    a, b = 0.2 * s, rng.uniform(0.6, 0.8) * s
    middle = (a + b) / 2
    length = 2 * (b - a) * (1 + math.sqrt(2))
    return [[polygon([(x + a, y + a), (x + b, y + b), (x + b, y + a), (x + a, y + b)])]], (
        "self-crossing", 0, x + middle, y + middle, length, 1e-5)


def crossing(rng, x, y, s):
    """A corner of a square in another: two crossings, of which the lower left is listed."""
    a, b = rng.uniform(0.1, 0.3) * s, 0.4 * s
    return [[rectangle(x + a, y + a, b, b)], [rectangle(x + a + b / 2, y + a + b / 2, b, b)]], [
        ("crossing", 1, x + a + b / 2, y + a + b, 4 * b, 1e-5),
        ("crossing", 1, x + a + b, y + a + b / 2, 4 * b, 1e-5)]


def outside(rng, x, y, s):
    out = rng.uniform(1, 30)
    return [[rectangle(WIDTH + 5, y + 0.2 * s, out, 0.5 * s)]], (
        "outside-sheet", 0, WIDTH + 5 + out, y + 0.2 * s, 2 * (out + 0.5 * s), 1e-6)


def covered(rng, x, y, s):
    r = 0.1 * s
    inner = circle(x + s / 2, y + s / 2, r)
    return [[inner], [rounded(x + 0.2 * s, y + 0.2 * s, 0.6 * s, 0.6 * s, 0.1 * s)]], (
        "covered", 0, *inner.start, CIRCLE * r, 1e-6)


FAULTS = [open_outline, gap, duplicate, overlap, tiny, spike, self_crossing, crossing, outside,
          covered]


def job_json(paths):
    """`paths` are pairs of contours and whether they are filled."""
    def contour(shape):
        return {"closed": shape.closed, "start": list(shape.start),
                "segments": [list(s[1:]) for s in shape.segments]}

    return json.dumps({
        "format": "rastrel-cut-job", "version": 1, "unit": "mm", "width": WIDTH, "height": HEIGHT,
        "paths": [{"operation": "cut", "paint": {"kind": "fill" if filled else "stroke"},
                   "contours": [contour(s) for s in shapes]} for shapes, filled in paths]})


def sound_job(rng):
    columns = rng.randrange(1, 8)
    paths, _ = sound_paths(rng, columns, max(1, columns * 2 // 3))
    return [(shapes, rng.random() < 0.5) for shapes in paths]


def faulty_job(rng, makers):
    """Sound paths, and a cell of its own for each fault, somewhere among them."""
    columns = rng.randrange(3, 7)
    sound, cells = sound_paths(rng, columns, columns * 2 // 3, len(makers))
    paths = [(shapes, rng.random() < 0.5) for shapes in sound]
    faults = []
    for maker, (x, y, size) in zip(makers, cells):
        made, found = maker(rng, x, y, size)
        at = rng.randrange(len(paths) + 1)
        faults = [(f[0], f[1] + len(made) if f[1] >= at else f[1], *f[2:]) for f in faults]
        paths[at:at] = [(shapes, maker is covered) for shapes in made]
        for fault in found if isinstance(found, list) else [found]:
            faults.append((fault[0], fault[1] + at, *fault[2:]))
    return paths, faults


def main():
    directory = sys.argv[1]
    rng = random.Random(20)
    lines = []

    def write(name, paths, faults):
        with open(os.path.join(directory, name + ".json"), "w", encoding="utf-8") as file:
            file.write(job_json(paths))
        lines.append(" ".join([name] + [" ".join(str(n) for n in fault) for fault in faults]))

    for i in range(60):
        makers = [FAULTS[i % len(FAULTS)]]
        if i >= 40:
            makers.append(FAULTS[(i + i // 10 + 1) % len(FAULTS)])
        write(f"faulty{i:02}", *faulty_job(rng, makers))
    for i in range(200):
        write(f"sound{i:03}", sound_job(rng), [])
    with open(os.path.join(directory, "list.txt"), "w", encoding="utf-8") as file:
        file.write("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
