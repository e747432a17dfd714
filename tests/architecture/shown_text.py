"""Fails on text that could reach a terminal uncleaned.

The command writes by the functions of cli/console/standard_streams.h, which clean each line; the library
and the children by WriteToStandardError of rastrel/platform/os, which cleans on a terminal. Everything
else that writes to a standard stream is a fault outside these two, and so are the functions that let
line ends, data or control sequences through, but in the files that shown_text.txt names with a reason.
A line of the table that stands for nothing is a fault as well.

usage: shown_text.py ROOT [TABLE]
"""

import re
import sys

import sources
import words

OWNERS = ("rastrel/platform/os/", "cli/console/standard_streams.")
NOT_A_MEMBER = r"(?<![\w.>])"
CALLS = re.compile(
    r"\bstd::(w?c(?:out|err|log))\b"
    r"|" + NOT_A_MEMBER + r"(?:std::|::)?((?:v?f?w?printf|v?dprintf|f?putw?s|f?putw?c|putw?char"
    r"|fputws|fwrite|perror|psignal|psiginfo)|print(?:ln)?)\s*\("
    r"|\b(STD(?:OUT|ERR)_FILENO)\b"
    r"|\b(write|writev|WriteAll)\s*\(\s*(?:[12]\s*,|os::StandardHandle)"
    r"|\b(WriteWithoutSignal|WriteToStandardError|WriteOutLines|WriteErrorLines|WriteOutData"
    r"|WriteOutControl)\s*\(")
DEVICES = re.compile(r'"(/dev/(?:tty|stdout|stderr|fd/[12]))\b')
COMMENT = re.compile(r"//[^\n]*|/\*.*?\*/", re.S)


def calls(text):
    """Names of the calls in a source that may write uncleaned text."""
    code, _ = words.split(text)
    found = {name for match in CALLS.finditer(code) for name in match.groups() if name}
    return found | set(DEVICES.findall(COMMENT.sub("", text)))


def check(root, allowed):
    return sources.named_calls(root, sources.PRODUCT, OWNERS, calls, allowed, "shown_text.txt",
                               ": text for a person goes through WriteOutLine and the like "
                               "(cli/console/standard_streams.h), which clean it")


def main():
    places, faults = sources.named_places(sys.argv, check)
    sources.finish(faults, f"all text is cleaned on its way to a terminal; {len(places)} named places make their lines "
                   "themselves")


if __name__ == "__main__":
    main()
