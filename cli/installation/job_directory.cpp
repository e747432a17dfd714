#include "cli/installation/job_directory.h"

#include <cerrno>
#include <charconv>
#include <filesystem>
#include <system_error>
#include <utility>

#include "cli/installation/installation.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/native_file.h"
#include "rastrel/platform/os/owned_directory.h"
#include "rastrel/platform/os/owner.h"
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

}  // namespace

Expected<JobDirectory> JobDirectory::Create(bool keep) {
  return CreateNamed(JobsDirectory() + (keep ? "/kept-" : "/"), keep);
}

Expected<JobDirectory> JobDirectory::CreateIn(const std::string& place) {
  return CreateNamed(place + "/", false);
}

Expected<JobDirectory> JobDirectory::CreateNamed(const std::string& begin, bool keep) {
  const std::string stem = begin + std::to_string(os::CurrentProcessId()) + "-";
  Failure failure;
  for (int number = 1; number <= Attempts; ++number) {
    std::string path = stem + std::to_string(number);
    // One that is kept has no owner, so that no later command removes it.
    const auto made = keep ? os::MakeDirectory(os::FromNative(path), os::Access::Private)
                           : os::MakeOwnedDirectory(path);
    if (made) return JobDirectory(std::move(path), keep);
    failure = FailureAt(path, made.Error());
    if (failure.error != EEXIST) break;
  }
  return FailureOf(Describe(failure) + "; `rastrel doctor` tells more");
}

JobDirectory::JobDirectory(std::string path, bool keep) : m_Path(std::move(path)), m_Keep(keep) {}

JobDirectory::JobDirectory(JobDirectory&& other) noexcept
    : m_Path(std::exchange(other.m_Path, {})), m_Keep(other.m_Keep) {}

JobDirectory::~JobDirectory() {
  if (m_Keep || m_Path.empty() || os::RemoveNativeTree(m_Path)) return;
  // Once more: it may have been a failure of the moment, such as no descriptor being left. The
  // owner's name may have gone, and without it the rest would stay for good.
  if (os::RemoveNativeTree(m_Path)) return;
  if (const auto own = os::IdentityOfProcess(os::CurrentProcessId()))
    static_cast<void>(os::WriteOwner(m_Path, *own));
}

Expected<std::string> JobDirectory::CopyIn(const std::string& path, const std::string& name) const {
  std::string copy = m_Path + "/" + name;
  const auto copied = os::CopyNativeFile(path, copy, os::Access::Private);
  if (copied) {
    MakeReadable(copy);
    return copy;
  }
  const bool source = copied.Error().what == "open";
  return FailureOf("can't copy the job: " + Describe(copied.Error()),
                   source ? FailureCode::BadInput : FailureCode::Unspecified);
}

unsigned ProcessOfJobDirectory(const std::string& name) {
  unsigned process = 0;
  const char* end = name.data() + name.size();
  const auto [stop, error] = std::from_chars(name.data(), end, process);
  return error == std::errc() && stop != end && *stop == '-' ? process : 0;
}

}  // namespace rastrel::cli
