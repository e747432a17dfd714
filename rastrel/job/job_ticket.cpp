#include "rastrel/job/job_ticket.h"

#include "rastrel/job/format_string.h"
#include "rastrel/job/job_code_text.h"
#include "rastrel/job/record_version.h"
#include "rastrel/platform/mfc/archive.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"

RASTREL_IMPLEMENT_DYNCREATE(CJobTicket, CJobBase)

CJobTicket::CJobTicket() { CJobTicket::SetDefaults(); }

CJobTicket::~CJobTicket() { CJobTicket::EndPrint(); }

void CJobTicket::SetDefaults() {
  CJobBase::SetDefaults();
  m_Progress = 0;
  m_ProgressText.Set({});
  m_pfnLog = nullptr;
  m_bRIPInstallJob = false;
  m_ActiveAnimFrame = -1;
  m_pPrintThread = nullptr;
  m_bPlanar = false;
}

void CJobTicket::HoldJob(int hold) {
  if (hold != 0 && m_Status == JS_IDLE) {
    m_Status = JS_HOLDING;
  } else if (hold == 0 && m_Status == JS_HOLDING) {
    m_Status = JS_IDLE;
  }
}

int CJobTicket::GetProgress(JT_ORIGINATOR /*originator*/, CString* text) const {
  if (text != nullptr) {
    formatstringT<wchar_t> sentence;
    sentence.Format(L"%s", m_ProgressText.Get());
    *text = sentence;
  }
  return m_Progress;
}

void CJobTicket::SetProgress(JT_ORIGINATOR originator, int percent, const CString* text) {
  m_Progress = percent;
  if (text != nullptr) SetProgressText(originator, *text);
}

void CJobTicket::SetProgressText(JT_ORIGINATOR /*originator*/, const CString& text) {
  m_ProgressText.Set(text);
}

JT_ERROR CJobTicket::GetErrorText(CString& text) const {
  const JT_ERROR code = m_Error;
  text = rastrel::job::ErrorText(code);
  return code;
}

void CJobTicket::GetInfoText(JT_INFO code, JT_ORIGINATOR originator, CString& text) const {
  text = rastrel::job::InfoText(code, originator);
}

void CJobTicket::GetStatusText(CString& text) const {
  if (auto known = rastrel::job::StatusText(m_Status)) text = *known;
}

bool CJobTicket::GetCFMFileExists() const { return !m_CFMFile.Entries.empty(); }

bool CJobTicket::IsJobTicketValid() {
  return rastrel::os::Exists(m_JobFile.GetFullPath()) || GetCFMFileExists();
}

std::int64_t CJobTicket::GetSizeOnDisk(int jobFile, int pages, int secondFile) {
  std::int64_t bytes = 0;
  if (jobFile != 0) bytes += m_JobFile.GetSize();
  if (pages != 0 && GetCFMFileExists()) bytes += m_CFMFile.GetSizeOnDisk();
  if (secondFile != 0) bytes += m_SecondFile.GetSize();
  return bytes;
}

void CJobTicket::SetJobFile(const CString& path) {
  const auto parts = rastrel::os::SplitPath(path);
  CString directory = parts.drive + parts.directory;
  if (directory.empty()) {
    directory = rastrel::os::FromNative(rastrel::os::CurrentDirectory()) + L"\\";
  }
  for (wchar_t& character : directory)
    if (character == L'/') character = L'\\';
  if (directory.back() != L'\\') directory += L'\\';
  m_JobFile.Directory = directory;
  m_JobFile.FileName = parts.name + parts.extension;
  m_JobFile.GetFullPath();
}

// The ticket's record; docs/formats/job-record.md has the parts.
//
//   +-------------+-----------+-----------+-----------+----------+----------+---------+
//   | version = 1 | m_JobName | m_JobNote | m_Created | m_Status | m_Copies | m_Error |
//   +-------------+-----------+-----------+-----------+----------+----------+---------+
//   | m_CFMFile | m_bPlanar | m_JobFile | m_SecondFile | m_JobData |
//   +-----------+-----------+-----------+--------------+-----------+
//   | count | m_Pages, 32 bits each |
//   +-------+-----------------------+
void CJobTicket::Serialize(CArchive& archive) {
  if (archive.IsStoring()) {
    archive << rastrel::job::RecordVersion << m_JobName << m_JobNote << m_Created
            << static_cast<std::int32_t>(m_Status.Load()) << m_Copies
            << static_cast<std::int32_t>(m_Error.Load()) << m_CFMFile << m_bPlanar;
    m_JobFile.Serialize(archive);
    m_SecondFile.Serialize(archive);
    m_JobData.Serialize(archive);
    archive << static_cast<std::int32_t>(m_Pages.size());
    for (const std::int32_t page : m_Pages) archive << page;
    return;
  }
  Load(archive);
}

void CJobTicket::Load(CArchive& archive) {
  m_Pages.clear();
  if (!rastrel::job::ReadRecordVersion(archive)) {
    // Neither idle nor printable, so that nobody prints a half-known job.
    m_Status = JS_RECEIVING;
    m_Error = JTE_NONE;
    return;
  }
  UseSpoolDirectory();
  // Status and error wait until everything else is there: a failed load leaves them as they were.
  std::int32_t status = 0;
  std::int32_t error = 0;
  archive >> m_JobName >> m_JobNote >> m_Created >> status >> m_Copies >> error >> m_CFMFile >>
      m_bPlanar;
  m_JobFile.Serialize(archive);
  m_SecondFile.Serialize(archive);
  m_JobData.Serialize(archive);
  std::int32_t count = 0;
  archive >> count;
  for (; count > 0; --count) {
    std::int32_t page = 0;
    archive >> page;
    m_Pages.push_back(page);
  }
  m_Status = static_cast<JT_STATUS>(status);
  m_Error = static_cast<JT_ERROR>(error);
}
