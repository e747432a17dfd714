#pragma once

#include <array>
#include <stdexcept>
#include <string>
#include <utility>

#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// How the command ends. Scripts rely on the numbers, which the manual page and the help list.
enum class ExitStatus : int {
  Done = 0,
  JobFailed = 1,
  WrongUse = 2,
  BadInput = 3,
  Cancelled = 4,
  NotInstalled = 5,
  NoMatch = 6,
  NotPrepared = 7,
  NoPixels = 8,
  NoCutLines = 9,
  NotWritten = 10,
  FaultsFound = 11,
};

struct ExitStatusRow {
  ExitStatus status;
  const char* meaning;
};

/// Every status with its meaning, in order.
inline constexpr std::array<ExitStatusRow, 12> ExitStatuses{{
    {ExitStatus::Done, "Done."},
    {ExitStatus::JobFailed, "The job failed."},
    {ExitStatus::WrongUse, "Wrong use."},
    {ExitStatus::BadInput, "The input is missing, or is not what the command reads."},
    {ExitStatus::Cancelled, "Cancelled."},
    {ExitStatus::NotInstalled, "Something is not installed."},
    {ExitStatus::NoMatch, "A chart has no entry that matches."},
    {ExitStatus::NotPrepared, "A conversion's working copy or job header can't be written."},
    {ExitStatus::NoPixels, "The pixels of a conversion can't be read."},
    {ExitStatus::NoCutLines,
     "The cut lines of a conversion can't be read, or there are none to cut."},
    {ExitStatus::NotWritten, "The result of a conversion can't be drawn or written."},
    {ExitStatus::FaultsFound, "Paths to cut have faults."},
}};

/// Ends the command with a status and a message for the user, which RunProgram writes. The message
/// is UTF-8, without a full stop or line feed at the end.
class CommandError : public std::runtime_error {
 public:
  CommandError(ExitStatus status, const std::string& message)
      : std::runtime_error(message), m_Status(status) {}

  [[nodiscard]] ExitStatus Status() const { return m_Status; }

 private:
  ExitStatus m_Status;
};

/// The value of a result; without one it ends the command with `status` and the failure as the
/// message. For the commands themselves: code below them hands failures on as they are.
template <typename T>
T OrEnd(ExitStatus status, Expected<T> result) {
  if (!result) throw CommandError(status, Describe(result.Error()));
  return *std::move(result);
}
inline void OrEnd(ExitStatus status, const Expected<void>& result) {
  if (!result) throw CommandError(status, Describe(result.Error()));
}

/// The same, where one operation fails in two ways: a failure of the input ends the command with
/// BadInput, and any other with `otherwise`.
template <typename T>
T OrEndByCode(ExitStatus otherwise, Expected<T> result) {
  const bool badInput = !result && result.Error().code == FailureCode::BadInput;
  return OrEnd(badInput ? ExitStatus::BadInput : otherwise, std::move(result));
}
inline void OrEndByCode(ExitStatus otherwise, const Expected<void>& result) {
  const bool badInput = !result && result.Error().code == FailureCode::BadInput;
  OrEnd(badInput ? ExitStatus::BadInput : otherwise, result);
}

/// The same for a name that the user gave: a failure of the name itself (BadInput) is wrong use,
/// and any other the machine's.
inline void OrEndAsNamed(const Expected<void>& result) {
  const bool isOfName = !result && result.Error().code == FailureCode::BadInput;
  OrEnd(isOfName ? ExitStatus::WrongUse : ExitStatus::JobFailed, result);
}

}  // namespace rastrel::cli
