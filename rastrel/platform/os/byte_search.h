#pragma once

#include <cstddef>
#include <span>

/// Searches through large text in memory, as fast as memory delivers it. Each has a form for the
/// processor's widest registers, chosen once at run time; all forms return the same results.
/// No search reads a byte outside of [begin, end).
namespace rastrel::os {

/// True for the bytes that end a line of text: CR, LF, and zero.
[[nodiscard]] constexpr bool IsLineEnd(char byte) {
  return byte == '\n' || byte == '\r' || byte == '\0';
}

/// One set of the searches.
struct ByteSearch {
  const char* name;  ///< the instruction set: "portable", "sse2", "avx2"

  /// The first line end (IsLineEnd), or `end`.
  const char* (*lineEnd)(const char* begin, const char* end);

  /// The last line end, or `end`.
  const char* (*lastLineEnd)(const char* begin, const char* end);

  /// The first byte that is not `byte`, or `end`.
  const char* (*unlike)(const char* begin, const char* end, char byte);

  /// The first `lead` that has `first` or `second` right after it, both inside; or `end`.
  const char* (*pair)(const char* begin, const char* end, char lead, char first, char second);

  /// Passes over lines that begin with one `mark`, in text whose first line does. Returns a place
  /// in [begin, end] such that no byte before it is one where
  /// - a line end is not followed by `mark`, CR or LF,
  /// - a line end is followed by two of CR or LF, or
  /// - two marks are followed by one of `letters`.
  /// A place where one of these holds is returned; so is one where about PlainStretch bytes follow
  /// without a line end; else one within 2 bytes of `end`, or `end`.
  const char* (*unlikeMarkedLines)(const char* begin, const char* end, char mark,
                                   const bool (&letters)[256]);
};

/// See ByteSearch::unlikeMarkedLines: text that was skipped has a line end at least every
/// 2 * PlainStretch bytes.
inline constexpr std::ptrdiff_t PlainStretch = 2040;

/// The fastest set that this processor can run.
[[nodiscard]] const ByteSearch& Search();

/// All sets that this processor can run, the portable one first. For tests.
[[nodiscard]] std::span<const ByteSearch> AllSearches();

}  // namespace rastrel::os
