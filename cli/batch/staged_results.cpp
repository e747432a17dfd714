#include "cli/batch/staged_results.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/output_file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/random_digits.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::cli {
namespace {

constexpr std::size_t NameBytes = 6;
// Beside the directories, once files begin to get their places.
constexpr const char* BegunMark = ".begun";

// Paths of all files in it, from there on, in order.
Expected<std::vector<std::string>> FilesIn(const std::string& directory) {
  std::vector<std::string> files;
  std::error_code error;
  for (std::filesystem::recursive_directory_iterator entry(directory, error), last;
       !error && entry != last; entry.increment(error))
    if (entry->symlink_status().type() == std::filesystem::file_type::regular)
      files.push_back(entry->path().lexically_relative(directory).string());
  if (error) return Failure{"list", directory, error.value()};
  std::ranges::sort(files);
  return files;
}

}  // namespace

StagedResults::StagedResults(const BatchRecord& record, std::size_t file)
    : m_Record(record), m_Begin("staged-" + std::to_string(file)) {}

Expected<void> StagedResults::Prepare() {
  const auto digits = os::RandomDigits(NameBytes);
  if (!digits) return digits.Error();
  m_Name = m_Begin + "-" + *digits;
  m_Directory = m_Record.Directory() + "/" + m_Name;
  return os::MakePath(os::FromNative(m_Directory));
}

Expected<void> StagedResults::Deliver() const {
  const auto files = FilesIn(m_Directory);
  if (!files) return files.Error();
  const std::wstring mark = os::FromNative(m_Record.Directory() + "/" + m_Begin + BegunMark);
  const bool replaces = m_Record.Plan().replaces || os::Exists(mark);
  const os::Existing existing = replaces ? os::Existing::Replaced : os::Existing::Refused;
  const std::filesystem::path places(m_Record.Results());
  for (const std::string& file : *files) {
    const std::filesystem::path place = places / file;
    if (auto made = os::MakePath(os::FromNative(place.parent_path().string())); !made) return made;
    if (auto free = os::CheckPlace(place.string(), existing); !free) return free;
  }
  if (!replaces)
    if (auto begun = os::ReplaceFile(mark, "", os::Access::Private); !begun) return begun;
  std::vector<os::OutputFile> results;
  for (const std::string& file : *files) {
    auto result =
        os::OutputFile::Take(m_Directory + "/" + file, (places / file).string(), existing);
    if (!result) return result.Error();
    results.push_back(*std::move(result));
  }
  if (auto named = os::OutputFile::CommitAll(results); !named) return named;
  return os::RemoveNativeTree(m_Directory);
}

HeldText StagedResults::WithPlaces(HeldText text) const {
  // This piece of a path is letters alone, so that it is the same in every form of a line.
  const std::string inserted = std::string("/") + BatchRecordName + "/" + m_Name + "/";
  for (HeldText::Piece& piece : text.pieces)
    for (std::size_t at = 0; (at = piece.bytes.find(inserted, at)) != std::string::npos; ++at)
      piece.bytes.replace(at, inserted.size(), "/");
  return text;
}

}  // namespace rastrel::cli
