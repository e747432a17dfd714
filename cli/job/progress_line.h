#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "cli/job/job_event.h"

namespace rastrel::cli {

/// How far a job is, as its events tell.
class JobProgress {
 public:
  void Take(const JobEvent& event);
  /// Of work that is no job: what is being done, and how far it is where that is known.
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

/// What a line of progress says.
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

/// What takes a drawn line away, and what the rest of one that a shorter line was drawn over.
inline constexpr const char* ClearLine = "\r\x1b[K";
inline constexpr const char* ClearRest = "\x1b[K";

/// Shows a job on a terminal: one line that is drawn over and over, with what is to stay above it.
/// Events and Tick come from several threads; the owner sees to it that they come one at a time.
class ProgressLine : public JobObserver {
 public:
  /// Takes the time of the beginning.
  ProgressLine();
  void OnEvent(const JobEvent& event) override;
  /// The same of work that is no job. Drawn with the next Tick.
  void Show(std::string stage, std::optional<int> percent);
  /// Draws the line again, for the time that has gone by.
  void Tick();
  /// Takes the line away and prints one that stays. The line is drawn again with the next event.
  void Say(const std::string& text);
  /// Takes the line away for good.
  void Finish();

 private:
  void Draw();

  JobProgress m_Progress;
  std::int64_t m_Begin;
  std::int64_t m_Drawn = 0;
  bool m_Finished = false;
};

}  // namespace rastrel::cli
