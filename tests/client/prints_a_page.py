"""Runs a program with a fresh data root, and looks at what it delivered there.

usage: prints_a_page.py --pages N [--status N] [--says TEXT] -- PROGRAM [ARGUMENT...]
"""

import argparse
import os
import pathlib
import struct
import subprocess
import sys
import tempfile

TIME_LIMIT = 240  # seconds


def tiff_size(file):
    """(width, height) of a TIFF's first image in pixels; raises ValueError if it is none."""
    data = file.read_bytes()
    order = {b"II*\0": "<", b"MM\0*": ">"}.get(data[:4])
    if order is None:
        raise ValueError(f"{file} is no TIFF")
    start = struct.unpack_from(order + "I", data, 4)[0]
    sizes = {}
    for entry in range(struct.unpack_from(order + "H", data, start)[0]):
        tag, kind = struct.unpack_from(order + "HH", data, start + 2 + 12 * entry)
        value = struct.unpack_from(order + ("H" if kind == 3 else "I"), data,
                                   start + 2 + 12 * entry + 8)[0]
        sizes[tag] = value
    return sizes[256], sizes[257]


def delivered(home):
    """The TIFF files that were delivered, and nothing of the pages in the making."""
    return sorted((pathlib.Path(home) / "output").rglob("*.tif"))


def run(command, home, pages, status=0, says="", environment=None):
    """Runs the program with `home` as data root; a list of what is wrong."""
    variables = dict(environment or os.environ, RASTREL_HOME=str(home))
    for name in ("RASTREL_OUTPUT", "RASTREL_RESOURCES"):
        variables.pop(name, None)
    ended = subprocess.run(command, env=variables, stdout=subprocess.PIPE, check=False, text=True,
                           stderr=subprocess.STDOUT, timeout=TIME_LIMIT)
    faults = []
    if ended.returncode != status:
        faults.append(f"status {ended.returncode}, not {status}")
    if says not in ended.stdout:
        faults.append(f"does not say '{says}'")
    files = delivered(home)
    if len(files) != pages:
        faults.append(f"{len(files)} pages, not {pages}: {[file.name for file in files]}")
    for file in files:
        width, height = tiff_size(file)
        if width < 100 or height < 100:
            faults.append(f"{file.name} is {width} by {height} pixels")
    return faults and faults + ["the program printed:", ended.stdout]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--pages", type=int, required=True)
    parser.add_argument("--status", type=int, default=0)
    parser.add_argument("--says", default="")
    parser.add_argument("command", nargs="+")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="rastrel-client-") as place:
        faults = run(options.command, f"{place}/home", options.pages, options.status, options.says)
    for fault in faults:
        print(fault)
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
