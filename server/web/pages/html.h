#pragma once

#include <string>
#include <string_view>

#include "server/queue/job.h"

/// Text of HTML pages. Whatever comes from elsewhere goes through one of these.
namespace rastrel::server::web {

/// Text between tags and within quoted attributes: cleaned (os::CleanLine), so that nothing in it
/// turns the text after it around or is invisible, and with references for & < > " and '.
[[nodiscard]] std::string Escaped(std::string_view text);

/// A person's own text in the value of a field, or the name of a field that is sent back: the same
/// characters, with the references of Escaped. Text with control characters, or that is no UTF-8,
/// is cleaned all the same.
[[nodiscard]] std::string KeptInField(std::string_view text);

/// As Escaped, in an element that keeps its direction to itself.
[[nodiscard]] std::string Isolated(std::string_view text);

/// A value of an address' query, percent-encoded but for letters, digits and -._
[[nodiscard]] std::string QueryValue(std::string_view text);

/// "2026-03-01 14:05" in the server's time zone, as a `time` element; empty for 0.
[[nodiscard]] std::string TimeElement(Time time);

}  // namespace rastrel::server::web
