#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "rastrel/platform/os/expected.h"
#include "server/queue/job.h"

/// The settings of a hot folder and the list of hot folders; docs/formats/hot-folder.md has every
/// key with its unit and default.
namespace rastrel::server {

/// A hot folder's settings, a file in it.
inline constexpr std::string_view FolderSettingsName = ".rastrel-folder.toml";

struct FolderSettings {
  std::string device;
  JobWork work = JobWork::Print;
  JobOptions options{};
  std::string owner{};  ///< of the jobs; empty: the name of each file's owner
  int priority = 50;
  bool hold = false;
  bool deletesDone = false;           ///< a file goes when its job is done, and no report is made
  std::vector<std::string> names{};   ///< patterns with * ? []; empty: all
  std::vector<std::string> owners{};  ///< users whose files are taken; empty: this one and the
                                      ///< folder's owner; "*" alone: all
  int settleSeconds = 5;              ///< unchanged for so long, a file is whole
  int pollSeconds = 5;                ///< between two looks where the system reports no changes
};

/// Reads a settings file. `name` is its name in failures, which have line and column.
[[nodiscard]] Expected<FolderSettings> ReadFolderSettings(std::string_view text,
                                                          const std::string& name);

/// The paths of `server/folders.toml`, each once.
[[nodiscard]] Expected<std::vector<std::string>> ReadFolderList(std::string_view text,
                                                                const std::string& name);

/// Whether a name may be that of a job's file: not hidden, not "x~", "x.part" or "x.tmp", not the
/// room's own file, and one of the patterns.
[[nodiscard]] bool IsJobName(const std::string& name, const FolderSettings& settings);

/// The file that says why a folder's settings can't be used.
inline constexpr std::string_view FolderErrorName = "rastrel-folder-error.txt";

}  // namespace rastrel::server
