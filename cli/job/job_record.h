#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "cli/job/job_event.h"

namespace rastrel::cli {

/// The parts of a job that can fail.
enum class JobStage { Start, JobFile, Prefix, Rip, PageList, PageSelection, OutputEngine, Spool };

/// The stage's name in JSON lines, and the one for people.
[[nodiscard]] const char* StageWord(JobStage stage);
[[nodiscard]] const char* StageName(JobStage stage);

/// A child's messages and its exit status.
struct ChildRecord {
  std::deque<std::string> errors;  ///< its ERROR reports, the last ones
  std::deque<std::string> lines;   ///< its other lines that are no reports, the last ones
  std::optional<int> exitStatus;   ///< by the job log; nothing if a signal ended it

  /// The errors, then the other lines, the last ones of each; at most MessageLimit together.
  [[nodiscard]] std::vector<std::string> LastMessages() const;
  static constexpr std::size_t MessageLimit = 12;
};

/// Keeps the facts for the report at the end of a job. Takes as much memory as the delivered files'
/// paths, whatever the children say.
class JobRecord : public JobObserver {
 public:
  void OnEvent(const JobEvent& event) override;

  [[nodiscard]] const std::vector<std::string>& Outputs() const { return m_Outputs; }
  /// Whether the engine brought a page to its device, or can't say that it did not.
  [[nodiscard]] bool MayHaveDelivered() const { return m_MayHaveDelivered || !m_Outputs.empty(); }
  /// The highest page number that the RIP reported.
  [[nodiscard]] int PagesMade() const { return m_PagesMade; }
  [[nodiscard]] const ChildRecord& Rip() const { return m_Rip; }
  [[nodiscard]] const ChildRecord& Odalis() const { return m_Odalis; }

  /// The stage in which a job with that error failed.
  [[nodiscard]] JobStage StageOf(JT_ERROR error) const;
  /// The child that works in a stage, or null.
  [[nodiscard]] const ChildRecord* ChildOf(JobStage stage) const;

 private:
  void TakeLog(const JobEvent& event);

  std::vector<std::string> m_Outputs;
  int m_PagesMade = 0;
  bool m_MayHaveDelivered = false;
  ChildRecord m_Rip;
  ChildRecord m_Odalis;
  JobStage m_Stage = JobStage::Start;
};

}  // namespace rastrel::cli
