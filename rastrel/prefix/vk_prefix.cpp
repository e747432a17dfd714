#include "rastrel/prefix/vk_prefix.h"

#include "rastrel/job/format_string.h"
#include "rastrel/job/vk_job_ticket.h"
#include "rastrel/prefix/levels.h"
#include "rastrel/prefix/path_names.h"
#include "rastrel/prefix/preview_sections.h"
#include "rastrel/prefix/scaling.h"
#include "rastrel/prefix/selection.h"

namespace prefix = rastrel::prefix;

CVKPrefix::CVKPrefix(CVKJobTicket* ticket) : PSPrefix(ticket), m_pVKTicket(ticket) {}

CVKPrefix::~CVKPrefix() = default;

unsigned CVKPrefix::Generate() {
  if (m_pTicket == nullptr || m_pVKTicket == nullptr || !Open()) return 1;
  const CJobData& settings = m_pTicket->m_JobData;
  const bool planar = m_pVKTicket->GetPlanar();
  WriteBytes(prefix::ExitServer);
  WriteSection(prefix::TitleSection(m_pTicket->m_JobFile.GetFullPath()));
  if (!settings.PrinterName.empty()) WriteSection(prefix::PrinterSelection(settings));
  if (!planar) WriteSection(prefix::DisablePrintMode);
  if (m_pVKTicket->GetScale()) WriteSection(prefix::ScalingSection(settings));
  if (settings.LevelsEnabled) WriteSection(prefix::LevelsSection(settings));
  WriteSection(prefix::CutDataSection(settings));
  if (!planar) WriteSection(prefix::PreviewHeader(m_pVKTicket->GetDPI()));
  if (m_pVKTicket->IsCutOnly()) WriteBytes("(Frameless) DeviceSelect \n");
  WriteBytes("InitRIP \n\n");
  WriteBytes(prefix::EndOfJob);
  Close();
  return 0;
}
