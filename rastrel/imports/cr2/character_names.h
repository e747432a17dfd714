#pragma once

#include <optional>
#include <string_view>

namespace rastrel::imports {

/// The character of a named character reference, by its name without "&" and ";" and by case: the
/// 252 names of HTML 4, and apos. omicron is the character 59, a semicolon, as templates have
/// always been engraved. Nothing for any other name.
[[nodiscard]] std::optional<wchar_t> CharacterNamed(std::wstring_view name);

}  // namespace rastrel::imports
