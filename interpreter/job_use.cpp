#include "interpreter/job_use.h"

#include <ctime>
#include <fstream>
#include <string>

namespace rastrel::interpreter {

std::size_t JobUse::Join() {
  const std::lock_guard lock(m_Mutex);
  m_Members.emplace_back();
  return m_Members.size() - 1;
}

RunUse JobUse::Report(std::size_t number, const RunUse& use) {
  const std::lock_guard lock(m_Mutex);
  m_Members.at(number).use = use;
  RunUse sum;
  for (const Member& member : m_Members) {
    sum.work.bytes += member.use.work.bytes;
    sum.work.files += member.use.work.files;
    sum.planes.bytes += member.use.planes.bytes;
    sum.planes.files += member.use.planes.files;
    sum.memory += member.use.memory;
    sum.nanoseconds += member.use.nanoseconds;
  }
  return sum;
}

void JobUse::AddPages(std::size_t number, std::uint64_t bytes) {
  const std::lock_guard lock(m_Mutex);
  m_Members.at(number).pages += bytes;
}

std::uint64_t JobUse::PagesOf(std::size_t number) {
  const std::lock_guard lock(m_Mutex);
  return m_Members.at(number).pages;
}

std::uint64_t JobUse::PagesOfAll() {
  const std::lock_guard lock(m_Mutex);
  std::uint64_t sum = 0;
  for (const Member& member : m_Members) sum += member.pages;
  return sum;
}

void JobUse::Drop(std::size_t number) {
  const std::lock_guard lock(m_Mutex);
  Member& member = m_Members.at(number);
  const std::uint64_t spent = member.use.nanoseconds;
  member = Member{};
  member.use.nanoseconds = spent;
}

std::uint64_t OwnMemoryOf(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  std::string line;
  const std::string key = "RssAnon:";
  while (std::getline(status, line)) {
    if (line.starts_with(key)) return std::strtoull(line.c_str() + key.size(), nullptr, 10) << 10;
  }
  return 0;
}

std::uint64_t ProcessorTimeOf(pid_t process) {
  clockid_t clock = 0;
  timespec time{};
  if (process <= 0 || clock_getcpuclockid(process, &clock) != 0 || clock_gettime(clock, &time) != 0)
    return 0;
  return static_cast<std::uint64_t>(time.tv_sec) * 1'000'000'000 +
         static_cast<std::uint64_t>(time.tv_nsec);
}

}  // namespace rastrel::interpreter
