#include "cli/installation/job_directory.h"

#include <cerrno>
#include <charconv>
#include <filesystem>
#include <system_error>

#include "cli/console/exit_status.h"
#include "cli/installation/installation.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/native_file.h"
#include "rastrel/platform/os/owned_directory.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::cli {
namespace {

// Names of processes that are long gone may be taken, so others are tried.
constexpr int Attempts = 10'000;

// Another user's file may be readable through its group only, and the copy belongs to this user.
void MakeReadable(const std::string& path) {
  std::error_code ignored;
  std::filesystem::permissions(
      path, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write,
      std::filesystem::perm_options::add, ignored);
}

// One that is kept has no owner, so that no later command removes it.
Expected<void> MakeKept(const std::string& path) {
  if (os::MakeDirectory(os::FromNative(path))) return {};
  return Failure{"mkdir", path, errno};
}

}  // namespace

JobDirectory::JobDirectory(bool keep) : m_Keep(keep) {
  const std::string stem =
      JobsDirectory() + (keep ? "/kept-" : "/") + std::to_string(os::CurrentProcessId()) + "-";
  int error = 0;
  for (int number = 1; number <= Attempts; ++number) {
    m_Path = stem + std::to_string(number);
    const auto made = keep ? MakeKept(m_Path) : os::MakeOwnedDirectory(m_Path);
    if (made) return;
    error = made.Error().error;
    if (error != EEXIST) break;
  }
  throw CommandError(ExitStatus::NotInstalled,
                     Describe({"mkdir", m_Path, error}) + "; `rastrel doctor` tells more");
}

JobDirectory::~JobDirectory() {
  if (!m_Keep) static_cast<void>(os::RemoveTree(os::FromNative(m_Path)));
}

std::string JobDirectory::CopyIn(const std::string& path, const std::string& name) const {
  std::string copy = m_Path + "/" + name;
  const auto copied = os::CopyNativeFile(path, copy);
  if (copied) {
    MakeReadable(copy);
    return copy;
  }
  const bool source = copied.Error().what == "open";
  throw CommandError(source ? ExitStatus::BadInput : ExitStatus::JobFailed,
                     "can't copy the job: " + Describe(copied.Error()));
}

unsigned ProcessOfJobDirectory(const std::string& name) {
  unsigned process = 0;
  const char* end = name.data() + name.size();
  const auto [stop, error] = std::from_chars(name.data(), end, process);
  return error == std::errc() && stop != end && *stop == '-' ? process : 0;
}

}  // namespace rastrel::cli
