#pragma once

/// Texts in the user's language.

#include <string>

#include "rastrel/export.h"

/// The maximum length of a text that the library passes to TString, with its terminator.
inline constexpr int TStringLimit = 513;

/// Translates a text that carries the mark "(*v*)" into the user's language, without the mark.
/// `destination` holds `size` wide characters. If the host has no translation, or it does not fit
/// with its terminator, nothing is written: a caller that wants the text as it is puts it there
/// before. Nothing happens either for a null pointer or a size that is not above 0. The two texts
/// may be the same memory. Any thread may call.
RASTREL_API void TString(const wchar_t* source, wchar_t* destination, int size);

namespace rastrel::host {

/// The translation of a text; the text as it is if the host has none, or if the text or its
/// translation is as long as TStringLimit or longer. Any thread may call.
[[nodiscard]] std::wstring TranslatedText(const std::wstring& text);

}  // namespace rastrel::host
