#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "cli/job/job_event.h"

namespace rastrel::cli {

/// How far a job is, by its events.
class JobProgress {
 public:
  void Take(const JobEvent& event);
  /// For work that is no job: its stage, and its percentage where that is known.
  void Set(std::string stage, std::optional<int> percent);

  [[nodiscard]] const std::string& Stage() const { return m_Stage; }
  [[nodiscard]] std::optional<int> Percent() const { return m_Percent; }
  [[nodiscard]] std::optional<int> Page() const { return m_Page; }

 private:
  void Enter(std::string stage);

  std::string m_Stage = "starting";
  std::optional<int> m_Percent;
  std::optional<int> m_Page;
};

/// The parts of a progress line.
struct ProgressView {
  std::string stage;
  std::optional<int> percent;
  std::optional<int> page;
};

/// "RIP interpreting   42 %  [########------------]  page 2  0:07", cut to fewer than `columns`
/// characters: parts that don't fit are left out, the bar first. Without a percentage there is no
/// bar. No control characters.
[[nodiscard]] std::string RenderProgress(const ProgressView& progress, std::int64_t elapsedSeconds,
                                         unsigned columns);
[[nodiscard]] std::string RenderProgress(const JobProgress& progress, std::int64_t elapsedSeconds,
                                         unsigned columns);

/// Shows a job on a terminal: one line that is drawn over and over, below the lines that stay.
/// Events and Tick come from several threads; the owner sees to it that they come one at a time.
class ProgressLine : public JobObserver {
 public:
  /// Elapsed time counts from here.
  ProgressLine();
  void OnEvent(const JobEvent& event) override;
  /// The same of work that is no job. Drawn with the next Tick.
  void Show(std::string stage, std::optional<int> percent);
  /// Draws the line again, for the elapsed time.
  void Tick();
  /// Clears the line and prints one that stays. The progress is drawn again with the next event.
  void Say(const std::string& text);
  /// Clears the line for good.
  void Finish();

 private:
  void Draw();

  JobProgress m_Progress;
  std::int64_t m_Begin;
  std::int64_t m_Drawn = 0;
  bool m_Finished = false;
};

}  // namespace rastrel::cli
