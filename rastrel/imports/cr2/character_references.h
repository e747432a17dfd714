#pragma once

#include <string>
#include <string_view>

/// Character references in the texts of templates, which are written twice: the XML reader has
/// replaced one layer, and texts hold another.
namespace rastrel::imports {

/// How a generation of templates replaces references.
enum class ReferenceKind {
  Cr2,  ///< each by its character
  Zml,  ///< by way of code page 1252, see ReplaceCharacterReferences
};

/// A text after the replacement.
struct ReplacedText {
  std::wstring text;
  bool unicodeLost = false;  ///< zml: code page 1252 lacks one of the characters
};

/// Replaces the references of a text, each by one 16-bit character, from the start:
///
///     &name;     CharacterNamed; an unknown name, or one of more than 9 characters, stays
///     &#xHH;     hexadecimal, of 2 or of 4 digits; a character that is no digit counts as 0
///     &#xHHHH;
///     &#digits;  decimal, up to 9 characters to the ";", read up to the first that is no digit;
///                a longer one stays
///
/// The search goes on after the replaced reference, and after the "&" of one that stays. Any other
/// text after "&#", another count of hexadecimal digits, and a decimal value below 32 end the
/// replacement of the whole text. A character of value 0 ends the text there.
///
/// Zml: the character of a name is stored as its byte in code page 1252, sign-extended to 16 bits
/// ("?" if the page lacks it). A decimal value above 255 is stored as the last decimal value up to
/// 255 of the same text, and as itself if there was none.
[[nodiscard]] ReplacedText ReplaceCharacterReferences(std::wstring_view text, ReferenceKind kind);

/// The text with pairs of 16-bit surrogates joined to their character, and U+FFFD in the place of
/// every surrogate that is alone.
[[nodiscard]] std::wstring WithJoinedSurrogates(std::wstring_view text);

}  // namespace rastrel::imports
