"""Fails on a path that becomes wide text by the C library's locale, in which a name may have no form.

std::filesystem's wstring() throws there; os::FromNative takes the name for UTF-8, whatever the locale.
Wide text that is no path has no such call.

usage: path_encoding.py ROOT
"""

import pathlib
import re
import sys

import sources
import words

CALL = re.compile(r"(?:\.|->)(?:generic_)?wstring\s*\(")
# It links nothing but the exported interface, and its paths are of its own making.
EXEMPT = "tests/soak/soak_client.cpp"


def check(root):
    faults = []
    for file in sources.files(root, (*sources.PRODUCT, "tests"), (".h", ".cpp")):
        code, _ = words.split((pathlib.Path(root) / file).read_text(encoding="utf-8"))
        if file != EXEMPT and CALL.search(code):
            faults.append(f"{file}: wstring() of a path follows the locale: use os::FromNative")
    return faults


def main():
    sources.finish(check(sys.argv[1]), "no path becomes wide text by the locale")


if __name__ == "__main__":
    main()
