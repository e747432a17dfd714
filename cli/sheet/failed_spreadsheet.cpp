#include "cli/sheet/failed_spreadsheet.h"

#include "cli/console/exit_status.h"
#include "spreadsheet/source.h"

namespace rastrel::cli::sheet {
namespace {

bool IsMissingLibrary(const Failure& failure) {
  const auto support = spreadsheet::ZipSupport();
  return !support && support.Error() == failure;
}

ExitStatus StatusOf(const Failure& failure) {
  if (failure.error != 0) return ExitStatus::JobFailed;
  return IsMissingLibrary(failure) ? ExitStatus::NotInstalled : ExitStatus::BadInput;
}

}  // namespace

void EndWith(const Failure& failure) { throw CommandError(StatusOf(failure), Describe(failure)); }

}  // namespace rastrel::cli::sheet
