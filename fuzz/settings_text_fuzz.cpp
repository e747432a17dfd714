// Files of the data root that a user edits, out of any text: the settings, and the record of the
// files that were installed. The first three lines are section, key and value.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "rastrel/platform/standalone/ini_text.h"
#include "rastrel/platform/standalone/install_record.h"

namespace {

using namespace rastrel::standalone;

void Check(bool holds) {
  if (!holds) std::abort();
}

std::string_view NextLine(std::string_view& text) {
  const std::size_t end = std::min(text.find('\n'), text.size());
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return line;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  std::string_view text(reinterpret_cast<const char*>(bytes), size);
  const InstallRecord record = ParseInstallRecord(text);
  Check(ParseInstallRecord(FormatInstallRecord(record)) == record);
  const std::string_view section = NextLine(text);
  const std::string_view key = NextLine(text);
  const std::string_view value = NextLine(text);
  const auto found = FindIniValue(text, section, key);
  Check(!found || found->size() <= text.size());
  const auto stored = WithIniValue(text, section, key, value);
  if (!stored) return 0;
  Check(FindIniValue(*stored, section, key) == value);
  // All other lines stay: no more than the line, a section before it and line ends are added.
  Check(stored->size() <= text.size() + section.size() + key.size() + value.size() + 9);
  // Storing it once more changes nothing.
  Check(WithIniValue(*stored, section, key, value) == stored);
  return 0;
}
