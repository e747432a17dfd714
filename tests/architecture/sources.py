"""What the checks of this folder share: finding sources, reading includes, and reporting.

As a program it prints the public headers, a path a line.

usage: sources.py ROOT
"""

import pathlib
import re
import sys

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')

# Folders whose sources are held to the rules of a library that others build on.
PRODUCT = ("rastrel", "pages", "cfplane", "interpreter", "spreadsheet", "cutting", "server", "host", "children",
           "cli")
EVERYTHING = PRODUCT + ("tests", "bench", "fuzz", "examples")


def files(root, folders, suffixes=(".h", ".cpp")):
    """Sources below the folders of `root`, as paths relative to it, sorted."""
    root = pathlib.Path(root)
    found = []
    for folder in folders:
        for path in (root / folder).rglob("*"):
            if path.suffix in suffixes and path.is_file():
                found.append(path.relative_to(root).as_posix())
    return sorted(found)


def includes(root, file):
    """(line number, quoted or not, name) of each include of a file."""
    result = []
    text = (pathlib.Path(root) / file).read_text(encoding="utf-8")
    for number, line in enumerate(text.splitlines(), 1):
        match = INCLUDE.match(line)
        if match:
            result.append((number, match.group(1) == '"', match.group(2)))
    return result


def table(file):
    """Lines of a table: comments and empty lines dropped."""
    for line in pathlib.Path(file).read_text(encoding="utf-8").splitlines():
        line = line.split("#", 1)[0].strip()
        if line:
            yield line


def public_headers(root):
    """The headers that rastrel/rastrel.h reaches, itself included, sorted."""
    waiting, found = ["rastrel/rastrel.h"], set()
    while waiting:
        header = waiting.pop()
        if header in found:
            continue
        found.add(header)
        waiting += [name for _, quoted, name in includes(root, header)
                    if quoted and name.startswith("rastrel/")]
    return sorted(found)


def named_calls(root, folders, owners, calls, allowed, table_name, reason):
    """Faults of calls that are for the owners alone, which are beginnings of paths, but in named places.

    calls(text) gives the names of such calls in a source; `allowed` has (file, name) for each place. One
    that stands for nothing is a fault as well, so that its table only gets shorter.
    """
    faults, used = [], set()
    for file in files(root, folders, (".h", ".cpp", ".inc")):
        if file.startswith(owners):
            continue
        for name in sorted(calls((pathlib.Path(root) / file).read_text(encoding="utf-8"))):
            if (file, name) in allowed:
                used.add((file, name))
            else:
                faults.append(f"{file}: {name}{reason}")
    return faults + [f"{table_name}: {file} has no {name} any more"
                     for file, name in sorted(allowed - used)]


def named_places(arguments, check):
    """(places of the table, faults) of a check that is called with ROOT [TABLE]: the table beside it."""
    beside = pathlib.Path(arguments[0]).with_suffix(".txt")
    places = {tuple(line.split()[:2]) for line in table(arguments[2] if len(arguments) > 2 else beside)}
    return places, check(arguments[1], places)


def finish(faults, what):
    """Ends the check: status 1 and the faults, or one line that says what was looked at."""
    for fault in faults:
        print(fault)
    if faults:
        sys.exit(f"{len(faults)} fault(s)")
    print(what)


if __name__ == "__main__":
    print(*public_headers(sys.argv[1]), sep="\n")
