"""Fails if a top folder has no README.md, or one that is long or leaves out one of the three things
that a newcomer asks: what lives here, what it may touch, where to begin.

usage: folder_guides.py ROOT
"""

import pathlib
import sys

import sources

LIMIT = 25  # lines
ASKED = ("**What lives here.**", "**What it may touch.**", "**Where to begin.**")


def check(root):
    faults = []
    for folder in sorted(pathlib.Path(root).iterdir()):
        if not folder.is_dir() or folder.name.startswith((".", "build")):
            continue
        guide = folder / "README.md"
        if not guide.is_file():
            faults.append(f"{folder.name}: no README.md")
            continue
        text = guide.read_text(encoding="utf-8")
        faults += [f"{folder.name}/README.md: does not say {asked}" for asked in ASKED
                   if asked not in text]
        lines = len(text.splitlines())
        if lines > LIMIT:
            faults.append(f"{folder.name}/README.md: {lines} lines, more than {LIMIT}")
    return faults


def main():
    sources.finish(check(sys.argv[1]), "each top folder has a short guide")


if __name__ == "__main__":
    main()
