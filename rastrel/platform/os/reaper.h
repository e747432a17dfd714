#pragma once

#include <cstdint>
#include <functional>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/process.h"

/// The process between this one and a child, which takes the child's exit status.
///
///     this process ---- thread of the child     sleeps in clone() until the reaper is gone
///                            |
///                         reaper                the same memory and descriptors, signals of its
///                         own
///                            |
///                          child                posix_spawn
///
/// A library can't rely on its host to leave children alone. A host that ignores SIGCHLD, or that
/// has a thread which waits for every child, loses their exit status for good: the system keeps it
/// for one taker. The child is therefore the reaper's and not this process's. The reaper itself
/// announces its end by no signal, so that neither applies to it: only waits with __WALL or
/// __WCLONE see it. (That can't be had for the child, since an exec sets the signal to SIGCHLD.)
/// The reaper shares this process's memory, so it costs the same whatever that holds, and this
/// process's thread sleeps meanwhile, so that the thread's local storage is the reaper's. It ends
/// with the child, or with this process.
namespace rastrel::os {

/// Calls `start` in a new reaper and returns its result. It starts one child of the calling
/// process, and ends it if it fails. Fails without a thread ("pthread_create") or a process
/// ("clone").
[[nodiscard]] Expected<ChildProcess> StartInReaper(std::function<Expected<ChildProcess>()> start);

/// The process that started this one: its parent, or the parent of that if the parent is a reaper.
/// A reaper ends with its child, and nobody owns anything by it. 0 if the machine does not say.
[[nodiscard]] std::uint32_t StarterProcessId();

/// The end of a child that StartInReaper started: running, if it has not ended and `wait` is false.
/// The end can be had once. Fails with ECHILD if it was had before or the reaper could not have it.
/// The child's thread ends a little later.
[[nodiscard]] Expected<ExitState> TakeEndFromReaper(HANDLE process, bool wait);

/// Waits for the threads of all children that have ended: each ends within microseconds.
void JoinEndedReapers();

}  // namespace rastrel::os
