"""Fails on an include that the table include_rules.txt does not allow, and on a source that does not
include its own header first.

usage: include_rules.py ROOT [TABLE]
"""

import pathlib
import sys

import sources


# Sources that look into a folder from its outside on purpose.
INSIDERS = ("tests", "bench", "fuzz")


def read_rules(file):
    """The folders that each folder may include."""
    rules = {}
    for line in sources.table(file):
        if "=" not in line:
            folder, allowed = line.split(":")
            rules[folder.strip()] = allowed.split()
    return rules


def read_open_headers(file):
    """The headers that are open to other folders, of the folders that don't open all of theirs."""
    open_headers = {}
    for line in sources.table(file):
        if "=" in line:
            folder, headers = line.split("=")
            open_headers[folder.strip()] = headers.split()
    return open_headers


def circles(rules):
    """Folders of the library from which the arrows lead back to themselves."""
    def reached(folder, seen):
        for other in rules.get(folder, []):
            if other != "*" and other not in seen:
                seen.add(other)
                reached(other, seen)
        return seen
    return [f"{folder}: the table leads from it back to it"
            for folder in rules if folder in reached(folder, set())]


def folder_of(file, rules):
    """The longest folder of the table that the file lies in, or None."""
    parts = pathlib.PurePosixPath(file).parts[:-1]
    for length in range(len(parts), 0, -1):
        folder = "/".join(parts[:length])
        if folder in rules:
            return folder
    return None


def check(root, rules, open_headers=None):
    open_headers = open_headers or {}
    faults = circles(rules)
    for folder, headers in open_headers.items():
        faults += [f"{header}: open to other folders, and not there"
                   for header in headers if not (pathlib.Path(root) / header).is_file()]
    for file in sources.files(root, sources.EVERYTHING):
        own = folder_of(file, rules)
        if own is None or (own == "rastrel" and file.count("/") > 1):
            faults.append(f"{file}: its folder is not in the table of include rules")
            continue
        included = sources.includes(root, file)
        header = file[:-4] + ".h"
        if file.endswith(".cpp") and (pathlib.Path(root) / header).is_file():
            if not included or included[0][2] != header:
                faults.append(f"{file}: does not include {header} first")
        for line, quoted, name in included:
            inside = name.split("/")[0] in sources.PRODUCT
            if quoted and not inside and own not in INSIDERS:
                faults.append(f"{file}:{line}: \"{name}\" is not written from the root")
            if not inside or name == "rastrel/export.h":
                continue
            other = folder_of(name, rules)
            if other != own and other not in rules[own] and "*" not in rules[own]:
                faults.append(f"{file}:{line}: {own} may not include {name}")
            elif (other != own and own not in INSIDERS
                  and name not in open_headers.get(other, [name])):
                faults.append(f"{file}:{line}: {name} is not open to other folders")
    return faults


def main():
    root = sys.argv[1]
    table = sys.argv[2] if len(sys.argv) > 2 else pathlib.Path(__file__).with_suffix(".txt")
    count = len(sources.files(root, sources.EVERYTHING))
    sources.finish(check(root, read_rules(table), read_open_headers(table)), f"{count} files keep to the include rules")


if __name__ == "__main__":
    main()
