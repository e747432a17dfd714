#include "server/folders/folder_list.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "cutting/toml/strict_toml.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "server/folders/folder_settings.h"

namespace rastrel::server {
namespace {

Failure Refused(std::string why) { return FailureOf(std::move(why), FailureCode::BadInput); }

// A basic string of TOML.
std::string Quoted(const std::string& text) {
  constexpr std::string_view Digits = "0123456789abcdef";
  std::string quoted = "\"";
  for (const char letter : text) {
    const auto code = static_cast<unsigned char>(letter);
    if (letter == '"' || letter == '\\') quoted += '\\';
    if (code < 0x20 || code == 0x7f) {
      quoted += "\\u00";
      quoted += Digits[code >> 4];
      quoted += Digits[code & 15];
    } else {
      quoted += letter;
    }
  }
  return quoted + "\"";
}

std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t from = 0; from < text.size();) {
    const std::size_t end = std::min(text.find('\n', from), text.size() - 1);
    lines.push_back(text.substr(from, end + 1 - from));
    from = end + 1;
  }
  return lines;
}

std::string WithoutBlanks(const std::string& line) {
  std::string text;
  for (const char letter : line)
    if (letter != ' ' && letter != '\t' && letter != '\r' && letter != '\n') text += letter;
  return text;
}

bool BeginsFolder(const std::string& line) { return WithoutBlanks(line).starts_with("[[folder]]"); }

bool HasValue(const std::string& line) {
  const std::string text = WithoutBlanks(line);
  return !text.empty() && text.front() != '#';
}

// One folder's table without comments and empty lines after its last key, which belong to the next.
struct Block {
  std::size_t begin = 0;
  std::size_t end = 0;
  std::vector<std::string> paths;
};

std::vector<Block> BlocksOf(const std::vector<std::string>& lines) {
  std::vector<Block> blocks;
  for (std::size_t at = 0; at < lines.size(); ++at) {
    if (!BeginsFolder(lines[at])) continue;
    Block block{at, at + 1, {}};
    for (std::size_t next = at + 1; next < lines.size() && !BeginsFolder(lines[next]); ++next)
      if (HasValue(lines[next])) block.end = next + 1;
    std::string text;
    for (std::size_t line = block.begin; line < block.end; ++line) text += lines[line];
    block.paths = ReadFolderList(text, "").ValueOr({});
    blocks.push_back(std::move(block));
  }
  return blocks;
}

Expected<std::string> Checked(std::string text, const std::vector<std::string>& wanted,
                              const std::string& name) {
  if (text.size() > cutting::TomlFileLimit)
    return Refused("'" + name + "' would be larger than " + std::to_string(cutting::TomlFileLimit) +
                   " bytes");
  const auto now = ReadFolderList(text, name);
  if (now && *now == wanted) return text;
  return Refused("'" + name +
                 "' has another form than a table [[folder]] for each folder: change it by hand");
}

bool IsWithin(const std::string& path, const std::string& folder) {
  return path == folder || path.starts_with(folder == "/" ? folder : folder + "/");
}

}  // namespace

std::string FolderListPath(const std::string& dataRoot) {
  return dataRoot + "/server/folders.toml";
}

Expected<std::string> FolderListText(const std::string& dataRoot) {
  const std::string path = FolderListPath(dataRoot);
  auto text = os::ReadWholeFile(os::FromNative(path), cutting::TomlFileLimit + 1);
  if (!text && text.Error().error == ENOENT) return std::string();
  if (!text) return FailureAt(path, text.Error());
  return text;
}

Expected<std::vector<std::string>> FoldersOf(const std::string& dataRoot) {
  const auto text = FolderListText(dataRoot);
  if (!text) return text.Error();
  return ReadFolderList(*text, FolderListPath(dataRoot));
}

Expected<std::string> PathForList(const std::string& folder) {
  if (folder.empty()) return Refused("no folder is named");
  std::error_code error;
  std::filesystem::path full = std::filesystem::absolute(folder, error).lexically_normal();
  if (!full.has_filename() && full.has_relative_path()) full = full.parent_path();
  const auto state = std::filesystem::symlink_status(full, error);
  if (std::filesystem::is_symlink(state))
    return Refused("'" + folder + "' is a link, and a hot folder has to be the directory itself");
  if (!std::filesystem::exists(state)) return Refused("there is no folder '" + folder + "'");
  if (!std::filesystem::is_directory(state)) return Refused("'" + folder + "' is no folder");
  const std::string path = std::filesystem::canonical(full, error).string();
  if (error) return Failure{"open", folder, error.value()};
  if (os::Utf8FromWide(os::WideFromUtf8(path)) != path)
    return Refused("the name of '" + path + "' is no UTF-8, as the list of folders is");
  return path;
}

Expected<void> CheckApart(const std::string& path, const std::string& dataRoot,
                          const std::vector<std::string>& folders) {
  std::error_code error;
  const std::string root = std::filesystem::weakly_canonical(dataRoot, error).string();
  if (IsWithin(path, root)) return Refused("'" + path + "' is in the data root '" + root + "'");
  if (IsWithin(root, path)) return Refused("'" + path + "' holds the data root '" + root + "'");
  for (const std::string& folder : folders) {
    if (path == folder) return Refused("'" + path + "' is a hot folder already");
    const std::string other = std::filesystem::weakly_canonical(folder, error).string();
    if (IsWithin(path, other))
      return Refused("'" + path + "' is in the hot folder '" + folder + "'");
    if (IsWithin(other, path))
      return Refused("'" + path + "' holds the hot folder '" + folder + "'");
  }
  return {};
}

Expected<std::string> WithFolder(const std::string& text, const std::string& path,
                                 const std::string& name) {
  auto wanted = ReadFolderList(text, name);
  if (!wanted) return wanted.Error();
  if (std::ranges::find(*wanted, path) != wanted->end())
    return Refused("'" + path + "' is a hot folder already");
  wanted->push_back(path);
  const bool endsLine = text.empty() || text.ends_with('\n');
  return Checked(text + (endsLine ? "" : "\n") + (text.empty() ? "" : "\n") +
                     "[[folder]]\npath = " + Quoted(path) + "\n",
                 *wanted, name);
}

Expected<std::string> WithoutFolder(const std::string& text, const std::string& path,
                                    const std::string& name) {
  auto wanted = ReadFolderList(text, name);
  if (!wanted) return wanted.Error();
  if (std::erase(*wanted, path) == 0) return Refused("there is no hot folder '" + path + "'");
  std::vector<std::string> lines = LinesOf(text);
  for (const Block& block : BlocksOf(lines)) {
    if (block.paths != std::vector<std::string>{path}) continue;
    for (std::size_t line = block.begin; line < block.end; ++line)
      if (HasValue(lines[line])) lines[line].clear();
    // The empty line that kept it apart.
    const bool follows = block.begin > 0 && WithoutBlanks(lines[block.begin - 1]).empty();
    if (follows) lines[block.begin - 1].clear();
  }
  std::string left;
  for (const std::string& line : lines) left += line;
  return Checked(std::move(left), *wanted, name);
}

Expected<void> WriteFolderList(const std::string& dataRoot, const std::string& text) {
  return os::ReplaceFile(os::FromNative(FolderListPath(dataRoot)), text, os::Access::Private);
}

}  // namespace rastrel::server
