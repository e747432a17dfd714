#include "rastrel/conversion/qrast.h"

#include <utility>

#include "rastrel/job/app_log.h"
#include "rastrel/job/exe_paths.h"
#include "rastrel/platform/os/file.h"

namespace os = rastrel::os;

namespace PrintingThread {

namespace {

constexpr rastrel::printing::PipeSizes Pipes{.standardOutput = 0, .standardError = 16'384};

// There is no abort semaphore here.
constexpr rastrel::printing::ChildMessages Messages{
    .noPipes = "[QRast]: Couldn't create pipes.",
    .pipesInheritable = "[QRast]: Couldn't create pipes.",
    .notStarted = "[QRast]: Didn't start the executable",
    .couldNotStart = "[QRast]: Couldn't start executable",
    .noReaders = "[QRast]: Couldn't create pipe parser.",
    .waitFailed = L"[QRast]: WaitForMultipleObjects failed. Error: %u",
    .canceled = nullptr,
    .abortAbandoned = nullptr,
    .waitAbandoned = "[QRast]: Wait abandoned on exe!",
    .exitCodeFailed = L"[QRast]: GetExitCodeProcess failed on exe: %i",
    .exited = "[QRast]: Exe exited",
    .terminateFailed = L"[QRast]: Couldn't terminate exe: %i"};

}  // namespace

CQRast::CQRast(const wchar_t* file, QRastPageInfo* pageInfo, CSemaphore* stop,
               QRastLineHandler onLine)
    : ChildSupervisor(std::make_unique<CCPHelper>(CExePaths::Instance().m_QueueExe), Messages),
      m_pFile(file),
      m_pPageInfo(pageInfo),
      m_pStop(stop),
      m_OnLine(std::move(onLine)) {}

CQRast::~CQRast() = default;

// The steps of ChildSupervisor. The program has no input, so there is no step 3.
bool CQRast::Run() {
  if (!MakePipes(Pipes)) return false;  // 1
  AddArguments();
  if (!StartProcess()) return false;  // 2
  m_pStderrParser = std::make_unique<CQRastStderrParser>(&m_hStderrRead, m_pPageInfo, m_OnLine);
  if (!StartReaders()) {  // 4
    Terminate();
    return false;
  }
  WaitForEnd();       // 5
  Terminate();        // 6
  EndStderrReader();  // 7
  // 8. The program ends with 1 if it has measured and made nothing.
  return !m_bStopped && !HasLostText() && static_cast<std::uint32_t>(m_ExitStatus) <= 1;
}

void CQRast::AddArguments() {
  for (const wchar_t* argument : {L"-q", L"-ps", m_pFile}) m_pProcess->AddArgument(argument);
}

// The program's end counts before a stop that comes at the same moment.
void CQRast::WaitForEnd() {
  CWaitTable table;
  AddProcess(table);
  AddReaders(table);
  if (m_pStop != nullptr) table.Add(&m_pStop->m_hObject, OnStopped, OnStopped);
  WaitForProcess(table, nullptr);
}

void CQRast::OnStopped(CBBasePrintingThread& supervisor) {
  auto& self = static_cast<CQRast&>(supervisor);
  self.m_bStopped = true;
  self.m_bDone = true;
}

void CQRast::LogExitStatus() {
  CAppLog::Instance().Printf(L"[QRast]: Exe exited with status %i", m_ExitStatus);
}

int RunQRast(const wchar_t* file, QRastPageInfo* pageInfo, CSemaphore* stop,
             const QRastLineHandler& onLine) {
  if (file == nullptr) return 0;
  if (!os::Exists(CExePaths::Instance().m_QueueExe)) {
    CAppLog::Instance().Write("[QRast] qrast executable missing.");
    return 0;
  }
  CQRast supervisor(file, pageInfo, stop, onLine);
  return supervisor.Run() ? 1 : 0;
}

}  // namespace PrintingThread
