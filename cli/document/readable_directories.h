#pragma once

#include <string>
#include <vector>

#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// The directories that a template may name files in. A template comes from outside, so a name that
/// leads anywhere else is not read unless the user says so.
class ReadableDirectories {
 public:
  /// Adds a directory by its native path, and all below it. One that does not exist adds nothing.
  void Add(const std::string& directory);
  /// Adds the drives below the data root (`drive_c` and so on), where paths with a drive letter
  /// lead.
  void AddDrives();

  /// Success if a library path leads into one of them, all links followed to their ends, or to
  /// nothing at all. The failure says where it leads, and how to have it read.
  [[nodiscard]] Expected<void> Check(const std::wstring& path) const;

 private:
  std::vector<std::string> m_Directories;  // full paths without links
};

}  // namespace rastrel::cli
