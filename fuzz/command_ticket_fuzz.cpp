// The command's ticket files out of any bytes: a ticket that was loaded is saved as one that loads
// again, and a file that is none is refused with its path.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "cli/printing/ticket_file.h"
#include "rastrel/job/job_ticket.h"
#include "tests/support/scratch_directory.h"

namespace {

void Check(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace rastrel;
  static const test::MemoryScratchDirectory scratch;
  const std::string path = scratch.Path("a.ticket");
  const std::string copy = scratch.Path("b.ticket");
  scratch.Write("a.ticket", {reinterpret_cast<const char*>(bytes), size});
  CJobTicket ticket;
  const auto loaded = cli::LoadTicket(ticket, path);
  if (!loaded) {
    Check(Describe(loaded.Error()).find(path) != std::string::npos);
    return 0;
  }
  Check(static_cast<bool>(cli::SaveTicket(ticket, copy)));
  CJobTicket again;
  Check(static_cast<bool>(cli::LoadTicket(again, copy)));
  Check(again.m_JobName == ticket.m_JobName && again.m_Copies == ticket.m_Copies);
  // A ticket that was saved once is saved the same again.
  const std::string saved = scratch.Read("b.ticket");
  Check(static_cast<bool>(cli::SaveTicket(again, path)));
  Check(scratch.Read("a.ticket") == saved);
  return 0;
}
