#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace rastrel::cli {

/// Runs a program that writes little and ends soon, and returns the first line of its standard
/// output. Nothing if it can't be started, fails, or has not ended after `limit`, when it
/// is ended.
[[nodiscard]] std::optional<std::string> FirstLineOf(const std::string& program,
                                                     const std::vector<std::string>& arguments,
                                                     std::chrono::milliseconds limit);

/// Starts a program that goes on by itself, with no standard streams of this one. False if it
/// can't.
bool StartAndForget(const std::string& program, const std::vector<std::string>& arguments);

}  // namespace rastrel::cli
