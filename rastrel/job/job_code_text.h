#pragma once

#include <optional>
#include <string>

#include "rastrel/job/status.h"

/// The texts of a job's codes (status.h). A text keeps its mark "(*v*)": the host translates it
/// when it shows it, and finds it in its table with the mark.
namespace rastrel::job {

/// Text of an error; empty for JTE_NONE, "(*v*)Unknown error" for an unknown code.
[[nodiscard]] std::wstring ErrorText(JT_ERROR code);

/// Text of an info; empty for an unknown code. For the child states and an originator
/// that is neither child, the text is translated by the host and holds the originator's number.
[[nodiscard]] std::wstring InfoText(JT_INFO code, JT_ORIGINATOR originator);

/// Text of a status; nothing for an unknown one.
[[nodiscard]] std::optional<std::wstring> StatusText(JT_STATUS status);

}  // namespace rastrel::job
