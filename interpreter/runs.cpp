#include <utility>

#include "interpreter/interpreter.h"
#include "interpreter/rip_run.h"

namespace rastrel::interpreter {
namespace {

// Runs the job in one of the modes and returns the run, or the failure.
template <typename Mode, typename Result>
auto RunIn(RunRequest request, const RunDirectory& directory, RunListener& listener,
           Guardian& guardian, Result result)
    -> Expected<decltype(result(std::declval<RipRun&>()))> {
  const Mode mode{};
  RipRun run(std::move(request), mode, directory, listener, guardian);
  const auto ran = run.Run();
  if (!ran) return ran.Error();
  return result(run);
}

unsigned PagesOf(const RipRun& run) { return run.Pages(); }

}  // namespace

Expected<unsigned> PrintPages(RunRequest request, const RunDirectory& directory,
                              RunListener& listener, Guardian& guardian) {
  return RunIn<PrintMode>(std::move(request), directory, listener, guardian, PagesOf);
}

Expected<void> RunInstallJob(RunRequest request, const RunDirectory& directory,
                             RunListener& listener, Guardian& guardian) {
  const auto ran = RunIn<InstallMode>(std::move(request), directory, listener, guardian, PagesOf);
  if (!ran) return ran.Error();
  return {};
}

Expected<unsigned> PrintFirstPage(RunRequest request, const RunDirectory& directory,
                                  RunListener& listener, Guardian& guardian) {
  return RunIn<PictureMode>(std::move(request), directory, listener, guardian, PagesOf);
}

Expected<std::string> MeasureFirstPage(RunRequest request, const RunDirectory& directory,
                                       RunListener& listener, Guardian& guardian) {
  return RunIn<MeasureMode>(std::move(request), directory, listener, guardian,
                            [](const RipRun& run) { return run.Measure(); });
}

}  // namespace rastrel::interpreter
