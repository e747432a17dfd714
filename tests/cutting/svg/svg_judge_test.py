"""Holds drawings in SVG, as the command reads them, against rsvg-convert.

usage: svg_judge_test.py RASTREL_CUTTING

rsvg-convert makes a PDF of a drawing, whose paths are taken out by the interpreter. Each shape has a color of its own,
and lies within 0.02 mm in both. Exit status 77 without rsvg-convert or Ghostscript.
"""

import pathlib
import shutil
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "drawing"))
from judged_paths import distance, lines_of  # noqa: E402

LIMIT = 0.02

SHAPES = [
    '<path d="M10,10 L50 10 50,30Z"/>',
    '<path d="m 60 10 h30 v20 H60 z m5 5 h5v5h-5z"/>',
    '<path d="M10 40 C 20 30 30 60 40 40 S 60 60 60 40"/>',
    '<path d="M70 40 q 10 20 20 0 t 20 0 T 150 50"/>',
    '<path d="M10 70 a 20 10 30 0 1 30 5 A 12 12 0 1 0 60 75"/>',
    '<path d="M80 70a25 25 -30 01 50-25a9 4 0 102-1z"/>',
    '<path d="M80 90 A 1 2 20 0 0 120 95"/>',
    '<rect x="10" y="100" width="40" height="20" rx="6"/>',
    '<rect x="60" y="100" width="40" height="20" rx="30" ry="4" transform="rotate(10 80 110)"/>',
    '<circle cx="130" cy="110" r="12" transform="skewX(20)"/>',
    '<ellipse cx="30" cy="140" rx="20" ry="8" transform="translate(5,2)scale(1.2 .8) rotate(-25)"/>',
    '<line x1="60" y1="130" x2="25%" y2="150"/>',
    '<polyline points="80,130 90,150,100 130 110-2"/>',
    '<polygon points="120 130 140 130 130 150"/>',
    '<g transform="matrix(.5 .2 -.3 .9 40 10)"><g transform="translate(60)"><path d="M0 150c10 0 20 9 20 20z"/></g></g>',
    '<svg x="140" y="130" width="40" height="30" viewBox="0 0 10 10" preserveAspectRatio="xMaxYMin"><circle cx="5" '
    'cy="5" r="4" stroke-width=".1"/></svg>',
    '<use href="#star" x="10" y="160"/>',
    '<use xlink:href="#badge" x="60" y="160" width="30" height="20"/>',
]

HEADS = [
    'width="192pt" height="144pt" viewBox="0 0 192 180"',
    'width="4in" height="2in" viewBox="-10 -20 400 300" preserveAspectRatio="xMinYMax"',
    'width="360" height="240"',
    'viewBox="0 0 240 240" height="3in"',
]


def drawing(head):
    text = f'<svg xmlns="http://www.w3.org/2000/svg" xmlns:xlink="http://www.w3.org/1999/xlink" {head}>\n'
    text += ('<defs><path id="star" d="M0 0l20 5-20 5z"/><symbol id="badge" viewBox="0 0 60 20">'
             '<rect x="1" y="1" width="58" height="18"/></symbol></defs>\n')
    for index, shape in enumerate(SHAPES):
        text += f'<g fill="none" stroke="#ff{index * 8:02x}00">{shape}</g>\n'
    return text + "</svg>\n"


def color_of(path):
    red, green, blue = path["paint"]["colour"]["components"]
    return round(green * 255)


def main():
    program = sys.argv[1]
    if not shutil.which("rsvg-convert") or not shutil.which("gs"):
        sys.exit(77)
    worst = 0
    with tempfile.TemporaryDirectory() as folder:
        for number, head in enumerate(HEADS):
            svg = pathlib.Path(folder, f"drawing{number}.svg")
            pdf = svg.with_suffix(".pdf")
            svg.write_text(drawing(head))
            subprocess.run(["rsvg-convert", "-f", "pdf", "-o", str(pdf), str(svg)], check=True, timeout=60)
            ours, _ = lines_of(program, svg, color_of)
            theirs, _ = lines_of(program, pdf, color_of)
            for index, shape in enumerate(SHAPES):
                away = distance(ours.get(index * 8), theirs.get(index * 8))
                worst = max(worst, away)
                if away > LIMIT:
                    sys.exit(f"{head}: {shape} lies {away:.4f} mm beside rsvg-convert's")
    print(f"at most {worst:.4f} mm")


main()
