#include "children/corerast/page_list.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>

#include "rastrel/platform/os/path.h"

namespace rastrel::corerast {
namespace {

// The reader removes three characters after the "<<" with the comment: two blanks and the line
// feed. With fewer it would take the first letters of the next line.
constexpr std::string_view Heading = ">> -- C-Format 2.0 -- <<  \n";

namespace fs = std::filesystem;

bool SamePlace(const std::string& one, const std::string& other) {
  std::error_code error;
  return fs::equivalent(one, other, error) && !error;
}

// Makes `link` lead to `target`, or finds that it does. Relative where it can be, so that a data
// root may be moved.
bool LeadTo(const std::string& link, const std::string& target) {
  std::error_code error;
  const fs::path root = fs::canonical(fs::path(link).parent_path(), error);
  const fs::path place = fs::canonical(target, error);
  if (error) return false;
  const fs::path relative = place.lexically_relative(root);
  const bool below = !relative.empty() && *relative.begin() != "..";
  if (symlink((below ? relative : place).c_str(), link.c_str()) != 0 && errno != EEXIST) {
    return false;
  }
  return SamePlace(link, target);
}

}  // namespace

bool IsPlainValue(std::string_view value) {
  if (value.empty() || value.front() == ' ' || value.back() == ' ') return false;
  for (const std::string_view word : {"begin", "end", ">"}) {
    if (value.find(word) != value.npos) return false;
  }
  return std::ranges::all_of(value, [](char c) { return c >= ' ' && c <= '~'; });
}

std::string FormatPageList(std::span<const ListedPage> pages) {
  std::string text(Heading);
  for (const ListedPage& page : pages) {
    text += "begin := once\n";
    text += "\tid := " + page.id + "\n";
    text += "\tdir := " + page.directory + "\n";
    text += "\ttitle := " + page.title + "\n";
    text += "\tcopies := 1\n";
    text += "end\n";
  }
  return text;
}

Expected<std::string> ListedPath(const std::string& parent, const std::string& name) {
  const std::string native = parent + "/" + name + "/";
  // A backslash separates in the library's text, so a native name with one has no such text.
  if (IsPlainValue(native) && native.find('\\') == native.npos) return native;
  const std::string root = os::DataRoot();
  for (char letter = 'r'; letter <= 'z'; ++letter) {
    if (!LeadTo(root + "/drive_" + letter, parent)) continue;
    const char drive = static_cast<char>(letter - 'a' + 'A');
    return std::string(1, drive) + ":\\" + name + "\\";
  }
  return Failure{"find a drive letter that can stand for", parent, EEXIST};
}

}  // namespace rastrel::corerast
