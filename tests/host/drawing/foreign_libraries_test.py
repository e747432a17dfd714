"""Only the drawing program has anything of the libraries that read foreign pictures and drawings.

usage: foreign_libraries_test.py DRAWING_PROGRAM OTHER...
"""

import re
import subprocess
import sys

FOREIGN = re.compile(r"\b(rsvg_|poppler_|gdk_pixbuf_|TIFF|png_create_read|cairo_image_surface_create_from_png)")


def foreign(program):
    symbols = subprocess.run(["nm", "-D", "--undefined-only", program], check=True, capture_output=True,
                             text=True).stdout
    return sorted({symbol for symbol in re.findall(r" U (\S+)", symbols) if FOREIGN.match(symbol)})


def main():
    drawing, *others = sys.argv[1:]
    # The check has to see them where they are.
    assert any(symbol.startswith("rsvg_") for symbol in foreign(drawing)), drawing
    for program in others:
        found = foreign(program)
        assert not found, f"{program} reads foreign files: {', '.join(found)}"


main()
