"""Fails on a test that could wait without end.

Each test of ctest has a TIMEOUT of its own, which the file that adds it says. Each loop of a test that
waits for something gives up after a while, so that the test says what did not come: WaitUntil of
tests/support/wait_until.h, or a counted loop. A thread at the test's side that works until the test is
`over` is no wait.

usage: tests_end.py ROOT
"""

import pathlib
import re
import sys

import sources
import words

ADDED = re.compile(r"\badd_test\s*\(\s*NAME\s+(\S+)")
PROPERTIES = re.compile(r"\bset_tests_properties\s*\(([^()]*?)\bPROPERTIES\b([^()]*)\)")
DISCOVERED = re.compile(r"\bgtest_discover_tests\s*\(([^()]*)\)")
LOOP = re.compile(r"\bwhile\s*\(")
REST = re.compile(r"\b(usleep|nanosleep|sleep_for|sleep_until|yield)\s*\(")
BOUND = re.compile(r"\bnow\s*\(|HasPassed|!\s*over\b")


def without_variables(text):
    """CMake's text with its references in braces, for a search by parentheses."""
    return re.sub(r"\$<[^>\s]*>", "x", text)


def unlimited_tests(text):
    """The tests that a CMakeLists.txt adds without a TIMEOUT."""
    text = without_variables(re.sub(r"#.*", "", text))
    limited = {name for names, values in PROPERTIES.findall(text) if "TIMEOUT" in values.split()
               for name in names.split()}
    faults = [name for name in ADDED.findall(text) if name not in limited]
    return faults + [values.split()[0] for values in DISCOVERED.findall(text)
                     if "TIMEOUT" not in values.split()]


def closing(text, at, pair):
    """Where the bracket that opens at `at` is closed; the text's end if it is not."""
    depth = 0
    for place in range(at, len(text)):
        depth += (text[place] == pair[0]) - (text[place] == pair[1])
        if depth == 0:
            return place
    return len(text)


def endless_waits(text):
    """The numbers of lines where a `while` loop rests and nothing but its condition ends it."""
    code = words.TOKEN.sub(lambda match: re.sub(r"[^\n]", " ", match.group()), text)
    for match in LOOP.finditer(code):
        end = closing(code, match.end() - 1, "()")
        body = re.compile(r"\s*").match(code, end + 1).end()
        stop = (closing(code, body, "{}") if code[body:body + 1] == "{" else
                (code + ";").index(";", body))
        # A statement without braces may be an `if` with another one.
        if REST.search(code, end, stop + 1) and not BOUND.search(code, match.start(), stop):
            yield code.count("\n", 0, match.start()) + 1


def check(root):
    root = pathlib.Path(root)
    faults = []
    for file in sorted(root.glob("**/CMakeLists.txt")):
        name = file.relative_to(root).as_posix()
        if name.startswith("build/"):
            continue
        faults += [f"{name}: {test} has no TIMEOUT" for test in
                   unlimited_tests(file.read_text(encoding="utf-8"))]
    for file in sources.files(root, ("tests",), (".h", ".cpp")):
        faults += [f"{file}:{line}: waits without a limit; use WaitUntil of "
                   "tests/support/wait_until.h" for line in
                   endless_waits((root / file).read_text(encoding="utf-8"))]
    return faults


def main():
    sources.finish(check(sys.argv[1]), "every test has a limit, and every wait in one")


if __name__ == "__main__":
    main()
