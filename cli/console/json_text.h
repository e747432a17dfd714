#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace rastrel::cli {

/// A value as JSON on one line, in UTF-8 and without a line end. Characters that a terminal must
/// not get (os::IsSafeToShow) are written as `\u` and four digits, so that a line of JSON can be
/// looked at, and means the same text. Ill-formed bytes, surrogates among them, become U+FFFD.
[[nodiscard]] std::string JsonText(const nlohmann::ordered_json& value);

}  // namespace rastrel::cli
