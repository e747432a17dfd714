#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "rastrel/platform/os/expected.h"
#include "server/folders/folder_settings.h"
#include "server/folders/taken_files.h"

/// One hot folder: each file that is whole becomes a job. One thread.
namespace rastrel::server {

class HotFolder {
 public:
  /// `path` is full and native. `onMessage` gets a line for people when a trouble begins, and not
  /// again while it is the same. The queue stays the caller's.
  HotFolder(std::string path, JobQueue& queue, std::function<void(const std::string&)> onMessage);

  /// A file of the folder was closed after writing, or renamed into it: it is whole.
  void NoteWhole(const std::string& name);
  /// A file of the folder is written to: it is not whole, whatever was noted.
  void NoteChange(const std::string& name);

  /// Takes each file that is whole, and goes on with those that were taken. `now` is a clock that
  /// only goes forward, in nanoseconds. Returns the nanoseconds until the next look, if no change
  /// is noted before.
  [[nodiscard]] std::int64_t Look(std::int64_t now);

  [[nodiscard]] const std::string& Path() const { return m_Path; }

 private:
  /// A file that is not known to be whole, as it was when it last changed.
  struct Seen {
    std::int64_t size = 0;
    std::int64_t modified = 0;
    std::uint64_t node = 0;
    std::int64_t since = 0;
  };
  [[nodiscard]] Expected<FolderSettings> ReadSettings() const;
  void TellOfSettings(const Expected<FolderSettings>& settings);
  [[nodiscard]] Expected<bool> TakeWhole(const FolderSettings& settings, std::int64_t now);
  [[nodiscard]] bool IsWhole(const std::string& name, const struct stat& state,
                             const FolderSettings& settings, std::int64_t now);
  void Tell(const std::string& message);

  std::string m_Path;
  std::function<void(const std::string&)> m_OnMessage;
  TakenFiles m_Taken;
  std::set<std::string> m_Whole;
  std::map<std::string, Seen> m_Seen;
  std::set<std::string> m_Told;     ///< in the last look
  std::set<std::string> m_Telling;  ///< in this one
};

}  // namespace rastrel::server
