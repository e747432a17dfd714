#pragma once

#include <string>
#include <string_view>

namespace rastrel::os {

/// Decodes text in a code page by its number: 65001 UTF-8, 1200 UTF-16 with the low byte first, the
/// single and double byte pages of the Windows and DOS families (874, 932, 936, 949, 950, 1250 to
/// 1258, 437, 850, 852, 866), and ISO 8859 (28591 to 28605). A number that is none of these counts
/// as 1252.
///
/// Nothing is refused: a byte that the page lacks becomes the character of the same value, and an
/// ill-formed sequence of UTF-8 or UTF-16 becomes U+FFFD. A byte order mark is kept: in UTF-8 and
/// UTF-16 it is U+FEFF, in a single byte page as many characters as it has bytes.
[[nodiscard]] std::wstring WideFromCodePage(int codePage, std::string_view bytes);

}  // namespace rastrel::os
