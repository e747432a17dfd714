"""Fails on a source that has grown beyond what one reading holds.

usage: file_sizes.py ROOT
"""

import pathlib
import sys

import sources

LIMIT = 600  # lines


def check(root, folders, limit=LIMIT):
    faults = []
    for file in sources.files(root, folders, (".h", ".cpp", ".py", ".ps")):
        lines = len((pathlib.Path(root) / file).read_bytes().splitlines())
        if lines > limit:
            faults.append(f"{file}: {lines} lines, more than {limit}")
    return faults


def main():
    sources.finish(check(sys.argv[1], sources.EVERYTHING), f"no source has over {LIMIT} lines")


if __name__ == "__main__":
    main()
