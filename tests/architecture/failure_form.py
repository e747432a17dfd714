"""Checks that a failure is said in one form, rastrel::Expected: nowhere by an optional or a variant
of a Failure, and by no function of platform/os as a boolean or a number with errno.

usage: failure_form.py ROOT
"""

import pathlib
import re
import sys

import sources

EXPECTED = "rastrel/platform/os/expected.h"  # what Expected itself is made of
SYSTEM = "rastrel/platform/os"
# These are the machine's own calls, in its own form.
SYSTEM_CALLS = SYSTEM + "/system_calls.h"
OTHER_FORM = re.compile(r"\b(?:optional|variant|pair|tuple)<[^;{}]*\bFailure>")
DECLARATION = re.compile(r"((?:^[ \t]*///[^\n]*\n)*)"
                         r"^[ \t]*(?:\[\[nodiscard\]\]\s+)?(?:static\s+|virtual\s+|inline\s+)*"
                         r"(bool|int|long|ssize_t|HANDLE)\s+(\w+)\(", re.M)
# A boolean with such a name is the answer to a question.
QUESTION = re.compile(r"(?:Is|Has|Can|Ends|Starts|Exists|Holds|Fits)(?![a-z])|Exists$")


def other_forms(file, text):
    """The lines of a source that hold a failure in another form."""
    return [f"{file}:{text.count(chr(10), 0, match.start()) + 1}: a failure as {match.group()}; "
            "return rastrel::Expected" for match in OTHER_FORM.finditer(text)]


def raw_results(file, text, allowed):
    """The functions of a header that return a failure as a boolean or with errno."""
    faults = []
    for comment, kind, name in DECLARATION.findall(text):
        if name in allowed:
            continue
        if re.search(r"\berrno\b", comment):
            faults.append(f"{file}: {name} returns {kind} and errno; return rastrel::Expected")
        elif kind in ("long", "ssize_t") or (kind == "bool" and not QUESTION.match(name)):
            faults.append(f"{file}: {name} returns {kind}; return rastrel::Expected, or give the reason "
                          "in failure_form.txt")
    return faults


def check(root, allowed):
    faults, declared = [], set()
    for file in sources.files(root, sources.PRODUCT):
        text = (pathlib.Path(root) / file).read_text(encoding="utf-8")
        if file != EXPECTED:
            faults += other_forms(file, text)
        if file.startswith(SYSTEM + "/") and file.endswith(".h") and file != SYSTEM_CALLS:
            faults += raw_results(file, text, allowed)
            declared |= {name for _, _, name in DECLARATION.findall(text)}
    return faults + [f"failure_form.txt: there is no {name}" for name in sorted(allowed - declared)]


def main():
    table = pathlib.Path(__file__).with_suffix(".txt")
    sources.finish(check(sys.argv[1], set(sources.table(table))), "failures have one form")


if __name__ == "__main__":
    main()
