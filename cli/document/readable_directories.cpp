#include "cli/document/readable_directories.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "rastrel/platform/os/path.h"

namespace rastrel::cli {
namespace {

namespace fs = std::filesystem;

// The path without links, or empty if nothing is there.
std::string Canonical(const std::string& path) {
  std::error_code error;
  const fs::path found = fs::canonical(path, error);
  return error ? std::string() : found.string();
}

bool IsBelow(const std::string& path, const std::string& directory) {
  if (!path.starts_with(directory)) return false;
  return path.size() == directory.size() || directory == "/" || path[directory.size()] == '/';
}

}  // namespace

void ReadableDirectories::Add(const std::string& directory) {
  std::string found = Canonical(directory);
  if (!found.empty()) m_Directories.push_back(std::move(found));
}

void ReadableDirectories::AddDrives() {
  for (char letter = 'a'; letter <= 'z'; ++letter) Add(os::DataRoot() + "/drive_" + letter);
}

Expected<void> ReadableDirectories::Check(const std::wstring& path) const {
  const std::string found = Canonical(os::ToNative(path));
  const bool inside =
      found.empty() || std::ranges::any_of(m_Directories, [&](const std::string& directory) {
        return IsBelow(found, directory);
      });
  if (inside) return {};
  return FailureOf("it leads to " + found +
                   ", outside the template's directory; --allow-outside reads it");
}

}  // namespace rastrel::cli
