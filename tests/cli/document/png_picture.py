"""Reads PNG files with nothing but Python's own library, and compares two of them."""

import pathlib
import struct
import zlib

CHANNELS = {2: 3, 6: 4}
# A letter's edge is drawn a little otherwise by another release of a font or of a drawing library; a
# line or a letter that stands one pixel aside changes its pixels by far more, and more of them.
CHANNEL_TOLERANCE = 48
SHARE_TOLERANCE = 0.002


class Picture:
    """Rows of bytes, `channels` for each pixel."""

    def __init__(self, path):
        data = pathlib.Path(path).read_bytes()
        assert data[:8] == b"\x89PNG\r\n\x1a\n", f"{path} is no PNG file"
        body, place = b"", 8
        while place < len(data):
            size, kind = struct.unpack(">I4s", data[place:place + 8])
            chunk = data[place + 8:place + 8 + size]
            (check,) = struct.unpack(">I", data[place + 8 + size:place + 12 + size])
            assert check == zlib.crc32(kind + chunk), f"{path}: {kind} is damaged"
            if kind == b"IHDR":
                self.width, self.height, depth, colour, _, _, interlace = struct.unpack(">IIBBBBB", chunk)
                assert (depth, interlace) == (8, 0), f"{path} is of another kind"
                self.channels = CHANNELS[colour]
            elif kind == b"IDAT":
                body += chunk
            place += 12 + size
        self.rows = list(self.unfilter(zlib.decompress(body)))

    def unfilter(self, body):
        step, size = self.channels, self.width * self.channels
        above = bytearray(size)
        for y in range(self.height):
            kind = body[y * (size + 1)]
            row = bytearray(body[y * (size + 1) + 1:(y + 1) * (size + 1)])
            for x in range(size if kind else 0):
                left = row[x - step] if x >= step else 0
                corner = above[x - step] if x >= step else 0
                row[x] = (row[x] + PREDICTORS[kind](left, above[x], corner)) & 255
            yield row
            above = row

    def pixel(self, x, y):
        return tuple(self.rows[y][x * self.channels:x * self.channels + 3])


def paeth(left, above, corner):
    guess = left + above - corner
    return min((left, above, corner), key=lambda value: abs(guess - value))


PREDICTORS = (lambda left, above, corner: 0, lambda left, above, corner: left,
              lambda left, above, corner: above, lambda left, above, corner: (left + above) // 2, paeth)


def difference(one, other):
    """What keeps two pictures from being the same to a person, in words; None if nothing does."""
    size, expected = (one.width, one.height), (other.width, other.height)
    if size != expected:
        return f"{size} pixels in place of {expected}"
    far = sum(any(abs(a - b) > CHANNEL_TOLERANCE for a, b in zip(one.pixel(x, y), other.pixel(x, y)))
              for y in range(one.height) if one.rows[y] != other.rows[y] for x in range(one.width))
    share = far / (one.width * one.height)
    return f"{far} pixels ({share:.2%}) are others" if share > SHARE_TOLERANCE else None
