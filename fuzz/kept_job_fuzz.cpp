// The traces of an earlier command out of any text: the record of a job in the spool,
// and the owners that directories and names of temporary files have.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "rastrel/cfm/kept_job.h"
#include "rastrel/platform/os/owner.h"

namespace {

using namespace rastrel;

void Check(bool holds) {
  if (!holds) std::abort();
}

void CheckRecord(std::string_view text) {
  const auto job = cfm::ParseKeptJob(text);
  if (!job) {
    Check(job.Error().line > 0 && !job.Error().why.empty());
    return;
  }
  for (const cfm::KeptPage& page : job->pages) {
    Check(!page.title.empty() && page.title != "." && page.title != "..");
    Check(page.title.find('/') == page.title.npos && page.title.find('\0') == page.title.npos);
  }
  Check(cfm::FormatKeptJob(*job) == text);
}

// Only a name of the form that temporary files get is taken for abandoned.
void CheckOwner(std::string_view line) {
  const auto identity = os::ParseIdentity(line);
  if (identity) Check(os::ParseIdentity(os::FormatIdentity(*identity)) == identity);
  if (!os::IsAbandonedTemporaryName(line)) return;
  Check(line.starts_with(".rastrel-") && line.ends_with(".tmp"));
  Check(std::ranges::count(line, '.') == 5);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  CheckRecord(text);
  CheckOwner(text.substr(0, text.find('\n')));
  return 0;
}
