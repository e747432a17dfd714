#pragma once

#include <gtest/gtest.h>
#include <poll.h>

#include <cstdint>
#include <string>

#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/process.h"

namespace rastrel::test {

/// A script as a child's program.
inline os::SpawnRequest Shell(const std::string& script) {
  return {.executable = "/bin/sh",
          .arguments = {"sh", "-c", script},
          .environment = {"PATH=/usr/bin:/bin"}};
}

/// A child that is ended and closed with the test.
class RunningChild {
 public:
  explicit RunningChild(const os::SpawnRequest& request) : m_Child(os::Spawn(request)) {}
  ~RunningChild() {
    if (!m_Child) return;
    static_cast<void>(os::Terminate(m_Child->process));
    os::CloseHandle(m_Child->process);
  }
  RunningChild(const RunningChild&) = delete;
  RunningChild& operator=(const RunningChild&) = delete;
  [[nodiscard]] bool Started() const { return static_cast<bool>(m_Child); }
  [[nodiscard]] HANDLE Process() const { return m_Child->process; }
  [[nodiscard]] std::uint32_t Id() const { return m_Child->id; }

  os::ExitState WaitForEnd() const {
    pollfd entry{.fd = Process(), .events = POLLIN, .revents = 0};
    EXPECT_EQ(::poll(&entry, 1, 20'000), 1);
    const auto state = os::TakeExitState(Process());
    EXPECT_TRUE(state);
    return state ? *state : os::ExitState{};
  }

 private:
  rastrel::Expected<os::ChildProcess> m_Child;
};

}  // namespace rastrel::test
