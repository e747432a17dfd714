#pragma once

#include "rastrel/platform/os/expected.h"

namespace rastrel::test {

/// The system's error number of a result: 0 if it is a success.
template <typename T>
[[nodiscard]] int ErrorNumber(const Expected<T>& result) {
  return result ? 0 : result.Error().error;
}

}  // namespace rastrel::test
