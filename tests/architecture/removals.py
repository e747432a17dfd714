"""Fails on a call that removes files outside rastrel/platform/os, whose removals follow no link.

RemoveTree, RemoveNativeTree and RemoveFile of that folder are for the others. removals.txt names the
files that remove by a call of their own, with the reason; a line that stands for nothing is a fault
as well, so that the list only gets shorter.

usage: removals.py ROOT [TABLE]
"""

import pathlib
import re
import sys

import sources
import words

OWNER = "rastrel/platform/os/"
CALLS = re.compile(r"\b(remove_all|unlinkat|unlink|rmdir)\s*\("
                   r"|(?:\bfs|\bfilesystem|\bstd|(?<![\w>:])):{2}(remove)\s*\(")


def calls(text):
    """The names of the removing calls in a source, comments and quoted texts left out."""
    code, _ = words.split(text)
    return {name for match in CALLS.finditer(code) for name in match.groups() if name}


def check(root, allowed):
    faults, used = [], set()
    for file in sources.files(root, sources.PRODUCT, (".h", ".cpp", ".inc")):
        if file.startswith(OWNER):
            continue
        for name in sorted(calls((pathlib.Path(root) / file).read_text(encoding="utf-8"))):
            if (file, name) in allowed:
                used.add((file, name))
            else:
                faults.append(f"{file}: {name} outside {OWNER}: RemoveTree and RemoveFile follow no "
                              "link")
    faults += [f"removals.txt: {file} has no {name} any more" for file, name in
               sorted(allowed - used)]
    return faults


def main():
    root = sys.argv[1]
    table = sys.argv[2] if len(sys.argv) > 2 else pathlib.Path(__file__).with_suffix(".txt")
    allowed = {tuple(line.split()[:2]) for line in sources.table(table)}
    sources.finish(check(root, allowed), f"nothing is removed outside {OWNER} but in "
                   f"{len(allowed)} named places")


if __name__ == "__main__":
    main()
