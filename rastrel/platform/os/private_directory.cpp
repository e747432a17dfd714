#include "rastrel/platform/os/private_directory.h"

#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <utility>

#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/random_digits.h"

namespace rastrel::os {
namespace {

constexpr std::size_t NameBytes = 8;

std::string TemporaryParent() {
  std::string parent = EnvironmentValue("TMPDIR");
  if (!parent.starts_with('/')) return "/tmp";
  while (parent.size() > 1 && parent.ends_with('/')) parent.pop_back();
  return parent;
}

}  // namespace

Expected<PrivateDirectory> PrivateDirectory::Make(std::string_view prefix,
                                                  const BeforeMaking& before) {
  const auto digits = RandomDigits(NameBytes);
  if (!digits) return digits.Error();
  const std::string path = TemporaryParent() + "/" + std::string(prefix) + *digits;
  if (before && !before(path)) return Failure{"mkdir", path, ECANCELED};
  if (::mkdir(path.c_str(), 0700) != 0) return Failure{"mkdir", path, errno};
  return PrivateDirectory(path);
}

PrivateDirectory::PrivateDirectory(std::string path) : m_Path(std::move(path)) {}

PrivateDirectory::PrivateDirectory(PrivateDirectory&& other) noexcept
    : m_Path(std::exchange(other.m_Path, {})) {}

PrivateDirectory::~PrivateDirectory() { static_cast<void>(Remove()); }

Expected<void> PrivateDirectory::Remove() {
  if (m_Path.empty()) return {};
  const std::string path = std::exchange(m_Path, {});
  std::error_code error;
  std::filesystem::remove_all(path, error);
  if (error) return Failure{"remove", path, error.value()};
  return {};
}

}  // namespace rastrel::os
