#include "cli/printing/spool.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <tuple>
#include <utility>

#include "cli/installation/installation.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::cli {
namespace {

constexpr std::string_view Extension = ".cfm";
constexpr int Attempts = 100'000;
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

SpoolEntry EntryOf(const std::string& directoryName) {
  SpoolEntry entry;
  entry.name = directoryName.substr(0, directoryName.size() - Extension.size());
  entry.directory = SpoolDirectory() + "/" + directoryName;
  entry.pages = DirectoriesIn(entry.directory).size();
  entry.bytes = os::TreeSize(os::FromNative(entry.directory));
  if (const auto stamp = os::StampOf(os::FromNative(entry.directory)))
    entry.modified = stamp->modified / Second;
  return entry;
}

bool IsEntry(const std::string& name) {
  return name.ends_with(Extension) && name.size() > Extension.size();
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
  for (const std::string& name : DirectoriesIn(SpoolDirectory()))
    if (IsEntry(name)) entries.push_back(EntryOf(name));
  return entries;
}

std::optional<SpoolEntry> FindSpoolEntry(const std::string& name) {
  // Looked up among the names that are there, so that no text leads out of the spool.
  for (const std::string& directory : DirectoriesIn(SpoolDirectory()))
    if (IsEntry(directory) && directory == name + std::string(Extension)) return EntryOf(directory);
  return std::nullopt;
}

Expected<SpoolEntry> NeedSpoolEntry(const std::string& name) {
  if (auto entry = FindSpoolEntry(name)) return *entry;
  return FailureOf("there is no job '" + name + "' in the spool (" + SpoolDirectory() +
                   "); `rastrel spool list` tells which are");
}

std::vector<SpoolPage> PagesOf(const SpoolEntry& entry) {
  std::vector<SpoolPage> pages;
  for (const std::string& title : DirectoriesIn(entry.directory)) {
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
  const auto order = [](const SpoolPage& page) {
    return std::tuple(page.info ? 0 : 1, page.info ? page.info->page : 0U, page.title);
  };
  std::ranges::sort(pages, {}, order);
  return pages;
}

Expected<SpoolReservation> SpoolReservation::Create(const std::string& name) {
  std::string directory;
  Failure failure{"mkdir", {}, EEXIST};
  for (int number = 1; number <= Attempts; ++number) {
    std::string taken = number == 1 ? name : name + "-" + std::to_string(number);
    directory = SpoolDirectory() + "/" + taken + std::string(Extension);
    const std::wstring path = os::FromNative(directory);
    // A name that differs in case only would be found in place of this one.
    if (os::Exists(path)) continue;
    const auto made = os::MakeDirectory(path);
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

SpoolReservation::~SpoolReservation() {
  if (m_Filled) return;
  // Only while it is empty. The library removes a directory whose pages it could not move, and by
  // now the name may be another print's.
  std::error_code ignored;
  std::filesystem::remove(m_Directory, ignored);
}

}  // namespace rastrel::cli
