#include "rastrel/prefix/ps_prefix.h"

#include <algorithm>
#include <utility>

#include "rastrel/job/job_ticket.h"
#include "rastrel/platform/host/settings.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/prefix/cutter.h"
#include "rastrel/prefix/levels.h"
#include "rastrel/prefix/path_names.h"
#include "rastrel/prefix/prefix_name.h"
#include "rastrel/prefix/scaling.h"
#include "rastrel/prefix/selection.h"

namespace os = rastrel::os;
namespace prefix = rastrel::prefix;

PSPrefix::PSPrefix(CJobTicket* ticket) : m_pTicket(ticket) {}

PSPrefix::~PSPrefix() {
  // Read now, so that a change while the job ran counts.
  const bool keep = GetIntKorvane(L"RASTREL", L"Keep PS Files", 0, DS_USER, nullptr) != 0;
  if (!keep && m_File) static_cast<void>(m_File->Remove());
}

// The file's sections, in this order:
//
//   ExitServer           always
//   TitleSection         always
//   PrinterSelection     with a printer
//   PrintModeSelection   with a printer and a print mode
//   ScalingSection       always
//   LevelsSection        if levels are enabled
//   CutterSection        always
//   EndOfJob             always, one byte
unsigned PSPrefix::Generate() {
  if (m_pTicket == nullptr || !Open()) return 1;
  const CJobData& settings = m_pTicket->m_JobData;
  WriteBytes(prefix::ExitServer);
  WriteSection(prefix::TitleSection(m_pTicket->m_JobFile.GetFullPath()));
  if (!settings.PrinterName.empty()) {
    WriteSection(prefix::PrinterSelection(settings));
    if (!settings.PrintModeName.empty()) WriteSection(prefix::PrintModeSelection(settings));
  }
  WriteSection(prefix::ScalingSection(settings));
  if (settings.LevelsEnabled) WriteSection(prefix::LevelsSection(settings));
  WriteSection(prefix::CutterSection(settings));
  WriteBytes(prefix::EndOfJob);
  Close();
  return 0;
}

bool PSPrefix::Open() {
  m_Output.clear();
  m_IsWhole = false;
  if (m_File) return true;
  auto prefix = rastrel::prefix::ClaimPrefix(m_pTicket->m_JobFile.GetFullPath());
  if (!prefix) return false;
  m_PrefixPath = std::move(prefix->path);
  m_File.emplace(std::move(prefix->file));
  return true;
}

void PSPrefix::WriteSection(const std::wstring& text) {
  os::AppendUtf8FromWide(
      m_Output, std::wstring_view(text).substr(0, std::min(text.find(L'\0'), text.size())));
}

void PSPrefix::Close() {
  m_IsWhole = static_cast<bool>(m_File->Write(m_Output));  // a part does not fail the job
  m_Output.clear();
}
