#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "rastrel/platform/os/handle.h"

namespace rastrel::os {

/// Makes an anonymous pipe, both ends close-on-exec and never one of the three standard
/// descriptors. `size` is the buffer's size in bytes, 0 for the system's default. The system rounds
/// it up to a page and limits it, which is no failure. False with errno set and both handles
/// untouched.
[[nodiscard]] bool CreatePipe(HANDLE& readEnd, HANDLE& writeEnd, std::size_t size);

/// Makes the standard input of a child that is to receive `content` in one write that never blocks
/// on the child. It is a pipe that holds all of it or, if the system's limit on pipes is lower, an
/// unlinked file in memory that already has the content. The child sees the same in both: the
/// bytes, then the end of its input. At least 1 byte of buffer is requested. False with errno set
/// and both handles untouched.
[[nodiscard]] bool CreateInput(HANDLE& readEnd, HANDLE& writeEnd, std::string_view content);

/// Writes all of `content` to the write end that CreateInput made, in one go. A reader that is gone
/// is a failure with EPIPE and never a signal. False with errno set on a failed or short write.
[[nodiscard]] bool WriteInput(HANDLE writeEnd, std::string_view content);

/// A new close-on-exec descriptor for the same thing, at 3 or above; the old one is closed.
/// INVALID_HANDLE_VALUE with errno set if that fails; the old one is closed then too.
[[nodiscard]] HANDLE MakeNotInheritable(HANDLE handle);

/// Reads up to `count` bytes. Returns the number read, 0 at the end of the stream, -1 with errno
/// set. An interruption is not a failure.
[[nodiscard]] long ReadSome(HANDLE handle, char* bytes, std::size_t count);

/// The same, but the stream counts as ended as soon as one of `stops` is signalled (a semaphore
/// with a count, which it keeps), even while the read waits. Invalid handles among them are
/// skipped.
[[nodiscard]] long ReadSomeUnless(std::span<const HANDLE> stops, HANDLE handle, char* bytes,
                                  std::size_t count);

/// Descriptor of a standard stream of this process.
enum class StandardStream { Input = 0, Output = 1, Error = 2 };
[[nodiscard]] HANDLE StandardHandle(StandardStream stream);

}  // namespace rastrel::os
