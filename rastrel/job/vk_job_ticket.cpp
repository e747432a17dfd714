#include "rastrel/job/vk_job_ticket.h"

#include <optional>

#include "rastrel/platform/mfc/window.h"

namespace {

std::optional<int> KindOf(JT_INFO code) {
  if (code == JTI_PROCESSING_COMPLETED || code == JTI_PRINTING_ABORTED) return JobWindowEnded;
  if (code == JTI_BAD || code == JTI_PROCESSING_STARTED ||
      (code >= JTI_UNDEFINED && code <= JTI_VALID_RECOVERY)) {
    return JobWindowState;
  }
  return std::nullopt;
}

}  // namespace

CVKJobTicket::CVKJobTicket() = default;
// A thread that still ran would report to a ticket half gone.
CVKJobTicket::~CVKJobTicket() { CVKJobTicket::EndPrint(); }

void CVKJobTicket::Error(JT_ERROR code, JT_ORIGINATOR originator) {
  CJobTicket::Error(code, originator);
}

void CVKJobTicket::Info(JT_INFO code, JT_ORIGINATOR originator) {
  CJobTicket::Info(code, originator);
  const auto kind = KindOf(code);
  if (m_pWnd != nullptr && kind)
    m_pWnd->PostMessage(JobWindowInfo, static_cast<std::uintptr_t>(originator), *kind);
}

void CVKJobTicket::Progress(unsigned short percent, JT_ORIGINATOR originator) {
  CJobTicket::Progress(percent, originator);
  if (m_pWnd != nullptr)
    m_pWnd->PostMessage(JobWindowProgress, static_cast<std::uintptr_t>(originator), JobWindowState);
}
