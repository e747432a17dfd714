#pragma once

#include <stdexcept>
#include <type_traits>
#include <utility>

#include "rastrel/platform/os/expected.h"

/// How a failure leaves a callback: rows are handed over in the middle of a parse, and parts are
/// unpacked on a thread of their own.
namespace rastrel::spreadsheet {

/// Carries a Failure up to the next function that returns Expected. It never leaves this library.
/// The failure's `error` is 0 if the spreadsheet itself is at fault, and the system's number if
/// this machine is (no space left, no right to write).
class Error : public std::runtime_error {
 public:
  explicit Error(Failure failure)
      : std::runtime_error(Describe(failure)), m_Failure(std::move(failure)) {}

  [[nodiscard]] const Failure& Reason() const { return m_Failure; }

 private:
  Failure m_Failure;
};

/// The value, or an Error in its place.
template <typename T>
T OrThrow(Expected<T> result) {
  if (!result) throw Error(result.Error());
  return *std::move(result);
}
inline void OrThrow(const Expected<void>& result) {
  if (!result) throw Error(result.Error());
}

/// Runs `call`. An Error that it throws becomes the failure of the result; any other exception
/// passes.
template <typename Call>
auto Caught(const Call& call) -> Expected<decltype(call())> {
  try {
    if constexpr (std::is_void_v<decltype(call())>) {
      call();
      return {};
    } else {
      return call();
    }
  } catch (const Error& error) {
    return error.Reason();
  }
}

}  // namespace rastrel::spreadsheet
