#pragma once

#include <optional>
#include <string>

class CAppLog;

namespace rastrel::job {

/// What every log's file name holds in front of the process id.
inline constexpr const wchar_t* LogNamePrefix = L"Rastrel-";

/// The process id that a log's name ends in: what stands between the first "-" and the first "."
/// behind it, if both are there and an unsigned decimal number begins it. Numbers keep their low 32
/// bits, a minus sign negates.
[[nodiscard]] std::optional<std::uint32_t> ProcessOfLog(const std::wstring& name);

/// Removes every log in the directory whose process this process can't act on, and complains in
/// `log` of names and files that resist. Returns how many it removed. A process id that was reused
/// protects an old log for as long as that other process runs.
int RemoveOldLogs(CAppLog& log, const std::wstring& directory);

}  // namespace rastrel::job
