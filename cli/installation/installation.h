#pragma once

#include <string>

namespace rastrel::cli {

/// The root of the data, laid out if it was not, and made sure to take what a print writes there:
/// the library would stand still over an application log that can't be opened. Throws
/// CommandError(NotInstalled) with what is wrong.
void MakeSureOfDataRoot();

/// Lays the data root out and leaves what is wrong to whoever meets it.
void LayOutQuietly();

/// Native paths without closing separators.
[[nodiscard]] std::string RipDirectory();
[[nodiscard]] std::string SpoolDirectory();
[[nodiscard]] std::string ModesDirectory();
[[nodiscard]] std::string PagesDirectory();
[[nodiscard]] std::string JobsDirectory();
[[nodiscard]] std::string DevicesFile();

/// Why a file can't be made in a directory, in words; empty if one can. Leaves nothing there.
[[nodiscard]] std::string WhyNotWritable(const std::string& directory);

}  // namespace rastrel::cli
