"""The table of changes that can't be noticed."""

import re

ENTRY = re.compile(r"^(\S+): (.+?)  =>  (.*?)  # (.*\S)$")


def read(text):
    """The set of (file, before, after), and a list of the lines that are no entries."""
    entries, faults = set(), []
    for number, line in enumerate(text.splitlines(), 1):
        if not line.strip() or line.startswith("#"):
            continue
        match = ENTRY.match(line)
        if match:
            entries.add(match.groups()[:3])
        else:
            faults.append(f"line {number}: no entry, or one without a reason: {line}")
    return entries, faults


def key(mutant):
    return mutant.file, mutant.before, mutant.after


def void(entries, root, read_source):
    """Entries that the sources no longer hold. `read_source` makes the mutants.Source of a file's
    name and text."""
    present = set()
    for name in {entry[0] for entry in entries}:
        path = root / name
        if path.is_file():
            source = read_source(name, path.read_text(encoding="utf-8"))
            present |= {key(mutant) for mutant in source.mutants()}
    return sorted(entries - present)
