#pragma once

#include <cerrno>
#include <string>

#include "rastrel/platform/os/system_calls.h"
#include "tests/support/print_fixture.h"

namespace rastrel::test {

/// Lets each wait that includes a child fail with ENOMEM, and every other go on. Within a
/// SystemCallsGuard.
inline void FailWaitsForChildren() {
  static os::SystemCalls machine;
  machine = os::Calls();
  os::Calls().poll = [](pollfd* entries, nfds_t count, int milliseconds) {
    for (nfds_t index = 0; index < count; ++index) {
      std::error_code ignored;
      const std::string what = std::filesystem::read_symlink(
          "/proc/self/fd/" + std::to_string(entries[index].fd), ignored);
      if (what.find("pidfd") != std::string::npos) return errno = ENOMEM, -1;
    }
    return machine.poll(entries, count, milliseconds);
  };
}

/// A test with a queue program that is a shell script or a program of tests/support/children.
class QueueTest : public PrintTest {
 protected:
  static constexpr const char* QueueProgram = "Queue/JobSpool.exe";

  QueueTest() : m_Descriptors(OpenDescriptors()), m_Threads(Threads()) {
    m_Mark = m_Library.LogMark();
    m_Descriptors = OpenDescriptors();  // the log is one of them
  }

  void Queue(const std::string& body) { Script(QueueProgram, body); }
  /// Puts a program of tests/support/children in its place.
  void QueueChild(const char* program) { Program(QueueProgram, program); }

  void ExpectNothingLeft() {
    EXPECT_FALSE(HasChildren());
    EXPECT_EQ(OpenDescriptors(), m_Descriptors);
    // Fewer is no fault: a sanitizer's own thread may have gone since.
    EXPECT_LE(ThreadsSettled(m_Threads), m_Threads);
  }

  std::size_t m_Descriptors;
  std::size_t m_Threads;
};

}  // namespace rastrel::test
