#include "rastrel/conversion/qrast.h"

#include "rastrel/conversion/queue_child.h"
#include "rastrel/job/app_log.h"
#include "rastrel/job/exe_paths.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/pipe.h"

namespace conversion = rastrel::conversion;
namespace os = rastrel::os;

namespace PrintingThread {

namespace {

constexpr std::size_t StderrPipeSize = 16'384;
constexpr const wchar_t* WaitFailed = L"[QRast]: WaitForMultipleObjects failed. Error: %u";
constexpr const wchar_t* ExitCodeFailed = L"[QRast]: GetExitCodeProcess failed on exe: %i";
constexpr const wchar_t* TerminateFailed = L"[QRast]: Couldn't terminate exe: %i";

}  // namespace

CQRast::CQRast(const wchar_t* file, QRastPageInfo* pageInfo, CSemaphore* stop)
    : m_pFile(file),
      m_pPageInfo(pageInfo),
      m_pProcess(std::make_unique<CCPHelper>(CExePaths::Instance().m_QueueExe)),
      m_pStop(stop) {}

CQRast::~CQRast() {
  if (m_pParser) m_pParser->Wait();
  m_pParser.reset();
  m_pProcess.reset();
  os::CloseHandle(m_hStderrRead);
  os::CloseHandle(m_hStderrWrite);
}

bool CQRast::Run() {
  if (!StartChild() || !StartParser()) return false;
  WaitForEnd();
  m_pParser->Wait();
  m_pParser.reset();
  os::CloseHandle(m_hStderrRead);
  // 1 is what the program ends with when it has measured and made nothing.
  return !m_bStopped && static_cast<std::uint32_t>(m_ExitStatus) <= 1;
}

bool CQRast::StartChild() {
  const bool made = os::CreatePipe(m_hStderrRead, m_hStderrWrite, StderrPipeSize);
  if (made) m_hStderrRead = os::MakeNotInheritable(m_hStderrRead);
  if (!made || m_hStderrRead == INVALID_HANDLE_VALUE) {
    CAppLog::Instance().Write("[QRast]: Couldn't create pipes.");
    return false;
  }
  m_pProcess->m_hStdError = m_hStderrWrite;
  for (const wchar_t* argument : {L"-q", L"-ps", m_pFile}) m_pProcess->AddArgument(argument);
  const bool started = m_pProcess->Start();
  // The parser sees the end of the stream only if nobody here holds its write end.
  os::CloseHandle(m_hStderrWrite);
  if (started && m_pProcess->m_hProcess != INVALID_HANDLE_VALUE) return true;
  CAppLog::Instance().Write("[QRast]: Didn't start the executable");
  CAppLog::Instance().Write("[QRast]: Couldn't start executable");
  return false;
}

bool CQRast::StartParser() {
  m_pParser = std::make_unique<CQRastStderrParser>(&m_hStderrRead, m_pPageInfo);
  if (m_pParser->Start()) return true;
  CAppLog::Instance().Write("[QRast]: Couldn't create pipe parser.");
  conversion::Terminate(*m_pProcess, m_ExitStatus, TerminateFailed);
  return false;
}

void CQRast::WaitForEnd() {
  CWaitTable table;
  table.Add(&m_pProcess->m_hProcess, OnProcessSignaled, OnProcessAbandoned);
  if (m_pStop != nullptr) table.Add(&m_pStop->m_hObject, OnStopped, OnStopped);
  while (!m_bDone)
    if (!conversion::WaitOnce(*this, table, WaitFailed)) m_bDone = true;
  conversion::Terminate(*m_pProcess, m_ExitStatus, TerminateFailed);
}

void CQRast::OnStopped(CBBasePrintingThread& supervisor) {
  auto& self = static_cast<CQRast&>(supervisor);
  self.m_bStopped = true;
  self.m_bDone = true;
}

void CQRast::OnProcessSignaled(CBBasePrintingThread& supervisor) {
  auto& self = static_cast<CQRast&>(supervisor);
  const auto end = conversion::TakeEnd(*self.m_pProcess, self.m_ExitStatus, ExitCodeFailed);
  if (end == conversion::ChildEnd::Running) return;
  if (end == conversion::ChildEnd::Ended)
    CAppLog::Instance().Printf(L"[QRast]: Exe exited with status %i", self.m_ExitStatus);
  CAppLog::Instance().Write("[QRast]: Exe exited");
  self.m_bDone = true;
}

void CQRast::OnProcessAbandoned(CBBasePrintingThread& supervisor) {
  CAppLog::Instance().Write("[QRast]: Wait abandoned on exe!");
  OnProcessSignaled(supervisor);
}

int RunQRast(const wchar_t* file, QRastPageInfo* pageInfo, CSemaphore* stop) {
  if (file == nullptr) return 0;
  if (!os::Exists(CExePaths::Instance().m_QueueExe)) {
    CAppLog::Instance().Write("[QRast] qrast executable missing.");
    return 0;
  }
  CQRast supervisor(file, pageInfo, stop);
  return supervisor.Run() ? 1 : 0;
}

}  // namespace PrintingThread
