#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "cli/console/options.h"
#include "cutting/nest/nest.h"
#include "rastrel/platform/os/signals.h"

namespace rastrel::cli {

/// The time that a search for a layout has, the signals that end the command, and the line on a
/// terminal that says how far it is. On the stack of the command, whose thread calls it all.
class NestWatch {
 public:
  /// Begins with the signals and the time. REQUIRES: no other thread runs yet. Throws CommandError.
  NestWatch(const Invocation& invocation, std::int64_t seconds);
  ~NestWatch();
  NestWatch(const NestWatch&) = delete;
  NestWatch& operator=(const NestWatch&) = delete;

  /// For NestOptions: false after a signal, and when the time is over.
  [[nodiscard]] bool GoOn(const cutting::NestProgress& progress);
  /// Whether a signal came.
  [[nodiscard]] bool IsStopped() const { return m_IsStopped; }

 private:
  void Show(const cutting::NestProgress& progress);

  std::atomic<bool> m_IsStopped = false;
  std::unique_ptr<os::StopSignals> m_Signals;
  std::int64_t m_Begin = 0;  // nanoseconds of the clock that only goes forward
  std::int64_t m_Seconds = 0;
  bool m_ShowsLine = false;
  std::string m_Line;
};

}  // namespace rastrel::cli
