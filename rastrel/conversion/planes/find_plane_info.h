#pragma once

#include <string>

namespace rastrel::conversion {

/// The path of the ".info" file of a page directory that the queue program made, given by its
/// library path, with or without a closing separator. The file directly in the directory wins;
/// without one its subdirectories are searched, each before those below it, in the file system's
/// order, and the first file found is the result. Links below the directory are not followed, nor
/// are more levels than os::TreeDepthLimit. Empty if there is none, or no such directory.
[[nodiscard]] std::wstring FindPlaneInfo(const std::wstring& cfmPath);

}  // namespace rastrel::conversion
