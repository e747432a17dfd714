#include "cli/console/unwritten_file.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include "cli/console/options.h"

namespace rastrel::cli {

os::Existing UnnamedExisting(const Invocation& invocation) {
  return invocation.Has(OptionId::Force) ? os::Existing::Replaced : os::Existing::Refused;
}

bool IsMachineTrouble(int error) {
  constexpr std::array Troubles{EIO, ENOSPC, EDQUOT, EMFILE, ENFILE, ENOMEM};
  return std::ranges::find(Troubles, error) != Troubles.end();
}

std::string WhyUnwritten(const Failure& failure) {
  if (failure.error == EEXIST)
    return "there is one of that name, which only --force replaces; nothing was written";
  return failure.error != 0 ? DescribeError(failure.error) : failure.why;
}

void ThrowUnwritten(const Failure& failure) { ThrowUnwritten("can't write", failure); }

void ThrowUnwritten(const std::string& beginning, const Failure& failure) {
  const ExitStatus status = failure.error == EEXIST ? ExitStatus::WrongUse : ExitStatus::JobFailed;
  throw CommandError(status, beginning + " '" + failure.where + "': " + WhyUnwritten(failure));
}

}  // namespace rastrel::cli
