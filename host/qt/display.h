#pragma once

#include <optional>
#include <string>

namespace rastrel::qt {

/// Why no window can be shown, in words; nothing if one can. The toolkit ends the process where it
/// finds no display, so it is asked only if this finds one.
[[nodiscard]] std::optional<std::string> WhyNoWindow();

}  // namespace rastrel::qt
