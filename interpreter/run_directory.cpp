#include "interpreter/run_directory.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <utility>

#include "rastrel/platform/os/owner.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/random_digits.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::interpreter {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t NameBytes = 16;
constexpr std::chrono::minutes EmptyAge{1};

bool IsRunName(const std::string& name) {
  return name.size() == 2 * NameBytes &&
         name.find_first_not_of("0123456789abcdef") == std::string::npos;
}

bool HoldsOwnerAlone(const fs::path& directory) {
  std::error_code error;
  bool owned = false;
  for (fs::directory_iterator entry(directory, error), last; !error && entry != last;
       entry.increment(error)) {
    if (entry->path().filename() != os::OwnerFileName) return false;
    owned = true;
  }
  return owned && !error;
}

// A run's directory holds its work directories from its first instants on, so an empty one that is
// not brand-new has been emptied by those who took its pages.
void RemoveEmptied(const std::string& parent) {
  std::error_code error;
  const auto now = fs::file_time_type::clock::now();
  for (fs::directory_iterator entry(parent, error), last; !error && entry != last;
       entry.increment(error)) {
    std::error_code ignored;
    if (!IsRunName(entry->path().filename().string())) continue;
    if (now - entry->last_write_time(ignored) < EmptyAge || ignored) continue;
    if (HoldsOwnerAlone(entry->path())) static_cast<void>(os::RemoveOwner(entry->path().string()));
    rmdir(entry->path().c_str());  // fails on one that holds anything
  }
}

}  // namespace

RunDirectory::RunDirectory(std::string parent, std::string name)
    : m_Parent(std::move(parent)), m_Name(std::move(name)), m_Path(m_Parent + "/" + m_Name) {}

Expected<RunDirectory> RunDirectory::Make(const std::string& ripDirectory, Guardian& guardian) {
  const std::string parent = ripDirectory + "/System/c-out";
  std::error_code error;
  if (!fs::exists(parent, error)) {
    const auto made = os::MakePath(os::FromNative(parent), os::Access::Private);
    if (!made) return made.Error();
  }
  RemoveEmptied(parent);
  return MakeIn(parent, guardian);
}

Expected<RunDirectory> RunDirectory::MakeIn(const std::string& parent, Guardian& guardian) {
  const auto name = os::RandomDigits(NameBytes);
  if (!name) return name.Error();
  RunDirectory made(parent, *name);
  if (!guardian.Guard(made.m_Path)) return Failure{"guard", made.m_Path, errno};
  for (const std::string& path : {made.m_Path, made.Temporary(), made.Planes()}) {
    if (mkdir(path.c_str(), 0700) != 0) return Failure{"mkdir", path, errno};
  }
  if (chmod(made.Temporary().c_str(), 0700) != 0) {
    return Failure{"chmod", made.Temporary(), errno};
  }
  return made;
}

Expected<void> RunDirectory::RemoveWork() const {
  for (const std::string& path : {Temporary(), Planes()}) {
    std::error_code error;
    fs::remove_all(path, error);
    if (error) return Failure{"remove", path, error.value()};
  }
  return {};
}

}  // namespace rastrel::interpreter
