#include "server/web/pages/html.h"

#include <algorithm>
#include <array>
#include <ctime>

#include "rastrel/platform/os/hex.h"
#include "rastrel/platform/os/shown_text.h"
#include "server/web/http/address_text.h"

namespace rastrel::server::web {

namespace {

std::string WithReferences(std::string_view text) {
  std::string escaped;
  for (const char one : text) {
    switch (one) {
      case '&': escaped += "&amp;"; break;
      case '<': escaped += "&lt;"; break;
      case '>': escaped += "&gt;"; break;
      case '"': escaped += "&quot;"; break;
      case '\'': escaped += "&#39;"; break;
      default: escaped += one;
    }
  }
  return escaped;
}

}  // namespace

std::string Escaped(std::string_view text) { return WithReferences(os::CleanLine(text)); }

std::string KeptInField(std::string_view text) {
  const bool isText = IsUtf8(text) && std::ranges::none_of(text, [](char one) {
                        const auto byte = static_cast<unsigned char>(one);
                        return byte < 0x20 || byte == 0x7F;
                      });
  // U+0080 to U+009F have a byte C2 in front, and nothing else of these two bytes.
  bool hasControl = false;
  for (std::size_t i = 0; i + 1 < text.size(); ++i)
    hasControl =
        hasControl || (text[i] == '\xC2' && static_cast<unsigned char>(text[i + 1]) < 0xA0);
  return isText && !hasControl ? WithReferences(text) : Escaped(text);
}

std::string Isolated(std::string_view text) { return "<bdi>" + Escaped(text) + "</bdi>"; }

std::string QueryValue(std::string_view text) {
  std::string encoded;
  for (const char one : text) {
    const bool isPlain = (one >= 'a' && one <= 'z') || (one >= 'A' && one <= 'Z') ||
                         (one >= '0' && one <= '9') || one == '-' || one == '.' || one == '_';
    if (isPlain) {
      encoded += one;
    } else {
      encoded += '%';
      os::AppendHex(encoded, static_cast<unsigned char>(one), os::HexCase::Upper);
    }
  }
  return encoded;
}

std::string TimeElement(Time time) {
  if (time <= 0) return {};
  const std::time_t seconds = time / 1000;
  std::tm parts{};
  if (::localtime_r(&seconds, &parts) == nullptr) return {};
  std::array<char, 64> machine{};
  std::array<char, 64> shown{};
  if (std::strftime(machine.data(), machine.size(), "%Y-%m-%dT%H:%M:%S%z", &parts) == 0 ||
      std::strftime(shown.data(), shown.size(), "%Y-%m-%d %H:%M", &parts) == 0)
    return {};
  return std::string("<time datetime=\"") + machine.data() + "\">" + shown.data() + "</time>";
}

}  // namespace rastrel::server::web
