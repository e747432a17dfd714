#include "children/coreodalis/attempt.h"

#include "rastrel/platform/os/outcome.h"

namespace rastrel::odalis {

Problem SystemProblem(const std::string& operation, const std::string& subject, int error) {
  return Problem{os::Describe(os::Failure{operation, subject, error})};
}

}  // namespace rastrel::odalis
