#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Foreign text on its way to a person: on a terminal, in a message or in a line of a log. Names
/// and texts come from jobs, documents and file systems; written as they are they could move the
/// cursor, change the terminal's settings, or look like messages of the program itself.
///
/// Unsafe characters are those of C0 and C1 and DEL, the separators of lines and paragraphs
/// (U+2028, U+2029), the marks, embeddings, overrides and isolates of direction, and characters
/// that take no room (U+00AD, U+200B, U+2060 to U+2064, U+FEFF, tags and the like). U+200C and
/// U+200D are not: Persian, Indic scripts and emoji are spelt with them.
///
/// An unsafe character becomes its number: `\x1b` below U+0080, then `\u202e`, and `\U000e0041`
/// above U+FFFF. An ill-formed sequence of UTF-8 becomes U+FFFD. A backslash of the text stays one,
/// so the result is for reading and not for decoding. Cleaned text stays as it is when cleaned
/// again.
namespace rastrel::os {

/// Whether a code point may be shown as it is.
[[nodiscard]] bool IsSafeToShow(char32_t character);

/// The text on one line: line ends and tabs become their numbers as well.
[[nodiscard]] std::string CleanLine(std::string_view text);

/// The text with its tabs and line ends (LF, or CR and LF), and without a byte order mark at its
/// start. For data that a person asked to see, and for text whose lines are the program's own and
/// hold cleaned text.
[[nodiscard]] std::string CleanLines(std::string_view text);

/// Length of the text without a character of UTF-8 that it ends inside of, or a CR at its end, so
/// that a long text can be cleaned in pieces. At most 3 less than its size.
[[nodiscard]] std::size_t WholeCharacters(std::string_view text);

}  // namespace rastrel::os
