#include "rastrel/job/ex_job_ticket.h"

#include "rastrel/job/app_log.h"
#include "rastrel/job/exe_paths.h"

CExJobTicket::CExJobTicket() = default;

CExJobTicket::~CExJobTicket() {
  CExJobTicket::EndPrint();  // a thread that still ran would report to a ticket half gone
  CAppLog::DeleteInstance();
  CExePaths::DeleteInstance();
}

void CExJobTicket::Error(JT_ERROR code, JT_ORIGINATOR originator) {
  CJobTicket::Error(code, originator);
}

void CExJobTicket::Info(JT_INFO code, JT_ORIGINATOR originator) {
  CJobTicket::Info(code, originator);
}
