#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "rastrel/platform/os/handle.h"
#include "rastrel/printing/environment_block.h"

namespace PrintingThread {

/// Starts one child process. Its supervisor adds arguments, sets the three standard handles, calls
/// Start and takes the process handle over: this class neither waits for the child nor closes
/// anything. Used by one thread.
class CCPHelper {
 public:
  /// Full library path of the program, which becomes argument 0 too. Takes this process's standard
  /// handles and its environment as they are now; a relative RASTREL_HOME becomes absolute, as the
  /// child runs in another directory.
  explicit CCPHelper(const std::wstring& executable);
  CCPHelper(const CCPHelper&) = delete;
  CCPHelper& operator=(const CCPHelper&) = delete;
  virtual ~CCPHelper();

  /// Appends one argument.
  void AddArgument(const std::wstring& text);
  /// Gives the child a variable of its environment, in place of one of that name. A null in the
  /// value ends it.
  void SetVariable(const std::string& name, const std::string& value);
  /// Appends the command line to `target`: each argument in double quotes, with a space after it. A
  /// double quote inside an argument is not escaped, and splits it for the child.
  void GetCommandLine(std::wstring& target) const;
  /// Starts the child in its executable's directory. A handle that is 0 means this process's
  /// standard one. False with a message in the application log; arguments and environment stay, so
  /// the start may be repeated.
  [[nodiscard]] bool Start();

 private:
  std::vector<std::wstring> m_Arguments;
  Args m_Environment;
  std::vector<std::string> m_Variables;  // each begins with its name and "="

 public:
  HANDLE m_hProcess = INVALID_HANDLE_VALUE;  ///< valid after a start; the supervisor closes it
  std::uint32_t m_ProcessId = 0;             ///< id of the child
  std::uint32_t m_CreationFlags = 0;         ///< kept for supervisors; nothing here acts on it

 private:
  std::wstring m_Executable;

 public:
  HANDLE m_hStdInput;   ///< given to the child
  HANDLE m_hStdOutput;  ///< given to the child
  HANDLE m_hStdError;   ///< given to the child
};

}  // namespace PrintingThread
