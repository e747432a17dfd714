#pragma once

#include <gtest/gtest.h>

#include "tests/support/recording_host.h"

namespace rastrel::test {

/// A recording host that fails the test in which an undo step, a paragraph, a list, a setting or
/// the like is still open at its end.
class CheckedHost : public RecordingHost {
 public:
  ~CheckedHost() override {
    for (const std::string& what : LeftOpen()) ADD_FAILURE() << "left open: " << what;
  }
};

}  // namespace rastrel::test
