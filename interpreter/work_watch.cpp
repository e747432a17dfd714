#include "interpreter/work_watch.h"

#include <algorithm>
#include <string>

#include "interpreter/disk_use.h"
#include "rastrel/platform/os/clock.h"

namespace rastrel::interpreter {
namespace {

constexpr std::int64_t NanosecondsPerSecond = 1'000'000'000;
constexpr std::uint64_t MaximumSeconds = 1'000'000'000;  // their nanoseconds fit in 64 bits

}  // namespace

WorkWatch::WorkWatch(const RunDirectory& directory, const Settings& settings, pid_t interpreter,
                     JobUse& use, std::size_t number, bool isFirst)
    : m_Directory(directory),
      m_Settings(settings),
      m_Interpreter(interpreter),
      m_Use(use),
      m_Number(number),
      m_IsFirst(isFirst),
      m_Deadline(os::MonotonicNanoseconds() +
                 static_cast<std::int64_t>(std::min(settings.timeSeconds, MaximumSeconds)) *
                     NanosecondsPerSecond) {}

std::int64_t WorkWatch::Left() const { return m_Deadline - os::MonotonicNanoseconds(); }

Failure WorkWatch::TimeOver() const {
  return FailureOf("The job took longer than " + std::to_string(m_Settings.timeSeconds) +
                   " seconds and was ended (RASTREL_RIP_TIMEOUT)");
}

Failure WorkWatch::ProcessorTimeOver() const {
  return FailureOf("The job took more than " + std::to_string(m_Settings.processorSeconds) +
                   " seconds of processor time and was ended (RASTREL_RIP_CPU)");
}

Expected<void> WorkWatch::CheckUse() {
  const std::int64_t now = os::MonotonicNanoseconds();
  if (now < m_NextLook) return {};
  m_NextLook = now + Interval;
  const DiskUse anonymous = UseOfAnonymous(m_Interpreter);
  RunUse use{UseOf(m_Directory.Temporary()), UseOf(m_Directory.Planes()),
             OwnMemoryOf(m_Interpreter), ProcessorTimeOf(m_Interpreter)};
  use.work.bytes += anonymous.bytes;
  const RunUse sum = m_Use.Report(m_Number, use);
  if (sum.nanoseconds / std::uint64_t{NanosecondsPerSecond} >= m_Settings.processorSeconds)
    return ProcessorTimeOver();
  if (!m_IsFirst) use = sum;
  const std::uint64_t limit = m_Settings.workMebibytes;
  if (use.work.bytes > limit << 20 || use.work.files > WorkFiles) {
    return FailureOf("The job's temporary files take more than " + std::to_string(limit) +
                     " MiB (RASTREL_RIP_TEMP), or are more than " + std::to_string(WorkFiles));
  }
  if (use.planes.bytes > m_Settings.totalMebibytes << 20 || use.planes.files > WorkFiles) {
    return FailureOf(
        "The job's separations take more than " + std::to_string(m_Settings.totalMebibytes) +
        " MiB (RASTREL_RIP_SIZE), or are more than " + std::to_string(WorkFiles) + " files");
  }
  if (!m_IsFirst && use.memory > m_Use.MemoryLimit())
    return FailureOf("The job needs more memory than its interpreters may take together");
  return {};
}

}  // namespace rastrel::interpreter
