#pragma once

#include <optional>
#include <string>
#include <vector>

#include "rastrel/platform/os/handle.h"
#include "tests/support/scratch_directory.h"

/// The command as a process, in a data root of its own.
namespace rastrel::test {

/// How a run of the command ended.
struct CommandResult {
  int status = -1;     ///< exit status; -1 if a signal ended it
  std::string output;  ///< standard output
  std::string error;   ///< standard error

  /// The output's lines.
  [[nodiscard]] std::vector<std::string> Lines() const;
  /// The output's last line.
  [[nodiscard]] std::string LastLine() const;
};

/// Lays a data root out in an empty directory and runs the command in it.
class CommandRunner {
 public:
  /// With the children that were built, or with none.
  enum class Children { Real, None };
  explicit CommandRunner(Children children);
  ~CommandRunner();
  CommandRunner(const CommandRunner&) = delete;
  CommandRunner& operator=(const CommandRunner&) = delete;

  /// Puts a shell script in a child's place; "#!/bin/sh" is put in front.
  void WriteRip(const std::string& script) const { WriteChild("corerast.exe", script); }
  void WriteOdalis(const std::string& script) const { WriteChild("coreodalis.exe", script); }
  void WriteQueue(const std::string& script) const { WriteChild("../JobSpool.exe", script); }
  /// A RIP of two pages, and an engine that reports its files and its printer.
  void WriteUsualChildren() const;

  /// Sets a variable of the command's environment.
  void Set(const std::string& name, const std::string& value) {
    std::erase_if(m_Variables,
                  [&](const std::string& entry) { return entry.starts_with(name + "="); });
    m_Variables.push_back(name + "=" + value);
  }

  /// Gives each later run these bytes, at most 64 KiB, by a pipe on its standard input.
  void SetInput(const std::string& bytes) { m_Input = bytes; }
  /// Gives each later run this for standard output, in place of a file; the caller's to close.
  void SetOutput(HANDLE output) { m_Output = output; }

  /// Runs the command in Place() and waits for its end.
  [[nodiscard]] CommandResult Run(const std::vector<std::string>& arguments);
  /// Starts it, and waits until `text` has appeared on its standard error or output.
  void Start(const std::vector<std::string>& arguments, const std::string& text);
  /// Sends the started command a signal.
  void Signal(int signal) const;
  /// Waits for the started command's end.
  [[nodiscard]] CommandResult Wait();

  /// "NAME=value" of the variables that the command gets besides this process's own.
  [[nodiscard]] const std::vector<std::string>& Variables() const { return m_Variables; }
  /// The working directory of the command.
  [[nodiscard]] const ScratchDirectory& Place() const { return m_Place; }
  /// The data root.
  [[nodiscard]] std::string Root() const { return m_Scratch.Path("home"); }
  /// Names in a directory below the data root, sorted; none if there is no such directory.
  [[nodiscard]] std::vector<std::string> NamesIn(const std::string& directory) const;
  /// Processes whose environment names this data root.
  [[nodiscard]] int Processes() const;

 private:
  void WriteChild(const std::string& name, const std::string& script) const;
  void Launch(const std::vector<std::string>& arguments);

  ScratchDirectory m_Scratch;
  ScratchDirectory m_Place;
  std::vector<std::string> m_Variables;
  std::optional<std::string> m_Input;  // nothing: /dev/null
  HANDLE m_Output = INVALID_HANDLE_VALUE;
  HANDLE m_Process = INVALID_HANDLE_VALUE;
  unsigned m_ProcessId = 0;
};

}  // namespace rastrel::test
