#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace rastrel::printing {

/// Splits a command line into its arguments. Spaces and tabs separate them, except between double
/// quotes. The quotes themselves are dropped, and nothing escapes one.
[[nodiscard]] std::vector<std::wstring> ArgumentsOfCommandLine(std::wstring_view line);

}  // namespace rastrel::printing
