#pragma once

#include <string>

#include "rastrel/platform/os/expected_or.h"

namespace rastrel::odalis {

/// Why something was given up, in words for the person who reads the job's log. One line of UTF-8
/// that says what failed, on what, and why.
struct Problem {
  std::string text;
};

/// "OPERATION 'SUBJECT': words of the error number".
[[nodiscard]] Problem SystemProblem(const std::string& operation, const std::string& subject,
                                    int error);

/// A value, or the problem that stands in its place.
template <typename Value>
using Attempt = os::ExpectedOr<Value, Problem>;

/// An attempt at something that gives nothing but its success.
struct Success {};

}  // namespace rastrel::odalis
