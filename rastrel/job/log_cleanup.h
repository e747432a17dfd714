#pragma once

#include <optional>
#include <string>

class CAppLog;

namespace rastrel::job {

/// The part of every log's file name before the process id.
inline constexpr const wchar_t* LogNamePrefix = L"Rastrel-";

/// The process id in a log's name: the text between the first "-" and the first "." after it, if
/// both are there and the text begins with an unsigned decimal number. Numbers keep their low 32
/// bits, a minus sign negates.
[[nodiscard]] std::optional<std::uint32_t> ProcessOfLog(const std::wstring& name);

/// Removes every log in the directory whose process this process can't act on, and complains in
/// `log` of names and files that resist. Returns how many it removed. A process id that was reused
/// protects an old log for as long as that other process runs.
int RemoveOldLogs(CAppLog& log, const std::wstring& directory);

}  // namespace rastrel::job
