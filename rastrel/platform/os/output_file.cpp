#include "rastrel/platform/os/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <set>
#include <utility>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_content.h"
#include "rastrel/platform/os/native_file.h"
#include "rastrel/platform/os/owner.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/system_calls.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::os {
namespace {

constexpr mode_t PermissionBits = 07777;
constexpr int DeepestFolder = 32;  // of a result; the queue program's are two deep
constexpr int NameLimit = 10'000;  // looked at for leftovers

std::string DirectoryOf(const std::string& path) {
  const std::size_t separator = path.rfind('/');
  return separator == std::string::npos ? "." : path.substr(0, separator + 1);
}

// A name of an open descriptor, at whose end may be a regular file. That file is not the one that
// the user means.
bool IsOpenStream(const std::string& path) {
  return path.starts_with("/dev/std") || path.starts_with("/dev/fd/") || path.starts_with("/proc/");
}

// The end of a link that is to be followed. One that leads nowhere is replaced itself.
std::string EndOfLinks(const std::string& path) {
  const std::unique_ptr<char, void (*)(void*)> real(::realpath(path.c_str(), nullptr), std::free);
  return real ? real.get() : path;
}

std::optional<struct stat> StateOf(const std::string& path) {
  struct stat state {};
  if (::lstat(path.c_str(), &state) != 0) return std::nullopt;
  return state;
}

// A name that nothing has. Where the file system knows no such rename, the name is looked for
// first: an entry that comes between the two calls is lost, but for a directory.
int RenameToFree(const std::string& from, const std::string& to) {
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS) return -1;
  if (StateOf(to)) {
    errno = EEXIST;
    return -1;
  }
  return ::rename(from.c_str(), to.c_str());
}

Expected<void> CopyNativeTree(const std::string& source, const std::string& target, int depth) {
  if (depth > DeepestFolder) return Failure{"copy", source, ELOOP};
  const auto own = StateOf(source);
  if (!own) return Failure{"stat", source, errno};
  // Whoever may not look into the source is kept out of the copy from its beginning.
  if (::mkdir(target.c_str(), 0700) != 0) return Failure{"mkdir", target, errno};
  std::error_code error;
  for (std::filesystem::directory_iterator entry(source, error), last; !error && entry != last;
       entry.increment(error)) {
    const std::string from = entry->path();
    const std::string to = target + "/" + entry->path().filename().string();
    const auto state = StateOf(from);
    if (!state) return Failure{"stat", from, errno};
    Expected<void> copied;
    if (S_ISDIR(state->st_mode)) copied = CopyNativeTree(from, to, depth + 1);
    if (S_ISREG(state->st_mode)) copied = CopyNativeFile(from, to);
    if (!copied) return copied;
  }
  if (error) return Failure{"read", source, error.value()};
  if (::chmod(target.c_str(), own->st_mode & PermissionBits) != 0)
    return Failure{"chmod", target, errno};
  return {};
}

// Removes a hidden entry; never the end of a link.
void RemoveEntry(const std::string& path) {
  const auto state = StateOf(path);
  if (state && S_ISDIR(state->st_mode)) {
    static_cast<void>(RemoveNativeTree(path));
  } else {
    ::unlink(path.c_str());
  }
}

// Removes the hidden entries of processes that have certainly ended.
void RemoveLeftovers(const std::string& directory) {
  std::error_code error;
  int seen = 0;
  for (std::filesystem::directory_iterator entry(directory, error), last;
       !error && entry != last && seen < NameLimit; entry.increment(error), ++seen) {
    if (IsAbandonedTemporaryName(entry->path().filename().string())) RemoveEntry(entry->path());
  }
}

}  // namespace

std::string NumberedPath(const std::string& path, unsigned number) {
  const std::size_t name = path.rfind('/') + 1;
  std::size_t dot = path.rfind('.');
  if (dot == std::string::npos || dot <= name) dot = path.size();
  return path.substr(0, dot) + "-" + std::to_string(number) + path.substr(dot);
}

OutputFile::OutputFile(std::string target, Existing existing, OnHiddenFile onHidden)
    : m_Target(std::move(target)), m_Existing(existing), m_OnHidden(std::move(onHidden)) {}

OutputFile::OutputFile(OutputFile&& other) noexcept
    : m_Target(std::exchange(other.m_Target, {})),
      m_Existing(other.m_Existing),
      m_OnHidden(std::move(other.m_OnHidden)),
      m_Hidden(std::exchange(other.m_Hidden, {})),
      m_Origin(std::move(other.m_Origin)),
      m_File(std::move(other.m_File)),
      m_IsDirectory(other.m_IsDirectory),
      m_Permissions(other.m_Permissions),
      m_State(other.m_State) {}

OutputFile::~OutputFile() {
  if (m_Target.empty() || m_State != State::Hidden || m_Hidden.empty()) return;
  if (m_Origin.empty() || ::rename(m_Hidden.c_str(), m_Origin.c_str()) != 0) RemoveHidden();
  Announce({});
}

// A directory may take the place of a directory.
Expected<void> OutputFile::CheckOwnPlace() const {
  auto place = CheckPlace(m_Target, m_Existing);
  if (!place && m_IsDirectory && place.Error().error == EISDIR) return {};
  return place;
}

Expected<void> OutputFile::Prepare() {
  if (auto place = CheckOwnPlace(); !place) return place;
  if (m_Existing == Existing::Refused) return {};
  const bool follows = m_Existing == Existing::Followed && !m_IsDirectory;
  struct stat state {};
  const bool isThere =
      (follows ? ::stat(m_Target.c_str(), &state) : ::lstat(m_Target.c_str(), &state)) == 0;
  if (isThere && S_ISREG(state.st_mode)) m_Permissions = state.st_mode & PermissionBits;
  if (!follows) return {};
  const bool isSpecial = isThere && !S_ISREG(state.st_mode);
  if (isSpecial || IsOpenStream(m_Target)) return OpenDirect();
  // Any other place keeps its name as it was given, for messages.
  const auto own = StateOf(m_Target);
  if (own && S_ISLNK(own->st_mode)) m_Target = EndOfLinks(m_Target);
  return {};
}

Expected<void> OutputFile::OpenDirect() {
  m_State = State::Direct;
  constexpr int flags = O_WRONLY | O_CLOEXEC | O_NOCTTY;
  auto opened = TakeDescriptor(::open(m_Target.c_str(), flags), "open", m_Target);
  if (!opened) return opened.Error();
  m_File = *std::move(opened);
  return {};
}

Expected<OutputFile> OutputFile::Create(const std::string& target, Existing existing,
                                        const OnHiddenFile& onHidden) {
  OutputFile file(target, existing, onHidden);
  if (auto prepared = file.Prepare(); !prepared) return prepared.Error();
  if (file.m_State == State::Direct) return file;
  if (auto made = file.MakeHidden(); !made) return made.Error();
  return file;
}

Expected<OutputFile> OutputFile::Take(const std::string& source, const std::string& target,
                                      Existing existing, const OnHiddenFile& onHidden) {
  const auto state = StateOf(source);
  if (!state) return Failure{"open", source, errno};
  if (!S_ISREG(state->st_mode) && !S_ISDIR(state->st_mode)) return Failure{"open", source, EINVAL};
  OutputFile file(target, existing, onHidden);
  file.m_IsDirectory = S_ISDIR(state->st_mode);
  if (auto prepared = file.Prepare(); !prepared) return prepared.Error();
  if (file.m_State != State::Direct) {
    if (auto moved = file.MoveHere(source); !moved) return moved.Error();
    return file;
  }
  constexpr int flags = O_RDONLY | O_CLOEXEC | O_NOFOLLOW;
  const auto opened = TakeDescriptor(::open(source.c_str(), flags), "open", source);
  if (!opened) return opened.Error();
  if (const auto appended = file.Append(opened->Get()); !appended) return appended.Error();
  return file;
}

void OutputFile::Announce(const std::string& path) const {
  if (m_OnHidden) m_OnHidden(path);
}

// A name that no entry has. Nobody can lay one out there as a link, since the file is made with
// O_EXCL or renamed to a free name.
void OutputFile::ChooseHiddenName() {
  do {
    m_Hidden = DirectoryOf(m_Target) + "/" + OwnTemporaryName();
  } while (StateOf(m_Hidden));
  Announce(m_Hidden);
}

void OutputFile::RemoveHidden() { RemoveEntry(m_Hidden); }

Expected<void> OutputFile::MakeHidden() {
  constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOCTTY;
  for (;;) {
    ChooseHiddenName();
    auto file = TakeDescriptor(Calls().open(m_Hidden.c_str(), flags, 0666), "open", m_Target);
    if (file) {
      m_File = *std::move(file);
      return {};
    }
    m_Hidden.clear();
    Announce({});
    if (file.Error().error != EEXIST) return file.Error();
  }
}

Expected<void> OutputFile::MoveHere(const std::string& source) {
  ChooseHiddenName();
  if (RenameToFree(source, m_Hidden) == 0) {
    m_Origin = source;
    return {};
  }
  const int error = errno;
  if (error == EXDEV) {
    auto copied = CopyHere(source);
    if (!copied) {
      RemoveHidden();
      m_Hidden.clear();
      Announce({});
    }
    return copied;
  }
  m_Hidden.clear();
  Announce({});
  return Failure{"rename", m_Target, error};
}

Expected<void> OutputFile::CopyHere(const std::string& source) {
  const auto copied =
      m_IsDirectory ? CopyNativeTree(source, m_Hidden, 0) : CopyNativeFile(source, m_Hidden);
  if (!copied) return FailureAt(m_Target, copied.Error());
  return {};
}

Expected<void> OutputFile::Write(std::string_view bytes) {
  const auto written = WriteAll(m_File.Get(), bytes);
  if (!written) return FailureAt(m_Target, written.Error());
  return {};
}

Expected<void> OutputFile::Append(int source) {
  const auto appended = AppendContent(m_File.Get(), source);
  if (!appended) return FailureAt(m_Target, appended.Error());
  return {};
}

Expected<void> OutputFile::Flush() {
  if (m_State == State::Direct) return {};
  if (m_IsDirectory) {
    const auto flushed = FlushTree(m_Hidden);
    if (!flushed) return FailureAt(m_Target, flushed.Error());
    return {};
  }
  if (!m_File.IsOpen()) {
    auto taken = TakeDescriptor(::open(m_Hidden.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW), "open",
                                m_Target);
    if (!taken) return taken.Error();
    m_File = *std::move(taken);
  }
  if (m_Permissions && ::fchmod(m_File.Get(), *m_Permissions) != 0)
    return Failure{"fchmod", m_Target, errno};
  if (::fsync(m_File.Get()) != 0) return Failure{"fsync", m_Target, errno};
  return {};
}

// A replaced entry that is to be kept gets the hidden name in the same step, so that it can be
// brought back. A directory takes no other's place without that.
Expected<void> OutputFile::Name(bool keepsReplaced) {
  if (m_State == State::Direct) return {};
  if (auto place = CheckOwnPlace(); !place) return place;
  if (RenameToFree(m_Hidden, m_Target) == 0) {
    m_State = State::Named;
    return {};
  }
  if (errno != EEXIST || m_Existing == Existing::Refused) return Failure{"rename", m_Target, errno};
  const char* const hidden = m_Hidden.c_str();
  if (keepsReplaced || m_IsDirectory) {
    if (::renameat2(AT_FDCWD, hidden, AT_FDCWD, m_Target.c_str(), RENAME_EXCHANGE) == 0) {
      m_State = State::Exchanged;
      return {};
    }
    // Not every file system can exchange two names.
    if (errno != EINVAL && errno != ENOSYS) return Failure{"rename", m_Target, errno};
  }
  if (::rename(hidden, m_Target.c_str()) != 0) return Failure{"rename", m_Target, errno};
  m_State = State::Final;
  return {};
}

void OutputFile::TakeBack() {
  const char* const hidden = m_Hidden.c_str();
  if (m_State == State::Exchanged) {
    static_cast<void>(::renameat2(AT_FDCWD, hidden, AT_FDCWD, m_Target.c_str(), RENAME_EXCHANGE));
  } else if (m_State == State::Named) {
    static_cast<void>(RenameToFree(m_Target, m_Hidden));
  } else {
    return;
  }
  m_State = State::Hidden;
}

// The name is on the disk once its directory is. Not every directory that may be written to may be
// read.
Expected<void> OutputFile::Finish() {
  if (m_State == State::Direct) {
    m_File.Reset();
    return {};
  }
  const auto flushed = FlushNamesIn(DirectoryOf(m_Target));
  if (m_State == State::Exchanged) RemoveHidden();
  m_State = State::Final;
  Announce({});
  m_File.Reset();
  if (!flushed && flushed.Error().what != "open") return FailureAt(m_Target, flushed.Error());
  return {};
}

Expected<void> OutputFile::Commit() { return CommitAll({this, 1}); }

Expected<void> OutputFile::CommitAll(std::span<OutputFile> files) {
  for (OutputFile& file : files) {
    if (auto flushed = file.Flush(); !flushed) return flushed;
  }
  for (std::size_t count = 0; count < files.size(); ++count) {
    const auto named = files[count].Name(files.size() > 1);
    if (named) continue;
    while (count > 0) files[--count].TakeBack();
    return named.Error();
  }
  Expected<void> finished;
  std::set<std::string> directories;
  for (OutputFile& file : files) {
    if (file.m_State != State::Direct) directories.insert(DirectoryOf(file.m_Target));
    if (const auto done = file.Finish(); !done) KeepFirst(finished, done.Error());
  }
  for (const std::string& directory : directories) RemoveLeftovers(directory);
  return finished;
}

Expected<void> CheckPlace(const std::string& target, Existing existing) {
  struct stat state {};
  const bool follows = existing == Existing::Followed;
  if ((follows ? ::stat(target.c_str(), &state) : ::lstat(target.c_str(), &state)) == 0) {
    if (existing == Existing::Refused) return Failure{"create", target, EEXIST};
    if (S_ISDIR(state.st_mode)) return Failure{"create", target, EISDIR};
    return {};
  }
  if (errno != ENOENT) return Failure{"create", target, errno};
  // The name is free, or a link leads nowhere.
  if (::stat(DirectoryOf(target).c_str(), &state) != 0) return Failure{"create", target, errno};
  if (!S_ISDIR(state.st_mode)) return Failure{"create", target, ENOTDIR};
  return {};
}

}  // namespace rastrel::os
