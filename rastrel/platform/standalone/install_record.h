#pragma once

#include <map>
#include <string>
#include <string_view>

#include "rastrel/platform/os/file.h"

/// What was put into the data root by us, and in which state: a line a file of its size in bytes,
/// its time in nanoseconds since 1970 and its path below the root, with one blank between them.
namespace rastrel::standalone {

/// By native path below the root.
using InstallRecord = std::map<std::string, os::FileStamp>;

/// Lines that are no such line are left out.
[[nodiscard]] InstallRecord ParseInstallRecord(std::string_view text);
[[nodiscard]] std::string FormatInstallRecord(const InstallRecord& record);

}  // namespace rastrel::standalone
