#pragma once

#include <map>
#include <string>
#include <string_view>

#include "rastrel/platform/os/file.h"

/// The files that this library put into the data root, and their state then. One line for each
/// file:
///
///     SIZE TIME PATH
///
/// its size in bytes, its time in nanoseconds since 1970 and its path below the root (UTF-8, may
/// hold spaces), with one space between them.
namespace rastrel::standalone {

/// By native path below the root.
using InstallRecord = std::map<std::string, os::FileStamp>;

/// Reads a record; lines of another form are left out.
[[nodiscard]] InstallRecord ParseInstallRecord(std::string_view text);
/// Writes a record, in the order of the paths.
[[nodiscard]] std::string FormatInstallRecord(const InstallRecord& record);

}  // namespace rastrel::standalone
