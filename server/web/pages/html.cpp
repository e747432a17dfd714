#include "server/web/pages/html.h"

#include <array>
#include <ctime>

#include "rastrel/platform/os/hex.h"
#include "rastrel/platform/os/shown_text.h"

namespace rastrel::server::web {

std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char one : os::CleanLine(text)) {
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
