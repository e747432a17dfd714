#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "rastrel/platform/os/deadline.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/handle.h"

/// One wait over several handles, with the result codes that supervisors use.
namespace rastrel::os {

inline constexpr std::uint32_t WaitSignaledBase = 0;  ///< plus the index of the handle
inline constexpr std::uint32_t WaitAbandonedBase =
    128;  ///< plus the index; no wait here returns it
inline constexpr std::uint32_t WaitTimeout = 258;
inline constexpr std::uint32_t WaitFailed = 0xFFFFFFFF;  ///< errno has the reason
inline constexpr std::size_t WaitLimit = 64;             ///< handles in one wait

/// Waits without a time limit until one of the handles is signalled: a semaphore with a count
/// (which the wait takes one from), a process that ended. Returns WaitSignaledBase + the lowest
/// index. No handles, or more than WaitLimit: WaitFailed. Goes on after an interruption.
[[nodiscard]] std::uint32_t WaitForAny(std::span<const HANDLE> handles);

/// Waits until one of the handles can be read, or until the deadline, and takes nothing from it.
/// Returns WaitSignaledBase + the lowest index, WaitTimeout, or WaitFailed. Invalid handles are
/// skipped. Goes on after an interruption, to the same deadline.
[[nodiscard]] std::uint32_t WaitReadable(std::span<const HANDLE> handles, Deadline deadline);

/// Makes a counter that WaitForAny can wait for, with the count given. The caller closes it.
/// Never one of the three standard descriptors.
[[nodiscard]] Expected<HANDLE> CreateSemaphoreHandle(unsigned count);
/// Adds one. Never blocks. A failure is one that the system repeated several times in a row: nobody
/// may be waiting for a count that never came.
Expected<void> ReleaseSemaphoreHandle(HANDLE semaphore);
/// Takes one, waiting for it without a time limit.
[[nodiscard]] Expected<void> AcquireSemaphoreHandle(HANDLE semaphore);
/// Takes one if there is one, and never waits. False if there was none.
[[nodiscard]] bool TryAcquireSemaphoreHandle(HANDLE semaphore);
/// The current count; 0 for a handle that is no semaphore.
[[nodiscard]] unsigned SemaphoreCount(HANDLE semaphore);

}  // namespace rastrel::os
