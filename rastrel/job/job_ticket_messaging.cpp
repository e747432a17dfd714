#include <cstdarg>

#include "rastrel/job/app_log.h"
#include "rastrel/job/exe_paths.h"
#include "rastrel/job/job_ticket.h"
#include "rastrel/job/printf_text.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/text.h"

namespace {

// The maximum length of a job log line, without its line end. A longer text is truncated.
constexpr std::size_t LogTextLimit = 1021;

bool TakesProgressText(JT_INFO code) {
  return (code >= JTI_BAD && code <= JTI_PROCESSING_STARTED) ||
         (code >= JTI_UNDEFINED && code <= JTI_VALID_RECOVERY);
}

bool IsKnown(JT_INFO code) {
  return (code >= JTI_BAD && code <= JTI_PRINTING_ABORTED) ||
         (code >= JTI_UNDEFINED && code <= JTI_VALID_RECOVERY);
}

}  // namespace

void CJobTicket::Warning(const wchar_t* /*text*/, JT_ORIGINATOR /*originator*/) {}

void CJobTicket::Error(const wchar_t* /*text*/, JT_ORIGINATOR /*originator*/) {}

void CJobTicket::Error(JT_ERROR code, JT_ORIGINATOR /*originator*/) {
  m_Error = code;
  CString text;
  GetErrorText(text);
  CAppLog::Instance().Write(text.c_str());
  if (code != JTE_NONE) m_Status = JS_HOLDING;
  // The text is its own format: no text of the vocabulary holds a percent sign.
  if (code < JT_FIRST_CHILD_CODE) Log(text.c_str());
}

void CJobTicket::Info(JT_INFO code, JT_ORIGINATOR originator) {
  CString text;
  GetInfoText(code, originator, text);
  if (code == JTI_PROCESSING_STARTED) m_Error = JTE_NONE;
  if (code == JTI_PRINTING_ABORTED) {
    // Written directly: an abort leaves no error text in the application log.
    m_Status = JS_HOLDING;
    m_Error = JTE_ABNORMAL;
  }
  if (code == JTI_READY) m_Progress = 0;
  if (TakesProgressText(code)) m_ProgressText.Set(text);
  if (code == JTI_PROCESSING_STARTED)
    CAppLog::Instance().Printf(L"[%s] START: Printing", m_JobName);
  if (code == JTI_PROCESSING_COMPLETED)
    CAppLog::Instance().Printf(L"[%s] STOP: Printing", m_JobName);
  if (!IsKnown(code)) CAppLog::Instance().Printf(L"Unknown info %i in CJobTicket::Info", code);
  if (code < JT_FIRST_CHILD_CODE) Log(L"%s", text.c_str());
}

void CJobTicket::Progress(unsigned short percent, JT_ORIGINATOR /*originator*/) {
  if (percent != 0) m_Progress = percent;
}

void CJobTicket::Log(const wchar_t* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  CString text = rastrel::job::FormatVariableList(format, arguments);
  va_end(arguments);
  if (text.size() > LogTextLimit) text.resize(LogTextLimit);
  text += L"\r\n";
  if (m_pfnLog != nullptr) {
    m_pfnLog(text.c_str());
  } else {
    rastrel::os::WriteToStandardError(rastrel::os::Utf8FromWide(text));
  }
}

void CJobTicket::UseSpoolDirectory() { m_CFMFile.BaseDirectory = CExePaths::Instance().m_CFMDir; }
