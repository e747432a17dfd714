"""Writes random ".cut" archives by the table of docs/formats/cut-archive.md and nothing of the
project's code.

usage: write_cut_archive.py SEED FILE

Writes FILE, and prints a line for each thing in it: "object COLOUR NUMBER KIND", "polygon V V V V
FLAG", "part CLOSED VALUE", "X Y THIRD FOURTH FIFTH", each double as its 16 hexadecimal digits.
"""

import random
import struct
import sys

TEXTS = ["", "Cut", "RGB: 1.000  0.000  0.000", "D\u00e9coupe", "\u5207\U0001f52a", "x" * 254,
         "y" * 255, "z" * 70000]


def text(value):
    units = value.encode("utf-16-le")
    length = len(units) // 2
    if length < 0xFF:
        head = struct.pack("<B", length)
    elif length < 0xFFFE:
        head = b"\xff" + struct.pack("<H", length)
    else:
        head = b"\xff\xff\xff" + struct.pack("<I", length)
    return b"\xff\xfe\xff" + head + units


def digits(value):
    return struct.pack(">d", value).hex()


def main():
    chance = random.Random(int(sys.argv[1]))

    def count(highest):
        return chance.choice([0, 1, 1, 2, chance.randint(0, highest)])

    def double():
        return chance.choice([0.0, -0.0, chance.uniform(-1e3, 1e3), chance.uniform(-1e300, 1e300)])

    lines, objects = [], []
    for _ in range(count(5)):
        colour, number = chance.choice(TEXTS), double()
        kind = chance.randint(-2**31, 2**31 - 1)
        lines.append(f"object {colour} {digits(number)} {kind}")
        polygons = []
        for _ in range(count(4)):
            values = [chance.getrandbits(32) for _ in range(4)]
            flag = chance.getrandbits(8)
            lines.append("polygon " + " ".join(map(str, values)) + f" {flag}")
            parts = []
            for _ in range(count(4)):
                closed, value = chance.getrandbits(8), chance.getrandbits(64)
                lines.append(f"part {closed} {value}")
                points = [[double() for _ in range(5)] for _ in range(count(1500))]
                lines += [" ".join(map(digits, point)) for point in points]
                parts.append(struct.pack("<Q", len(points)) +
                             b"".join(struct.pack("<5d", *point) for point in points) +
                             struct.pack("<BQ", closed, value))
            polygons.append(struct.pack("<Q", len(parts)) + b"".join(parts) +
                            struct.pack("<4IB", *values, flag))
        objects.append(struct.pack("<I", 1) + text(colour) +
                       struct.pack("<dq", number, len(polygons)) + b"".join(polygons) +
                       struct.pack("<i", kind))
    with open(sys.argv[2], "wb") as file:
        file.write(struct.pack("<II", 0, len(objects)) + b"".join(objects))
    sys.stdout.buffer.write("".join(line + "\n" for line in lines).encode())


main()
