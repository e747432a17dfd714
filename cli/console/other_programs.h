#pragma once

#include <string>
#include <vector>

namespace rastrel::cli {

/// Starts a program that goes on by itself, with no standard streams of this one. False if it
/// can't.
bool StartAndForget(const std::string& program, const std::vector<std::string>& arguments);

}  // namespace rastrel::cli
