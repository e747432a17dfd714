#pragma once

#include <string>
#include <utility>
#include <vector>

#include "interpreter/guardian.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/private_directory.h"

namespace rastrel::odalis {

/// Runs a device's program and waits for its end. `words` are the program and its arguments; no
/// shell sees them. A program without '/' is looked for on the path. Its standard input is `file`
/// from the start; its output is kept for the message and goes nowhere else. It gets a process
/// group of its own, which the guardian kills if the engine is ended.
///
/// The failure says how it ended and the last line that it printed. `timeoutSeconds`: its group is
/// killed after that; 0 is never. REQUIRES: this process has one thread.
[[nodiscard]] Expected<void> RunCommand(const std::vector<std::string>& words,
                                        const std::string& file, interpreter::Guardian& guardian,
                                        unsigned timeoutSeconds);

/// A private directory for the file that a program is given. It is removed with all in it when this
/// object ends, which is reported if it fails, and by the guardian if the engine is ended before.
class CommandDirectory {
 public:
  /// Makes it (see os::PrivateDirectory).
  [[nodiscard]] static Expected<CommandDirectory> Create(interpreter::Guardian& guardian);
  ~CommandDirectory();
  CommandDirectory(CommandDirectory&& other) noexcept = default;
  CommandDirectory& operator=(CommandDirectory&& other) = delete;
  CommandDirectory(const CommandDirectory&) = delete;
  CommandDirectory& operator=(const CommandDirectory&) = delete;

  /// Full native path, without closing separator.
  [[nodiscard]] const std::string& Path() const { return m_Directory.Path(); }

 private:
  CommandDirectory(os::PrivateDirectory directory, interpreter::Guardian& guardian)
      : m_Directory(std::move(directory)), m_Guardian(guardian) {}

  os::PrivateDirectory m_Directory;
  interpreter::Guardian& m_Guardian;
};

}  // namespace rastrel::odalis
