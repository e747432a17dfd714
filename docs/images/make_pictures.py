"""Makes the pictures of docs/printing-a-sign.md from examples/shopfront.ps.

The command makes all of them as a user would. For the one with cut paths, the sign is printed without
its cut line, and the paths that the RIP has kept of it are drawn over the picture by a job of our own.

usage: make_pictures.py RASTREL EXAMPLES FOLDER
  RASTREL   the command, for instance build/dev/bin/rastrel
  EXAMPLES  the folder of the examples
  FOLDER    where the pictures go, for instance docs/images
"""

import argparse
import os
import pathlib
import shutil
import struct
import subprocess
import tempfile

DPI = 50
CUT_COLOUR = "spot:CutContour"
PICTURES = {
    "sign-plain.png": [],
    "sign-scaled.png": ["--scale", "20x20cm"],
    "sign-levels.png": ["--levels-red", "0,1,128"],
}


def run(*words):
    """What a program prints; its end is this script's if it fails."""
    return subprocess.run([str(word) for word in words], check=True, text=True,
                          stdout=subprocess.PIPE).stdout


def first_page(page_list):
    """The directory of the first page that the RIP's page list names."""
    fields = dict(line.strip().split(" := ", 1) for line in page_list.splitlines() if " := " in line)
    directory = pathlib.Path(fields["dir"])
    return directory / "p0001"


def path_as_postscript(lines):
    """The cut paths' segments as PostScript, each path stroked."""
    words = {"m": "moveto", "l": "lineto", "c": "curveto"}
    out = []
    in_path = False
    for line in lines:
        if line == "path":
            in_path = True
            out.append("newpath")
        elif line == "end-path":
            in_path = False
            out.append("stroke")
        elif in_path and line == "h":
            out.append("closepath")
        elif in_path and line.split(" ")[0] in words:
            letter, numbers = line.split(" ", 1)
            out.append(f"{numbers} {words[letter]}")
    return "\n".join(out)


def overlay(page):
    """A job that shows the page's pixels, pale, with its cut paths over them."""
    pixels = (page / "page.tif").read_bytes()  # docs/formats/page-directory.md
    width, height = struct.unpack_from("<I", pixels, 18)[0], struct.unpack_from("<I", pixels, 30)[0]
    samples = pixels[-3 * width * height:]
    cut = (page / "cut-paths").read_text(encoding="utf-8").splitlines()
    sides = [line.split(": ")[1] for line in cut if line.startswith(("width", "height"))]
    return f"""%!PS
<< /PageSize [{sides[0]} {sides[1]}] >> setpagedevice
gsave {sides[0]} {sides[1]} scale /DeviceRGB setcolorspace
<< /ImageType 1 /Width {width} /Height {height} /BitsPerComponent 8
   /Decode [0.45 1 0.45 1 0.45 1] /ImageMatrix [{width} 0 0 -{height} 0 {height}]
   /DataSource currentfile /ASCIIHexDecode filter >> image
{samples.hex(chr(10), 40)}>
grestore
1 0 1 setrgbcolor 4 setlinewidth [12 8] 0 setdash 1 setlinejoin
{path_as_postscript(cut)}
showpage
"""


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("rastrel", type=pathlib.Path)
    parser.add_argument("examples", type=pathlib.Path)
    parser.add_argument("folder", type=pathlib.Path)
    options = parser.parse_args()
    sign = options.examples / "shopfront.ps"
    options.folder.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory(prefix="rastrel-pictures-") as name:
        place = pathlib.Path(name)
        os.environ["RASTREL_HOME"] = str(place / "home")
        for picture, settings in PICTURES.items():
            run(options.rastrel, "preview", sign, "--dpi", DPI, *settings, "-o", place / picture)
            shutil.copy(place / picture, options.folder / picture)
        run(options.rastrel, "prefix", sign, "--preview", "--dpi", DPI, "--cut-color", CUT_COLOUR,
            "-o", place / "sign.psp")
        rip = place / "home/Queue/rip/corerast.exe"
        page = first_page(run(rip, place / "sign.psp", sign))
        (place / "cut.ps").write_text(overlay(page), encoding="ascii")
        run(options.rastrel, "preview", place / "cut.ps", "--dpi", DPI, "-o", place / "sign-cut.png")
        shutil.copy(place / "sign-cut.png", options.folder / "sign-cut.png")


if __name__ == "__main__":
    main()
