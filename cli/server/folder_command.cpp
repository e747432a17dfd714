#include "cli/server/folder_command.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "cli/installation/installation.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_lock.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/tree.h"
#include "server/folders/folder_list.h"
#include "server/folders/folder_settings.h"

namespace rastrel::cli {
namespace {

constexpr std::uint64_t SettingsLimit = 262144;

// Against other commands that change the list.
os::FileLock LockList(const std::string& root) {
  OrEnd(ExitStatus::NotInstalled, MakeSureOfDataRoot());
  OrEnd(ExitStatus::NotInstalled,
        os::MakePath(os::FromNative(root + "/server"), os::Access::Private));
  return OrEnd(ExitStatus::JobFailed,
               os::FileLock::Acquire(os::FromNative(root + "/server/folders.lock")));
}

std::string SettingsPath(const std::string& folder) {
  return folder + "/" + std::string(server::FolderSettingsName);
}

Expected<server::FolderSettings> SettingsOfFolder(const std::string& folder) {
  const std::string path = SettingsPath(folder);
  const auto text = os::ReadWholeFile(os::FromNative(path), SettingsLimit);
  if (!text) return FailureAt(path, text.Error());
  return server::ReadFolderSettings(*text, path);
}

// The listed path of the folder that a person names: as it is listed, or as it lies on the disk.
// One that is gone can be named by its path.
std::string ListedPath(const std::vector<std::string>& folders, const std::string& named) {
  std::error_code error;
  const std::string full = std::filesystem::absolute(named, error).lexically_normal().string();
  const std::string real = std::filesystem::weakly_canonical(full, error).string();
  for (std::string path : {named, full, real}) {
    while (path.size() > 1 && path.ends_with('/')) path.pop_back();
    if (std::ranges::find(folders, path) != folders.end()) return path;
  }
  throw CommandError(ExitStatus::BadInput, "there is no hot folder '" + named + "'");
}

}  // namespace

ExitStatus ListFoldersCommand(const Invocation& invocation) {
  const auto folders = OrEnd(ExitStatus::BadInput, server::FoldersOf(os::DataRoot()));
  const bool json = invocation.Has(OptionId::Json);
  if (!json) WriteOutRow({"folder", "device", "trouble"});
  for (const std::string& folder : folders) {
    const auto settings = SettingsOfFolder(folder);
    const std::string device = settings ? settings->device : "";
    const std::string trouble = settings ? "" : Describe(settings.Error());
    if (json) {
      JsonLine("folder")
          .Add("path", folder)
          .Add("device", device)
          .AddIfAny("trouble", trouble)
          .Write();
    } else {
      WriteOutRow({folder, device, trouble});
    }
  }
  return ExitStatus::Done;
}

ExitStatus AddFolderCommand(const Invocation& invocation) {
  const std::string root = os::DataRoot();
  const std::string path = OrEnd(ExitStatus::BadInput, server::PathForList(invocation.operand));
  const os::FileLock lock = LockList(root);
  const std::string name = server::FolderListPath(root);
  const std::string text = OrEnd(ExitStatus::BadInput, server::FolderListText(root));
  const auto folders = OrEnd(ExitStatus::BadInput, server::ReadFolderList(text, name));
  OrEnd(ExitStatus::BadInput, server::CheckApart(path, root, folders));
  OrEnd(ExitStatus::JobFailed,
        server::WriteFolderList(root,
                                OrEnd(ExitStatus::BadInput, server::WithFolder(text, path, name))));
  WriteOutPath(path);
  const auto settings = SettingsOfFolder(path);
  if (!settings && settings.Error().error == ENOENT)
    WriteErrorLine("rastrel: files wait there until '" + SettingsPath(path) +
                   "' names a device: device = \"NAME\"");
  else if (!settings)
    WriteErrorLine("rastrel: files wait there until this is mended: " + Describe(settings.Error()));
  return ExitStatus::Done;
}

ExitStatus RemoveFolderCommand(const Invocation& invocation) {
  const std::string root = os::DataRoot();
  const os::FileLock lock = LockList(root);
  const std::string name = server::FolderListPath(root);
  const std::string text = OrEnd(ExitStatus::BadInput, server::FolderListText(root));
  const auto folders = OrEnd(ExitStatus::BadInput, server::ReadFolderList(text, name));
  const std::string path = ListedPath(folders, invocation.operand);
  OrEnd(ExitStatus::JobFailed,
        server::WriteFolderList(
            root, OrEnd(ExitStatus::BadInput, server::WithoutFolder(text, path, name))));
  WriteOutPath(path);
  return ExitStatus::Done;
}

}  // namespace rastrel::cli
