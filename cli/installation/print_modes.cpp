#include "cli/installation/print_modes.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <tuple>
#include <utility>

#include "cli/console/exit_status.h"
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

// None where there is no directory of that name. One that can't be read is a failure, since a mode
// in it would otherwise be taken for a wrong name.
Expected<std::vector<std::string>> NamesIn(const std::string& directory) {
  std::vector<std::string> names;
  const auto entries = os::ListDirectory(os::FromNative(directory));
  if (!entries) {
    const int error = entries.Error().error;
    if (error == ENOENT || error == ENOTDIR) return names;
    return entries.Error();
  }
  for (const std::wstring& entry : *entries) names.push_back(os::Utf8FromWide(entry));
  return names;
}

std::string Lower(const std::string& text) {
  return os::Utf8FromWide(os::LowerAscii(os::WideFromUtf8(text)));
}

std::string FullName(const PrintMode& mode) { return mode.folder + "/" + mode.name; }

Expected<PrintMode> FindMode(const std::string& text) {
  const auto [modes, read] = ListModes();
  const std::string lower = Lower(text);
  const auto isExactly = [&](const PrintMode& mode) { return FullName(mode) == text; };
  const auto isSpelledOtherwise = [&](const PrintMode& mode) {
    const std::string name = Lower(FullName(mode));
    return name == lower || name == lower + std::string(Extension);
  };
  auto found = std::ranges::find_if(modes, isExactly);
  if (found == modes.end()) found = std::ranges::find_if(modes, isSpelledOtherwise);
  if (found != modes.end()) return *found;
  if (!read) return read.Error();
  std::string known;
  for (const PrintMode& mode : modes) known += (known.empty() ? "'" : ", '") + FullName(mode) + "'";
  const std::string why = text.find('/') == text.npos ? " (a mode is given as FOLDER/NAME)" : "";
  return FailureOf("there is no print mode '" + text + "'" + why + "; there are " +
                       (known.empty() ? "none" : known),
                   FailureCode::BadInput);
}

}  // namespace

ModeList ListModes() {
  ModeList list;
  const std::string root = ModesDirectory();
  const auto namesIn = [&list](const std::string& directory) {
    auto names = NamesIn(directory);
    if (!names && list.read) list.read = names.Error();
    return std::move(names).ValueOr({});
  };
  for (const std::string& folder : namesIn(root)) {
    for (const std::string& name : namesIn(root + "/" + folder)) {
      const std::string path = root + "/" + folder + "/" + name;
      if (name.starts_with('.') || os::IsDirectory(os::FromNative(path))) continue;
      PrintMode mode{.folder = folder, .name = name, .title = {}, .description = {}};
      ReadComments(path, mode);
      list.modes.push_back(std::move(mode));
    }
  }
  std::ranges::sort(list.modes, {},
                    [](const PrintMode& mode) { return std::tie(mode.folder, mode.name); });
  return list;
}

PrintMode ModeOrEnd(const std::string& text) {
  Expected<PrintMode> mode = FindMode(text);
  const bool isWrongName = !mode && mode.Error().code == FailureCode::BadInput;
  return OrEnd(isWrongName ? ExitStatus::WrongUse : ExitStatus::NotInstalled, std::move(mode));
}

}  // namespace rastrel::cli
