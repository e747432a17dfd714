#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Every conversion between the encodings that the library meets. Wide text is `wchar_t`, one
/// Unicode code point each (32 bits here). No conversion throws on bad input: each ill-formed
/// sequence becomes U+FFFD, by the "maximal subpart" practice of the Unicode Standard, chapter 3.9.
namespace rastrel::os {

/// Decodes UTF-8 (RFC 3629). Overlong forms, surrogates and values above U+10FFFF are ill-formed.
[[nodiscard]] std::wstring WideFromUtf8(std::string_view bytes);
/// The same, appended to `target`.
void AppendWideFromUtf8(std::wstring& target, std::string_view bytes);

/// Encodes as UTF-8. A surrogate or a value above U+10FFFF becomes U+FFFD.
[[nodiscard]] std::string Utf8FromWide(std::wstring_view text);
/// The same, appended to `target`.
void AppendUtf8FromWide(std::string& target, std::wstring_view text);

/// UTF-16 code units of wide text; characters beyond the first plane become surrogate pairs.
/// A lone surrogate is kept as it is, so that text from an archive survives a round trip.
[[nodiscard]] std::vector<std::uint16_t> Utf16FromWide(std::wstring_view text);
/// Wide text of UTF-16 code units. Pairs join; a lone surrogate is kept as it is.
[[nodiscard]] std::wstring WideFromUtf16(const std::vector<std::uint16_t>& units);

/// Decodes the ANSI code page, Windows-1252. Its five undefined bytes map to the same code points.
[[nodiscard]] std::wstring WideFromAnsi(std::string_view bytes);
/// UTF-8 of a text whose encoding nothing says, as a name or a title in PostScript or PDF: bytes
/// that are UTF-8 stay, all others count as Windows-1252. The one rule for such texts.
[[nodiscard]] std::string Utf8FromUtf8OrAnsi(std::string_view bytes);
/// Encodes in Windows-1252; a character that it lacks becomes '?'.
[[nodiscard]] std::string AnsiFromWide(std::wstring_view text);

/// The text with the 26 ASCII letters in lower case, independent of the locale.
[[nodiscard]] std::wstring LowerAscii(std::wstring_view text);

}  // namespace rastrel::os
