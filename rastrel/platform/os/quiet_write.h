#pragma once

#include <sys/types.h>

#include <cstddef>

namespace rastrel::os {

/// One write, repeated only if it was interrupted before the first byte. A reader that is gone is
/// EPIPE and never a SIGPIPE, whatever the host has set for that signal; one that was pending
/// before stays pending. Returns as write does.
[[nodiscard]] ssize_t WriteWithoutSignal(int descriptor, const void* bytes, std::size_t count);

}  // namespace rastrel::os
