#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "cli/job/progress_line.h"

namespace rastrel::cli::sheet {

/// Shows work that takes more than a second: as a line on a terminal, or as JSON lines. Elsewhere
/// it shows nothing.
class WorkProgress {
 public:
  /// `json` for lines of JSON on standard output.
  explicit WorkProgress(bool json);
  ~WorkProgress();
  WorkProgress(const WorkProgress&) = delete;
  WorkProgress& operator=(const WorkProgress&) = delete;

  /// The stage from now on, "unpacking". Any thread.
  void Enter(const std::string& stage);
  /// How far the stage is. Any thread.
  void Reach(std::uint64_t done, std::uint64_t whole);

 private:
  void Run();
  void WriteJson();

  bool m_Json;
  std::mutex m_Mutex;
  std::condition_variable m_Changed;
  bool m_Ended = false;
  bool m_Shown = false;
  std::string m_Stage;
  std::optional<int> m_Percent;
  ProgressLine m_Line;
  std::thread m_Thread;  // last: it uses the others
};

}  // namespace rastrel::cli::sheet
