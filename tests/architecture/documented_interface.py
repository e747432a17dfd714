"""Lists what the public headers declare without a comment; there must be nothing.

A declaration is documented by a comment straight above it, by one at the end of its line, or by the
comment of the block that it stands in: declarations without an empty line between them share the
nearest comment above. What needs no words is left out: destructors, copying, defaulted and deleted
operations, and overrides, which the base class tells of.

usage: documented_interface.py ROOT
"""

import pathlib
import re
import sys

import sources

NEEDS_NO_WORDS = re.compile(r"~|=\s*(default|delete)\s*$|\boverride\b|\boperator=\s*\(const")
SCOPE = re.compile(r"^(?:template\s*<.*>\s*)?(?:inline\s+)?(namespace|class|struct|enum|union|extern)\b")
ACCESS = re.compile(r"^(public|protected|private)\s*:\s*")


def blank_comments(text):
    """The text with comments, texts and preprocessor lines blanked; the lines that hold nothing but
    a comment; and those that end in one."""
    alone, trailing, out = set(), set(), []
    token = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])+\''
                       r'|(?<![^\n])[ \t]*#(?:[^\n]*\\\n)*[^\n]*', re.S)
    position = 0
    for match in token.finditer(text):
        out.append(text[position:match.start()])
        piece = match.group()
        if piece.startswith(("//", "/*")):
            first = text.count("\n", 0, match.start()) + 1
            before = text[text.rfind("\n", 0, match.start()) + 1:match.start()]
            lines = trailing if before.strip() else alone
            lines.update(range(first, first + piece.count("\n") + 1))
        out.append(re.sub(r"[^\n]", " ", piece))
        position = match.end()
    out.append(text[position:])
    return "".join(out), alone, trailing


def matching_brace(text, start):
    """Index behind the brace that closes the one at `start`."""
    depth = 0
    for index in range(start, len(text)):
        depth += {"{": 1, "}": -1}.get(text[index], 0)
        if depth == 0:
            return index + 1
    return len(text)


def opens_scope(statement):
    """True for namespaces and bodies of classes, whose inside is read; not for functions."""
    match = SCOPE.match(statement)
    return bool(match) and (match.group(1) == "namespace" or "(" not in statement)


def is_hidden(statement, scopes):
    return any(scope == "hidden" for scope in scopes) or statement.startswith(
        ("friend", "using", "static_assert"))


def declarations(text):
    """(first line, last line, text) of each declaration that others can see."""
    scopes, start, index = [], 0, 0
    while index < len(text):
        character = text[index]
        raw = text[start:index]
        statement = " ".join(raw.split())
        access = ACCESS.match(statement)
        if character == ":" and re.fullmatch(r"(public|protected|private)", statement):
            scopes[-1] = "seen" if statement == "public" else "hidden"
            start = index + 1
        elif character == "}":
            if scopes:
                scopes.pop()
            start = index + 1
        elif character == "{" or character == ";":
            first = text.count("\n", 0, start + len(raw) - len(raw.lstrip())) + 1
            end = index + 1
            scope = character == "{" and opens_scope(statement)
            is_enum = scope and statement.startswith("enum")
            if character == "{" and (not scope or is_enum):
                end = matching_brace(text, index)
                rest = re.match(r"\s*(?=;)|", text[end:])
                end += rest.end() if rest else 0
            if statement and not access and not is_hidden(statement, scopes):
                if not statement.startswith(("namespace", "extern")):
                    yield (first, text.count("\n", 0, end - 1) + 1,
                           statement + (" {" if scope else ""))
            if scope and not is_enum:
                kind = "hidden" if statement.startswith("class") else "seen"
                scopes.append("hidden" if "hidden" in scopes else kind)
            start, index = end, end - 1
        index += 1


def is_forward(statement):
    return re.fullmatch(r"(class|struct|enum( class)?)\s+\w+( : [\w:]+)?", statement) is not None


def is_macro_call(statement):
    return re.match(r"[A-Z_0-9]+\(", statement) is not None


def undocumented(text):
    """(line, declaration) of each that has no comment."""
    clean, alone, trailing = blank_comments(text)
    lines = text.splitlines()
    block_has_comment = {}  # by the last line of a declaration
    faults = []
    for first, last, statement in declarations(clean):
        above = first - 1 in alone or block_has_comment.get(first - 1, False)
        block_has_comment[last] = above
        documented = above or any(line in trailing or line in alone
                                  for line in range(first, last + 1))
        if documented or is_forward(statement) or is_macro_call(statement):
            continue
        if not NEEDS_NO_WORDS.search(statement):
            faults.append((first, lines[first - 1].strip()))
    return faults


def check(root, headers):
    faults = []
    for header in headers:
        text = (pathlib.Path(root) / header).read_text(encoding="utf-8")
        for line, declaration in undocumented(text):
            faults.append(f"{header}:{line}: no comment: {declaration}")
    return faults


def main():
    root = sys.argv[1]
    headers = sources.public_headers(root)
    sources.finish(check(root, headers), f"{len(headers)} public headers are documented throughout")


if __name__ == "__main__":
    main()
