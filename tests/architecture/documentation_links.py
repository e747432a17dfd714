"""Fails on a link of a document to a file that is not there, on a page under docs/ that a source
names and that is not there, and on a format page without an entry in the index of formats.

usage: documentation_links.py ROOT
"""

import pathlib
import re
import sys

import documentation_examples
import sources

NAMED = re.compile(r"\bdocs/[\w/.-]+\.md\b")
LINK = re.compile(r"\]\(([^)#\s]+)(?:#[^)\s]*)?\)")


def check(root):
    root = pathlib.Path(root).resolve()
    faults, linked = [], set()
    for document in documentation_examples.documents(root):
        for target in LINK.findall(document.read_text(encoding="utf-8")):
            if "://" in target:
                continue
            path = (document.parent / target).resolve()
            linked.add((document, path))
            if not path.exists():
                faults.append(f"{document.relative_to(root)}: there is no {target}")
    for file in sources.files(root, sources.EVERYTHING):
        for page in NAMED.findall((root / file).read_text(encoding="utf-8")):
            if not (root / page).is_file():
                faults.append(f"{file}: there is no {page}")
    index = root / "docs" / "formats" / "README.md"
    for page in sorted((root / "docs" / "formats").glob("*.md")):
        if page != index and (index, page) not in linked:
            faults.append(f"{page.relative_to(root)}: not in the index of formats")
    return faults


def main():
    sources.finish(check(sys.argv[1]), "every link between documents leads somewhere")


if __name__ == "__main__":
    main()
