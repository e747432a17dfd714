#include "cli/cutting/nest_watch.h"

#include "cli/console/exit_status.h"
#include "cli/console/standard_streams.h"
#include "cli/console/stop_signals.h"
#include "rastrel/platform/os/clock.h"
#include "rastrel/platform/os/decimal.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/terminal.h"

namespace rastrel::cli {
namespace {

constexpr std::int64_t NanosecondsInSecond = 1'000'000'000;

}  // namespace

NestWatch::NestWatch(const Invocation& invocation, std::int64_t seconds)
    : m_Signals(OrEnd(ExitStatus::JobFailed, TakeStopSignals([this](int) { m_IsStopped = true; }))),
      m_Begin(os::MonotonicNanoseconds()),
      m_Seconds(seconds),
      m_ShowsLine(!invocation.Has(OptionId::Json) &&
                  os::IsTerminal(os::StandardHandle(os::StandardStream::Error))) {}

NestWatch::~NestWatch() {
  m_Signals.reset();
  if (!m_Line.empty()) ClearProgress();
}

bool NestWatch::GoOn(const cutting::NestProgress& progress) {
  if (m_ShowsLine) Show(progress);
  return !m_IsStopped && os::MonotonicNanoseconds() - m_Begin < m_Seconds * NanosecondsInSecond;
}

void NestWatch::Show(const cutting::NestProgress& progress) {
  const std::int64_t passed = (os::MonotonicNanoseconds() - m_Begin) / NanosecondsInSecond;
  std::string line = "nesting: " + std::to_string(progress.layouts) + " layouts, " +
                     os::ShortDecimal(progress.length, 1) + " mm, " + std::to_string(passed) +
                     " of " + std::to_string(m_Seconds) + " s";
  if (line == m_Line) return;
  ShowProgress(line);
  m_Line = std::move(line);
}

}  // namespace rastrel::cli
