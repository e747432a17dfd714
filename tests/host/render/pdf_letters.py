"""Prints the matrix of each piece of text in a PDF whose pages hold no other PDF.

usage: pdf_letters.py FILE

A line for each: A B C D X Y, in millimetres from the page's lower left corner, y upward. A and B are
the direction of the base line. Reads the operators cm, q, Q, Tm, Td, Tj and TJ alone.
"""

import re
import sys
import zlib

MM = 25.4 / 72
NUMBER = rb"[-+]?(?:\d+\.?\d*|\.\d+)"


def product(first, second):
    a, b, c, d, e, f = first
    g, h, i, j, k, m = second
    return (a * g + b * i, a * h + b * j, c * g + d * i, c * h + d * j,
            e * g + f * i + k, e * h + f * j + m)


def letters(content):
    text = re.sub(rb"\((?:\\.|[^\\)])*\)|<[0-9A-Fa-f\s]*>", b"()", content)
    operands, saved, matrix, line = [], [], (1, 0, 0, 1, 0, 0), (1, 0, 0, 1, 0, 0)
    for token in re.findall(rb"\(\)|[\[\]]|/?[A-Za-z'\"*]+[0-9A-Za-z*-]*|" + NUMBER, text):
        if re.fullmatch(NUMBER, token):
            operands.append(float(token))
            continue
        if token == b"cm":
            matrix = product(operands[-6:], matrix)
        elif token == b"q":
            saved.append(matrix)
        elif token == b"Q":
            matrix = saved.pop()
        elif token == b"BT":
            line = (1, 0, 0, 1, 0, 0)
        elif token == b"Tm":
            line = tuple(operands[-6:])
        elif token == b"Td":
            line = product((1, 0, 0, 1, *operands[-2:]), line)
        elif token in (b"Tj", b"TJ"):
            yield product(line, matrix)
        if not token.startswith((b"(", b"[", b"]")):
            operands = []


def main():
    with open(sys.argv[1], "rb") as file:
        data = file.read()
    for match in re.finditer(rb"stream\r?\n(.*?)\r?\nendstream", data, re.DOTALL):
        try:
            content = zlib.decompress(match.group(1))
        except zlib.error:
            continue
        if b" Tm" in content:
            for matrix in letters(content):
                print(*(f"{part:.6f}" for part in matrix[:4]), *(f"{x * MM:.5f}" for x in matrix[4:]))


main()
