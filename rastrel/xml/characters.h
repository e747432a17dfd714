#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace rastrel::xml {

/// The kind of encoding that the first bytes of a document show, by a byte-order mark or by the
/// form of "<".
enum class XmlEncodingFamily { Unknown, Utf8, Utf16 };

/// The family by the first bytes, of which four are enough.
[[nodiscard]] XmlEncodingFamily EncodingFamilyOf(std::string_view head);

/// Whether an encoding may be declared by this name. Converters know the Unicode encodings by more
/// spellings than are registered, with other punctuation or none, and some of these convert a
/// character wrongly that lies in two pieces.
[[nodiscard]] bool IsEncodingName(std::string_view declared);

/// Whether a document of the family may declare this encoding. Always true for Unknown.
[[nodiscard]] bool IsEncodingOf(XmlEncodingFamily family, std::string_view declared);

/// Whether the bytes are UTF-8 in its one strict form (RFC 3629).
[[nodiscard]] bool IsUtf8(std::string_view bytes);

/// The place of the first byte that begins no character of strict UTF-8; the size if there is none.
[[nodiscard]] std::size_t FirstIllFormed(std::string_view bytes);

/// Why a document with such a byte is refused: "the byte 0xE9 begins no character of US-ASCII".
[[nodiscard]] std::string BadCharacter(unsigned char byte, std::string_view encoding);

/// Whether bytes without control characters are characters that XML 1.0 allows: strict UTF-8
/// without U+FFFE and U+FFFF.
[[nodiscard]] bool AreXmlCharacters(std::string_view bytes);

/// The number of characters in UTF-8 bytes.
[[nodiscard]] std::size_t CharactersIn(std::string_view bytes);

}  // namespace rastrel::xml
