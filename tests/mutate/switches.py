"""Puts many changes into the sources at once, each with a switch, so that one build serves them all.

The expression around a change stands twice then, as it is and as changed; which one is computed is asked at
run time, of the number in the environment's RASTREL_CHANGE, or in the file `change/number` of the copy for a
program that gets no environment. Where the compiler wants a constant, the switch is off. So a change that
is noticed with its switch is noticed; one that is not has to be tried by itself. `form` counts the ways to
write a change down, the best first; there is none for some, which have to be tried by themselves as well.
"""

import bisect
import collections
import pathlib

VARIABLE = "RASTREL_CHANGE"
FORMS = 2  # ways that `edit` tries

HEADER = """#ifndef RASTREL_CHANGE_SWITCH
#define RASTREL_CHANGE_SWITCH
@IGNORED@
#include <stdlib.h>
#include <fcntl.h>
#include <unistd.h>
namespace rastrel_change {
inline int Read() noexcept {
  if (const char* const text = getenv("RASTREL_CHANGE")) return atoi(text);
  char text[16] = {};
  const int file = open("@NUMBER@", O_RDONLY | O_CLOEXEC);
  if (file < 0) return 0;
  const auto count = read(file, text, sizeof text - 1);
  close(file);
  return count > 0 ? atoi(text) : 0;
}
inline const int Number = Read();
constexpr bool Is(int number) { return !__builtin_is_constant_evaluated() && Number == number; }
// For the value of a variable, which is no constant of the compiler's with it.
inline bool IsNow(int number) { return Number == number; }
}  // namespace rastrel_change
#endif
"""

# What a change may well do, and an ordinary source may not.
IGNORED = ("array-bounds", "bool-compare", "bool-operation", "conversion", "dangling-else", "empty-body",
           "float-conversion", "int-in-bool-context", "logical-op", "maybe-uninitialized", "nonnull", "parentheses",
           "sign-compare", "sign-conversion", "stringop-overflow", "stringop-overread", "tautological-compare",
           "type-limits", "uninitialized", "unused-but-set-variable", "unused-function", "unused-result",
           "unused-value", "unused-variable")

CONTROLS = {"if", "while", "for", "switch"}
SCOPES = {"class", "struct", "union", "namespace", "extern"}

# Of a text, the part from `start` to `end` becomes `replacement`.
Edit = collections.namedtuple("Edit", "start end replacement")


class Places:
    """Finds statements and arguments around a place of a source."""

    def __init__(self, source):
        self.source = source
        self.tokens = source.tokens
        self.openings = {end: start for start, end in source.partners.items()}
        self.starts = [token.start for token in self.tokens]

    def text(self, index):
        return self.tokens[index].text if 0 <= index < len(self.tokens) else ""

    def index_at(self, offset):
        return bisect.bisect_left(self.starts, offset)

    def opening_around(self, index):
        """The index of the innermost open bracket around a token, -1 at the top."""
        at = index - 1
        while at >= 0:
            if at in self.openings:
                at = self.openings[at] - 1
                continue
            if self.text(at) in ("(", "[", "{") and self.source.partners.get(at, -1) >= index:
                return at
            at -= 1
        return -1

    def begin_before(self, index):
        """The index of the first token of what ends before a bracket."""
        at = index - 1
        while at >= 0 and self.text(at) not in (";", "{", "}"):
            at = self.openings[at] - 1 if at in self.openings else at - 1
        return at + 1

    def is_scope(self, brace):
        """Whether the braces hold a class's or a namespace's members."""
        if brace < 0:
            return True
        words = [self.text(at) for at in range(self.begin_before(brace), brace)]
        return bool(SCOPES & set(words)) and "(" not in words

    def is_block(self, brace):
        """Whether the braces hold statements or members, and no values."""
        before = self.text(brace - 1)
        if before in (")", ";", "{", "}", "else", "do", "try", "const", "override", "noexcept", "mutable", ":"):
            return True
        if before == "]" and self.text(self.openings.get(brace - 1, 0) - 1) in (
                "(", ",", "=", "{", "return", "?", ":"):
            return True  # a lambda without parameters
        words = [self.text(at) for at in range(self.begin_before(brace), brace)]
        if "enum" in words or "requires" in words:
            return False
        if "->" in words and ")" in words[:words.index("->")]:
            return "=" not in words[words.index("->"):]
        return self.is_scope(brace)

    def statement_around(self, index):
        """(first, last, block): the statement of a block that holds a token, with the block's brace."""
        at = index
        while True:
            opening = self.opening_around(at)
            if opening < 0 or self.text(opening) == "{" and self.is_block(opening):
                break
            at = opening
        first = at
        while first - 1 > opening and self.text(first - 1) not in (";",):
            if first - 1 in self.openings:
                if self.text(first - 1) == "}" and self.is_block(self.openings[first - 1]):
                    break
                first = self.openings[first - 1]
            else:
                first -= 1
        last = index
        while last < len(self.tokens) and self.text(last) != ";":
            last = self.source.partners[last] + 1 if last in self.source.partners and last != index else last + 1
            if self.text(last) == "}" and last not in self.source.partners and self.openings.get(last, -1) <= opening:
                break
        return first, last, opening

    def argument_around(self, index):
        """(first, last): what stands between the commas of the innermost brackets around a token, or None where it
        can't be an expression."""
        opening = self.opening_around(index)
        if opening < 0 or self.text(opening) == "{" and self.is_block(opening):
            return None
        if self.text(opening - 1) in CONTROLS | {"constexpr", "catch"}:
            return None
        first = last = index
        while first - 1 > opening and self.text(first - 1) not in (",", ";"):
            first = self.openings.get(first - 1, first - 1)
        end = self.source.partners[opening]
        while last + 1 < end and self.text(last + 1) not in (",", ";"):
            last = self.source.partners.get(last + 1, last + 1)
        return first, last


class Switch:
    """One change with its switch."""

    def __init__(self, places, mutant, number):
        self.places = places
        self.mutant = mutant
        self.on = f"::rastrel_change::Is({number})"
        self.on_now = f"::rastrel_change::IsNow({number})"
        self.first = places.index_at(mutant.start)
        self.last = max(self.first, places.index_at(mutant.end) - 1)

    def edit(self, form):
        if any(token.kind == "directive" for token in self.places.tokens[self.first:self.last + 1]):
            return None
        return self._statement() if form == 0 else self._argument()

    def _joined(self, first, last):
        return " ".join(self.places.text(at) for at in range(first, last + 1))

    def _changed(self, first, last):
        if not first <= self.first <= self.last <= last:
            return None
        return " ".join(part for part in (self._joined(first, self.first - 1), self.mutant.replacement,
                                          self._joined(self.last + 1, last)) if part)

    def _made(self, first, last, text):
        tokens = self.places.tokens
        return Edit(tokens[first].start, tokens[last].end, text)

    def _either(self, first, last, shape="({on} ? ({changed}) : ({same}))", on=None):
        changed = self._changed(first, last)
        if changed is None or first > last or self.places.text(first) == "{":
            return None
        return self._made(first, last, shape.format(on=on or self.on, changed=changed,
                                                    same=self._joined(first, last)))

    def _argument(self, on=None):
        found = self.places.argument_around(self.first)
        return self._either(*found, on=on) if found else None

    def _statement(self):
        first, last, block = self.places.statement_around(self.first)
        text, partners = self.places.text, self.places.source.partners
        while True:
            word = text(first)
            if word in CONTROLS:
                opening = first + 2 if text(first + 1) == "constexpr" else first + 1
                if opening not in partners:
                    return None
                if opening < self.first < partners[opening]:
                    return None if text(first + 1) == "constexpr" else self._condition(word, opening)
                first = partners[opening] + 1
            elif word in ("else", "do") or text(first + 1) == ":" and text(first + 2) != ":":
                first += 1 if word in ("else", "do") else 2
            elif word == "case":
                while text(first) != ":":
                    first += 1
                first += 1
            else:
                break
        if first > self.first or text(last) != ";":
            return self._argument()
        return self._simple(first, last, block)

    def _condition(self, word, opening):
        parts = [[opening + 1, None]]
        at, end = opening + 1, self.places.source.partners[opening]
        while at < end:
            if self.places.text(at) == ";":
                parts[-1][1] = at - 1
                parts.append([at + 1, None])
            at = self.places.source.partners.get(at, at) + 1
        parts[-1][1] = end - 1
        place = next((n for n, (first, last) in enumerate(parts) if first <= self.first <= last), None)
        if place is None or word == "for" and len(parts) != 3:
            return self._argument()
        condition = 1 if word == "for" else len(parts) - 1
        first, last = parts[place]
        if place == condition and word == "switch":
            return self._either(first, last)
        if place == condition and not self._assigned(first, last):
            return self._either(first, last, "{on} ? static_cast<bool>({changed}) : static_cast<bool>({same})")
        if place == 2:
            return self._either(first, last, "{on} ? static_cast<void>({changed}) : static_cast<void>({same})")
        sign = self._assigned(first, last)
        return self._either(sign + 1, last) if sign else self._argument()

    def _assigned(self, first, last):
        """The index of the first `=` outside of brackets, 0 if there is none."""
        at = first
        while at <= last:
            if self.places.text(at) == "=":
                return at
            at = self.places.source.partners.get(at, at) + 1
        return 0

    def _declares(self, first, last):
        """Whether the tokens, up to a value or brackets, are a type and a name."""
        words = [self.places.tokens[at] for at in range(first, last + 1)]
        before = None
        for token in words:
            if token.text in ("const", "auto", "static", "constexpr"):
                return True
            if token.kind == "word" and before is not None and (
                    before.kind == "word" or before.text == ">" or
                    before.text in ("*", "&") and before is not words[0]):
                return True
            if token.text in ("(", "{", "["):
                return False
            before = token
        return False

    def _simple(self, first, last, block):
        text = self.places.text
        if text(first) == "return":
            changed = self._changed(first, last)
            return changed and self._made(
                first, last, f"{{ if ({self.on}) {{ {changed} }} {self._joined(first, last)} }}")
        if text(first) in ("using", "static_assert", "template", "typedef", "friend"):
            return None
        sign = self._assigned(first, last)
        in_scope = self.places.is_scope(block)
        if self._declares(first, sign - 1 if sign else last) or in_scope:
            return self._declaration(first, last, sign, in_scope, block)
        changed = self._changed(first, last)
        return changed and self._made(
            first, last, f"{{ if ({self.on}) {{ {changed} }} else {{ {self._joined(first, last)} }} }}")

    def _declaration(self, first, last, sign, in_scope, block):
        text = self.places.text
        if sign and sign < self.first and text(sign + 1) != "{":
            edit = self._either(sign + 1, last - 1, on=self.on_now)
        else:
            edit = self._argument(self.on_now)
        words = [text(at) for at in range(first, sign or self.first)]
        if edit is None or "constexpr" not in words:
            return edit
        # A constant of the compiler's becomes one that is computed at the start.
        place = first + words.index("constexpr")
        word = "const"
        if in_scope and block >= 0 and "namespace" not in [
                text(at) for at in range(self.places.begin_before(block), block)] and "inline" not in words:
            word = "inline const"
        between = self.places.source.text[self.places.tokens[place].end:edit.start]
        return Edit(self.places.tokens[place].start, edit.end, word + between + edit.replacement)


def put_in(sources, numbered, forms):
    """(texts, put): the new texts by file, and those numbers that are in them with the lines that they take.
    `numbered`: mutants by number; `forms`: the form by number, FORMS for none."""
    texts, put = {}, {}
    by_file = collections.defaultdict(list)
    for number, mutant in numbered.items():
        by_file[mutant.file].append(number)
    for file, numbers in by_file.items():
        places = Places(sources[file])
        edits = []
        for number in numbers:
            edit = None
            while forms[number] < FORMS and edit is None:
                edit = Switch(places, numbered[number], number).edit(forms[number])
                if edit is None or any(edit.start < other.end and other.start < edit.end for other, _ in edits):
                    edit = None
                    forms[number] += 1
            if edit:
                edits.append((edit, number))
        text = sources[file].text
        for edit, number in edits:
            lines = text.count("\n", 0, edit.start) + 1, text.count("\n", 0, edit.end) + 1
            put[number] = (file, *lines)
        for edit, _ in sorted(edits, reverse=True):
            missing = "\n" * (text.count("\n", edit.start, edit.end) - edit.replacement.count("\n"))
            text = text[:edit.start] + edit.replacement + missing + text[edit.end:]
        if edits:
            texts[file] = text
    return texts, put


def with_header(text, header, path):
    """The text of a source that can use switches, its lines told as before."""
    return f'#include "{header}"\n#line 1 "{path}"\n{text}'


def write_header(copy):
    """Writes what the sources include; returns its path."""
    folder = pathlib.Path(copy) / "change"
    folder.mkdir(exist_ok=True)
    header = folder / "switch.h"
    ignored = "\n".join(f'#pragma GCC diagnostic ignored "-W{name}"' for name in IGNORED)
    text = HEADER.replace("@NUMBER@", str(folder / "number")).replace("@IGNORED@", ignored)
    if not header.exists() or header.read_text(encoding="utf-8") != text:
        header.write_text(text, encoding="utf-8")
    return header
