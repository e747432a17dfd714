#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace rastrel::spreadsheet {

/// The size of the list of entries, as the end of a zip file claims it.
struct ZipDirectoryClaim {
  std::uint64_t entries = 0;
  std::uint64_t bytes = 0;
};

/// How many bytes at a zip file's end hold that record, whatever comment follows it.
inline constexpr std::uint64_t ZipTailSize = 22 + 65535 + 20 + 56;

/// Looks through the last bytes of a zip file (APPNOTE 4.3.14 to 4.3.16). A comment may look
/// like a record, and readers differ in which one they take: the largest numbers of all are
/// returned. None if there is no record at all.
[[nodiscard]] std::optional<ZipDirectoryClaim> FindZipDirectory(std::string_view tail);

}  // namespace rastrel::spreadsheet
