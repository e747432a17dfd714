#pragma once

/// A handle of the interface is a descriptor of this machine: a pipe end, a child process (a pidfd)
/// or a semaphore (an eventfd). 0 means "none", so no handle that the library makes itself is
/// ever one of the three standard descriptors. Handles have no owner of their own: the field that
/// holds one says who closes it.
using HANDLE = int;

/// No handle.
inline constexpr HANDLE INVALID_HANDLE_VALUE = -1;
