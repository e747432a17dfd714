#include "host/drawing/process_limits.h"

#include <sys/prctl.h>
#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <exception>

#include "host/drawing/drawing_files.h"
#include "host/drawing/record_writer.h"
#include "interpreter/wall.h"

namespace rastrel::drawing {

namespace {

ProcessLimits s_Limits;

void Limit(int resource, rlim_t soft, rlim_t hard) {
  const rlimit limit{soft, hard};
  setrlimit(static_cast<__rlimit_resource>(resource), &limit);
}

// Seconds of processor time so far, as the limit counts them: rounded up.
rlim_t UsedSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<rlim_t>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) + 1;
}

// At the soft limit the process ends with SIGXCPU.
void LimitTime(rlim_t seconds) {
  const auto whole = static_cast<rlim_t>(s_Limits.time.count());
  Limit(RLIMIT_CPU, std::min(seconds, whole), whole + 1);
}

// The standard streams are open already.
Expected<void> EnterWalls() {
  interpreter::WallRequest request;
  request.confined = true;
  request.programs = interpreter::WallPrograms::None;
  request.paths = DrawingFiles();
  auto wall = interpreter::Wall::Build(request);
  if (!wall) return wall.Error();
  wall->Enter();
  return {};
}

}  // namespace

Expected<void> LimitProcess(const ProcessLimits& limits) {
  s_Limits = limits;
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  // The font library would keep its list; that it can't is no reason to end.
  std::signal(SIGXFSZ, SIG_IGN);
  Limit(RLIMIT_FSIZE, 0, 0);
  LimitTime(static_cast<rlim_t>(limits.time.count()));
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  // A sanitizer takes far more address space than the program.
  Limit(RLIMIT_AS, limits.memory, limits.memory);
#endif
  return EnterWalls();
}

ForeignFile::ForeignFile(const std::string& name) {
  WriteRecord(graphics::DrawingRecord::FileBegun, name);
  LimitTime(UsedSeconds() + static_cast<rlim_t>(s_Limits.fileTime.count()));
}

ForeignFile::~ForeignFile() {
  // The caller names the file of a failure that is on its way.
  if (std::uncaught_exceptions() > 0) return;
  LimitTime(static_cast<rlim_t>(s_Limits.time.count()));
  WriteRecord(graphics::DrawingRecord::FileEnded);
}

}  // namespace rastrel::drawing
