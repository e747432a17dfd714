"""Paths of cut jobs for the judges of drawings."""

import json
import math
import subprocess


def flatten(contour):
    points = [tuple(contour["start"])]
    for segment in contour["segments"]:
        start = points[-1]
        if len(segment) == 2:
            points.append(tuple(segment))
            continue
        x1, y1, x2, y2, x3, y3 = segment
        for i in range(1, 33):
            t, u = i / 32, 1 - i / 32
            points.append(tuple(u * u * u * a + 3 * u * u * t * b + 3 * u * t * t * c + t * t * t * d
                                for a, b, c, d in ((start[0], x1, x2, x3), (start[1], y1, y2, y3))))
    if contour.get("closed"):
        points.append(points[0])
    return points


def to_line(point, line):
    """How far a point lies from a polyline."""
    best = min(math.dist(point, place) for place in line)
    for (ax, ay), (bx, by) in zip(line, line[1:]):
        dx, dy = bx - ax, by - ay
        square = dx * dx + dy * dy
        if square == 0:
            continue
        t = ((point[0] - ax) * dx + (point[1] - ay) * dy) / square
        if 0 < t < 1:
            best = min(best, abs((point[0] - ax) * dy - (point[1] - ay) * dx) / math.sqrt(square))
    return best


def places(lines):
    """At most some 120 places of each line, which lie at its bends and between them."""
    for line in lines:
        step = max(1, len(line) // 60)
        for a, b in list(zip(line, line[1:]))[::step]:
            yield a
            yield ((a[0] + b[0]) / 2, (a[1] + b[1]) / 2)
        yield line[-1]


def distance(first, second):
    """Hausdorff's distance of two sets of polylines."""
    if not first or not second:
        return math.inf
    return max(max(min(to_line(place, line) for line in b) for place in places(a))
               for a, b in ((first, second), (second, first)))


def lines_of(program, file, key):
    """The lines of the command's cut job, by `key` of each path, and its messages."""
    run = subprocess.run([program, "cut", str(file), "-o", "-"], capture_output=True, text=True, timeout=120)
    if run.returncode != 0:
        raise SystemExit(f"{file}: {run.stderr}")
    lines = {}
    for path in json.loads(run.stdout)["paths"]:
        lines.setdefault(key(path), []).extend(flatten(contour) for contour in path["contours"])
    return lines, run.stderr
