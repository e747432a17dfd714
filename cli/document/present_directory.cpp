#include "cli/document/present_directory.h"

#include <filesystem>
#include <system_error>
#include <utility>

namespace rastrel::cli {

Expected<PresentDirectory> PresentDirectory::Enter(const std::string& path) {
  std::error_code error;
  const std::string before = std::filesystem::current_path(error);
  if (error) return Failure{"look up", "the present directory", error.value()};
  std::filesystem::current_path(path, error);
  if (error) return Failure{"enter", path, error.value()};
  return PresentDirectory(before);
}

PresentDirectory::PresentDirectory(PresentDirectory&& other) noexcept
    : m_Before(std::exchange(other.m_Before, {})) {}

PresentDirectory::~PresentDirectory() {
  std::error_code ignored;
  if (!m_Before.empty()) std::filesystem::current_path(m_Before, ignored);
}

}  // namespace rastrel::cli
