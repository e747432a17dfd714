#include "server/folders/folder_settings.h"

#include <fnmatch.h>

#include <algorithm>
#include <array>

#include "cutting/toml/strict_toml.h"

namespace rastrel::server {
namespace {

constexpr std::size_t MaximumEntries = 1000;
constexpr std::array<std::string_view, 3> WorkNames{"print", "cut", "merge"};
constexpr std::array<std::string_view, 2> AfterNames{"move", "delete"};
constexpr std::array<const char*, 10> TextOptions{"mode",  "scale",    "levels", "pages", "box",
                                                  "rules", "template", "data",   "sheet", "blank"};

void ReadOptions(cutting::TomlTable& root, FolderSettings& settings) {
  for (const char* key : TextOptions) {
    if (auto text = root.Text(key)) settings.options[key] = *text;
  }
  if (const auto copies = root.Whole("copies", 1, 9999)) {
    settings.options["copies"] = std::to_string(*copies);
  }
}

// A dropped table fills the template, or a dropped template takes the table.
void CheckMerge(cutting::TomlTable& root, const FolderSettings& settings) {
  const auto named = settings.options.find("template");
  const auto data = settings.options.find("data");
  const auto end = settings.options.end();
  if (settings.work != JobWork::Merge) {
    for (const char* key : {"template", "data", "sheet", "blank"})
      if (settings.options.contains(key))
        root.Fail(key, "is of folders with work = \"merge\" alone");
    return;
  }
  if (named != end && data != end)
    root.Fail("data", "the dropped file is the table, or the template; name the other one alone");
  if (named == end && data == end)
    root.Fail("work", "a merge needs 'template', or 'data' where templates are dropped");
  if (named != end && !named->second.starts_with('/')) root.Fail("template", "needs its full path");
  if (data != end && !data->second.starts_with('/')) root.Fail("data", "needs its full path");
}

}  // namespace

Expected<FolderSettings> ReadFolderSettings(std::string_view text, const std::string& name) {
  const auto file = cutting::TomlFile::Parse(text, name);
  if (!file) return file.Error();
  cutting::TomlTable root = file->Root();
  FolderSettings settings;
  settings.device = root.Text("device").value_or("");
  if (settings.device.empty()) root.Fail("device", "a folder needs the name of its device");
  settings.work = static_cast<JobWork>(root.Choice("work", WorkNames).value_or(0));
  ReadOptions(root, settings);
  CheckMerge(root, settings);
  settings.owner = root.Text("owner").value_or("");
  settings.priority = root.Whole("priority", 1, 100).value_or(settings.priority);
  settings.hold = root.Truth("hold").value_or(false);
  settings.deletesDone = root.Choice("after", AfterNames).value_or(0) == 1;
  settings.names = root.Texts("names", MaximumEntries).value_or(std::vector<std::string>{});
  settings.owners = root.Texts("owners", MaximumEntries).value_or(std::vector<std::string>{});
  settings.settleSeconds = root.Whole("settle", 0, 3600).value_or(settings.settleSeconds);
  settings.pollSeconds = root.Whole("poll", 1, 3600).value_or(settings.pollSeconds);
  root.Finish();
  if (auto fine = file->Check(); !fine) return fine.Error();
  return settings;
}

Expected<std::vector<std::string>> ReadFolderList(std::string_view text, const std::string& name) {
  const auto file = cutting::TomlFile::Parse(text, name);
  if (!file) return file.Error();
  cutting::TomlTable root = file->Root();
  std::vector<std::string> paths;
  for (cutting::TomlTable& table : root.Tables("folder", MaximumEntries)) {
    const std::string path = table.Text("path").value_or("");
    if (!path.starts_with('/')) table.Fail("path", "a folder needs its full path");
    table.Finish();
    if (std::ranges::find(paths, path) == paths.end()) paths.push_back(path);
  }
  root.Finish();
  if (auto fine = file->Check(); !fine) return fine.Error();
  return paths;
}

bool IsJobName(const std::string& name, const FolderSettings& settings) {
  if (name.empty() || name.starts_with('.') || name == FolderErrorName) return false;
  if (name.ends_with('~') || name.ends_with(".part") || name.ends_with(".tmp")) return false;
  if (settings.names.empty()) return true;
  return std::ranges::any_of(settings.names, [&](const std::string& pattern) {
    return ::fnmatch(pattern.c_str(), name.c_str(), FNM_CASEFOLD) == 0;
  });
}

}  // namespace rastrel::server
