#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "rastrel/platform/os/expected.h"
#include "server/web/http/request.h"

/// The texts of a request that HTTP encodes, read strictly: what can be understood in two ways is
/// refused. Failures are a reason alone.
namespace rastrel::server::web {

/// More fields than these in a query or a form are refused.
inline constexpr std::size_t FieldLimit = 100;

/// The path of a request's target, decoded once. Fails for a percent sign without two digits, for
/// what decodes to a control character, a slash or a backslash, or to no UTF-8, and for an empty
/// part (but the last), "." and "..".
[[nodiscard]] Expected<std::string> PathOf(std::string_view encoded);
/// The fields of a query or of a form: "a=1&b=%20+". A field without '=' has an empty value.
[[nodiscard]] Expected<Fields> FieldsOf(std::string_view encoded);
/// The pairs of a Cookie header; what is none is left out.
[[nodiscard]] Fields CookiesOf(std::string_view header);

/// A header such as Content-Type or Content-Disposition: a word in lower case, and parameters with
/// names in lower case, of which quotes are taken off.
struct HeaderValue {
  std::string word;
  Fields parameters;
  /// The first of that name; empty if there is none.
  [[nodiscard]] std::string Parameter(std::string_view name) const;
};
/// Fails for quotes that don't end and parameters without '='.
[[nodiscard]] Expected<HeaderValue> HeaderValueOf(std::string_view header);

/// Host and port of a Host header or of an origin without its scheme: "[::1]:8632", "shop". The
/// name is in lower case and without brackets; the port is empty if there is none.
struct HostName {
  std::string name;
  std::string port;
};
[[nodiscard]] Expected<HostName> HostNameOf(std::string_view text);

/// The text in lower case (ASCII).
[[nodiscard]] std::string LowerCase(std::string_view text);
/// Whether it is well-formed UTF-8.
[[nodiscard]] bool IsUtf8(std::string_view text);
/// Whether two secrets are the same; takes as long whatever they hold.
[[nodiscard]] bool IsSameSecret(std::string_view one, std::string_view other);

}  // namespace rastrel::server::web
