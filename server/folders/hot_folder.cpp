#include "server/folders/hot_folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/vfs.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>
#include <vector>

#include "rastrel/platform/os/directory_entries.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/output_file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/trusted_file.h"
#include "server/folders/file_owner.h"

namespace rastrel::server {
namespace {

constexpr std::int64_t Second = 1000000000;
constexpr int QuietSeconds = 30;
constexpr int LinkSeconds = 5;
constexpr std::uint64_t SettingsLimit = 262144;

/// Whether changes by other machines are not reported here: NFS, SMB, CIFS, SMB 2, FUSE, 9P.
bool MustBePolled(const std::string& path) {
  static constexpr std::array<std::uint32_t, 6> Shares{0x6969,     0x517B,     0xFF534D42,
                                                       0xFE534D42, 0x65735546, 0x01021997};
  struct statfs state {};
  if (::statfs(path.c_str(), &state) != 0) return true;
  return std::ranges::find(Shares, static_cast<std::uint32_t>(state.f_type)) != Shares.end();
}

bool IsLink(const std::string& path) {
  struct stat state {};
  return ::lstat(path.c_str(), &state) == 0 && S_ISLNK(state.st_mode);
}

}  // namespace

HotFolder::HotFolder(std::string path, JobQueue& queue,
                     std::function<void(const std::string&)> onMessage)
    : m_Path(std::move(path)),
      m_OnMessage(std::move(onMessage)),
      m_Taken(m_Path, queue, [this](const std::string& line) { Tell(line); }) {}

void HotFolder::NoteWhole(const std::string& name) { m_Whole.insert(name); }

void HotFolder::NoteChange(const std::string& name) {
  m_Whole.erase(name);
  m_Seen.erase(name);
}

void HotFolder::Tell(const std::string& message) {
  if (m_Telling.insert(message).second && !m_Told.contains(message)) m_OnMessage(message);
}

std::int64_t HotFolder::Look(std::int64_t now) {
  m_Telling.clear();
  if (IsLink(m_Path)) {
    // Whoever could put a link in the folder's place would choose whose files are taken and moved.
    Tell(Describe(FailureOf("'" + m_Path + "' is a link; a hot folder is a directory itself")));
    m_Told = m_Telling;
    return LinkSeconds * Second;
  }
  const auto settings = ReadSettings();
  TellOfSettings(settings);
  bool hasWaiting = !settings;
  if (settings) {
    const auto waiting = TakeWhole(*settings, now);
    if (!waiting) Tell(Describe(waiting.Error()));
    hasWaiting = !waiting || *waiting;
  }
  const auto left = m_Taken.GoOn(settings ? &*settings : nullptr);
  if (!left) Tell(Describe(left.Error()));
  m_Told = m_Telling;
  const bool isBusy = hasWaiting || !left || *left > 0 || MustBePolled(m_Path);
  return (isBusy ? (settings ? settings->pollSeconds : 5) : QuietSeconds) * Second;
}

Expected<FolderSettings> HotFolder::ReadSettings() const {
  const std::string path = m_Path + "/" + std::string(FolderSettingsName);
  const auto text = os::ReadWholeFile(os::FromNative(path), SettingsLimit);
  if (!text) return FailureAt(path, text.Error());
  // Whoever may drop a file may not choose the rules, templates and tables that are read for it.
  if (auto trusted = os::CheckTrustedFile(path); !trusted) return trusted.Error();
  return ReadFolderSettings(*text, path);
}

void HotFolder::TellOfSettings(const Expected<FolderSettings>& settings) {
  const std::string path = m_Path + "/" + std::string(FolderErrorName);
  struct stat state {};
  if (settings) {
    if (::lstat(path.c_str(), &state) == 0) {
      static_cast<void>(os::RemoveFile(os::FromNative(path)));
    }
    return;
  }
  const std::string message = Describe(settings.Error());
  if (!m_Told.contains(message) && ::lstat(m_Path.c_str(), &state) == 0) {
    auto file = os::OutputFile::Create(path, os::Existing::Replaced);
    if (file && file->Write(message + "\nFiles wait until the settings are mended.\n")) {
      static_cast<void>(file->Commit());
    }
  }
  Tell(message);
}

Expected<bool> HotFolder::TakeWhole(const FolderSettings& settings, std::int64_t now) {
  auto reader = os::DirectoryReader::Open(AT_FDCWD, m_Path.c_str(), false);
  if (!reader) return FailureAt(m_Path, reader.Error());
  std::set<std::string> present;
  bool hasWaiting = false;
  std::vector<os::DirectoryEntry> entries;
  for (;;) {
    entries.clear();
    if (auto read = reader->ReadPiece(entries); !read) return FailureAt(m_Path, read.Error());
    if (entries.empty()) break;
    for (const os::DirectoryEntry& entry : entries) {
      if (!IsJobName(entry.name, settings)) continue;
      struct stat state {};
      if (::fstatat(reader->Descriptor(), entry.name.c_str(), &state, AT_SYMLINK_NOFOLLOW) != 0)
        continue;
      if (!S_ISREG(state.st_mode) || state.st_size == 0) continue;
      if (!IsOwnerAllowed(state.st_uid, m_Path, settings)) continue;
      present.insert(entry.name);
      // It has another name elsewhere, and whoever dropped it may not be allowed to read it.
      if (state.st_nlink != 1) {
        hasWaiting = true;
        continue;
      }
      if (!IsWhole(entry.name, state, settings, now)) {
        hasWaiting = true;
        continue;
      }
      if (auto taken = m_Taken.Take(entry.name); !taken) return taken.Error();
      m_Seen.erase(entry.name);
      m_Whole.erase(entry.name);
    }
  }
  std::erase_if(m_Seen, [&](const auto& seen) { return !present.contains(seen.first); });
  std::erase_if(m_Whole, [&](const std::string& name) { return !present.contains(name); });
  return hasWaiting;
}

bool HotFolder::IsWhole(const std::string& name, const struct stat& state,
                        const FolderSettings& settings, std::int64_t now) {
  if (m_Whole.contains(name) || settings.settleSeconds == 0) return true;
  const Seen current{.size = state.st_size,
                     .modified = state.st_mtim.tv_sec * Second + state.st_mtim.tv_nsec,
                     .node = state.st_ino,
                     .since = now};
  const auto [place, isNew] = m_Seen.try_emplace(name, current);
  Seen& known = place->second;
  const bool isSame = known.size == current.size && known.modified == current.modified &&
                      known.node == current.node;
  if (!isSame) known = current;
  return !isNew && isSame && now - known.since >= settings.settleSeconds * Second;
}

}  // namespace rastrel::server
