#include "interpreter/wall.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>

#include <cerrno>

#include "interpreter/file_rules.h"

namespace rastrel::interpreter {
namespace {

// Above every number that a program is given, so that putting one in place never hits this.
constexpr int LowestOwn = 100;

void Limit(__rlimit_resource resource, std::uint64_t value) noexcept {
  if (value == 0) return;
  const rlimit limit{value, value};
  setrlimit(resource, &limit);
}

}  // namespace

Expected<Wall> Wall::Build(const WallRequest& request) {
  Wall wall(request);
  if (!request.confined) return wall;
  auto files = MakeFileRules(request.paths);
  if (!files) return files.Error();
  if (!files->IsOpen()) return wall;
  wall.m_Files.Reset(fcntl(files->Get(), F_DUPFD_CLOEXEC, LowestOwn));
  if (!wall.m_Files.IsOpen()) return Failure{"dup", "the rules of files", errno};
  return wall;
}

int Wall::Enter() noexcept {
  Limit(RLIMIT_FSIZE, m_Request.fileBytes);
  Limit(RLIMIT_CPU, m_Request.processorSeconds);
  Limit(RLIMIT_AS, m_Request.memoryBytes);
  Limit(RLIMIT_CORE, 1);
  if (!m_Request.confined) return -1;
  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  EnterFileRules(m_Files.Get());
  return m_Calls.Enter();  // the last, since it refuses calls
}

MachineWalls WallsOfThisMachine() {
  return {.filesVersion = FileRulesVersion(), .calls = CallFilter::IsPossible()};
}

}  // namespace rastrel::interpreter
