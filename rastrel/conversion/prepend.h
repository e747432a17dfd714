#pragma once

#include <string>

namespace rastrel::conversion {

/// Puts a text, in Windows-1252, in front of a file. It writes a new file beside it, "vktmp" and
/// six characters, and renames that. True if the file has both. False otherwise:
/// - no free name, an unwritable directory, or an unreadable file: the file is unchanged, and there
///   is no other;
/// - a read or a write failed: the file is unchanged, and the incomplete new one stays;
/// - the old file could not be deleted: it is unchanged, and the new one stays;
/// - the new file could not be renamed: the old one is gone, and the new one stays, complete.
/// Costs a copy of the file and 512 KiB of memory.
[[nodiscard]] bool PrependToFile(const wchar_t* file, const std::wstring& text);

}  // namespace rastrel::conversion
