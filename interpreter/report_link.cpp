#include "interpreter/report_link.h"

#include <unistd.h>

#include <cerrno>
#include <utility>

#include "rastrel/platform/os/random_digits.h"

namespace rastrel::interpreter {
namespace {

constexpr std::size_t NameBytes = 16;
constexpr const char* ErrorStream = "/proc/self/fd/2";

}  // namespace

ReportLink::ReportLink(const std::string& directory) {
  const auto name = os::RandomDigits(NameBytes);
  if (!name) return;
  const std::string path = directory + "/" + *name;
  if (symlink(ErrorStream, path.c_str()) != 0) return;
  m_Name = *name;
  m_Path = path;
}

ReportLink::~ReportLink() { static_cast<void>(Remove()); }

Expected<void> ReportLink::Remove() {
  if (m_Path.empty()) return {};
  if (unlink(m_Path.c_str()) != 0) return Failure{"unlink", m_Path, errno};
  m_Path.clear();
  return {};
}

}  // namespace rastrel::interpreter
