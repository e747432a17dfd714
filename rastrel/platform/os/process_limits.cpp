#include "rastrel/platform/os/process_limits.h"

#include <sys/resource.h>
#include <sys/types.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <utility>

namespace rastrel::os {

Expected<void> LimitProcess(std::uint32_t id, const ProcessLimits& limits) {
  const std::pair<__rlimit_resource, std::uint64_t> wanted[] = {
// A sanitizer maps terabytes of addresses at its start, and keeps hardly any of them.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    {RLIMIT_AS, limits.memoryBytes},
#endif
    {RLIMIT_CPU, limits.processorSeconds},
    {RLIMIT_FSIZE, limits.fileBytes}
  };
  for (const auto& [resource, value] : wanted) {
    if (value == 0) continue;
    rlimit limit{};
    const auto process = static_cast<pid_t>(id);
    if (::prlimit(process, resource, nullptr, &limit) != 0)
      return Failure{"prlimit", std::to_string(id), errno};
    limit.rlim_cur = std::min<rlim_t>(value, limit.rlim_max);
    if (::prlimit(process, resource, &limit, nullptr) != 0)
      return Failure{"prlimit", std::to_string(id), errno};
  }
  return {};
}

}  // namespace rastrel::os
