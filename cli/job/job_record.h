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

/// What a child said and how it ended.
struct ChildRecord {
  std::deque<std::string> errors;  ///< its ERROR reports, the last ones
  std::deque<std::string> words;   ///< its other lines that are no reports, the last ones
  std::optional<int> exitStatus;   ///< as the job log tells it; nothing if it was ended

  /// The errors, then the other words, the last ones of each; at most WordLimit together.
  [[nodiscard]] std::vector<std::string> LastWords() const;
  static constexpr std::size_t WordLimit = 12;
};

/// Remembers of a job what is told when it is over. Takes as much memory as the delivered files'
/// paths, whatever the children say.
class JobRecord : public JobObserver {
 public:
  void OnEvent(const JobEvent& event) override;

  [[nodiscard]] const std::vector<std::string>& Outputs() const { return m_Outputs; }
  /// The highest page number that the RIP told of.
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
  ChildRecord m_Rip;
  ChildRecord m_Odalis;
  JobStage m_Stage = JobStage::Start;
};

}  // namespace rastrel::cli
