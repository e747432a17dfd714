#pragma once

#include <string>

#include "rastrel/export.h"

/// Longest text, terminator included, that the library hands to TString.
inline constexpr int TStringLimit = 513;

/// The host's translation of a text that carries the mark "(*v*)" into the user's language, mark
/// removed. Writes at most `size` wide characters with the terminator, or nothing at all if it has
/// no translation. Any thread may call.
RASTREL_API void TString(const wchar_t* source, wchar_t* destination, int size);

namespace rastrel::host {

/// The same as text: the translation, or the text as it stands where the host has none or it is too
/// long for one.
[[nodiscard]] std::wstring TranslatedText(const std::wstring& text);

}  // namespace rastrel::host
