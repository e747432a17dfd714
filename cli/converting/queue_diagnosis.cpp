#include "cli/converting/queue_diagnosis.h"

#include <algorithm>

#include "cli/installation/installation.h"
#include "rastrel/job/exe_paths.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/process.h"

namespace rastrel::cli {
namespace {

constexpr std::uint64_t MaximumOfLog = std::uint64_t{64} << 20;

}  // namespace

Expected<void> CheckQueueProgram() {
  const std::wstring& program = CExePaths::Instance().m_QueueExe;
  if (os::Exists(program)) return {};
  return FailureOf("the queue program is missing: '" + os::ToNative(program) +
                   "'; `rastrel doctor` tells more");
}

std::string LastErrorOfQueue() {
  const std::string name =
      RipDirectory() + "/Rastrel-" + std::to_string(os::CurrentProcessId()) + ".log";
  const auto log = os::ReadWholeFile(os::FromNative(name), MaximumOfLog);
  if (!log) return {};
  // After the head of an entry: the time, then the thread's number in brackets.
  const std::string mark = "]ERROR: ";
  const std::size_t found = log->rfind(mark);
  if (found == log->npos) return {};
  const std::size_t begin = found + mark.size();
  // A line of the program ends with the entry: at its line end, or at the next entry's head.
  const std::size_t end = std::min(log->find_first_of("\r\n", begin), log->find("[", begin));
  return log->substr(begin, end == log->npos ? end : end - begin);
}

}  // namespace rastrel::cli
