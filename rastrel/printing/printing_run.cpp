// The run of a printing thread: the decision tree from the ticket to the end of the pages.

#include <filesystem>
#include <set>
#include <string>

#include "rastrel/cfm/cfm2.h"
#include "rastrel/cfm/kept_job.h"
#include "rastrel/job/app_log.h"
#include "rastrel/job/exe_paths.h"
#include "rastrel/job/job_ticket.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/owner.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/os/tree.h"
#include "rastrel/prefix/ps_prefix.h"
#include "rastrel/printing/output_supervisor.h"
#include "rastrel/printing/printing_thread.h"
#include "rastrel/printing/rip_supervisor.h"

namespace fs = std::filesystem;
namespace os = rastrel::os;

namespace PrintingThread {

namespace {

CCFMFile PageListOf(CCFM2& document) {
  CCFMFile pages;
  for (const auto& page : document.m_Pages) {
    page->m_TicketType = CFM2_REPRINT;
    pages.AddEntry(page->m_Directory, page->m_Title);
  }
  return pages;
}

// The directories of runs in the RIP's output directory that the pages lie in.
std::set<std::string> RunDirectoriesOf(const CCFMFile& pages) {
  const auto parts = [](const std::wstring& path) { return fs::path(os::ToNative(path) + "/."); };
  const fs::path output = parts(CExePaths::Instance().m_OutputDir).lexically_normal();
  std::set<std::string> runs;
  for (const CCFMFileEntry& entry : pages.Entries) {
    const fs::path run = parts(entry.Directory).lexically_normal().parent_path();
    if (run.parent_path() / "" == output) runs.insert(run.string());
  }
  return runs;
}

void RemoveOwners(const std::set<std::string>& runs) {
  for (const std::string& run : runs) static_cast<void>(os::RemoveOwner(run));
}

void RemoveEmptiedRuns(const std::set<std::string>& runs) {
  for (const std::string& run : runs)
    static_cast<void>(os::RemoveEmptyDirectory(os::FromNative(run)));
}

// The job ends well all the same. Whoever looks after the spool sees that it has no record.
void LogUnfinishedJob(const rastrel::Expected<void>& finished) {
  if (finished) return;
  CAppLog::Instance().Printf(L"[Print] Warning: The pages in the spool are not whole: %s",
                             os::WideFromUtf8(Describe(finished.Error())));
}

bool ReportMissingPages(CJobTicket& ticket) {
  CAppLog::Instance().Write("[Print]: CFM missing. Aborting.");
  ticket.Error(JTE_SPOOL_MISSING, JTO_SYSTEM);
  ticket.Log(L"CFM missing. Aborting.");
  return false;
}

// The prefix has no name then, and the generator raises an exception, which ends the thread.
void LogMissingExtension(const std::wstring& jobFile) {
  if (jobFile.find(L'.') != std::wstring::npos) return;
  CAppLog::Instance().Printf(
      L"[Print]: The job file '%s' has no extension, so that nothing can be printed", jobFile);
}

}  // namespace

bool CPrintingThread::Run() {
  if (m_pTicket->IsRIPInstallJob()) return RunInstallJob();
  return m_pTicket->GetCFMFileExists() ? RunOutputOnly() : RunRipAndOutput();
}

bool CPrintingThread::RunInstallJob() {
  CCFM2 document;
  return RunRip(document, nullptr);
}

bool CPrintingThread::RunRipAndOutput() {
  m_pTicket->Log(L"CFM doesn't exist. Rip & Odalis.");
  CAppLog::Instance().Write("[Print]: CFM doesn't exist. Rip & Odalis.");
  CCFM2 document;
  if (!RipPages(document)) return false;
  if (m_bAbort) {
    DiscardPages(document);
    return true;
  }
  return OutputPages(document);
}

// From the prefix to the parsed page list. True without pages if the job was aborted meanwhile.
bool CPrintingThread::RipPages(CCFM2& document) {
  LogMissingExtension(m_pTicket->m_JobFile.GetFullPath());
  {
    const std::unique_ptr<PSPrefix> prefix(m_pTicket->GetPrefix());
    if (prefix->Generate() != 0) {
      CAppLog::Instance().Write("[Print]: Prefix generation failed");
      m_pTicket->Error(JTE_PREFIX, JTO_SYSTEM);
      return false;
    }
    if (!RunRip(document, prefix->GetPrefixPath().c_str())) return false;
  }
  // An aborted job's text is parsed too: the pages that the RIP has listed are deleted with the
  // job. The RIP itself removes the others.
  const bool parsed = document.Parse();
  if (m_bAbort || parsed) return true;
  CAppLog::Instance().Write("[Print]: Rip's CFM2 is invalid. Aborting.");
  m_pTicket->Log(L"Rip's CFM2 is invalid. Aborting.");
  m_pTicket->Error(JTE_SPOOL_INVALID, JTO_SYSTEM);
  return false;
}

void CPrintingThread::DiscardPages(CCFM2& document) { PageListOf(document).DeletePages(); }

// From the page list to the pages' end: deleted, or in the spool.
bool CPrintingThread::OutputPages(CCFM2& document) {
  CCFMFile pages = PageListOf(document);
  if (pages.Entries.empty()) return ReportMissingPages(*m_pTicket);
  if (!RunOutput(document)) {
    CAppLog::Instance().Write("[Print]: Odalis failed. Deleting CFM.");
    pages.DeletePages();
    return false;
  }
  const CJobData& settings = m_pTicket->m_JobData;
  if (m_bAbort || !settings.SpoolRequested || !settings.SpoolAllowed) {
    pages.DeletePages();
    return true;
  }
  return SpoolPages(pages);
}

bool CPrintingThread::RunOutputOnly() {
  m_pTicket->Log(L"CFM exists. Odalis only.");
  CAppLog::Instance().Write("[Print]: CFM exists. Odalis only.");
  CCFM2 document;
  for (const CCFMFileEntry& entry : m_pTicket->m_CFMFile.Entries)
    document.m_Pages.push_back(std::make_unique<CCFMPage>(entry.Directory, entry.FileName));
  if (document.m_Pages.empty()) return ReportMissingPages(*m_pTicket);
  return RunOutput(document);
}

bool CPrintingThread::RunRip(CCFM2& document, const wchar_t* prefixPath) {
  m_pTicket->Info(JTI_START_RIPPING, JTO_SYSTEM);
  const CString& jobFile = m_pTicket->m_JobFile.GetFullPath();
  if (!os::Exists(jobFile) || !os::IsReadable(jobFile)) {
    CAppLog::Instance().Printf(
        L"[Print]: Error: PostScript job '%s' doesn't exist or is not readable", jobFile);
    m_pTicket->Log(L"Error: PostScript job '%s' doesn't exist or is not readable", jobFile.c_str());
    m_pTicket->Error(JTE_PS_MISSING, JTO_SYSTEM);
    return false;
  }
  CRealPrintingThread supervisor(m_pTicket, m_pSemaphore.get(), &m_bAbort, &document, prefixPath);
  const bool result = supervisor.Run();
  m_pTicket->Info(JTI_RIPPING_COMPLETE, JTO_SYSTEM);
  CAppLog::Instance().Write("[Print]: Printing thread done");
  if (!result) CAppLog::Instance().Write("[Print]: Rip failed");
  return result;
}

bool CPrintingThread::RunOutput(CCFM2& document) {
  const auto copies = static_cast<std::uint32_t>(m_pTicket->m_Copies);
  if (!document.Generate(copies, m_pTicket->m_Pages)) {
    CAppLog::Instance().Write("[Print]: CFM2 Creation  failed. Deleting CFM. Aborting.");
    m_pTicket->Log(L"CFM2 Creation  failed. Aborting.");
    m_pTicket->Error(JTE_SPOOL_GENERATE, JTO_SYSTEM);
    return false;
  }
  CRealReprintingThread supervisor(m_pSemaphore.get(), &m_bAbort, &document, m_pTicket);
  m_pTicket->Info(JTI_START_PRINTING, JTO_SYSTEM);
  const bool result = supervisor.Run();
  m_pTicket->Info(JTI_PRINTING_COMPLETE, JTO_SYSTEM);
  return result;
}

bool CPrintingThread::SpoolPages(CCFMFile& pages) {
  m_pTicket->Info(JTI_START_SPOOLING, JTO_SYSTEM);
  const std::wstring name = os::SplitPath(m_pTicket->m_JobFile.GetFullPath()).name;
  const std::wstring directory =
      os::WithClosingBackslash(CExePaths::Instance().m_CFMDir) + name + L".cfm";
  PrepareSpoolDirectory(directory);
  const std::string native = os::ToNative(directory);
  const auto noted = rastrel::cfm::BeginKeptJob(pages, native);
  const auto sources = RunDirectoriesOf(pages);
  // From here on the note says whose the pages are: they are moved to the end, or repaired.
  if (noted) RemoveOwners(sources);
  const bool moved = pages.MovePages(directory + L"\\");
  if (moved) {
    LogUnfinishedJob(noted ? rastrel::cfm::FinishKeptJob(*noted, native) : noted.Error());
    RemoveEmptiedRuns(sources);
  } else {
    rastrel::cfm::ForgetUnfinishedJob(native);
  }
  m_pTicket->Info(JTI_SPOOLING_COMPLETE, JTO_SYSTEM);
  if (moved) {
    m_pTicket->m_CFMFile = pages;
    return true;
  }
  CAppLog::Instance().Write("[Print]: CFM spooling failed. Deleting CFM. Aborting.");
  m_pTicket->Log(L"CFM Spooling failed. Deleting CFM. Aborting.");
  pages.DeletePages();
  m_pTicket->Error(JTE_SPOOL_OUTPUT, JTO_SYSTEM);
  return false;
}

void CPrintingThread::PrepareSpoolDirectory(const std::wstring& directory) {
  static_cast<void>(os::MakeDirectory(directory, os::Access::Private));  // an existing one is fine
  const auto readOnly = os::IsReadOnly(directory);
  if (!readOnly) {
    CAppLog::Instance().Printf(L"[Print] Warning: Can't check attributes on '%s', errno: %i",
                               directory, readOnly.Error().error);
  } else if (*readOnly && !os::ClearReadOnly(directory)) {
    CAppLog::Instance().Printf(L"[Print] Warning: Failed to set attributes on '%s'", directory);
  }
}

}  // namespace PrintingThread
