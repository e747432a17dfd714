#include "children/coreodalis/attempt.h"

#include "rastrel/platform/os/expected.h"

namespace rastrel::odalis {

Problem SystemProblem(const std::string& operation, const std::string& subject, int error) {
  return Problem{Describe(Failure{operation, subject, error})};
}

}  // namespace rastrel::odalis
