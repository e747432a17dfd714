"""Fails on a start of a program, and on a library that reads foreign pictures, outside the files that
foreign_work.txt names.

A foreign program or file that is taken up anywhere else has no limits, no guardian and no walls.
Comments and quoted texts do not count. A line of the table that names a file for nothing is a fault, too.

usage: foreign_work.py ROOT [TABLE]
"""

import pathlib
import re
import sys

import sources

START = re.compile(
    r"\b(?:v?fork|_Fork|posix_spawnp?|execv|execve|execvp|execvpe|execveat|fexecve|execl|execlp|execle"
    r"|popen|ReplaceProcess|StartAndForget)\b"
    r"|\bCalls\(\)\.clone\b|\bos::Spawn\s*\(|\bGuardedProcess::Start\s*\("
    r"|(?<![\w.>])(?:std::|::)?(?:system|clone)\s*\(")
DRAW = re.compile(
    r"^\s*#\s*include\s*<(?:poppler[\w-]*(?:/[\w./-]+|\.h)|librsvg/[\w./-]+|png\.h|tiffio\.h(?:xx)?"
    r"|jpeglib\.h|turbojpeg\.h|gdk-pixbuf/[\w./-]+|webp/[\w./-]+|lcms2?\.h|openjpeg[\w./-]*"
    r"|ghostscript/[\w./-]+)>", re.MULTILINE)
KINDS = {"start": (START, "starts a program"), "draw": (DRAW, "reads foreign pictures")}

# A comment, a raw string, a string or a character.
NOT_CODE = re.compile(
    r'//[^\n]*|/\*.*?\*/|R"(\w*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])*\'', re.DOTALL)


def code_of(text):
    """The text without comments and quoted parts; line numbers stay."""
    return NOT_CODE.sub(lambda match: "\n" * match.group(0).count("\n"), text)


def read_table(file):
    """{kind: set of files}"""
    named = {kind: set() for kind in KINDS}
    for line in sources.table(file):
        kind, name = line.split()[:2]
        named[kind].add(name)
    return named


def check(root, named):
    faults = []
    seen = {kind: set() for kind in KINDS}
    for file in sources.files(root, sources.PRODUCT, (".h", ".cpp", ".inc")):
        text = code_of((pathlib.Path(root) / file).read_text(encoding="utf-8"))
        for kind, (pattern, said) in KINDS.items():
            for match in pattern.finditer(text):
                seen[kind].add(file)
                if file not in named[kind]:
                    line = text.count("\n", 0, match.start()) + 1
                    word = match.group(0).strip()
                    faults.append(f"{file}:{line}: {said}: {word}")
    for kind in KINDS:
        faults += [f"{file}: the table names it for nothing ({kind})"
                   for file in sorted(named[kind] - seen[kind])]
    return faults


def main():
    root = sys.argv[1]
    table = sys.argv[2] if len(sys.argv) > 2 else pathlib.Path(__file__).with_suffix(".txt")
    sources.finish(check(root, read_table(table)), "foreign work is taken up where it may be")


if __name__ == "__main__":
    main()
