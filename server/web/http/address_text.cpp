#include "server/web/http/address_text.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "rastrel/platform/os/hex.h"

namespace rastrel::server::web {
namespace {

Failure Bad(const char* why) { return FailureOf(why, FailureCode::BadInput); }

bool IsControl(char one) { return static_cast<unsigned char>(one) < 0x20 || one == 0x7f; }

// Nothing if a percent sign has no two digits.
std::optional<std::string> Decoded(std::string_view text, bool plusIsBlank) {
  std::string decoded;
  for (std::size_t index = 0; index < text.size(); ++index) {
    if (text[index] == '+' && plusIsBlank) {
      decoded += ' ';
    } else if (text[index] == '%') {
      if (index + 2 >= text.size()) return std::nullopt;
      const auto byte = os::ByteFromHex(text[index + 1], text[index + 2]);
      if (!byte) return std::nullopt;
      decoded += static_cast<char>(*byte);
      index += 2;
    } else {
      decoded += text[index];
    }
  }
  return decoded;
}

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

bool IsFine(std::string_view text) {
  return IsUtf8(text) && text.find('\0') == std::string_view::npos;
}

// A text in quotes at the beginning of `rest`, which goes past it.
std::optional<std::string> TakeQuoted(std::string_view& rest) {
  std::string value;
  for (std::size_t index = 1; index < rest.size(); ++index) {
    if (rest[index] == '"') {
      rest.remove_prefix(index + 1);
      return value;
    }
    // Browsers write a quote as %22 and a backslash as itself; only an escaped quote is one.
    if (rest[index] == '\\' && index + 1 < rest.size() && rest[index + 1] == '"') ++index;
    value += rest[index];
  }
  return std::nullopt;
}

}  // namespace

std::string LowerCase(std::string_view text) {
  std::string lower(text);
  for (char& one : lower)
    if (one >= 'A' && one <= 'Z') one = static_cast<char>(one - 'A' + 'a');
  return lower;
}

bool IsUtf8(std::string_view text) {
  for (std::size_t index = 0; index < text.size();) {
    const auto first = static_cast<unsigned char>(text[index]);
    std::size_t more = 0;
    char32_t code = first;
    if (first >= 0xf0 && first < 0xf5) {
      more = 3;
      code = first & 0x07U;
    } else if (first >= 0xe0 && first < 0xf0) {
      more = 2;
      code = first & 0x0fU;
    } else if (first >= 0xc2 && first < 0xe0) {
      more = 1;
      code = first & 0x1fU;
    } else if (first >= 0x80) {
      return false;
    }
    if (index + more >= text.size() && more > 0) return false;
    for (std::size_t next = 1; next <= more; ++next) {
      const auto byte = static_cast<unsigned char>(text[index + next]);
      if ((byte & 0xc0U) != 0x80U) return false;
      code = (code << 6U) | (byte & 0x3fU);
    }
    if ((more == 2 && code < 0x800) || (more == 3 && code < 0x10000) || code > 0x10ffff ||
        (code >= 0xd800 && code <= 0xdfff))
      return false;
    index += more + 1;
  }
  return true;
}

bool IsSameSecret(std::string_view one, std::string_view other) {
  if (one.size() != other.size()) return false;
  unsigned difference = 0;
  for (std::size_t index = 0; index < one.size(); ++index)
    difference |= static_cast<unsigned char>(one[index]) ^ static_cast<unsigned char>(other[index]);
  return difference == 0;
}

Expected<std::string> PathOf(std::string_view encoded) {
  if (!encoded.starts_with('/')) return Bad("the address is no path");
  std::string path;
  encoded.remove_prefix(1);
  for (;;) {
    const std::size_t slash = encoded.find('/');
    const std::string_view part = encoded.substr(0, slash);
    const bool isLast = slash == encoded.npos;
    if (part.empty() && !isLast) return Bad("the address has an empty part");
    const auto decoded = Decoded(part, false);
    if (!decoded) return Bad("a percent sign of the address has no two digits");
    if (*decoded == "." || *decoded == "..") return Bad("the address has a part '.' or '..'");
    if (!IsUtf8(*decoded) || std::ranges::any_of(*decoded, IsControl) ||
        decoded->find_first_of("/\\") != decoded->npos)
      return Bad("the address has a character that none may have");
    path += "/" + *decoded;
    if (isLast) return path;
    encoded.remove_prefix(slash + 1);
  }
}

Expected<Fields> FieldsOf(std::string_view encoded) {
  Fields fields;
  while (!encoded.empty()) {
    const std::size_t end = encoded.find('&');
    const std::string_view field = encoded.substr(0, end);
    encoded.remove_prefix(end == encoded.npos ? encoded.size() : end + 1);
    if (field.empty()) continue;
    const std::size_t equals = field.find('=');
    auto name = Decoded(field.substr(0, equals), true);
    auto value =
        Decoded(equals == field.npos ? std::string_view() : field.substr(equals + 1), true);
    if (!name || !value) return Bad("a percent sign of the fields has no two digits");
    if (!IsFine(*name) || !IsFine(*value)) return Bad("a field is no UTF-8, or has a zero byte");
    if (fields.size() == FieldLimit) return Bad("there are more than 100 fields");
    fields.emplace_back(*std::move(name), *std::move(value));
  }
  return fields;
}

Fields CookiesOf(std::string_view header) {
  Fields cookies;
  while (!header.empty() && cookies.size() < FieldLimit) {
    const std::size_t end = header.find(';');
    const std::string_view pair = Trimmed(header.substr(0, end));
    header.remove_prefix(end == header.npos ? header.size() : end + 1);
    const std::size_t equals = pair.find('=');
    if (equals == pair.npos || equals == 0) continue;
    std::string_view value = pair.substr(equals + 1);
    if (value.size() >= 2 && value.starts_with('"') && value.ends_with('"'))
      value = value.substr(1, value.size() - 2);
    cookies.emplace_back(pair.substr(0, equals), value);
  }
  return cookies;
}

std::string HeaderValue::Parameter(std::string_view name) const {
  const auto found = std::ranges::find(parameters, name, &Fields::value_type::first);
  return found == parameters.end() ? std::string() : found->second;
}

Expected<HeaderValue> HeaderValueOf(std::string_view header) {
  HeaderValue value;
  const std::size_t first = header.find(';');
  value.word = LowerCase(Trimmed(header.substr(0, first)));
  header.remove_prefix(first == header.npos ? header.size() : first);
  while (!header.empty()) {
    header.remove_prefix(1);  // the semicolon
    header = Trimmed(header);
    if (header.empty()) break;
    const std::size_t equals = header.find('=');
    if (equals == header.npos || equals == 0) return Bad("a header's parameter has no '='");
    std::string name = LowerCase(Trimmed(header.substr(0, equals)));
    header.remove_prefix(equals + 1);
    std::string text;
    if (header.starts_with('"')) {
      auto quoted = TakeQuoted(header);
      if (!quoted) return Bad("a header's quotation marks don't end");
      text = *std::move(quoted);
      header = Trimmed(header);
      if (!header.empty() && header.front() != ';')
        return Bad("a header's text goes on after its end");
    } else {
      const std::size_t end = std::min(header.find(';'), header.size());
      text = Trimmed(header.substr(0, end));
      header.remove_prefix(end);
    }
    if (value.parameters.size() == FieldLimit) return Bad("a header has more than 100 parameters");
    value.parameters.emplace_back(std::move(name), std::move(text));
  }
  return value;
}

Expected<HostName> HostNameOf(std::string_view text) {
  HostName host;
  if (text.starts_with('[')) {
    const std::size_t end = text.find(']');
    if (end == text.npos) return Bad("the host's bracket doesn't end");
    host.name = LowerCase(text.substr(1, end - 1));
    text.remove_prefix(end + 1);
  } else {
    const std::size_t end = std::min(text.find(':'), text.size());
    host.name = LowerCase(text.substr(0, end));
    text.remove_prefix(end);
  }
  if (!text.empty()) {
    host.port = text.substr(1);
    if (text.front() != ':' || host.port.empty() || host.port.size() > 5 ||
        host.port.find_first_not_of("0123456789") != host.port.npos)
      return Bad("the host's port is no number");
  }
  constexpr std::string_view Allowed = "abcdefghijklmnopqrstuvwxyz0123456789.-_:";
  if (host.name.empty() || host.name.find_first_not_of(Allowed) != host.name.npos)
    return Bad("the host is no name");
  return host;
}

}  // namespace rastrel::server::web
