#pragma once

#include <string_view>

namespace rastrel::imports {

/// Whether the bytes are UTF-8 in its one strict form (RFC 3629).
[[nodiscard]] bool IsUtf8(std::string_view bytes);

/// Whether bytes without control characters are characters that XML 1.0 allows: strict UTF-8
/// without the two last of the first plane, which are none.
[[nodiscard]] bool AreXmlCharacters(std::string_view bytes);

}  // namespace rastrel::imports
