"""Finds the stroked paths of a spot colour in an EPS by a road of their own: Ghostscript's PDF device
writes the page, cropped to its box, and the paths are read from the page's content.

usage: spot_paths.py EPS NAME

Prints "size WIDTH HEIGHT", a line "path" for each path and its points that lie on it, "X Y" in points
from the bottom left.
"""

import re
import subprocess
import sys


def content_of(eps):
    pdf = subprocess.run(
        ["gs", "-q", "-dSAFER", "-dBATCH", "-dNOPAUSE", "-sDEVICE=pdfwrite", "-dCompressPages=false",
         "-dEPSCrop", "-sstdout=%stderr", "-sOutputFile=-", eps],
        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=True).stdout
    text = pdf.decode("latin-1")
    page = re.search(r"/Type\s*/Page\b.*?/Contents\s+(\d+) 0 R", text, re.S)
    streams = re.search(rf"(?:^|\n){page.group(1)} 0 obj.*?stream\r?\n(.*?)endstream", text, re.S)
    return text, streams.group(1)


def spaces_of(text, name):
    """The resource names of that separation."""
    found = set()
    for number, body in re.findall(r"(?:^|\n)(\d+) 0 obj\s*(\[.*?\])\s*endobj", text, re.S):
        if re.match(rf"\[\s*/Separation\s*/{re.escape(name)}\b", body):
            found |= set(re.findall(rf"/(\w+)\s+{number} 0 R", text))
    return found


def main():
    text, content = content_of(sys.argv[1])
    spaces = spaces_of(text, sys.argv[2])
    box = [float(v) for v in re.search(r"/MediaBox\s*\[([^\]]*)\]", text).group(1).split()]
    print("size", box[2] - box[0], box[3] - box[1])
    matrix, wanted, saved = (1, 0, 0, 1, 0, 0), False, []
    operands, points = [], []

    def place(x, y):
        a, b, c, d, e, f = matrix
        points.append((a * x + c * y + e, b * x + d * y + f))

    for token in re.findall(r"[^\s\[\]()<>]+", content):
        try:
            operands.append(float(token))
            continue
        except ValueError:
            if token.startswith("/"):
                operands.append(token[1:])
                continue
        if token == "q":
            saved.append((matrix, wanted))
        elif token == "Q":
            matrix, wanted = saved.pop()
        elif token == "cm":
            a, b, c, d, e, f = operands[-6:]
            A, B, C, D, E, F = matrix
            matrix = (a * A + b * C, a * B + b * D, c * A + d * C, c * B + d * D,
                      e * A + f * C + E, e * B + f * D + F)
        elif token == "CS":
            wanted = operands[-1] in spaces
        elif token in ("RG", "K", "G"):
            wanted = False
        elif token in ("m", "l", "c", "v", "y"):
            place(*operands[-2:])
        elif token in ("S", "s") and wanted:
            print("path")
            for x, y in points:
                print(x, y)
        if token in ("S", "s", "f", "f*", "B", "B*", "b", "b*", "n", "F"):
            points.clear()
        operands = []


main()
