"""Small PDF files for tests, written object by object.

A page is 300 x 200 points. Its boxes, inside each other, are 200 x 100, 190 x 90 and 180 x 80:

    media   0   0 300 200
    crop   50  50 250 150
    bleed  55  55 245 145
    trim   60  60 240 140

The page's red covers all of the media box.
"""

import hashlib

BOXES = (b"/MediaBox[0 0 300 200]/CropBox[50 50 250 150]/BleedBox[55 55 245 145]"
         b"/TrimBox[60 60 240 140]")
RED = b"1 0 0 rg 0 0 300 200 re f"

# The bytes that fill a password up to 32, as the format's standard security handler has them.
PADDING = bytes.fromhex("28BF4E5E4E758A4164004E56FFFA01082E2E00B6D0683E802F0CA9FE6453697A")
DOCUMENT = b"0123456789abcdef"  # the file's own identifier
ALLOWED = -4  # all that a reader may do


def rc4(key, data):
    state = list(range(256))
    j = 0
    for i in range(256):
        j = (j + state[i] + key[i % len(key)]) & 255
        state[i], state[j] = state[j], state[i]
    i = j = 0
    made = bytearray()
    for byte in data:
        i = (i + 1) & 255
        j = (j + state[i]) & 255
        state[i], state[j] = state[j], state[i]
        made.append(byte ^ state[(state[i] + state[j]) & 255])
    return bytes(made)


def padded(password):
    return (password + PADDING)[:32]


class Lock:
    """Revision 2 of the standard handler: RC4 with a key of 40 bits."""

    def __init__(self, password):
        self.owner = rc4(hashlib.md5(padded(b"owner")).digest()[:5], padded(password))
        self.key = hashlib.md5(padded(password) + self.owner +
                               ALLOWED.to_bytes(4, "little", signed=True) + DOCUMENT).digest()[:5]

    def stream(self, number, data):
        return rc4(hashlib.md5(self.key + bytes([number, 0, 0, 0, 0])).digest()[:10], data)

    def dictionary(self):
        user = rc4(self.key, PADDING)
        return (b"<</Filter/Standard/V 1/R 2/P %d/O<%s>/U<%s>>>" %
                (ALLOWED, self.owner.hex().encode(), user.hex().encode()))


def pdf(content=RED, boxes=BOXES, password=None, rotate=0):
    """One page; with a password it is locked."""
    lock = Lock(password) if password is not None else None
    data = lock.stream(4, content) if lock else content
    objects = [b"<</Type/Catalog/Pages 2 0 R>>",
               b"<</Type/Pages/Kids[3 0 R]/Count 1>>",
               b"<</Type/Page/Parent 2 0 R/Contents 4 0 R/Resources<<>>/Rotate %d" % rotate + boxes + b">>",
               b"<</Length %d>>stream\n" % len(data) + data + b"\nendstream"]
    if lock:
        objects.append(lock.dictionary())
    made = bytearray(b"%PDF-1.4\n")
    places = []
    for number, text in enumerate(objects, 1):
        places.append(len(made))
        made += b"%d 0 obj\n" % number + text + b"\nendobj\n"
    table = len(made)
    made += b"xref\n0 %d\n0000000000 65535 f \n" % (len(objects) + 1)
    for place in places:
        made += b"%010d 00000 n \n" % place
    made += b"trailer\n<</Size %d/Root 1 0 R" % (len(objects) + 1)
    if lock:
        made += b"/Encrypt 5 0 R/ID[<%s><%s>]" % (DOCUMENT.hex().encode(), DOCUMENT.hex().encode())
    return bytes(made + b">>\nstartxref\n%d\n%%%%EOF\n" % table)


def with_wrong_table():
    """The table's place lies beyond the file's end; readers find the objects by themselves."""
    whole = pdf()
    return whole[:whole.rindex(b"startxref")] + b"startxref\n999999\n%%EOF\n"


def without_end(size=20000):
    """Cut off: the catalog comes after a large stream and is lost."""
    return (b"%PDF-1.4\n9 0 obj\n<</Length 40000>>stream\n" + b"x" * 40000 +
            b"\nendstream\nendobj\n" + pdf()[9:])[:size]


JUNK = b"%PDF-1.4\n" + b"neither objects nor a table\n" * 40
NO_PAGES = (b"%PDF-1.4\n1 0 obj\n<</Type/Catalog/Pages 2 0 R>>\nendobj\n"
            b"2 0 obj\n<</Type/Pages/Kids[]/Count 0>>\nendobj\n"
            b"trailer\n<</Root 1 0 R>>\n%%EOF\n")
