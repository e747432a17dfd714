"""Fails on a call that removes files outside rastrel/platform/os, whose removals follow no link.

RemoveTree, RemoveNativeTree and RemoveFile of that folder are for the others. removals.txt names the
files that remove by a call of their own, with the reason; a line that stands for nothing is a fault
as well, so that the list only gets shorter.

usage: removals.py ROOT [TABLE]
"""

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
    return sources.named_calls(root, sources.PRODUCT, OWNER, calls, allowed, "removals.txt",
                               f" outside {OWNER}: RemoveTree and RemoveFile follow no link")


def main():
    places, faults = sources.named_places(sys.argv, check)
    sources.finish(faults, f"nothing is removed outside {OWNER} but in {len(places)} named places")


if __name__ == "__main__":
    main()
