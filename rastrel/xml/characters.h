#pragma once

#include <cstddef>
#include <string_view>

namespace rastrel::xml {

/// What the first bytes of a document say of its encoding, by a mark or by the shape of "<?".
enum class XmlEncodingFamily { Unknown, Utf8, Utf16 };

/// The family by the first bytes, of which four are enough.
[[nodiscard]] XmlEncodingFamily EncodingFamilyOf(std::string_view head);

/// Whether an encoding may be declared by this name. Converters know the Unicode encodings by more
/// spellings than are registered, with other stops or none, and some of these convert a character
/// wrongly that lies in two pieces.
[[nodiscard]] bool IsEncodingName(std::string_view declared);

/// Whether a document of the family may declare this encoding. Any may, if nothing is known.
[[nodiscard]] bool IsEncodingOf(XmlEncodingFamily family, std::string_view declared);

/// Whether the bytes are UTF-8 in its one strict form (RFC 3629).
[[nodiscard]] bool IsUtf8(std::string_view bytes);

/// Whether bytes without control characters are characters that XML 1.0 allows: strict UTF-8
/// without the two last of the first plane, which are none.
[[nodiscard]] bool AreXmlCharacters(std::string_view bytes);

/// How many characters UTF-8 has.
[[nodiscard]] std::size_t CharactersIn(std::string_view bytes);

}  // namespace rastrel::xml
