#include "cli/printing/spool_repair.h"

#include <cerrno>
#include <filesystem>
#include <vector>

#include "cli/console/json_line.h"
#include "cli/console/options.h"
#include "cli/console/standard_streams.h"
#include "cli/installation/installation.h"
#include "cli/printing/spool.h"
#include "cli/printing/spool_transfer.h"
#include "rastrel/cfm/kept_job.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/owner.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::cli {
namespace {

bool HasSize(const cfm::KeptPage& page, const std::string& directory) {
  const auto measure = os::MeasureTree(directory);
  return measure && measure->files == page.files && measure->bytes == page.bytes;
}

// The note is a file like any other: only pages of the RIP are taken away.
bool IsOfRip(const std::string& source) {
  const auto path = std::filesystem::path(source).lexically_normal();
  return path.parent_path().parent_path() ==
         std::filesystem::path(PagesDirectory()).lexically_normal();
}

// Where a page is now: in the job's directory, or where it was made.
Expected<std::string> PlaceOf(const cfm::KeptPage& page, const std::string& directory) {
  const std::string target = directory + "/" + page.title;
  if (HasSize(page, target)) return target;
  if (IsOfRip(page.source) && HasSize(page, page.source)) return page.source;
  return FailureOf("the page '" + page.title + "' is whole neither in '" + directory +
                   "' nor in '" + page.source + "'");
}

bool IsThere(const std::string& directory) { return os::Exists(os::FromNative(directory)); }

Expected<void> RemoveIfThere(const std::string& directory) {
  if (!IsThere(directory)) return {};
  const auto removed = os::RemoveTree(os::FromNative(directory));
  if (!removed) return Failure{"remove", directory, removed.Error().error};
  return {};
}

Expected<void> BringPage(const std::string& source, const std::string& target) {
  if (source == target) return {};
  // A part of it, from before the end.
  if (auto removed = RemoveIfThere(target); !removed) return removed;
  auto renamed = os::RenameFile(os::FromNative(source), os::FromNative(target));
  if (renamed || renamed.Error().error != EXDEV) return renamed;
  return os::CopyTreeInto(os::FromNative(source), os::FromNative(target));
}

// A page that was copied, and its run's directory when nothing is left in it.
void RemoveSource(const std::string& source) {
  const std::string run = std::filesystem::path(source).parent_path().string();
  static_cast<void>(os::RemoveTree(os::FromNative(source)));
  if (os::RemoveOwner(run)) static_cast<void>(os::RemoveEmptyDirectory(os::FromNative(run)));
}

// All places are known before anything moves.
Expected<void> FinishMove(const std::string& directory) {
  const auto job = cfm::ReadKeptJob(directory, cfm::UnfinishedJobName);
  if (!job && job.Error().error == ENOENT) return FailureOf("nothing says which pages it had");
  if (!job) return job.Error();
  if (job->mover && os::MayBeAlive(*job->mover)) return FailureOf("its pages are being moved");
  std::vector<std::string> places;
  for (const cfm::KeptPage& page : job->pages) {
    auto place = PlaceOf(page, directory);
    if (!place) return place.Error();
    places.push_back(*place);
  }
  for (std::size_t index = 0; index < places.size(); ++index)
    if (auto brought = BringPage(places[index], directory + "/" + job->pages[index].title);
        !brought)
      return brought;
  if (auto finished = cfm::FinishKeptJob(*job, directory); !finished) return finished;
  for (const cfm::KeptPage& page : job->pages)
    if (IsOfRip(page.source)) RemoveSource(page.source);
  return {};
}

// Pages of a job that was cut off are still where they were made, and its note alone names them. A
// process that still moves them removes them itself when their place is gone.
void RemoveUnmovedPages(const std::string& directory) {
  const auto job = cfm::ReadKeptJob(directory, cfm::UnfinishedJobName);
  if (!job || (job->mover && os::MayBeAlive(*job->mover))) return;
  for (const cfm::KeptPage& page : job->pages)
    if (IsOfRip(page.source)) RemoveSource(page.source);
}

void Report(const Invocation& invocation, const char* event, const SpoolEntry& entry,
            const std::string& text) {
  if (invocation.Has(OptionId::Json)) {
    JsonLine line(event);
    line.Add("text", entry.name).Add("path", entry.directory).AddIfAny("problem", entry.problem);
    line.Write();
  } else {
    WriteOutLine(text);
  }
}

// False if the job is still incomplete.
bool RepairAndReport(const Invocation& invocation, const SpoolEntry& entry) {
  if (entry.state != SpoolState::Incomplete) {
    Report(invocation, "complete", entry,
           entry.name + " is complete" +
               (entry.state == SpoolState::WithoutRecord ? ", as far as its pages say" : ""));
    return true;
  }
  const auto repaired = RepairEntry(entry);
  if (repaired) {
    Report(invocation, "repaired", entry, "finished " + entry.name);
    return true;
  }
  if (!invocation.Has(OptionId::Remove) || IsOwned(entry.directory)) {
    SpoolEntry failed = entry;
    failed.problem = Describe(repaired.Error());
    Report(invocation, "incomplete", failed,
           entry.name + " can't be finished: " + failed.problem + "; `rastrel spool repair " +
               entry.name + " --remove` removes it");
    return false;
  }
  OrEnd(ExitStatus::JobFailed, RemoveEntry(entry));
  Report(invocation, "removed", entry, "removed " + entry.name);
  return true;
}

}  // namespace

// The pages of a job that is a link lie in a directory of somebody else's, and stay. The name is
// given back last, so that no other print takes it while pages of that name are removed.
Expected<void> RemoveEntry(const SpoolEntry& entry) {
  const bool hasName = IsThere(entry.directory);
  for (const std::string& directory : {entry.staged, entry.directory}) {
    if (directory == entry.directory && !hasName) break;
    const std::wstring path = os::FromNative(directory);
    const bool isLink = os::IsLink(path);
    if (!isLink) RemoveUnmovedPages(directory);
    const auto removed = isLink ? os::RemoveFile(path) : RemoveIfThere(directory);
    if (!removed) return Failure{"remove", directory, removed.Error().error};
  }
  return {};
}

Expected<void> RepairEntry(const SpoolEntry& entry) {
  if (entry.state != SpoolState::Incomplete) return {};
  if (IsOwned(entry.directory)) return FailureOf("its print is under way");
  if (!IsThere(entry.staged)) return FinishMove(entry.directory);
  if (const auto record = cfm::ReadKeptJob(entry.staged, cfm::KeptJobName); !record)
    if (auto finished = FinishMove(entry.staged); !finished) return finished;
  return PublishJob(entry.name);
}

ExitStatus RepairSpoolCommand(const Invocation& invocation) {
  OrEnd(ExitStatus::NotInstalled, MakeSureOfDataRoot());
  std::vector<SpoolEntry> entries;
  if (invocation.hasOperand) {
    entries.push_back(OrEnd(ExitStatus::BadInput, NeedSpoolEntry(invocation.operand)));
  } else {
    for (SpoolEntry& entry : ListSpool())
      if (entry.state == SpoolState::Incomplete) entries.push_back(std::move(entry));
  }
  bool whole = true;
  for (const SpoolEntry& entry : entries) whole = RepairAndReport(invocation, entry) && whole;
  return whole ? ExitStatus::Done : ExitStatus::JobFailed;
}

}  // namespace rastrel::cli
