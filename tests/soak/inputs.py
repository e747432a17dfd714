"""The files that the jobs read: the examples, small documents of each kind, and bad ones."""

import shutil
import struct

SIGN = """%!PS-Adobe-3.0
%%BoundingBox: 0 0 144 72
%%Pages: {pages}
<< /PageSize [144 72] >> setpagedevice
"""
PAGE = """%%Page: {page} {page}
0.2 0.4 0.8 setrgbcolor 10 10 100 40 rectfill
1 0 0 setrgbcolor 20 20 90 30 rectstroke
/Helvetica 12 selectfont 20 30 moveto (Sign {page}) show
showpage
"""


def postscript(pages):
    return SIGN.format(pages=pages) + "".join(PAGE.format(page=page + 1) for page in range(pages))


def eps():
    return ("%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 90 60\n%%DocumentCustomColors: (CutContour)\n"
            "%%CMYKCustomColor: 0 1 0 0 (CutContour)\n%%EndComments\n"
            "0 1 0 0 setcmykcolor 10 10 70 40 rectfill\n%%EOF\n")


def dos_eps():
    """An EPS within the header that some programs put before it."""
    text = eps().encode("ascii")
    return struct.pack("<IIIIIIIH", 0xC6D3D0C5, 30, len(text), 0, 0, 0, 0, 0xFFFF) + text


def pdf():
    """One page with a filled rectangle, with a table of offsets that is right."""
    content = b"0.1 0.5 0.3 rg 10 10 100 40 re f"
    objects = [b"<< /Type /Catalog /Pages 2 0 R >>",
               b"<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
               b"<< /Type /Page /Parent 2 0 R /MediaBox [0 0 144 72] /Contents 4 0 R >>",
               b"<< /Length %d >>\nstream\n%s\nendstream" % (len(content), content)]
    text, offsets = b"%PDF-1.4\n", []
    for number, item in enumerate(objects, 1):
        offsets.append(len(text))
        text += b"%d 0 obj\n%s\nendobj\n" % (number, item)
    table = len(text)
    text += b"xref\n0 5\n0000000000 65535 f \n"
    text += b"".join(b"%010d 00000 n \n" % offset for offset in offsets)
    return text + b"trailer\n<< /Size 5 /Root 1 0 R >>\nstartxref\n%d\n%%%%EOF\n" % table


SPOOLED = 5  # names under which jobs are kept, so that jobs meet

BAD_POSTSCRIPT = {
    "bad.ps": b"%!PS\n(abc) oops showpage\n",
    "unfinished.ps": b"%!PS-Adobe-3.0\n%%BoundingBox: 0 0 9 9\n10 10 moveto (",
    "deep.ps": b"%!PS\n/f { f f } def f showpage\n",
    "empty.ps": b"",
    "noise.ps": bytes((i * i * 31 + i) % 256 for i in range(4000)),
    "bad.pdf": b"%PDF-1.4\n1 0 obj\n<< /Type /Catalog >>\nendobj\ntrailer\n<< /Root 9 0 R >>\n",
}
BAD_XML = {
    "bad.xml": b"<a><b></a>",
    "other.xml": b"<?xml version='1.0'?><UNKNOWN><x/></UNKNOWN>",
    "noise.xml": bytes((i * 7 + 3) % 256 for i in range(2000)),
    "deep.xml": b"<a>" * 3000,
}


def make(place, root):
    """Writes them all below `place`; the examples come from the checkout `root`."""
    place.mkdir()
    (place / "good.ps").write_text(postscript(2))
    (place / "one.ps").write_text(postscript(1))
    (place / "many.ps").write_text(postscript(9))
    for number in range(SPOOLED):
        (place / f"kept-{number}.ps").write_text(postscript(2))
    (place / "sign.eps").write_text(eps())
    (place / "dos.eps").write_bytes(dos_eps())
    (place / "sign.pdf").write_bytes(pdf())
    (place / "endless.ps").write_text("%!PS\n{} loop showpage\n")
    for name, data in {**BAD_POSTSCRIPT, **BAD_XML}.items():
        (place / name).write_bytes(data)
    examples = root / "examples"
    for name, target in (("shopfront.ps", "shopfront.ps"), ("job-notes.xml", "notes.xml"),
                         ("car-library.xml", "cars.xml"), ("price-list.fods", "prices.fods"),
                         ("charts/capitals.xml", "capitals.xml"),
                         ("charts/symbols.xml", "symbols.xml"),
                         ("plates/panel.xml", "plates.xml")):
        shutil.copyfile(examples / name, place / target)
    shutil.copytree(examples / "price-list", place / "workbook")
    shutil.copytree(examples / "plates", place / "plates")
