#pragma once

#include <string>

namespace rastrel::conversion {

/// A name for a temporary file in the RIP directory that nothing has yet: "vk" and six characters,
/// with `suffix` behind it (which is not looked at). False, with `out` as it was, if there is none,
/// or if the RIP directory's path leaves no room for one in 260 characters. Callers lower the case
/// of the whole path before they use it.
[[nodiscard]] bool MakeRipTempName(std::wstring& out, const wchar_t* suffix);

}  // namespace rastrel::conversion
