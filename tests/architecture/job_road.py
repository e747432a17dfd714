"""Fails if the table of a job's road in docs/architecture.md skips a step, or names a file that is not
there or that does not define the function.

usage: job_road.py ROOT
"""

import pathlib
import re
import sys

import sources

PAGE = "docs/architecture.md"
HEADING = "## A job's road"
STEPS = 16
ROW = re.compile(r"^\| *(\d+) *\|[^|]*\| *`([\w:~]+)` *\| *`([^`]+)` *\|$", re.M)


def rows(page):
    """(number, function, file) of each line of the table."""
    section = page.partition(HEADING)[2].partition("\n## ")[0]
    return [(int(number), name, file) for number, name, file in ROW.findall(section)]


def defines(text, name):
    """True if the text has the function's body, and not only a call or a declaration."""
    text = re.sub(r"//[^\n]*", "", text)
    for match in re.finditer(rf"^[^\s#].*?(?<![\w:.]){re.escape(name)}\s*\(", text, re.M):
        depth, index = 1, match.end()
        while depth and index < len(text):
            depth += {"(": 1, ")": -1}.get(text[index], 0)
            index += 1
        if re.match(r"[^;{}=]*\{", text[index:]):
            return True
    return False


def check(root, page, steps=STEPS):
    faults = []
    road = rows(page)
    if [number for number, _, _ in road] != list(range(1, steps + 1)):
        faults.append(f"{PAGE}: a job's road has not the steps 1 to {steps}")
    for number, name, file in road:
        path = pathlib.Path(root) / file
        if not path.is_file():
            faults.append(f"{PAGE}: step {number}: there is no {file}")
        elif not defines(path.read_text(encoding="utf-8"), name):
            faults.append(f"{PAGE}: step {number}: {file} does not define {name}")
    return faults


def main():
    root = pathlib.Path(sys.argv[1])
    faults = check(root, (root / PAGE).read_text(encoding="utf-8"))
    sources.finish(faults, f"the {STEPS} steps of a job are where {PAGE} says")


if __name__ == "__main__":
    main()
