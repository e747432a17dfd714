#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "interpreter/call_filter.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"

/// The walls around a process that works on foreign bytes: the kernel holds them, whatever the
/// process's own program was brought to do.
///
/// - *Limits* on processor time, memory and the size of a file.
/// - *Files*: a process that is confined opens the files of its request and no others (Landlock).
///   Descriptors that it was given stay usable, whatever they lead to.
/// - *Calls*: a process that is confined can't make sockets, trace or read other processes, send
///   them signals, mount, load code into the kernel, or make namespaces (seccomp). Nor can it
///   execute a program, if the request says so: it then has no other code than the one it began
///   with, even where the kernel has no rules of files.
///
/// Kernels differ. A wall that one lacks is left out, and nothing fails for that:
/// WallsOfThisMachine says which there are. The guardian (guardian.h) is the fourth wall: it ends
/// the process with the one that started it, and removes its files.
///
/// Use: name the walls in a WallRequest, and either give it to GuardedProcess::Start, or, for work
/// that runs no other program, build the Wall, fork, and enter it in the child before the first
/// foreign byte is read. After Wall::Enter nothing can be opened but the request's files, so
/// libraries that read files of their own on first use have to be in the request or be used before.
namespace rastrel::interpreter {

/// Rights of a confined process on a file, or on a directory and all below it.
enum class WallAccess {
  Read,     ///< read files and list directories
  Execute,  ///< Read, and run the files as programs
  Write,    ///< Read, write files, make and remove plain files; no directories, links or devices
};

/// One file or directory. A path that is not there is passed over; a link leads to its target.
struct WallPath {
  std::string path;  ///< native
  WallAccess access = WallAccess::Read;
  int descriptor = -1;  ///< if 0 or more, the place that is open here; `path` is not read then
};

/// Walls of one process. Without any value set there are none.
struct WallRequest {
  std::uint64_t fileBytes = 0;                ///< of any one file that it writes; 0: no limit
  std::uint64_t processorSeconds = 0;         ///< of processor time; 0: no limit
  std::uint64_t memoryBytes = 0;              ///< of its address space; 0: no limit
  bool confined = false;                      ///< whether files and calls are walled
  WallPrograms programs = WallPrograms::Any;  ///< that a confined process may execute
  std::vector<WallPath> paths;                ///< all that a confined process may open
};

/// Walls that can be put around this process. Build makes everything ready, Enter only makes system
/// calls. Move-only.
class Wall {
 public:
  /// Opens the request's files. Fails for want of descriptors or memory, and never because the
  /// kernel has no such wall.
  [[nodiscard]] static Expected<Wall> Build(const WallRequest& request);

  /// Puts the walls around the calling process, which must have one thread; for ever, and for all
  /// programs that it executes. Safe between fork and exec, in a process forked from any. The
  /// result is the listener of a request for one program, or -1 (CallFilter::Enter).
  int Enter() noexcept;

 private:
  explicit Wall(const WallRequest& request) : m_Request(request), m_Calls(request.programs) {}

  WallRequest m_Request;
  os::FileDescriptor m_Files;  // Landlock's rules; closed if the kernel has none
  CallFilter m_Calls;
};

/// Kinds of walls that the kernel offers to this process.
struct MachineWalls {
  int filesVersion = 0;  ///< Landlock's version, 1 or more; 0 if there is none
  bool calls = false;    ///< whether calls can be filtered
};
[[nodiscard]] MachineWalls WallsOfThisMachine();

}  // namespace rastrel::interpreter
