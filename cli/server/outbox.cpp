#include "cli/server/outbox.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>
#include <utility>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_content.h"
#include "rastrel/platform/os/output_file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/random_digits.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::cli {
namespace {

namespace fs = std::filesystem;

constexpr unsigned MaximumNumber = 1'000'000;

// Regular files below a directory, as paths from there, in order.
Expected<std::vector<std::string>> FilesBelow(const std::string& directory) {
  std::vector<std::string> files;
  std::error_code error;
  for (fs::recursive_directory_iterator entry(directory, error), last; !error && entry != last;
       entry.increment(error))
    if (entry->is_regular_file() && !entry->is_symlink())
      files.push_back(entry->path().lexically_relative(directory).string());
  if (error) return Failure{"list", directory, error.value()};
  std::ranges::sort(files);
  return files;
}

// To another file system, where the source can't be moved in one step.
Expected<void> CopyWhole(const std::string& source, const std::string& place,
                         os::Existing existing) {
  const auto content = os::OpenRegularFile(os::FromNative(source));
  if (!content) return content.Error();
  auto file = os::OutputFile::Create(place, existing);
  if (!file) return file.Error();
  if (auto copied = file->Append(content->Get()); !copied) return copied;
  if (auto done = file->Commit(); !done) return done;
  return os::RemoveFile(os::FromNative(source));
}

bool HaveSameContent(const std::string& one, const std::string& other) {
  std::ifstream first(one, std::ios::binary);
  std::ifstream second(other, std::ios::binary);
  using Bytes = std::istreambuf_iterator<char>;
  return first && second && std::equal(Bytes(first), Bytes(), Bytes(second), Bytes());
}

// Gives the file its place, if that is free or may be taken: EEXIST otherwise.
Expected<void> Give(const std::string& source, const std::string& place, bool overwrite) {
  const std::wstring from = os::FromNative(source);
  const std::wstring to = os::FromNative(place);
  auto moved = overwrite ? os::RenameFile(from, to) : os::RenameToNew(from, to);
  if (moved || moved.Error().error != EXDEV) return moved;
  // It may have been copied before a kill, and not have left the outbox.
  if (HaveSameContent(source, place)) return os::RemoveFile(from);
  return CopyWhole(source, place, overwrite ? os::Existing::Replaced : os::Existing::Refused);
}

Expected<std::string> Move(const std::string& source, const std::string& target, bool overwrite) {
  const std::string parent = target.substr(0, target.rfind('/'));
  if (auto made = os::MakePath(os::FromNative(parent)); !made) return made.Error();
  for (unsigned number = 1; number <= MaximumNumber; ++number) {
    const std::string place = number == 1 ? target : os::NumberedPath(target, number);
    const auto given = Give(source, place, overwrite);
    if (given) {
      if (auto flushed = os::FlushNamesIn(parent); !flushed) return flushed.Error();
      return place;
    }
    if (given.Error().error != EEXIST) return given.Error();
  }
  return Failure{"link", target, EEXIST};
}

// Directories of attempts that did not come to their end.
Expected<void> RemoveAttempts(const std::string& directory) {
  const auto names = os::ListDirectory(os::FromNative(directory));
  if (!names) return names.Error();
  for (const std::wstring& name : *names)
    if (name.starts_with(L"making-"))
      if (auto removed = os::RemoveNativeTree(directory + "/" + os::ToNative(name)); !removed)
        return removed;
  return {};
}

}  // namespace

Outbox::Outbox(std::string directory) : m_Directory(std::move(directory)) {}

bool Outbox::IsWhole() const { return os::IsDirectory(os::FromNative(m_Directory + "/outbox")); }

Expected<std::string> Outbox::Begin() {
  const std::wstring own = os::FromNative(m_Directory);
  // A reprint has no file of its own, and so no directory yet.
  if (!os::Exists(own))
    if (auto made = os::MakeDirectory(own, os::Access::Private); !made) return made.Error();
  // An engine that still writes into one of them keeps it from going, which is no harm.
  static_cast<void>(RemoveAttempts(m_Directory));
  const auto digits = os::RandomDigits(8);
  if (!digits) return digits.Error();
  m_Making = m_Directory + "/making-" + *digits;
  if (auto made = os::MakeDirectory(os::FromNative(m_Making), os::Access::Private); !made)
    return made.Error();
  return m_Making;
}

Expected<void> Outbox::Finish() {
  if (auto flushed = os::FlushTree(m_Making); !flushed) return flushed;
  if (auto named =
          os::RenameFile(os::FromNative(m_Making), os::FromNative(m_Directory + "/outbox"));
      !named)
    return named;
  return os::FlushNamesIn(m_Directory);
}

Expected<std::vector<std::string>> Outbox::MoveTo(const std::string& target, bool overwrite) {
  const std::string place = m_Directory + "/outbox";
  const auto files = FilesBelow(place);
  if (!files) return files.Error();
  std::vector<std::string> moved;
  for (const std::string& file : *files) {
    auto path = Move(place + "/" + file, target + "/" + file, overwrite);
    if (!path) return path.Error();
    moved.push_back(*std::move(path));
  }
  if (auto removed = os::RemoveNativeTree(place); !removed) return removed.Error();
  return moved;
}

}  // namespace rastrel::cli
