#pragma once

#include <string>

#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// Lays the data root out if it was not, and makes sure that the files of a print are there and can
/// be written: the library would wait forever for an application log that can't be opened. A root
/// that could not be laid out for want of space is a failure whatever is there, since no job would
/// fit either.
[[nodiscard]] Expected<void> MakeSureOfDataRoot();

/// Lays the data root out, and removes the leftovers of killed commands. Fails only for a root
/// whose path no program can be given; any other fault is left to the first caller that needs the
/// files (CheckLayout).
[[nodiscard]] Expected<void> LayOutQuietly();

/// Whether the data root could be laid out; the failure names the call, the file and the system's
/// reason. For who finds that a shipped file is missing.
[[nodiscard]] Expected<void> CheckLayout();

/// Native paths without closing separators.
[[nodiscard]] std::string RipDirectory();
[[nodiscard]] std::string SpoolDirectory();
[[nodiscard]] std::string ModesDirectory();
[[nodiscard]] std::string PagesDirectory();
[[nodiscard]] std::string JobsDirectory();
[[nodiscard]] std::string SeparationDirectory();
/// Makes it if it is missing, for this user alone. The failure is a message for the user.
[[nodiscard]] Expected<std::string> MakeSeparationDirectory();
[[nodiscard]] std::string DevicesFile();

/// Why a file can't be made in a directory, as a message; empty if one can. Leaves nothing there.
[[nodiscard]] std::string WhyNotWritable(const std::string& directory);

}  // namespace rastrel::cli
