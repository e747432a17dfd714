#pragma once

#include <utility>

#include "rastrel/platform/os/expected.h"

/// From the failures of spreadsheets to the command's exit status. For the command itself: code
/// below it hands failures on as they are.
namespace rastrel::cli::sheet {

/// Throws CommandError: NotInstalled without libzip, JobFailed if a call of the system failed, and
/// BadInput otherwise.
[[noreturn]] void EndWith(const Failure& failure);

/// The value; throws as EndWith if there is none.
template <typename T>
T ValueOf(Expected<T> result) {
  if (!result) EndWith(result.Error());
  return *std::move(result);
}
inline void RequireSuccess(const Expected<void>& result) {
  if (!result) EndWith(result.Error());
}

}  // namespace rastrel::cli::sheet
