#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Base 64 as RFC 4648, chapter 4, with padding and without line ends.
namespace rastrel::os {

[[nodiscard]] std::string Base64FromBytes(std::string_view bytes);
/// Nothing for text that is not what Base64FromBytes gives.
[[nodiscard]] std::optional<std::string> BytesFromBase64(std::string_view text);

}  // namespace rastrel::os
