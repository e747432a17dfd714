#include "children/jobspool/leftovers.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>

namespace rastrel::jobspool {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::hours Age{1};
constexpr std::string_view Start = "vk";
constexpr std::string_view End = "_Color.bmp";
constexpr std::size_t StemLength = 8;

bool IsBitmapName(const std::string& name) {
  if (name.size() != StemLength + End.size()) return false;
  return name.starts_with(Start) && name.ends_with(End);
}

bool HasJob(const std::string& stem) {
  constexpr std::array Others{".ps", ".eps", ".pdf", ".jhdr", ".cfm", ".cut"};
  return std::ranges::any_of(Others, [&](const char* other) {
    std::error_code error;
    return fs::exists(stem + other, error) || error;
  });
}

}  // namespace

void RemoveForgottenBitmaps(const std::string& directory) {
  std::error_code error;
  const auto now = fs::file_time_type::clock::now();
  for (fs::directory_iterator entry(directory, error), last; !error && entry != last;
       entry.increment(error)) {
    std::error_code ignored;
    const std::string name = entry->path().filename().string();
    if (!IsBitmapName(name) || !entry->is_regular_file(ignored)) continue;
    if (now - entry->last_write_time(ignored) < Age || ignored) continue;
    if (HasJob(directory + "/" + name.substr(0, StemLength))) continue;
    fs::remove(entry->path(), ignored);
  }
}

}  // namespace rastrel::jobspool
