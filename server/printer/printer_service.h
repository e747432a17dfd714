#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/handle.h"

namespace rastrel::os {
class Thread;
}

namespace rastrel::server {

/// Keeps a program of the server running: starts it, and starts it again when it ends, after pauses
/// that double from one second to a minute. A run of a minute or more makes the pause short again.
class PrinterService {
 public:
  /// Called, on the service's thread, with one clean line for the server's log.
  using OnMessage = std::function<void(const std::string& line)>;

  /// `program` is the native path of rastrel-printer, or of another such, which takes its settings
  /// from the data root. Messages call it `name`.
  PrinterService(std::string program, OnMessage onMessage,
                 std::string name = "the network printer");
  /// Stops.
  ~PrinterService();
  PrinterService(const PrinterService&) = delete;
  PrinterService& operator=(const PrinterService&) = delete;

  /// Starts the thread that keeps the program running. A program that can't be started is a
  /// message, and is tried again. Fails without a thread. Not twice.
  [[nodiscard]] Expected<void> Start();
  /// Ends the program, by SIGTERM and after ten seconds by SIGKILL, and the thread. Does nothing if
  /// it does not run.
  void Stop();

 private:
  void Keep();
  void EndProgram(HANDLE process) const;
  [[nodiscard]] bool WaitsForStop(std::chrono::nanoseconds time) const;

  std::string m_Program;
  std::string m_Name;
  OnMessage m_OnMessage;
  HANDLE m_Stop = INVALID_HANDLE_VALUE;
  std::unique_ptr<os::Thread> m_Thread;
};

/// The pause before a program is started again that ended after `ran`, if the pause before was
/// `last` (0 at first).
[[nodiscard]] std::chrono::seconds NextPause(std::chrono::seconds last, std::chrono::seconds ran);

}  // namespace rastrel::server
