#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "interpreter/guarded_process.h"
#include "interpreter/guardian.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/process.h"

/// The one place where an interpreter is started, whatever it is to do.
namespace rastrel::interpreter {

/// The start of one interpreter. Descriptors stay the caller's.
struct GhostscriptRequest {
  std::string program;  ///< as FindGhostscript found it
  /// Its arguments after those that every interpreter gets, which make it quiet, safe, and end
  /// after its last file.
  std::vector<std::string> arguments;
  std::string temporary;  ///< its directory for temporary files, as it is to see it
  std::string directory;  ///< native working directory; empty: this process's own
  /// The element at n becomes its descriptor n; -1 means /dev/null. No other is passed on.
  /// Without a guardian there are three.
  std::vector<int> descriptors;
  std::uint64_t fileSizeLimit = 0;   ///< bytes of any one file; 0: none. With a guardian only.
  std::uint64_t processorLimit = 0;  ///< seconds of processor time; 0: none. With a guardian only.
};

/// A running interpreter. It is killed, and its end taken over, when this object ends.
class GhostscriptProcess {
 public:
  explicit GhostscriptProcess(GuardedProcess process) : m_Process(std::move(process)) {}
  /// Takes the child over.
  explicit GhostscriptProcess(const os::ChildProcess& child)
      : m_Process(std::in_place_type<Spawned>, child) {}

  /// Becomes readable when it has ended.
  [[nodiscard]] int Descriptor() const;
  /// Its process id, which is its own until Wait has returned.
  [[nodiscard]] pid_t Id() const;
  /// Ends it at once.
  void Kill();
  /// Waits for its end without a limit and takes it over.
  [[nodiscard]] Expected<ProcessEnd> Wait();

 private:
  // A child in a session of its own. Moving leaves a closed descriptor.
  class Spawned {
   public:
    explicit Spawned(const os::ChildProcess& child) : m_Process(child.process), m_Id(child.id) {}
    ~Spawned();
    Spawned(Spawned&&) noexcept = default;
    Spawned& operator=(Spawned&&) = delete;
    Spawned(const Spawned&) = delete;
    Spawned& operator=(const Spawned&) = delete;

    [[nodiscard]] int Descriptor() const { return m_Process.Get(); }
    [[nodiscard]] pid_t Id() const { return static_cast<pid_t>(m_Id); }
    [[nodiscard]] Expected<ProcessEnd> End();

   private:
    os::FileDescriptor m_Process;
    std::uint32_t m_Id;
    bool m_Ended = false;
  };

  std::variant<GuardedProcess, Spawned> m_Process;
};

/// Starts it with a cleaned environment. With a guardian it is under guard from before its first
/// instruction, which takes a process with one thread; without one (null) it is a child in a
/// session of its own, which any process may start.
[[nodiscard]] Expected<GhostscriptProcess> StartGhostscript(const GhostscriptRequest& request,
                                                            Guardian* guardian);

}  // namespace rastrel::interpreter
