#include "rastrel/printing/test_print.h"

#include "rastrel/job/ex_job_ticket.h"

bool TestPrint() {
  CExJobTicket ticket;
  ticket.SetJobFile(L"C:\\tmp\\testpage.ps");
  ticket.m_JobData.PrinterName = L"KVI Tiff Screen Preview";
  ticket.m_JobData.PrintModeFolder = L"TIFF";
  ticket.m_JobData.PrintModeName = L"tiff default.ps";
  const bool started = ticket.PrintJob();
  if (started) ticket.EndPrint();
  return started;
}
