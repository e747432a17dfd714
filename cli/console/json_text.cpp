#include "cli/console/json_text.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "rastrel/platform/os/hex.h"
#include "rastrel/platform/os/shown_text.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

void AppendUnit(std::string& target, char32_t unit) {
  target += "\\u";
  os::AppendHex(target, static_cast<unsigned char>(unit >> 8));
  os::AppendHex(target, static_cast<unsigned char>(unit));
}

// Outside of its texts JSON has no such characters, so all of them are in texts.
std::string WithEscapes(const std::string& json) {
  std::string escaped;
  escaped.reserve(json.size());
  for (const wchar_t character : os::WideFromUtf8(json)) {
    const auto code = static_cast<char32_t>(character);
    if (os::IsSafeToShow(code)) {
      os::AppendUtf8FromWide(escaped, {&character, 1});
      continue;
    }
    const std::wstring text(1, character);
    for (const std::uint16_t unit : os::Utf16FromWide(text)) AppendUnit(escaped, unit);
  }
  return escaped;
}

}  // namespace

std::string JsonText(const nlohmann::ordered_json& value) {
  std::string json = value.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
  const bool isAscii =
      std::ranges::all_of(json, [](char byte) { return byte >= ' ' && byte < '\x7F'; });
  return isAscii ? json : WithEscapes(json);
}

}  // namespace rastrel::cli
