#pragma once

#include <optional>
#include <string>
#include <string_view>

/// The text of a settings file: sections in brackets, `key = value` lines, and comment lines that
/// begin with ';' or '#'. UTF-8 throughout; names are compared without regard to ASCII case, and
/// whitespace around names and values does not count. Of several lines with one name the first
/// counts.
namespace rastrel::standalone {

/// The value under section and key, or nothing.
[[nodiscard]] std::optional<std::string> FindIniValue(std::string_view text,
                                                      std::string_view section,
                                                      std::string_view key);

/// The text with the value stored, every other line as it was. Nothing if the value would not be
/// found again as it is: names and values with line ends, whitespace around them, and the like.
[[nodiscard]] std::optional<std::string> WithIniValue(std::string_view text,
                                                      std::string_view section,
                                                      std::string_view key, std::string_view value);

}  // namespace rastrel::standalone
