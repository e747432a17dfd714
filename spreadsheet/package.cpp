#include "spreadsheet/package.h"

#include <filesystem>

#include "rastrel/platform/os/native_file.h"
#include "spreadsheet/error.h"
#include "spreadsheet/part_name.h"

namespace rastrel::spreadsheet {
namespace {

namespace fs = std::filesystem;

class FolderPackage : public Package {
 public:
  FolderPackage(const std::string& path, const PackageLimits& limits)
      : Package(path), m_Root(path), m_BytesLeft(limits.totalBytes) {}

  [[nodiscard]] std::string Find(const std::string& part) const override {
    return IsRegular(part) ? part : std::string();
  }

  [[nodiscard]] std::uint64_t SizeOf(const std::string& part) const override {
    std::error_code error;
    const auto size = fs::file_size(m_Root / part, error);
    return error ? 0 : size;
  }

  void Unpack(const std::string& part, const std::string& target,
              const UnpackProgress& progress) override {
    const std::uint64_t size = SizeOf(part);
    if (size > m_BytesLeft) RefuseEntry(part, "the parts together are larger than the limit");
    m_BytesLeft -= size;
    const auto copied = os::CopyNativeFile((m_Root / part).string(), target);
    if (!copied) Refuse(Describe(copied.Error()));
    if (progress) progress(size, size);
  }

 private:
  // A regular file that no link on the way leads to.
  [[nodiscard]] bool IsRegular(const std::string& part) const {
    if (!WhyBadName(part).empty()) return false;
    fs::path path = m_Root;
    std::error_code error;
    for (const fs::path& element : fs::path(part)) {
      path /= element;
      const auto state = fs::symlink_status(path, error);
      if (fs::is_symlink(state)) RefuseEntry(part, "it is a link, or lies behind one");
      if (!fs::is_directory(state)) return fs::is_regular_file(state) && path == m_Root / part;
    }
    return false;
  }

  fs::path m_Root;
  std::uint64_t m_BytesLeft;
};

}  // namespace

void Package::Refuse(const std::string& why) const {
  Failure failure = FailureOf(why);
  failure.where = m_Name;
  throw Error(std::move(failure));
}

void Package::RefuseEntry(const std::string& entry, const std::string& why) const {
  Refuse("entry '" + PrintableName(entry) + "': " + why);
}

std::unique_ptr<Package> OpenFolderPackage(const std::string& path, const PackageLimits& limits) {
  return std::make_unique<FolderPackage>(path, limits);
}

}  // namespace rastrel::spreadsheet
