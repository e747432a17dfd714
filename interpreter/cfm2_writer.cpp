#include "interpreter/cfm2_writer.h"

#include <algorithm>

#include "rastrel/platform/os/text.h"

namespace rastrel::interpreter {
namespace {

// The reader removes three characters behind the "<<" with the comment: two blanks and the line
// feed. With fewer it would take the first letters of the next line.
constexpr std::string_view Heading = ">> -- C-Format 2.0 -- <<  \n";

}  // namespace

bool IsPlainValue(std::string_view value) {
  if (value.empty() || value.front() == ' ' || value.back() == ' ') return false;
  for (const std::string_view word : {"begin", "end", ">"}) {
    if (value.find(word) != value.npos) return false;
  }
  const bool control = std::ranges::any_of(
      value, [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; });
  return !control && os::Utf8FromWide(os::WideFromUtf8(value)) == value;
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

}  // namespace rastrel::interpreter
