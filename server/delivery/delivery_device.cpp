#include "server/delivery/delivery_device.h"

#include <array>
#include <charconv>
#include <optional>
#include <utility>

namespace rastrel::server {
namespace {

constexpr std::array<std::string_view, 4> KindNames{"folder", "program", "socket", "queue"};
constexpr int DefaultQueuePort = 631;

struct HostAndPort {
  std::string host;
  int port = 0;
};

/// "host:port", "[::1]:port"; nothing for any other text.
std::optional<HostAndPort> HostAndPortOf(std::string_view text) {
  const std::size_t colon = text.rfind(':');
  if (colon == std::string_view::npos || colon == 0) return std::nullopt;
  HostAndPort result;
  const std::string_view digits = text.substr(colon + 1);
  const auto [end, error] =
      std::from_chars(digits.data(), digits.data() + digits.size(), result.port);
  if (error != std::errc{} || end != digits.data() + digits.size()) return std::nullopt;
  if (result.port < 1 || result.port > 65535) return std::nullopt;
  std::string_view host = text.substr(0, colon);
  const bool isBracketed = host.front() == '[' && host.back() == ']' && host.size() > 2;
  if (isBracketed) host = host.substr(1, host.size() - 2);
  if (!isBracketed && host.find(':') != std::string_view::npos) return std::nullopt;
  if (host.find_first_of(" \t[]/@") != std::string_view::npos) return std::nullopt;
  result.host = host;
  return result;
}

bool ReadQueueAddress(const std::string& address, DeliveryDevice& device) {
  const std::size_t at = address.find('@');
  device.queue = address.substr(0, at);
  if (device.queue.empty() || device.queue.find_first_of(" \t/#?'\"") != std::string::npos) {
    return false;
  }
  if (at == std::string::npos) return true;
  const std::string server = address.substr(at + 1);
  auto found = HostAndPortOf(server);
  if (!found) found = HostAndPortOf(server + ":" + std::to_string(DefaultQueuePort));
  if (!found) return false;
  device.host = found->host;
  device.port = found->port;
  return true;
}

bool ReadSocketAddress(const std::string& address, DeliveryDevice& device) {
  auto found = HostAndPortOf(address);
  if (!found) return false;
  device.host = std::move(found->host);
  device.port = found->port;
  return true;
}

/// The words of a command; none if a quotation mark is left open.
std::vector<std::string> WordsOf(std::string_view text) {
  std::vector<std::string> words;
  bool isInWord = false;
  bool isQuoted = false;
  for (const char c : text) {
    if (c == '"') {
      isQuoted = !isQuoted;
    } else if (!isQuoted && (c == ' ' || c == '\t')) {
      isInWord = false;
      continue;
    }
    if (!isInWord) words.emplace_back();
    isInWord = true;
    if (c != '"') words.back() += c;
  }
  if (isQuoted) words.clear();
  return words;
}

Failure Refused(std::string why) { return FailureOf(std::move(why), FailureCode::BadInput); }

}  // namespace

std::string_view NameOf(DeviceKind kind) { return KindNames[static_cast<std::size_t>(kind)]; }

Expected<DeliveryDevice> DeviceWithAddress(std::string name, DeviceKind kind,
                                           const std::string& address) {
  DeliveryDevice device{.name = std::move(name), .kind = kind};
  if (address.find('\0') != std::string::npos) return Refused("an address has a zero byte");
  switch (kind) {
    case DeviceKind::Folder:
      device.path = address;
      if (!address.starts_with('/')) return Refused("the address of a folder is a full path");
      break;
    case DeviceKind::Program:
      device.command = WordsOf(address);
      if (device.command.empty() || device.command.front().empty()) {
        return Refused("the address of a program is its name and its arguments");
      }
      break;
    case DeviceKind::Socket:
      if (!ReadSocketAddress(address, device)) {
        return Refused("the address of a socket is host:port");
      }
      break;
    case DeviceKind::Queue:
      if (!ReadQueueAddress(address, device)) {
        return Refused("the address of a queue is NAME, NAME@host or NAME@host:port");
      }
      break;
  }
  return device;
}

}  // namespace rastrel::server
