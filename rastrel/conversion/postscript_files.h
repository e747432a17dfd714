#pragma once

#include <string>

class CGenericEPS;

namespace rastrel::conversion {

/// Whether temporary PostScript files and page directories stay after a conversion: the setting
/// "Keep PS Files" of section "RASTREL".
[[nodiscard]] bool KeepsPostScriptFiles();

/// Lets a placed EPS object write its PostScript into a new file, which is this user's alone. False
/// if the file can't be made or written, or if the object fails; the file stays as it is then.
[[nodiscard]] bool WriteAsPostScript(CGenericEPS& object, const std::wstring& path);

}  // namespace rastrel::conversion
