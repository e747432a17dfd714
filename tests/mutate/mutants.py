"""The changes that can be made to a source, one at a time.

The changes, by kind:

  constant    a number by one (0 becomes 1), a character, `true` and `false`
  comparison  == and !=, and whether the border belongs to it (< and <=)
  condition   of `if` and `while` negated, && and ||, a `!` left out
  arithmetic  + and -, * and /, % as *, += and -=, ++ and --
  return      the opposite of a truth value, else the value by default
  call        a statement that is a call, left out

Left out, since no contract speaks of it or the compiler alone decides:

  - comments, preprocessor lines, attributes, and all strings
  - static_assert, assert, noexcept, alignas with their arguments
  - calls that write to a log (their name holds "log", "trace" or "debug"), with their arguments
  - calls that only change where memory is: reserve, shrink_to_fit
  - sizes of buffers: powers of two from 256 on in a statement that speaks of a buffer, a piece, a
    chunk, a capacity or std::array
  - steps of a `for` loop (++ and --), each of which only makes an endless loop
  - `while (true)`, conditions that declare a name, `if constexpr`
"""

import collections
import random
import re

import cpp_tokens

# `before` and `after` are the lines that the change touches, their whitespace squeezed.
Mutant = collections.namedtuple("Mutant", "file line kind start end replacement before after")

COMPARISON = {"==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">"}
ARITHMETIC = {"+": "-", "-": "+", "*": "/", "/": "*", "%": "*"}
STEP = {"+=": "-=", "-=": "+=", "*=": "/=", "/=": "*=", "++": "--", "--": "++"}
JOIN = {"&&": "||", "||": "&&"}

WRITES_LOG = re.compile(r"log|trace|debug", re.I)
SILENT = {"static_assert", "assert", "noexcept", "alignas", "reserve", "shrink_to_fit"}
SPEAKS_OF_A_BUFFER = re.compile(r"buffer|piece|chunk|capacity|std::array", re.I)
KEYWORDS = {"if", "for", "while", "switch", "return", "throw", "delete", "new", "else", "do", "case",
            "using", "namespace", "template", "typedef", "static_assert", "goto", "public",
            "private", "protected", "class", "struct", "enum", "catch", "try", "default", "operator"}


class Source:
    """One source text and the places in it that can be changed."""

    def __init__(self, file, text):
        self.file = file
        self.text = text
        self.tokens = cpp_tokens.tokens(text)
        self.partners = cpp_tokens.partners(self.tokens)
        self.silent = self._silent()

    def mutants(self):
        """All of them, by their place in the text."""
        found = []
        for index, token in enumerate(self.tokens):
            if index in self.silent:
                continue
            for kind, start, end, replacement in self._changes(index, token):
                found.append(self._mutant(kind, start, end, replacement))
        return found

    def _changes(self, index, token):
        if token.kind in ("number", "char") or token.text in ("true", "false"):
            yield from self._constant(index, token)
        elif token.kind == "word":
            yield from self._condition(index, token)
            yield from self._return(index, token)
        elif token.kind == "operator":
            yield from self._operator(index, token)
        yield from self._call(index)

    def _silent(self):
        """Indices of the tokens that the rules leave out with a call's whole arguments."""
        result = set()
        for index, token in enumerate(self.tokens):
            if token.kind != "word" or self._text(index + 1) != "(":
                continue
            if token.text in SILENT or WRITES_LOG.search(token.text):
                if index + 1 in self.partners:
                    result.update(range(index, self.partners[index + 1] + 1))
        for index, token in enumerate(self.tokens):
            if token.text != "for" or index + 1 not in self.partners:
                continue
            inside = range(index + 1, self.partners[index + 1])
            result.update(at for at in inside if self.tokens[at].text in ("++", "--"))
        return result

    def _text(self, index):
        return self.tokens[index].text if 0 <= index < len(self.tokens) else ""

    def _mutant(self, kind, start, end, replacement):
        first = self.text.rfind("\n", 0, start) + 1
        last = self.text.find("\n", end)
        last = len(self.text) if last < 0 else last
        before = " ".join(self.text[first:last].split())
        after = " ".join((self.text[first:start] + replacement + self.text[end:last]).split())
        return Mutant(self.file, self.text.count("\n", 0, start) + 1, kind, start, end, replacement,
                      before, after)

    def _constant(self, index, token):
        if token.text in ("true", "false"):
            if self._text(index - 1) == "(" and self._text(index - 2) == "while":
                return
            changed = "false" if token.text == "true" else "true"
        elif token.kind == "char":
            changed = "'y'" if token.text.endswith("'x'") else "'x'"
            changed = token.text[:token.text.index("'")] + changed
        else:
            if self._is_buffer_size(index, token):
                return
            changed = next_number(token.text)
        if changed is not None:
            yield "constant", token.start, token.end, changed

    def _is_buffer_size(self, index, token):
        value = integer_of(token.text)
        if value is None or value < 256 or value & (value - 1):
            return False
        first = self._statement_start(index)
        return bool(SPEAKS_OF_A_BUFFER.search(self.text[self.tokens[first].start:token.start]))

    def _statement_start(self, index):
        while index > 0 and self._text(index - 1) not in (";", "{", "}"):
            index -= 1
        return index

    def _condition(self, index, token):
        if token.text not in ("if", "while") or index + 1 not in self.partners:
            return
        first, last = index + 2, self.partners[index + 1]
        depth = 0
        for at in range(first, last):
            text = self._text(at)
            depth += text in "([{"
            depth -= text in ")]}"
            if depth == 0 and text == ";":
                first = at + 1
        depth = 0
        for at in range(first, last):
            text = self._text(at)
            depth += text in "([{"
            depth -= text in ")]}"
            if depth == 0 and text == "=":
                return
        if first >= last or self._text(first) in ("true", "false"):
            return
        start, end = self.tokens[first].start, self.tokens[last].start
        yield "condition", start, end, f"!({self.text[start:end]})"

    def _return(self, index, token):
        if token.text != "return":
            return
        last, depth = index + 1, 0
        while last < len(self.tokens) and (depth or self._text(last) != ";"):
            depth += self._text(last) in ("(", "[", "{")
            depth -= self._text(last) in (")", "]", "}")
            last += 1
        inside = self.tokens[index + 1:last]
        if last >= len(self.tokens) or not inside:
            return
        text = self.text[inside[0].start:inside[-1].end]
        if text in ("{}", "true", "false") or len(inside) == 1 and inside[0].kind == "number":
            return  # the same, or a constant's own change
        truth = inside[0].text == "!" or any(
            part.kind == "operator" and part.spaced and part.text in {**COMPARISON, **JOIN}
            for part in inside) and "?" not in text and not text.startswith("[")
        yield "return", inside[0].start, inside[-1].end, f"!({text})" if truth else "{}"

    def _operator(self, index, token):
        if self._text(index - 1) == "operator":
            return
        beside = [self.tokens[at].kind for at in (index - 1, index + 1)
                  if 0 <= at < len(self.tokens)]
        if token.text in COMPARISON and token.spaced:
            yield "comparison", token.start, token.end, COMPARISON[token.text]
        elif token.text in JOIN and token.spaced:
            yield "condition", token.start, token.end, JOIN[token.text]
        elif token.text == "!" and not token.spaced:
            yield "condition", token.start, token.end, ""
        elif token.text in ARITHMETIC and token.spaced and not {"string", "raw"} & set(beside):
            yield "arithmetic", token.start, token.end, ARITHMETIC[token.text]
        elif token.text in STEP:
            yield "arithmetic", token.start, token.end, STEP[token.text]

    def _call(self, index):
        """A statement that begins here and is nothing but a call, perhaps of a call's result."""
        if self._text(index - 1) not in (";", "{", "}", ")", "else", ":"):
            return
        if self._text(index - 1) == ")" and not self._ends_a_header(index - 1):
            return
        at, called, names = index, False, []
        while at < len(self.tokens):
            token = self.tokens[at]
            if token.kind == "word":
                if token.text in KEYWORDS or at > index and self.tokens[at - 1].kind == "word":
                    return
                names.append(token.text)
                at += 1
            elif token.text in ("::", ".", "->"):
                called = False
                at += 1
            elif token.text == "(" and names and at in self.partners:
                called = True
                at = self.partners[at] + 1
            else:
                break
        if not called or self._text(at) != ";" or SILENT & set(names):
            return
        if any(WRITES_LOG.search(name) for name in names):
            return
        yield "call", self.tokens[index].start, self.tokens[at].end, "{}"

    def _ends_a_header(self, closing):
        for opening, end in self.partners.items():
            if end == closing:
                return self._text(opening - 1) in ("if", "for", "while")
        return False


def integer_of(text):
    """The value of an integer literal, or None."""
    digits = re.sub(r"(?i)[uzl]+$", "", text.replace("'", ""))
    try:
        if re.fullmatch(r"0[0-7]+", digits):
            return int(digits, 8)
        return int(digits, 0)
    except ValueError:
        return None


def next_number(text):
    """The literal one above, in the same notation; None if it is no plain literal."""
    value = integer_of(text)
    suffix = re.search(r"(?i)[uzl]*$", text).group()
    if value is not None:
        if text.lower().startswith("0x"):
            return f"0x{value + 1:X}{suffix}"
        if re.match(r"0[0-7]", text):
            return f"0{value + 1:o}{suffix}"
        return f"{value + 1}{suffix}"
    match = re.fullmatch(r"(\d+)(\.\d*(?:[eE][-+]?\d+)?)([fFlL]?)", text)
    return f"{int(match[1]) + 1}{match[2]}{match[3]}" if match else None


def draw(sources, seed):
    """Mutants of all the sources in a random order: each line that can be changed has the same
    chance, whatever number of changes it allows. The change of a line depends on the seed and its place
    alone, so that one line can be tried again."""
    lines = collections.defaultdict(list)
    for source in sources:
        for mutant in source.mutants():
            lines[mutant.file, mutant.line].append(mutant)
    order = sorted(lines)
    random.Random(seed).shuffle(order)
    for place in order:
        yield random.Random(f"{seed}:{place}").choice(lines[place])
