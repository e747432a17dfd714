#pragma once

#include "rastrel/platform/mfc/string.h"

struct CCFMFileEntry;

namespace rastrel::cfm {

/// The directory with a page's data, a library path: FileName below Directory, where the directory
/// "default" means the RIP's output directory.
[[nodiscard]] CString PageDirectory(const CCFMFileEntry& entry);

}  // namespace rastrel::cfm
