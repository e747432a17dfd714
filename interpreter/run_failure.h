#pragma once

#include <utility>

#include "rastrel/platform/os/expected.h"

namespace rastrel::interpreter {

/// The first failure of a run, which is the one that is reported: those after it follow from it.
class RunFailure {
 public:
  /// Keeps it unless there is one already. False, for `return m_Failure.Set(...)`.
  bool Set(Failure failure) {
    if (m_Result) m_Result = std::move(failure);
    return false;
  }
  /// True if the run has failed.
  explicit operator bool() const { return !m_Result; }
  [[nodiscard]] const Expected<void>& Result() const { return m_Result; }

 private:
  Expected<void> m_Result;
};

}  // namespace rastrel::interpreter
