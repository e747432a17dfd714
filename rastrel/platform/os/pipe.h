#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/handle.h"

namespace rastrel::os {

/// Makes an anonymous pipe, both ends close-on-exec and never one of the three standard
/// descriptors. `size` is the buffer's size in bytes, 0 for the system's default. The system rounds
/// it up to a page and limits it, which is no failure. A failure leaves both handles untouched.
[[nodiscard]] Expected<void> CreatePipe(HANDLE& readEnd, HANDLE& writeEnd, std::size_t size);

/// Both ends of a pipe.
struct Pipe {
  FileDescriptor reading;
  FileDescriptor writing;
};

/// The same with owners for the ends.
[[nodiscard]] Expected<Pipe> MakePipe(std::size_t size);

/// Makes the standard input of a child that is to receive `content` in one write that never blocks
/// on the child. It is a pipe that holds all of it or, if the system's limit on pipes is lower, an
/// unlinked file in memory that already has the content. The child sees the same in both: the
/// bytes, then the end of its input. At least 1 byte of buffer is requested. A failure leaves both
/// handles untouched.
[[nodiscard]] Expected<void> CreateInput(HANDLE& readEnd, HANDLE& writeEnd,
                                         std::string_view content);

/// Writes all of `content` to the write end that CreateInput made, in one go. A reader that is gone
/// is a failure with EPIPE and never a signal; a short write is one with EIO.
[[nodiscard]] Expected<void> WriteInput(HANDLE writeEnd, std::string_view content);

/// A new close-on-exec descriptor for the same thing, at 3 or above; the old one is closed.
/// If that fails, the old one is closed too.
[[nodiscard]] Expected<HANDLE> MakeNotInheritable(HANDLE handle);

/// Owns the descriptor that a system call has just returned, moved to 3 or above if it is one of
/// the three standard ones. If it is negative, the failure of the call named `call` on `where`,
/// with the errno that it left.
[[nodiscard]] Expected<FileDescriptor> TakeDescriptor(int descriptor, const char* call,
                                                      std::string_view where);

/// Reads up to `count` bytes. Returns the number read, 0 at the end of the stream. An interruption
/// is not a failure.
[[nodiscard]] Expected<std::size_t> ReadSome(HANDLE handle, char* bytes, std::size_t count);

/// The same, but the stream counts as ended as soon as one of `stops` is signalled (a semaphore
/// with a count, which it keeps), even while the read waits. Invalid handles among them are
/// skipped.
[[nodiscard]] Expected<std::size_t> ReadSomeUnless(std::span<const HANDLE> stops, HANDLE handle,
                                                   char* bytes, std::size_t count);

/// Descriptor of a standard stream of this process.
enum class StandardStream { Input = 0, Output = 1, Error = 2 };
[[nodiscard]] HANDLE StandardHandle(StandardStream stream);

}  // namespace rastrel::os
