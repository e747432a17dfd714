#pragma once

#include "rastrel/platform/os/file_descriptor.h"

/// The permission for the one program that a process within walls executes (WallPrograms::One). The
/// process hands its listener to the one that started it, which permits one exec and closes it. No
/// exec is possible from then on: the listener is the only way to a permission.
namespace rastrel::interpreter {

/// Sends a descriptor over a socket. System calls only. False with errno if that failed.
[[nodiscard]] bool SendListener(int socket, int listener) noexcept;

/// A message of a starting process.
struct StartMessage {
  os::FileDescriptor listener;  ///< open if it waits for its permission
  int error = 0;                ///< of the step that failed, there or in receiving it
};
/// Waits for the next message at the other end of the socket. Empty if that is closed, which the
/// exec does. A message that can't be received is an error: its sender may wait for a permission.
[[nodiscard]] StartMessage ReceiveStart(int socket);

/// Waits for the exec that the listener reports, and permits it. Returns too if the process at the
/// other end of `socket` is gone. The result is an error number if the exec still waits, else 0.
[[nodiscard]] int PermitExec(const os::FileDescriptor& listener, int socket);

}  // namespace rastrel::interpreter
