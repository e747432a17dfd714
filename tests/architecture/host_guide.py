"""Fails if an operation that a host implements is not told of in docs/host.md, or if the guide tells
of one that there is not.

usage: host_guide.py ROOT
"""

import pathlib
import re
import sys

import sources

GUIDE = "docs/host.md"
FOLDERS = ("rastrel/platform/host/", "rastrel/platform/values/",
           "rastrel/platform/standalone/")
VIRTUAL = re.compile(r"\bvirtual\s+[^;(~]*?\b(\w+)\s*\(")
CODE = re.compile(r"`([^`\n]+)`")


def operations(text):
    """The names of the virtual operations that a header declares."""
    return set(VIRTUAL.findall(re.sub(r"//[^\n]*", "", text)))


def named(guide):
    """The names that stand in the guide as code."""
    return {word for code in CODE.findall(guide) for word in re.findall(r"\w+", code)}


def check(headers, guide):
    """`headers`: text by path."""
    told, faults, known = named(guide), [], set()
    for path, text in sorted(headers.items()):
        names = operations(text)
        known |= set(re.findall(r"\w+", text))
        faults += [f"{path}: {GUIDE} does not name {name}" for name in sorted(names - told)]
    faults += [f"{GUIDE}: no header has {name}" for name in sorted(told - known)
               if re.match(r"[A-Z]\w*[a-z]\w*[A-Z]", name)]
    return faults


def main():
    root = pathlib.Path(sys.argv[1])
    headers = {path: (root / path).read_text(encoding="utf-8")
               for path in sources.public_headers(root) if path.startswith(FOLDERS)}
    faults = check(headers, (root / GUIDE).read_text(encoding="utf-8"))
    count = sum(len(operations(text)) for text in headers.values())
    sources.finish(faults, f"{GUIDE} tells of all {count} operations of a host")


if __name__ == "__main__":
    main()
