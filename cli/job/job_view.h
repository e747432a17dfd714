#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "cli/job/job_event.h"

namespace rastrel::cli {

class ProgressLine;

/// How a running job is shown: as JSON lines on standard output, as a live line on a terminal, or
/// as plain lines on standard error; a run of one of several files shows its warnings alone there.
/// Any thread.
class JobView : public JobObserver {
 public:
  explicit JobView(bool json);
  ~JobView() override;

  /// Another job of the same command begins; shown from a fresh start. Before its PrintJob.
  void Begin(const std::string& file);
  void OnEvent(const JobEvent& event) override;
  /// One line about the command itself, for instance that it is stopping. `event` is its JSON name.
  void Say(const char* event, const std::string& text, const std::string& path = {});
  /// True if Tick is of use.
  [[nodiscard]] bool IsLive() const { return m_Line != nullptr; }
  /// Shows the elapsed time.
  void Tick();
  /// The job is over: its progress is cleared, messages stay.
  void Finish();
  [[nodiscard]] bool IsJson() const { return m_Json; }

 private:
  void ShowPlain(const JobEvent& event);

  const bool m_Json;
  std::mutex m_Mutex;
  std::unique_ptr<ProgressLine> m_Line;  // on a terminal only
  int m_ShownPercent = 0;
};

}  // namespace rastrel::cli
