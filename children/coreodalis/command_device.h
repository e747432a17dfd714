#pragma once

#include <string>
#include <vector>

#include "interpreter/guardian.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::odalis {

/// Runs a device's program and waits for its end. `words` are the program and its arguments; no
/// shell sees them. A program without '/' is looked for on the path. Its standard input is `file`
/// from the start; what it prints is kept for the message and goes nowhere else. It gets a process
/// group of its own, which the guardian kills if the engine is ended.
///
/// The failure says how it ended and the last line that it printed. `timeoutSeconds`: its group is
/// killed after that; 0 is never. REQUIRES: this process has one thread.
[[nodiscard]] Expected<void> RunCommand(const std::vector<std::string>& words,
                                        const std::string& file, interpreter::Guardian& guardian,
                                        unsigned timeoutSeconds);

/// A private directory for the file that a program is given. It is removed with all in it when this
/// object ends, and by the guardian if the engine is ended before.
class CommandDirectory {
 public:
  /// Makes it in $TMPDIR, or in /tmp.
  [[nodiscard]] static Expected<CommandDirectory> Create(interpreter::Guardian& guardian);
  ~CommandDirectory();
  CommandDirectory(CommandDirectory&& other) noexcept;
  CommandDirectory& operator=(CommandDirectory&& other) = delete;
  CommandDirectory(const CommandDirectory&) = delete;
  CommandDirectory& operator=(const CommandDirectory&) = delete;

  /// Full native path, without closing separator.
  [[nodiscard]] const std::string& Path() const { return m_Path; }

 private:
  CommandDirectory(std::string path, interpreter::Guardian& guardian);

  std::string m_Path;
  interpreter::Guardian* m_Guardian;
};

}  // namespace rastrel::odalis
