#include "cli/server/job_table.h"

#include "cli/server/csv_table.h"
#include "cli/server/ink_text.h"
#include "cli/server/job_filter.h"

namespace rastrel::cli {

std::string JobTableHead() {
  return CsvRow({"job", "title", "owner", "source", "device", "work", "state", "priority", "bytes",
                 "pages", "submitted", "started", "ended", "attempts", "result", "ink", "message"});
}

std::string JobTableRow(const server::Job& job) {
  return CsvRow({std::to_string(job.id), job.title, job.owner, job.source, job.device,
                 server::NameOf(job.work), server::NameOf(job.state), std::to_string(job.priority),
                 std::to_string(job.bytes), std::to_string(job.pages), TimeText(job.submitted),
                 TimeText(job.started), TimeText(job.ended), std::to_string(job.attempts),
                 std::to_string(job.result), SummedInk(job.ink), job.message});
}

}  // namespace rastrel::cli
