#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "cli/installation/job_directory.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::os {
class StopSignals;
}

namespace rastrel::cli::sheet {

/// A directory for unpacked parts, below the data root's `jobs`. It is removed with all it holds
/// at the end of its life, and at a signal that asks the program to end: that ends it at once, with
/// the status Cancelled. One whose program was killed is removed by a later command
/// (SweepLeftovers).
class Workspace {
 public:
  /// Begins to take signals; there is no directory yet. With `json` a cancellation is a JSON line.
  /// The failure is a message for the user. REQUIRES: no other thread runs yet.
  [[nodiscard]] static Expected<std::unique_ptr<Workspace>> Create(bool json);
  ~Workspace();
  Workspace(const Workspace&) = delete;
  Workspace& operator=(const Workspace&) = delete;

  /// Lays the data root out and makes the directory, before all that follows. The failure is a
  /// message for the user: the installation lacks its place.
  [[nodiscard]] Expected<void> MakeDirectory();
  /// Native path of something in it.
  [[nodiscard]] std::string Path(const std::string& name) const {
    return m_Directory->Path() + "/" + name;
  }
  /// Makes an empty directory in it, and returns its native path.
  [[nodiscard]] Expected<std::string> MakeFolder(const std::string& name) const;
  /// Moves a file of it to its final place, which is changed as a whole or not at all. A new file
  /// gets the permission bits `access`, less the umask; one that is replaced keeps its own. A pipe
  /// or a terminal there is written to. The failure is a message for the user.
  [[nodiscard]] Expected<void> Deliver(const std::string& source, const std::string& target,
                                       unsigned access);

 private:
  explicit Workspace(bool json);
  [[noreturn]] void Stop();
  void SetUnfinished(const std::string& path);

  bool m_Json;
  std::mutex m_Mutex;
  std::string m_Unfinished;  // a file beside the final place
  std::optional<JobDirectory> m_Directory;
  std::unique_ptr<os::StopSignals> m_Signals;  // last: its thread uses the others
};

}  // namespace rastrel::cli::sheet
