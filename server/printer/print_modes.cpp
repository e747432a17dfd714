#include "server/printer/print_modes.h"

#include <algorithm>
#include <charconv>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::server {
namespace {

constexpr std::size_t KeywordLimit = 64;
constexpr std::uint64_t ModeLimit = 65536;
constexpr std::size_t MaximumModes = 200;
constexpr int MaximumResolution = 10000;
constexpr std::string_view Extension = ".ps";
constexpr std::string_view Previews = "Screen";

std::vector<std::string> NamesIn(const std::string& directory) {
  std::vector<std::string> names;
  if (const auto entries = os::ListDirectory(os::FromNative(directory)))
    for (const std::wstring& entry : *entries) names.push_back(os::ToNative(entry));
  std::ranges::sort(names);
  return names;
}

// The words of PostScript without its comments.
std::vector<std::string_view> WordsOf(std::string_view text) {
  std::vector<std::string_view> words;
  while (!text.empty()) {
    const std::size_t begin = text.find_first_not_of(" \t\r\n");
    if (begin == text.npos) break;
    text.remove_prefix(begin);
    const bool isComment = text.front() == '%';
    const std::size_t end =
        std::min(text.find_first_of(isComment ? "\r\n" : " \t\r\n"), text.size());
    if (!isComment) words.push_back(text.substr(0, end));
    text.remove_prefix(end);
  }
  return words;
}

int ResolutionOf(std::string_view word) {
  int value = 0;
  const auto read = std::from_chars(word.data(), word.data() + word.size(), value);
  const bool isWhole = read.ec == std::errc() && read.ptr == word.data() + word.size();
  return isWhole && value >= 1 && value <= MaximumResolution ? value : 0;
}

void MakeKeywordsDiffer(std::vector<OfferedMode>& modes) {
  for (auto mode = modes.begin(); mode != modes.end(); ++mode) {
    const std::string base = mode->keyword;
    for (int number = 2; std::find_if(modes.begin(), mode,
                                      [&](const OfferedMode& other) {
                                        return other.keyword == mode->keyword;
                                      }) != mode;
         ++number)
      mode->keyword = base + "-" + std::to_string(number);
  }
}

}  // namespace

std::string KeywordOfMode(std::string_view name) {
  if (name.ends_with(Extension)) name.remove_suffix(Extension.size());
  std::string keyword;
  for (const char one : name) {
    const bool isUpper = one >= 'A' && one <= 'Z';
    const bool isPlain = (one >= 'a' && one <= 'z') || (one >= '0' && one <= '9');
    if (isUpper)
      keyword += static_cast<char>(one - 'A' + 'a');
    else if (isPlain)
      keyword += one;
    else if (!keyword.empty() && keyword.back() != '-')
      keyword += '-';
    if (keyword.size() == KeywordLimit) break;
  }
  while (keyword.ends_with('-')) keyword.pop_back();
  return keyword.empty() ? "mode" : keyword;
}

OfferedMode ModeOfText(const std::string& name, std::string_view text) {
  OfferedMode mode;
  mode.name = name;
  mode.keyword = KeywordOfMode(name);
  const std::vector<std::string_view> words = WordsOf(text);
  for (std::size_t index = 0; index < words.size(); ++index) {
    if (words[index] == "1Color") mode.isColor = false;
    if (words[index] == "3Color") mode.isColor = true;
    if (words[index] != "SetXYResolution" || index < 2) continue;
    mode.horizontal = ResolutionOf(words[index - 2]);
    mode.vertical = ResolutionOf(words[index - 1]);
  }
  if (mode.horizontal == 0 || mode.vertical == 0) mode.horizontal = mode.vertical = 0;
  return mode;
}

std::vector<OfferedMode> OfferedModes(const std::string& dataRoot) {
  std::vector<OfferedMode> modes;
  const std::string root = dataRoot + "/rip/System/pmodes";
  for (const std::string& folder : NamesIn(root)) {
    if (folder == Previews || folder.starts_with('.')) continue;
    for (const std::string& name : NamesIn(root + "/" + folder)) {
      if (name.starts_with('.') || !name.ends_with(Extension) || modes.size() == MaximumModes)
        continue;
      const auto text =
          os::ReadWholeFile(os::FromNative(root + "/" + folder + "/" + name), ModeLimit);
      if (text) modes.push_back(ModeOfText(folder + "/" + name, *text));
    }
  }
  MakeKeywordsDiffer(modes);
  return modes;
}

}  // namespace rastrel::server
