#pragma once

#include <optional>
#include <string>

#include "rastrel/job/status.h"

/// The one text that each number of the vocabulary has. A text keeps its mark "(*v*)": the host
/// translates it when it shows it, and finds it in its table with the mark.
namespace rastrel::job {

/// Text of an error; empty for JTE_NONE, "(*v*)Unknown error" for a number outside the table.
[[nodiscard]] std::wstring ErrorText(JT_ERROR code);

/// Text of an info; empty for a number outside the table. For the child states and an originator
/// that is neither child, the text is translated by the host and holds the originator's number.
[[nodiscard]] std::wstring InfoText(JT_INFO code, JT_ORIGINATOR originator);

/// Text of a status, or nothing for a number outside the table.
[[nodiscard]] std::optional<std::wstring> StatusText(JT_STATUS status);

}  // namespace rastrel::job
