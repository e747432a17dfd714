#include "rastrel/platform/standalone/install_record.h"

#include <algorithm>
#include <charconv>

namespace rastrel::standalone {
namespace {

// Takes a number and the space after it off the front.
template <typename Number>
bool TakeNumber(std::string_view& line, Number& number) {
  const char* const end = line.data() + line.size();
  const auto [rest, error] = std::from_chars(line.data(), end, number);
  if (error != std::errc() || rest == end || *rest != ' ') return false;
  line.remove_prefix(static_cast<std::size_t>(rest - line.data()) + 1);
  return true;
}

}  // namespace

InstallRecord ParseInstallRecord(std::string_view text) {
  InstallRecord record;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    os::FileStamp stamp;
    if (TakeNumber(line, stamp.size) && TakeNumber(line, stamp.modified) && !line.empty())
      record[std::string(line)] = stamp;
  }
  return record;
}

std::string FormatInstallRecord(const InstallRecord& record) {
  std::string text;
  for (const auto& [path, stamp] : record)
    text += std::to_string(stamp.size) + " " + std::to_string(stamp.modified) + " " + path + "\n";
  return text;
}

}  // namespace rastrel::standalone
