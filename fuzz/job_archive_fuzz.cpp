// The job record's reader against any bytes: it reads a ticket or raises CArchiveException, and
// takes no more memory than the bytes account for. A ticket that was read whole is written and read
// again.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "rastrel/job/job_ticket.h"
#include "rastrel/platform/mfc/archive.h"
#include "rastrel/platform/mfc/file.h"

namespace {

bool Load(CJobTicket& ticket, std::vector<std::uint8_t> bytes) {
  CMemFile file(std::move(bytes));
  CArchive archive(&file, CArchive::load);
  try {
    ticket.Serialize(archive);
  } catch (const CArchiveException&) {
    return false;
  }
  return true;
}

std::vector<std::uint8_t> Store(CJobTicket& ticket) {
  CMemFile file;
  {
    CArchive archive(&file, CArchive::store);
    ticket.Serialize(archive);
  }
  return file.Bytes();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  CJobTicket ticket;
  if (!Load(ticket, {bytes, bytes + size})) return 0;
  CJobTicket again;
  if (!Load(again, Store(ticket))) std::abort();
  if (again.m_JobName != ticket.m_JobName || again.m_Copies != ticket.m_Copies) std::abort();
  return 0;
}
