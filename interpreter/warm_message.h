#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "interpreter/wall.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"

/// Messages between a program that has a job and a warm interpreter (warm_start.h). They travel
/// over a socket that keeps messages apart, with open files beside them.
namespace rastrel::interpreter {

/// The start of an interpreter up to its first file. Jobs whose starts are equal share a warm one.
struct WarmOptions {
  std::string program;                   ///< native path of the interpreter's program
  std::vector<std::string> arguments;    ///< to before the first "-f" or "-c"; its name first
  std::vector<std::string> environment;  ///< "NAME=value" each
};

/// All of the options as one text, and which version of the program it is. Two that are equal are
/// the same start.
[[nodiscard]] std::string WarmIdentity(const WarmOptions& options);
/// A name for it: 32 hexadecimal digits. Others may have the same, so the identity decides.
[[nodiscard]] std::string WarmName(std::string_view identity);

/// One job, as ProcessRequest has it. Its descriptors travel beside the message.
struct WarmJob {
  std::string identity;             ///< of the warm interpreter that it is for
  std::vector<std::string> script;  ///< the arguments from the first "-f" or "-c" on
  std::string directory;            ///< native working directory; not empty
  /// The element at n becomes descriptor n of the job: the place of the open file among those
  /// beside the message; -1: /dev/null.
  std::vector<int> descriptors;
  std::uint64_t fileBytes = 0;         ///< as WallRequest has it
  std::uint64_t processorSeconds = 0;  ///< ...
  std::uint64_t memoryBytes = 0;       ///< ...
  /// Besides the interpreter's own. A path's descriptor is a number of the job's.
  std::vector<WallPath> paths;
};

inline constexpr std::size_t MaximumWarmMessage = 65'536;
inline constexpr std::size_t MaximumWarmDescriptors = 16;

/// The message of a job:
///
///     0       4        8
///     | magic | length | identity | script | directory | descriptors | limits | paths |
///
/// A text is its length and its bytes, a list its number of elements and these; numbers have four
/// bytes, limits eight, in the order of this machine. `length` counts the whole message.
[[nodiscard]] std::string FormatWarmJob(const WarmJob& job);

/// The job of a message that came with so many open files. Any bytes may be given; those that
/// FormatWarmJob does not make are a failure that names the fault.
[[nodiscard]] Expected<WarmJob> ParseWarmJob(std::string_view message, std::size_t files);

/// Kinds of messages of the warm interpreter.
enum class WarmNews : std::uint32_t {
  /// The job's process waits for the word to begin. Beside the message are its pidfd and the
  /// writing
  /// end of a pipe: when the last copy of that closes, the process is killed.
  Ready = 1,
  Refused = 2,  ///< nothing of the job was done and nothing will be; `value` is an error number
  Exited = 3,   ///< the job's process called exit with `value`
  Killed = 4,   ///< the signal `value` ended the job's process
};
struct WarmReply {
  WarmNews news = WarmNews::Refused;
  std::int32_t value = 0;
};

/// A message as it was received.
struct WarmReceived {
  std::string bytes;                        ///< empty: the other end is closed
  std::vector<os::FileDescriptor> files{};  ///< close-on-exec
  bool isCut = false;  ///< it was longer, or had more files, than there is room for
};

/// Sends one message with copies of open files. The failure is EAGAIN if the socket has a time
/// limit that has passed.
[[nodiscard]] Expected<void> SendWarm(int socket, std::string_view message,
                                      std::span<const int> files = {});
[[nodiscard]] Expected<void> SendWarm(int socket, WarmReply reply, std::span<const int> files = {});
/// Waits for the next message. The failure is EAGAIN as above.
[[nodiscard]] Expected<WarmReceived> ReceiveWarm(int socket);
/// The reply that a message is; a failure if it is none.
[[nodiscard]] Expected<WarmReply> WarmReplyOf(const WarmReceived& received);

/// Whether the process at the other end of a connected socket was of this user when it connected or
/// listened. Nobody else is answered, or asked.
[[nodiscard]] bool IsOwnPeer(int socket);
/// The decision of IsOwnPeer.
[[nodiscard]] constexpr bool MayTalk(std::uint32_t own, std::uint32_t peer) { return own == peer; }

}  // namespace rastrel::interpreter
