#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace rastrel::printing {

/// The arguments that a command line text stands for. A double quote begins or ends a stretch in
/// which blanks don't separate, and stands nowhere itself; nothing escapes it. Outside such a
/// stretch blanks and tabs separate.
[[nodiscard]] std::vector<std::wstring> ArgumentsOfCommandLine(std::wstring_view line);

}  // namespace rastrel::printing
