"""Draws the house: the folders of the sources as rooms, and their includes as arrows.

docs/images/house.svg is the picture, and docs/architecture.md holds the table of include_rules.txt
between two marks. Both are made here. Without --store the check fails if one of them differs from
what the sources and the table give now.

usage: house.py ROOT [--store]
"""

import pathlib
import sys

import include_rules
import layered_drawing
import sources

PICTURE = "docs/images/house.svg"
PAGE = "docs/architecture.md"
BEGIN, END = "<!-- house.py: rules -->", "<!-- house.py: end -->"
UMBRELLA = "rastrel"  # holds rastrel.h and export.h, which are no room
PLATFORM = "rastrel/platform"
STANDALONE = PLATFORM + "/standalone"


def folder(file):
    return pathlib.PurePosixPath(file).parent.as_posix()


def arrows(root):
    """The folders that each folder of the product includes from, by folder."""
    found = {}
    for file in sources.files(root, sources.PRODUCT):
        own = found.setdefault(folder(file), set())
        for _, quoted, name in sources.includes(root, file):
            if quoted and name.split("/")[0] in sources.PRODUCT:
                own.add(folder(name))
    found.pop(UMBRELLA, None)
    return {own: {other for other in others if other in found and other != own}
            for own, others in found.items()}


def reached(graph, start):
    """All that the arrows lead to from `start`; itself only if they lead back."""
    found, waiting = set(), list(graph[start])
    while waiting:
        node = waiting.pop()
        if node not in found:
            found.add(node)
            waiting += graph[node]
    return found


def joined(graph):
    """The graph without circles: folders that include each other become one room of many names."""
    far = {node: reached(graph, node) for node in graph}
    room = {node: tuple(sorted({node} | {other for other in far[node] if node in far[other]}))
            for node in graph}
    return {own: {room[other] for node in own for other in graph[node]} - {own}
            for own in set(room.values())}


def reduced(graph):
    """The graph without the arrows that follow from others."""
    far = {node: reached(graph, node) for node in graph}
    return {node: {other for other in others
                   if not any(other in far[between] for between in others)}
            for node, others in graph.items()}


def public_folders(root):
    return {folder(header) for header in sources.public_headers(root)} - {UMBRELLA}


def picture(root):
    graph = reduced(joined(arrows(root)))
    return layered_drawing.svg(graph, public_folders(root))


def rules_table(rules):
    """The table as the page shows it, with the rooms of the platform in one word where it can be."""
    platform = {name for name in rules if name.startswith(PLATFORM + "/")}
    seam = platform - {STANDALONE}
    lines, width = [], max(map(len, rules))
    for name, allowed in rules.items():
        if len(seam) > 1 and seam <= set(allowed):
            word = PLATFORM if platform <= set(allowed) else PLATFORM + " but standalone"
            allowed = [word] + [other for other in allowed if other not in platform]
        shown = "everything" if "*" in allowed else ", ".join(allowed) or "nothing"
        lines.append(f"{name:{width}}  <- {shown}")
    return "\n".join([BEGIN, "```text", *lines, "```", END])


def with_table(page, rules):
    """The page with its table replaced, or None if it has no marks."""
    before, begin, rest = page.partition(BEGIN)
    _, end, after = rest.partition(END)
    return before + rules_table(rules) + after if begin and end else None


def check(root, page, drawing, rules):
    faults = []
    if drawing != picture(root):
        faults.append(f"{PICTURE}: not the house as it is")
    if page != with_table(page, rules):
        faults.append(f"{PAGE}: its table is not that of include_rules.txt")
    return faults and faults + ["to make both again: python3 tests/architecture/house.py . --store"]


def main():
    root = pathlib.Path(sys.argv[1])
    rules = include_rules.read_rules(pathlib.Path(__file__).with_name("include_rules.txt"))
    page = (root / PAGE).read_text(encoding="utf-8")
    if "--store" in sys.argv[2:]:
        (root / PICTURE).write_text(picture(root), encoding="utf-8")
        (root / PAGE).write_text(with_table(page, rules) or page, encoding="utf-8")
        page = (root / PAGE).read_text(encoding="utf-8")
    drawing = root / PICTURE
    stored = drawing.read_text(encoding="utf-8") if drawing.is_file() else ""
    faults = check(root, page, stored, rules)
    sources.finish(faults, f"{PICTURE} and the table of {PAGE} show the house as it is")


if __name__ == "__main__":
    main()
