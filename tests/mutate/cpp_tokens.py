"""Reads C++ as tokens: enough of the language to change a source in one place."""

import collections
import re

TOKEN = re.compile(
    r"""
      (?P<directive>^[ \t]*\#(?:\\\n|[^\n])*)
    | (?P<comment>//[^\n]*|/\*.*?\*/)
    | (?P<attribute>\[\[[\w:, ]+(?:\([^()]*\))?\]\])
    | (?P<raw>(?:u8|[uUL])?R"(?P<mark>[^()\\\s]{0,16})\(.*?\)(?P=mark)")
    | (?P<string>(?:u8|[uUL])?"(?:\\.|[^"\\\n])*")
    | (?P<number>\.?\d(?:[eEpP][+-]|'?[\w.])*)
    | (?P<char>(?:u8|[uUL])?'(?:\\.|[^'\\\n])+')
    | (?P<word>[A-Za-z_]\w*)
    | (?P<space>\s+)
    | (?P<operator><=>|<<=|>>=|\.\.\.|::|->|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|.)
    """,
    re.S | re.M | re.X,
)

# `kind` is a group's name above; `start` and `end` are offsets into the text; `spaced` is true for a
# token with whitespace on both sides, as clang-format lays binary operators out.
Token = collections.namedtuple("Token", "kind text start end spaced")

OPENING = {"(": ")", "[": "]", "{": "}"}


def tokens(text):
    """The tokens that matter to the compiler, in order: no whitespace, comments or attributes."""
    found = []
    for match in TOKEN.finditer(text):
        kind = match.lastgroup if match.lastgroup != "mark" else "raw"
        if kind in ("space", "comment", "attribute", "directive"):
            continue
        start, end = match.span()
        spaced = (start > 0 and text[start - 1].isspace() and
                  end < len(text) and text[end].isspace())
        found.append(Token(kind, match.group(), start, end, spaced))
    return found


def partners(sequence):
    """The index of the closing bracket for the index of each opening one. One without a partner is
    left out."""
    result, waiting = {}, []
    for index, token in enumerate(sequence):
        if token.kind != "operator":
            continue
        if token.text in OPENING:
            waiting.append((index, OPENING[token.text]))
        elif token.text in OPENING.values() and waiting and waiting[-1][1] == token.text:
            result[waiting.pop()[0]] = index
    return result
