#include "rastrel/platform/standalone/ini_text.h"

#include <algorithm>
#include <cstddef>

namespace rastrel::standalone {
namespace {

constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";

std::string_view Trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(" \t\r");
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(" \t\r") + 1 - begin);
}

bool SameName(std::string_view one, std::string_view other) {
  const auto lower = [](char byte) {
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
  };
  return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                    [&](char left, char right) { return lower(left) == lower(right); });
}

// The place of a setting in a text, in bytes from its start.
struct Place {
  bool sectionFound = false;
  bool keyFound = false;
  std::size_t lineBegin = 0;  // of the key's line; else where a new line of the section belongs
  std::size_t lineEnd = 0;    // after the line, without its line end
  std::string_view value;
};

Place FindPlace(std::string_view text, std::string_view section, std::string_view key) {
  Place place;
  bool inSection = false;
  std::size_t position = text.starts_with(ByteOrderMark) ? ByteOrderMark.size() : 0;
  while (position < text.size()) {
    const std::size_t end = std::min(text.find('\n', position), text.size());
    const std::string_view line = Trimmed(text.substr(position, end - position));
    const std::size_t begin = position;
    position = std::min(end + 1, text.size());
    const bool isHeader = line.starts_with('[') && line.ends_with(']') && line.size() >= 2;
    if (isHeader) inSection = SameName(Trimmed(line.substr(1, line.size() - 2)), section);
    if (!inSection || line.empty()) continue;
    // New keys go after the last line of the section's first appearance that is not empty.
    if (!place.sectionFound || !isHeader) place.lineBegin = position;
    place.sectionFound = true;
    const std::size_t equals = line.find('=');
    if (isHeader || line.front() == ';' || line.front() == '#' || equals == std::string_view::npos)
      continue;
    if (!SameName(Trimmed(line.substr(0, equals)), key)) continue;
    return {.sectionFound = true,
            .keyFound = true,
            .lineBegin = begin,
            .lineEnd = end,
            .value = Trimmed(line.substr(equals + 1))};
  }
  return place;
}

std::string Stored(std::string_view text, std::string_view section, std::string_view key,
                   std::string_view value) {
  const std::string line = std::string(key) + " = " + std::string(value);
  const Place place = FindPlace(text, section, key);
  std::string result(text);
  if (place.keyFound) return result.replace(place.lineBegin, place.lineEnd - place.lineBegin, line);
  if (place.sectionFound) {
    const bool lacksLineEnd = place.lineBegin > 0 && result[place.lineBegin - 1] != '\n';
    return result.insert(place.lineBegin, (lacksLineEnd ? "\n" : "") + line + "\n");
  }
  if (!result.empty() && result.back() != '\n') result += '\n';
  if (!result.empty()) result += '\n';
  return result + "[" + std::string(section) + "]\n" + line + "\n";
}

}  // namespace

std::optional<std::string> FindIniValue(std::string_view text, std::string_view section,
                                        std::string_view key) {
  const Place place = FindPlace(text, section, key);
  if (!place.keyFound) return std::nullopt;
  return std::string(place.value);
}

std::optional<std::string> WithIniValue(std::string_view text, std::string_view section,
                                        std::string_view key, std::string_view value) {
  std::string result = Stored(text, section, key, value);
  if (FindIniValue(result, section, key) != value) return std::nullopt;
  return result;
}

}  // namespace rastrel::standalone
