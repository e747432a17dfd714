#include "rastrel/job/app_log.h"

#include <atomic>

#include "rastrel/job/exe_paths.h"
#include "rastrel/job/format_string.h"
#include "rastrel/job/log_cleanup.h"
#include "rastrel/job/log_entry.h"
#include "rastrel/job/printf_text.h"
#include "rastrel/job/singleton.h"
#include "rastrel/platform/os/clock.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/text.h"

namespace os = rastrel::os;

namespace {

rastrel::job::Singleton<CAppLog>& Holder() {
  static rastrel::job::Singleton<CAppLog> holder;
  return holder;
}

void WriteToStandardError(std::string_view text, const rastrel::Failure& /*why*/) {
  os::WriteToStandardError(text);
}

std::atomic<CAppLog::LostTextHandler> s_LostText = WriteToStandardError;

}  // namespace

void CAppLog::SetLostTextHandler(LostTextHandler handler) { s_LostText = handler; }

CAppLog& CAppLog::Instance() {
  return Holder().Get([] { new CAppLog; });
}

void CAppLog::DeleteInstance() { Holder().Delete(); }

CAppLog::State CAppLog::GetState() {
  const CAppLog* const log = Holder().Peek();
  if (log == nullptr) return State::None;
  return log->m_File < 0 ? State::Failed : State::Open;
}

CAppLog::CAppLog() {
  // First of all: finding the directory and cleaning up may already log.
  Holder().Announce(this);
  formatstringT<wchar_t> name;
  const std::wstring& directory = CExePaths::Instance().m_RipDir;
  name.Format(L"%s%s%u.log", directory, rastrel::job::LogNamePrefix, os::CurrentProcessId());
  m_FileName = name;
  Open();
  const int count = rastrel::job::RemoveOldLogs(*this, directory);
  Printf(L"%i old log(s) cleaned up", count);
}

CAppLog::~CAppLog() {
  Holder().Retract();
  if (m_File >= 0) os::CloseHandle(m_File);
}

void CAppLog::Open() {
  if (m_FileName.empty()) {
    m_Failure = rastrel::FailureOf("there is no directory for it");
    return;
  }
  auto file = os::CreateLog(m_FileName);
  if (file) {
    m_File = file->Release();
  } else {
    m_Failure = file.Error();
  }
}

void CAppLog::Write(const char* text) { WriteEntry(text); }

void CAppLog::Write(const wchar_t* text) { WriteEntry(os::Utf8FromWide(text)); }

void CAppLog::PrintArguments(const wchar_t* format,
                             std::span<const rastrel::job::FormatArgument> arguments) {
  const std::wstring text = rastrel::job::PrintfText(format, arguments) + L"\r\n";
  Write(text.c_str());
}

void CAppLog::WriteEntry(std::string_view text) {
  m_Lock.Enter();
  if (m_File < 0) {
    // The lock stays entered; see the class.
    s_LostText.load()(text, m_Failure);
    return;
  }
  std::string entry = rastrel::job::LogEntryHead(os::CurrentLocalTime(), os::CurrentThreadId());
  entry += text;
  if (const auto written = os::WriteAll(m_File, entry); !written)
    s_LostText.load()(text, rastrel::FailureAt(os::ToNative(m_FileName), written.Error()));
  m_Lock.Leave();
}
