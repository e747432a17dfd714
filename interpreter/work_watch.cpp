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

WorkWatch::WorkWatch(const RunDirectory& directory, const Settings& settings, pid_t interpreter)
    : m_Directory(directory),
      m_Settings(settings),
      m_Interpreter(interpreter),
      m_Deadline(os::MonotonicNanoseconds() +
                 static_cast<std::int64_t>(std::min(settings.timeSeconds, MaximumSeconds)) *
                     NanosecondsPerSecond) {}

std::int64_t WorkWatch::Left() const { return m_Deadline - os::MonotonicNanoseconds(); }

Failure WorkWatch::TimeOver() const {
  return FailureOf("The job took longer than " + std::to_string(m_Settings.timeSeconds) +
                   " seconds and was ended (RASTREL_RIP_TIMEOUT)");
}

Expected<void> WorkWatch::CheckFiles() {
  const std::int64_t now = os::MonotonicNanoseconds();
  if (now < m_NextLook) return {};
  m_NextLook = now + Interval;
  const DiskUse named = UseOf(m_Directory.Temporary());
  const DiskUse anonymous = UseOfAnonymous(m_Interpreter);
  const DiskUse planes = UseOf(m_Directory.Planes());
  const std::uint64_t limit = m_Settings.workMebibytes;
  if (named.bytes + anonymous.bytes > limit << 20 || named.files > WorkFiles) {
    return FailureOf("The job's temporary files take more than " + std::to_string(limit) +
                     " MiB (RASTREL_RIP_TEMP), or are more than " + std::to_string(WorkFiles));
  }
  if (planes.bytes > m_Settings.totalMebibytes << 20 || planes.files > WorkFiles) {
    return FailureOf(
        "The job's separations take more than " + std::to_string(m_Settings.totalMebibytes) +
        " MiB (RASTREL_RIP_SIZE), or are more than " + std::to_string(WorkFiles) + " files");
  }
  return {};
}

}  // namespace rastrel::interpreter
