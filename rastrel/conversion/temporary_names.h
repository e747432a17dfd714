#pragma once

#include <string>

namespace rastrel::conversion {

/// A free name for a temporary file in the RIP directory: "vk", six characters, and `suffix`, which
/// is not checked. False, with `out` as it was, if there is none, or if the path
/// without the suffix, with its terminator, is longer than 260 characters. Callers lower the case
/// of the whole path before they use it.
[[nodiscard]] bool MakeRipTempName(std::wstring& out, const wchar_t* suffix);

}  // namespace rastrel::conversion
