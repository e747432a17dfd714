#pragma once

#include <csignal>
#include <functional>
#include <memory>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/thread.h"

namespace rastrel::os {

/// Takes the signals by which a terminal, a person or a service manager asks a program to end
/// (SIGINT, SIGTERM, SIGHUP), so that they don't end it but come as calls. A signal that was
/// ignored when the program was started stays ignored. Children are not touched by any of this:
/// they start with nothing masked.
class StopSignals {
 public:
  /// Begins to take them. `onSignal` gets the signal's number; it is called on a thread of its own,
  /// one call at a time. After a failure the signals act as before. REQUIRES: the process has no
  /// other thread yet that could be sent a signal.
  [[nodiscard]] static Expected<std::unique_ptr<StopSignals>> Start(
      std::function<void(int)> onSignal);

  /// Waits for a call that is under way. The signals stay masked, so that one that comes late does
  /// not interrupt the program's last steps.
  ~StopSignals();
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

 private:
  explicit StopSignals(std::function<void(int)> onSignal);
  [[nodiscard]] Expected<void> Open(const sigset_t& taken);
  void Listen();

  std::function<void(int)> m_OnSignal;
  FileDescriptor m_Signals;
  FileDescriptor m_End;  // a semaphore that ends the thread
  std::unique_ptr<Thread> m_Thread;
};

}  // namespace rastrel::os
