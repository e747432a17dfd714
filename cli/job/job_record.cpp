#include "cli/job/job_record.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <utility>

namespace rastrel::cli {
namespace {

constexpr std::size_t LinesBesideErrors = 4;
constexpr std::size_t LineLimit = 300;  // bytes kept of a line
constexpr std::string_view UnsureLine = "UNSURE: ";

void Keep(std::deque<std::string>& lines, std::string text) {
  if (text.size() > LineLimit) {
    std::size_t length = LineLimit;
    // Not in the middle of a character.
    while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) --length;
    text.resize(length);
    text += "...";
  }
  lines.push_back(std::move(text));
  if (lines.size() > ChildRecord::MessageLimit) lines.pop_front();
}

std::optional<int> StatusIn(std::string_view text, std::string_view prefix) {
  if (!text.starts_with(prefix)) return std::nullopt;
  text.remove_prefix(prefix.size());
  int status = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), status);
  if (error != std::errc()) return std::nullopt;
  return status;
}

}  // namespace

const char* StageWord(JobStage stage) {
  switch (stage) {
    case JobStage::Start: return "start";
    case JobStage::JobFile: return "job-file";
    case JobStage::Prefix: return "prefix";
    case JobStage::Rip: return "rip";
    case JobStage::PageList: return "page-list";
    case JobStage::PageSelection: return "page-selection";
    case JobStage::OutputEngine: return "output-engine";
    case JobStage::Spool: return "spool";
  }
  return "";
}

const char* StageName(JobStage stage) {
  switch (stage) {
    case JobStage::Start: return "the start of the job";
    case JobStage::JobFile: return "reading the job file";
    case JobStage::Prefix: return "writing the prefix";
    case JobStage::Rip: return "the RIP";
    case JobStage::PageList: return "reading the RIP's page list";
    case JobStage::PageSelection: return "selecting the pages";
    case JobStage::OutputEngine: return "the output engine";
    case JobStage::Spool: return "keeping the pages in the spool";
  }
  return "";
}

std::vector<std::string> ChildRecord::LastMessages() const {
  std::vector<std::string> all(errors.begin(), errors.end());
  // Beside an error the other lines are usually an interpreter's dump of its state.
  const std::size_t limit = all.empty() ? MessageLimit : LinesBesideErrors;
  const std::size_t room = std::min(limit, MessageLimit - std::min(MessageLimit, all.size()));
  const std::size_t count = std::min(room, lines.size());
  all.insert(all.end(), lines.end() - static_cast<std::ptrdiff_t>(count), lines.end());
  return all;
}

void JobRecord::OnEvent(const JobEvent& event) {
  switch (event.kind) {
    case JobEventKind::State:
      if (event.code == JTI_START_RIPPING) m_Stage = JobStage::Rip;
      if (event.code == JTI_RIPPING_COMPLETE) m_Stage = JobStage::PageList;
      if (event.code == JTI_START_PRINTING) m_Stage = JobStage::OutputEngine;
      if (event.code == JTI_START_SPOOLING) m_Stage = JobStage::Spool;
      break;
    case JobEventKind::Page:
      if (event.originator == JTO_RIP) m_PagesMade = std::max(m_PagesMade, *event.page);
      if (event.originator == JTO_ODALIS) m_MayHaveDelivered = true;
      break;
    case JobEventKind::Output: m_Outputs.push_back(event.path); break;
    case JobEventKind::Error:
      if (event.code || event.text.empty()) break;
      if (event.originator == JTO_RIP) Keep(m_Rip.errors, event.text);
      if (event.originator == JTO_ODALIS) Keep(m_Odalis.errors, event.text);
      break;
    case JobEventKind::Log: TakeLog(event); break;
    case JobEventKind::Progress:
    case JobEventKind::Warning: break;
  }
}

void JobRecord::TakeLog(const JobEvent& event) {
  if (event.originator == JTO_RIP) return Keep(m_Rip.lines, event.text);
  if (event.originator == JTO_ODALIS) {
    if (!event.text.starts_with(UnsureLine)) return Keep(m_Odalis.lines, event.text);
    m_MayHaveDelivered = true;
    return;
  }
  if (const auto status = StatusIn(event.text, "Rip exited with status "))
    m_Rip.exitStatus = status;
  if (const auto status = StatusIn(event.text, "Odalis exited with status "))
    m_Odalis.exitStatus = status;
}

JobStage JobRecord::StageOf(JT_ERROR error) const {
  switch (error) {
    case JTE_RIP_MISSING:
    case JTE_START_RIP:
    case JTE_RIP_EXIT:
    case JTE_RIP_STATUS_1:
    case JTE_RIP_STATUS_2:
    case JTE_RIP_STATUS_3: return JobStage::Rip;
    case JTE_ODALIS_MISSING:
    case JTE_START_ODALIS:
    case JTE_ODALIS_EXIT:
    case JTE_ODALIS_STATUS_1:
    case JTE_ODALIS_STATUS_2: return JobStage::OutputEngine;
    case JTE_PREFIX: return JobStage::Prefix;
    case JTE_PS_MISSING: return JobStage::JobFile;
    case JTE_SPOOL_INVALID:
    case JTE_SPOOL_MISSING: return JobStage::PageList;
    case JTE_SPOOL_GENERATE: return JobStage::PageSelection;
    case JTE_SPOOL_OUTPUT: return JobStage::Spool;
    default: return m_Stage;
  }
}

const ChildRecord* JobRecord::ChildOf(JobStage stage) const {
  // A page list that can't be read is the RIP's work.
  if (stage == JobStage::Rip || stage == JobStage::PageList) return &m_Rip;
  return stage == JobStage::OutputEngine ? &m_Odalis : nullptr;
}

}  // namespace rastrel::cli
