"""Many conversions at once on one data root: every result is whole and its own input's, so that no two shared
a temporary name, and nothing is left.

usage: many_conversions.py RASTREL_DOCUMENT COUNT PROCESSES
"""

import concurrent.futures
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

from png_picture import Picture

PROGRAM, COUNT, PROCESSES = sys.argv[1], int(sys.argv[2]), int(sys.argv[3])
SECONDS = 300
PAGE = """%!PS-Adobe-3.0
%%BoundingBox: 0 0 72 72
%%DocumentCustomColors: (Knife)
%%EndComments
{level} 0 0 setrgbcolor 0 0 72 72 rectfill
[/Separation (Knife) /DeviceCMYK {{0 exch 0 0}}] setcolorspace 1 setcolor
0.5 setlinewidth newpath 20 20 moveto 52 20 lineto 52 52 lineto closepath stroke
showpage
"""


def convert(folder, surroundings, number):
    """The faults of one conversion."""
    name = folder / f"{number}.ps"
    name.write_text(PAGE.format(level=number % 256 / 255))
    kind = ("png", "dxf")[number % 2]
    command = [PROGRAM, "convert", str(name), "-o", f"{number}.png"]
    if kind == "dxf":
        command = [PROGRAM, "cut", str(name), "--cut-color", "spot:Knife", "-o", f"{number}.dxf"]
    done = subprocess.run(command, cwd=folder, env=surroundings, capture_output=True, timeout=SECONDS)
    if done.returncode != 0:
        return [f"{number}: status {done.returncode}: {done.stderr.decode()}"]
    if kind == "dxf":
        whole = (folder / f"{number}.dxf").read_text().endswith("EOF\n")
        return [] if whole else [f"{number}: the lines are not whole"]
    picture = Picture(folder / f"{number}.png")
    expected = bytes([number % 256, 0, 0]) * 72
    right = picture.height == 72 and all(
        max(abs(a - b) for a, b in zip(row, expected)) <= 1 for row in picture.rows[:10])
    return [] if right else [f"{number}: the picture is another one's"]


def main():
    if shutil.which("gs") is None:
        print("Ghostscript is not installed")
        return 0
    folder = pathlib.Path(tempfile.mkdtemp())
    home = folder / "home"
    surroundings = dict(os.environ, RASTREL_HOME=str(home), LC_ALL="C")
    with concurrent.futures.ThreadPoolExecutor(PROCESSES) as pool:
        runs = pool.map(lambda number: convert(folder, surroundings, number), range(COUNT))
        faults = [fault for run in runs for fault in run]
    left = [str(path) for path in (home / "jobs").iterdir()]
    left += [str(path) for path in (home / "Queue/rip").iterdir() if re.match("vk|[.]rastrel", path.name)]
    faults += [f"left: {path}" for path in left]
    shutil.rmtree(folder)
    print("\n".join(faults) or f"{COUNT} conversions, {PROCESSES} at once: all whole, nothing left")
    return 1 if faults else 0


sys.exit(main())
