#include "cli/installation/print_modes.h"

#include <algorithm>
#include <fstream>
#include <tuple>
#include <utility>

#include "cli/installation/installation.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::cli {
namespace {

constexpr std::size_t HeadSize = 4096;  // bytes that hold a mode's comments
constexpr std::string_view Extension = ".ps";

std::string CommentIn(std::string_view head, std::string_view comment) {
  for (std::size_t at = head.find(comment); at != head.npos; at = head.find(comment, at + 1)) {
    if (at != 0 && head[at - 1] != '\n' && head[at - 1] != '\r') continue;
    std::string_view value = head.substr(at + comment.size());
    value = value.substr(0, value.find_first_of("\r\n"));
    const std::size_t first = value.find_first_not_of(" \t(");
    if (first == value.npos) return {};
    return std::string(value.substr(first, value.find_last_not_of(" \t)") - first + 1));
  }
  return {};
}

void ReadComments(const std::string& path, PrintMode& mode) {
  std::ifstream file(path, std::ios::binary);
  std::string head(HeadSize, '\0');
  file.read(head.data(), static_cast<std::streamsize>(head.size()));
  head.resize(static_cast<std::size_t>(std::max<std::streamsize>(file.gcount(), 0)));
  mode.title = CommentIn(head, "%%Title:");
  mode.description = CommentIn(head, "%%Description:");
}

std::vector<std::string> NamesIn(const std::string& directory) {
  std::vector<std::string> names;
  if (const auto entries = os::ListDirectory(os::FromNative(directory)))
    for (const std::wstring& entry : *entries) names.push_back(os::Utf8FromWide(entry));
  return names;
}

std::string Lower(const std::string& text) {
  return os::Utf8FromWide(os::LowerAscii(os::WideFromUtf8(text)));
}

std::string FullName(const PrintMode& mode) { return mode.folder + "/" + mode.name; }

}  // namespace

std::vector<PrintMode> ListModes() {
  std::vector<PrintMode> modes;
  const std::string root = ModesDirectory();
  for (const std::string& folder : NamesIn(root)) {
    for (const std::string& name : NamesIn(root + "/" + folder)) {
      const std::string path = root + "/" + folder + "/" + name;
      if (name.starts_with('.') || os::IsDirectory(os::FromNative(path))) continue;
      PrintMode mode{.folder = folder, .name = name, .title = {}, .description = {}};
      ReadComments(path, mode);
      modes.push_back(std::move(mode));
    }
  }
  std::ranges::sort(modes, {},
                    [](const PrintMode& mode) { return std::tie(mode.folder, mode.name); });
  return modes;
}

Expected<PrintMode> FindMode(const std::string& text) {
  const std::vector<PrintMode> modes = ListModes();
  const std::string lower = Lower(text);
  const auto isExactly = [&](const PrintMode& mode) { return FullName(mode) == text; };
  const auto isSpelledOtherwise = [&](const PrintMode& mode) {
    const std::string name = Lower(FullName(mode));
    return name == lower || name == lower + std::string(Extension);
  };
  auto found = std::ranges::find_if(modes, isExactly);
  if (found == modes.end()) found = std::ranges::find_if(modes, isSpelledOtherwise);
  if (found != modes.end()) return *found;
  std::string known;
  for (const PrintMode& mode : modes) known += (known.empty() ? "'" : ", '") + FullName(mode) + "'";
  const std::string why = text.find('/') == text.npos ? " (a mode is given as FOLDER/NAME)" : "";
  return FailureOf("there is no print mode '" + text + "'" + why + "; there are " +
                   (known.empty() ? "none" : known));
}

}  // namespace rastrel::cli
