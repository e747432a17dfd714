#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>

namespace rastrel::test {

/// All that lies below a directory: by path, the kind, and for files permissions, time and content.
/// Two equal snapshots have no difference.
inline std::map<std::string, std::string> TreeSnapshot(const std::filesystem::path& root) {
  namespace fs = std::filesystem;
  std::map<std::string, std::string> snapshot;
  if (!fs::exists(fs::symlink_status(root))) return snapshot;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
    std::ostringstream words;
    if (entry.is_symlink()) {
      words << "link to " << fs::read_symlink(entry.path()).string();
    } else if (entry.is_directory()) {
      words << "directory";
    } else if (entry.is_regular_file()) {
      std::ifstream file(entry.path(), std::ios::binary);
      words << "file " << std::oct << static_cast<unsigned>(entry.status().permissions())
            << std::dec << ' ' << entry.last_write_time().time_since_epoch().count() << ' '
            << std::string(std::istreambuf_iterator<char>(file), {});
    } else {
      words << "special";
    }
    snapshot[entry.path().lexically_relative(root).string()] = words.str();
  }
  return snapshot;
}

}  // namespace rastrel::test
