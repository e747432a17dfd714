#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Base 64 as RFC 4648, chapter 4, with padding and without line ends.
namespace rastrel::os {

/// The text of these bytes.
[[nodiscard]] std::string Base64FromBytes(std::string_view bytes);
/// The bytes of such a text; nothing if Base64FromBytes does not produce it for any bytes.
[[nodiscard]] std::optional<std::string> BytesFromBase64(std::string_view text);

}  // namespace rastrel::os
