"""Counts words that the sources are to lose, and fails where one occurs more often than words.txt
allows. Comments and identifiers are read; texts in quotes are not.

usage: words.py ROOT [--store]
"""

import pathlib
import re
import sys

import sources

FOLDERS = ("rastrel", "pages", "cfplane", "interpreter", "spreadsheet", "host", "children", "cli",
           "tests", "bench", "fuzz")
TOKEN = re.compile(r'R"(\w*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])+\'(?!\w)'
                   r'|//[^\n]*|/\*.*?\*/', re.S)
IDENTIFIER = re.compile(r"\b[A-Za-z_]\w*")
AFTER_WHAT = (r"(?:it|they|he|she|we|you|one|is|are|was|were|has|have|had|can|may|must|the|a|an|this"
              r"|that|these|those|each|comes|came|follows|goes|lies|stands|belongs|needs|no|\w+s)")

# Patterns of one identifier, by the word of the table.
IDENTIFIERS = {
    "Shelf": r"Shelf",
    "Nameless": r"[Nn]ameless",
    "Patience": r"[Pp]atience",
    "DialogFace": r"DialogFace",
    "Most": r"^Most[A-Z]",
    "Longest": r"^Longest[A-Z]",
    "colour": r"[Cc]olour",
    "k-prefix": r"^k[A-Z][a-z]",
    "Outcome": r"^Outcome$",
    "Attempt": r"^Attempt$",
}
# Patterns of the text of all comments.
COMMENTS = {
    "comment-colour": r"\b[Cc]olour",
    "comment-what": rf"\b[Ww]hat {AFTER_WHAT}\b",
    "comment-nameless": r"\b[Nn]ameless\b",
    "comment-patience": r"\b[Pp]atience\b",
    "comment-shelf": r"\b[Ss]hel(?:f|ves)\b",
    "comment-tells": r"\b[Tt](?:ells?|old)\b",
    "comment-words": r"\b[Ww]ords\b",
    "comment-stands": r"\b(?:[Ss]tands?|[Ss]tood)\b",
    "comment-behind": r"\b[Bb]ehind\b",
}


def split(text):
    """The code without comments and quoted texts, and the comments joined by spaces."""
    comments = []

    def take(match):
        if match.group().startswith(("//", "/*")):
            comments.append(re.sub(r"^[/*!<]+|\*/$", "", match.group()))
        return " "

    code = TOKEN.sub(take, text)
    code = "\n".join(line for line in code.splitlines() if not re.match(r"\s*#\s*include", line))
    return code, re.sub(r"\s+", " ", " ".join(comments))


def count(root):
    """How often each word occurs."""
    found = dict.fromkeys([*IDENTIFIERS, *COMMENTS], 0)
    for file in sources.files(root, FOLDERS):
        code, comments = split((pathlib.Path(root) / file).read_text(encoding="utf-8"))
        names = IDENTIFIER.findall(code)
        for word, pattern in IDENTIFIERS.items():
            found[word] += sum(1 for name in names if re.search(pattern, name))
        for word, pattern in COMMENTS.items():
            found[word] += len(re.findall(pattern, comments))
    return found


def read_limits(table):
    return {word: int(limit) for word, limit in (line.split() for line in sources.table(table))}


def check(found, limits):
    faults = [f"words.txt: no line for {word}" for word in found if word not in limits]
    faults += [f"{word}: {found[word]} times, at most {limit} are left; CONTRIBUTING.md has the word "
               "to write" for word, limit in limits.items() if found.get(word, 0) > limit]
    return faults + [f"words.txt: {word} is no word that is counted" for word in limits
                     if word not in found]


def lowered(text, found):
    """The table with each maximum lowered to the count of now; none is raised."""
    def line(match):
        word, gap, limit = match.groups()
        return f"{word}{gap}{min(int(limit), found.get(word, int(limit)))}"
    return re.sub(r"^([\w-]+)(\s+)(\d+)", line, text, flags=re.M)


def main():
    root = sys.argv[1]
    table = pathlib.Path(__file__).with_suffix(".txt")
    found = count(root)
    if "--store" in sys.argv[2:]:
        table.write_text(lowered(table.read_text(encoding="utf-8"), found), encoding="utf-8")
    sources.finish(check(found, read_limits(table)), f"{len(found)} words keep to their limits")


if __name__ == "__main__":
    main()
