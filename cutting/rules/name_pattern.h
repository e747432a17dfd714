#pragma once

#include <string_view>

namespace rastrel::cutting {

/// Whether a name fits a pattern, in which `*` stands for any bytes and for none; there is no other
/// special character and no escape. A to Z equal a to z; other characters equal themselves. The
/// time grows with the two lengths' sum, whatever they hold.
[[nodiscard]] bool FitsPattern(std::string_view name, std::string_view pattern);

}  // namespace rastrel::cutting
