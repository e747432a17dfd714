#include "cli/printing/spool.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <set>
#include <string_view>
#include <system_error>
#include <tuple>
#include <utility>

#include "cli/installation/installation.h"
#include "rastrel/cfm/kept_job.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/owner.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::cli {
namespace {

constexpr std::string_view Extension = ".cfm";
constexpr std::int64_t Second = 1'000'000'000;  // nanoseconds

std::vector<std::string> DirectoriesIn(const std::string& path) {
  std::vector<std::string> names;
  const auto entries = os::ListDirectory(os::FromNative(path));
  if (!entries) return names;
  for (const std::wstring& entry : *entries) {
    std::string name = os::Utf8FromWide(entry);
    if (os::IsDirectory(os::FromNative(path + "/" + name))) names.push_back(std::move(name));
  }
  std::ranges::sort(names);
  return names;
}

std::set<std::string> EntryNames() {
  std::set<std::string> names;
  for (const std::string& place : {SpoolDirectory(), PagesDirectory()})
    for (const std::string& name : DirectoriesIn(place))
      if (name.ends_with(Extension) && name.size() > Extension.size() && !name.starts_with('.'))
        names.insert(name.substr(0, name.size() - Extension.size()));
  return names;
}

// Whether EntryNames has the name. Of a plain one only its directories are looked at, since a
// server asks for one job after another of thousands. Others are compared: the library takes a
// backslash for a separator, and decodes letters.
bool IsEntryName(const std::string& name) {
  if (name.empty() || name.starts_with('.')) return false;
  const auto isPlain = [](char c) { return c > ' ' && c <= '~' && c != '/' && c != '\\'; };
  if (!std::ranges::all_of(name, isPlain)) return EntryNames().contains(name);
  // A native path, since paths of the library find names that differ in case.
  const auto isIn = [&name](const std::string& place) {
    std::error_code error;
    return std::filesystem::is_directory(place + "/" + name + std::string(Extension), error);
  };
  return isIn(SpoolDirectory()) || isIn(PagesDirectory());
}

// The number of the page, or why its files are not those that its description lists.
Expected<unsigned> CheckPage(const std::string& directory, bool sums) {
  const auto info = pages::ReadPageInfo(directory);
  if (!info) return info.Error();
  for (const pages::PageFile& file : info->files) {
    const std::string path = directory + "/" + file.name;
    const auto stamp = os::StampOf(os::FromNative(path));
    if (!stamp) return stamp.Error();
    if (stamp->size != file.bytes)
      return Failure{"compare", path, 0,
                     "it has " + std::to_string(stamp->size) + " bytes in place of " +
                         std::to_string(file.bytes)};
    if (!sums) continue;
    const auto found = pages::DescribeFile(
        directory, file.name, pages::SumKindOf(file.sum).value_or(pages::SumKind::Xxh3));
    if (!found) return found.Error();
    if (found->sum != file.sum)
      return Failure{"compare", path, 0, "its content is not the one that was made"};
  }
  return info->page;
}

// Pages by their own descriptions: each is whole, and their numbers have no gap.
Expected<void> CheckByDescriptions(const std::string& directory, bool sums) {
  std::set<unsigned> numbers;
  const auto titles = DirectoriesIn(directory);
  for (const std::string& title : titles) {
    const auto number = CheckPage(directory + "/" + title, sums);
    if (!number) return number.Error();
    numbers.insert(*number);
  }
  unsigned next = 1;
  for (const unsigned number : numbers) {
    if (number != next)
      return FailureOf("there is no page " + std::to_string(next) + " before page " +
                       std::to_string(number));
    ++next;
  }
  if (numbers.size() != titles.size()) return FailureOf("two pages have the same number");
  return {};
}

std::string WhyUnfinished(const SpoolEntry& entry) {
  if (IsOwned(entry.directory)) return "its print is under way";
  for (const std::string& place : {entry.staged, entry.directory}) {
    const auto unfinished = cfm::ReadKeptJob(place, cfm::UnfinishedJobName);
    if (!unfinished) continue;
    return unfinished->mover && os::MayBeAlive(*unfinished->mover)
               ? "its pages are being moved"
               : "its pages were not moved to the end";
  }
  if (os::Exists(os::FromNative(entry.staged))) return "its pages are in '" + entry.staged + "'";
  return entry.pages == 0 ? "under way, or cut off" : "";
}

void Examine(SpoolEntry& entry) {
  entry.problem = WhyUnfinished(entry);
  if (!entry.problem.empty()) return;
  const auto record = cfm::ReadKeptJob(entry.directory, cfm::KeptJobName);
  if (record) {
    const auto same = cfm::ComparePages(*record, entry.directory);
    if (!same) {
      entry.problem = Describe(same.Error());
      return;
    }
    entry.state = SpoolState::Kept;
    for (const cfm::KeptPage& page : record->pages) entry.titles.push_back(page.title);
    entry.pages = record->pages.size();
    return;
  }
  const auto described = record.Error().error == ENOENT
                             ? CheckByDescriptions(entry.directory, false)
                             : Expected<void>(record.Error());
  if (described) {
    entry.state = SpoolState::WithoutRecord;
  } else {
    entry.problem = Describe(described.Error());
  }
}

SpoolEntry EntryOf(const std::string& name) {
  SpoolEntry entry;
  entry.name = name;
  entry.directory = SpoolDirectory() + "/" + name + std::string(Extension);
  entry.staged = StagedDirectory(name);
  for (const std::string& title : DirectoriesIn(entry.directory)) {
    ++entry.pages;
    entry.bytes += os::TreeSize(os::FromNative(entry.directory + "/" + title));
  }
  const bool isThere = os::Exists(os::FromNative(entry.directory));
  if (const auto stamp = os::StampOf(os::FromNative(isThere ? entry.directory : entry.staged)))
    entry.modified = stamp->modified / Second;
  Examine(entry);
  return entry;
}

// The text of the list, which programs read: the line and its fault take the file's place, as the
// list has the page's name.
std::string ProblemOf(const Failure& failure) {
  if (failure.line == 0) return Describe(failure);
  const std::string fault = "line " + std::to_string(failure.line) + ": " + failure.why;
  return Describe({failure.what, fault, failure.error});
}

}  // namespace

std::vector<SpoolEntry> ListSpool() {
  std::vector<SpoolEntry> entries;
  for (const std::string& name : EntryNames()) entries.push_back(EntryOf(name));
  return entries;
}

std::optional<SpoolEntry> FindSpoolEntry(const std::string& name) {
  if (IsEntryName(name)) return EntryOf(name);
  return std::nullopt;
}

Expected<SpoolEntry> NeedSpoolEntry(const std::string& name) {
  if (auto entry = FindSpoolEntry(name)) return *entry;
  return FailureOf("there is no job '" + name + "' in the spool (" + SpoolDirectory() +
                   "); `rastrel spool list` tells which are");
}

std::vector<SpoolPage> PagesOf(const SpoolEntry& entry) {
  std::vector<SpoolPage> pages;
  const bool recorded = entry.state == SpoolState::Kept;
  for (const std::string& title : recorded ? entry.titles : DirectoriesIn(entry.directory)) {
    SpoolPage page;
    page.title = title;
    const std::string directory = entry.directory + "/" + title;
    page.bytes = os::TreeSize(os::FromNative(directory));
    if (auto info = pages::ReadPageInfo(directory)) {
      page.info = *info;
    } else {
      page.problem = ProblemOf(info.Error());
    }
    pages.push_back(std::move(page));
  }
  if (recorded) return pages;
  const auto order = [](const SpoolPage& page) {
    return std::tuple(page.info ? 0 : 1, page.info ? page.info->page : 0U, page.title);
  };
  std::ranges::sort(pages, {}, order);
  return pages;
}

Expected<void> CheckPrintable(const SpoolEntry& entry) {
  std::string problem = entry.problem;
  if (entry.state == SpoolState::WithoutRecord)
    if (const auto sums = CheckByDescriptions(entry.directory, true); !sums)
      problem = Describe(sums.Error());
  if (problem.empty()) return {};
  return FailureOf("the job '" + entry.name + "' in the spool is incomplete: " + problem +
                   "; `rastrel spool repair` finishes or removes it");
}

std::string StagedDirectory(const std::string& name) {
  return PagesDirectory() + "/" + name + std::string(Extension);
}

bool IsOwned(const std::string& directory) {
  const auto owner = os::ReadOwner(directory);
  return owner && os::MayBeAlive(*owner);
}

}  // namespace rastrel::cli
