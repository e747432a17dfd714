#include "server/printer/printer_record.h"

#include <algorithm>

namespace rastrel::server {
namespace {

// A job's line is `Job key="value" ...`, in which quotes of a value are escaped. 5 is processing,
// and 3 is pending.
constexpr std::string_view JobLine = "Job ";
constexpr std::string_view UnderWay = " state=\"5\"";
constexpr std::string_view Waiting = " state=\"3\"";

}  // namespace

std::string RecordWithWaitingJobs(std::string_view record) {
  std::string changed;
  while (!record.empty()) {
    const std::size_t end = std::min(record.find('\n'), record.size() - 1);
    std::string line(record.substr(0, end + 1));
    record.remove_prefix(end + 1);
    const std::size_t state = line.rfind(UnderWay);
    if (line.starts_with(JobLine) && state != line.npos)
      line.replace(state, UnderWay.size(), Waiting);
    changed += line;
  }
  return changed;
}

}  // namespace rastrel::server
