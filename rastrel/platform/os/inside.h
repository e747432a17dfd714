#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Folders from an untrusted source, whose entries may be links to other places.
namespace rastrel::os {

/// The native path of the first thing on the way from `folder` to `folder` + `rest` that is no
/// plain part of the folder: a symbolic link, or something that is neither a directory nor a
/// regular file. Nothing if there is none, also if the way ends early. The folder itself, and how
/// it is reached, is not looked at. REQUIRES: `rest` begins with a separator and has no "..".
[[nodiscard]] std::optional<std::string> ForeignBelow(std::wstring_view folder,
                                                      std::wstring_view rest);

}  // namespace rastrel::os
