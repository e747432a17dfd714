"""Decodes a ".cut" archive by the table of docs/formats/cut-archive.md and nothing of the project's
code.

usage: cut_archive.py FILE

Prints a line for each thing: "object NUMBER KIND COLOUR", "polygon", "part CLOSED", "X Y" in
centimetres, and at last "end". Fails with a sentence if the file has another form, bytes after its
end among it.
"""

import struct
import sys


class Archive:
    def __init__(self, data):
        self.data = data
        self.at = 0

    def take(self, form):
        size = struct.calcsize("<" + form)
        if self.at + size > len(self.data):
            sys.exit(f"the archive ends at {len(self.data)}, within a value at {self.at}")
        values = struct.unpack_from("<" + form, self.data, self.at)
        self.at += size
        return values if len(values) > 1 else values[0]

    def text(self):
        if self.take("3s") != b"\xff\xfe\xff":
            sys.exit(f"no wide text at {self.at - 3}")
        length = self.take("B")
        if length == 0xFF:
            length = self.take("H")
        return bytes(self.take(f"{2 * length}s")).decode("utf-16-le")


def main():
    with open(sys.argv[1], "rb") as file:
        archive = Archive(file.read())
    if archive.take("I") != 0:
        sys.exit("not an archive of version 0")
    for _ in range(archive.take("i")):
        if archive.take("I") != 1:
            sys.exit(f"not an object of version 1 at {archive.at - 4}")
        lines = []
        colour = archive.text()
        number = archive.take("d")
        for _ in range(archive.take("q")):
            lines.append("polygon")
            for _ in range(archive.take("q")):
                points = [archive.take("5d") for _ in range(archive.take("q"))]
                closed = archive.take("B")
                if any(point[2:] != (0, 0, 0) for point in points) or archive.take("q") != 0:
                    sys.exit("a spare value is not 0")
                lines.append(f"part {closed}")
                lines += [f"{x!r} {y!r}" for x, y, *_ in points]
            if archive.take("4iB") != (0, 0, 0, 0, 0):
                sys.exit("a spare value is not 0")
        print(f"object {number} {archive.take('i')} {colour}")
        print("\n".join(lines))
    if archive.at != len(archive.data):
        sys.exit(f"{len(archive.data) - archive.at} bytes behind the end")
    print("end")


main()
