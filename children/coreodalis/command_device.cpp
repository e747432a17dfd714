#include "children/coreodalis/command_device.h"

#include <cerrno>

#include "children/coreodalis/report.h"

namespace rastrel::odalis {

CommandDirectory::~CommandDirectory() {
  const std::string path = m_Directory.Path();
  if (path.empty()) return;  // moved from
  if (const auto removed = m_Directory.Remove(); !removed) {
    ReportWarning(Describe(removed.Error()));
  }
  static_cast<void>(m_Guardian.Release(path));
}

Expected<CommandDirectory> CommandDirectory::Create(interpreter::Guardian& guardian) {
  std::string guarded;
  auto directory = os::PrivateDirectory::Make("rastrel-page-", [&](const std::string& path) {
    guarded = path;
    return guardian.Guard(path);
  });
  if (directory) return CommandDirectory(std::move(*directory), guardian);
  static_cast<void>(guardian.Release(guarded));
  if (directory.Error().error == ECANCELED) return FailureOf("the guardian process is gone");
  return directory.Error();
}

}  // namespace rastrel::odalis
