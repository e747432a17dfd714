#include "cli/printing/spool_transfer.h"

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "cli/installation/installation.h"
#include "cli/printing/spool.h"
#include "rastrel/cfm/kept_job.h"
#include "rastrel/job/exe_paths.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/owned_directory.h"
#include "rastrel/platform/os/owner.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::cli {
namespace {

constexpr int Attempts = 100'000;

std::string EntryDirectory(const std::string& name) {
  return SpoolDirectory() + "/" + name + ".cfm";
}

// Replaces an empty directory of that name, which a reservation is.
Expected<void> RenameTo(const std::string& source, const std::string& target) {
  static_cast<void>(os::RemoveOwner(target));
  return os::RenameFile(os::FromNative(source), os::FromNative(target));
}

// A disk that is full is found out before the copy, which does not say why a file is missing.
Expected<void> CheckSpace(const cfm::KeptJob& job) {
  std::uint64_t bytes = 0;
  for (const cfm::KeptPage& page : job.pages) bytes += page.bytes;
  std::error_code error;
  const auto space = std::filesystem::space(SpoolDirectory(), error);
  if (!error && space.available < bytes) return Failure{"copy", SpoolDirectory(), ENOSPC};
  return {};
}

Expected<void> CopyTo(const std::string& source, const std::string& target,
                      const cfm::KeptJob& job) {
  if (auto space = CheckSpace(job); !space) return space;
  const std::string hidden = SpoolDirectory() + "/.copy-" + std::to_string(os::CurrentProcessId());
  if (auto made = os::MakeDirectory(os::FromNative(hidden), os::Access::Private); !made)
    return made;
  if (const auto own = os::IdentityOfProcess(os::CurrentProcessId()))
    static_cast<void>(os::WriteOwner(hidden, *own));
  const auto copy = [&]() -> Expected<void> {
    if (auto tree = os::CopyTreeInto(os::FromNative(source), os::FromNative(hidden)); !tree)
      return tree;
    if (auto finished = cfm::FinishKeptJob(job, hidden); !finished) return finished;
    static_cast<void>(os::RemoveOwner(hidden));
    return RenameTo(hidden, target);
  };
  auto copied = copy();
  static_cast<void>(os::RemoveTree(os::FromNative(copied ? source : hidden)));
  return copied;
}

Expected<void> MoveTo(const std::string& source, const std::string& target,
                      const cfm::KeptJob& job) {
  auto moved = RenameTo(source, target);
  if (!moved && moved.Error().error == EXDEV) moved = CopyTo(source, target, job);
  if (!moved) return moved;
  for (const std::string& names : {SpoolDirectory(), PagesDirectory()})
    static_cast<void>(os::FlushNamesIn(names));
  return {};
}

}  // namespace

Expected<void> PublishJob(const std::string& name) {
  const std::string staged = StagedDirectory(name);
  const auto job = cfm::ReadKeptJob(staged, cfm::KeptJobName);
  const auto whole = job ? cfm::ComparePages(*job, staged) : Expected<void>(job.Error());
  if (!whole)
    return FailureOf("the pages in '" + staged + "' are not whole: " + Describe(whole.Error()) +
                     "; `rastrel spool repair " + name + "` finishes or removes them");
  const auto moved = MoveTo(staged, EntryDirectory(name), *job);
  if (moved) return {};
  return FailureOf("the pages can't be moved to the spool: " + Describe(moved.Error()) +
                   "; they are whole in '" + staged + "', and `rastrel spool repair " + name +
                   "` moves them");
}

Expected<SpoolReservation> SpoolReservation::Create(const std::string& name) {
  std::string directory;
  Failure failure{"mkdir", {}, EEXIST};
  for (int number = 1; number <= Attempts; ++number) {
    std::string taken = number == 1 ? name : name + "-" + std::to_string(number);
    directory = EntryDirectory(taken);
    // A name that differs in case only would be found in place of this one.
    if (os::Exists(os::FromNative(directory)) || os::Exists(os::FromNative(StagedDirectory(taken))))
      continue;
    const auto made = os::MakeOwnedDirectory(directory);
    if (made) return SpoolReservation(std::move(taken), std::move(directory));
    failure = made.Error();
    if (failure.error != EEXIST) break;
  }
  return FailureOf("no name in the spool can be had: " + Describe(FailureAt(directory, failure)));
}

SpoolReservation::SpoolReservation(std::string name, std::string directory)
    : m_Name(std::move(name)), m_Directory(std::move(directory)) {}

SpoolReservation::SpoolReservation(SpoolReservation&& other) noexcept
    : m_Name(std::move(other.m_Name)),
      m_Directory(std::move(other.m_Directory)),
      m_Filled(std::exchange(other.m_Filled, true)) {}

Expected<void> SpoolReservation::Publish(CCFMFile& pages) {
  m_Filled = true;
  for (CCFMFileEntry& entry : pages.Entries) entry.Directory = os::FromNative(m_Directory) + L"\\";
  return PublishJob(m_Name);
}

SpoolReservation::~SpoolReservation() {
  if (m_Filled) return;
  // Only while it is empty.
  if (os::RemoveOwner(m_Directory))
    static_cast<void>(os::RemoveEmptyDirectory(os::FromNative(m_Directory)));
}

StagedSpool::StagedSpool() : m_SpoolRoot(CExePaths::Instance().m_CFMDir) {
  CExePaths::Instance().m_CFMDir = os::FromNative(PagesDirectory());
}

StagedSpool::~StagedSpool() { CExePaths::Instance().m_CFMDir = m_SpoolRoot; }

}  // namespace rastrel::cli
