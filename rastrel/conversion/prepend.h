#pragma once

#include <string>

namespace rastrel::conversion {

/// Puts a text, in Windows-1252, in front of a file by way of a new file beside it, "vktmp" and six
/// characters. True if the file has both. False otherwise:
/// - no name to be had, the directory can't be written, or the file can't be read: the file is as
///   it was and nothing else is there;
/// - a read or a write failed: the file is as it was, and what there is of the new one stays;
/// - the old file could not be deleted: it is as it was, and the new one stays;
/// - the new file could not be given the name: the old one is gone, the new one stays, whole.
/// Costs a copy of the file and 512 KiB of memory.
[[nodiscard]] bool PrependToFile(const wchar_t* file, const std::wstring& text);

}  // namespace rastrel::conversion
