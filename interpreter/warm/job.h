#pragma once

#include <string>

#include "interpreter/wall.h"
#include "interpreter/warm/library.h"
#include "rastrel/platform/os/file_descriptor.h"

namespace rastrel::interpreter::warm {

/// The part that all jobs of a warm interpreter share.
struct JobBase {
  std::string identity;            ///< of its options (warm_message.h)
  std::vector<WallPath> ownFiles;  ///< that the interpreter needs whatever the job is
};

/// The whole life of one job's process, a fork of the waiting one, from its first system call on:
///
/// 1. a session and process group of its own, and the request from the connection;
/// 2. the job's descriptors in their places and all others closed, its directory, the walls made
///    ready;
/// 3. "ready" with its pidfd; then it waits until whoever asked has it under guard and says so;
/// 4. from now on the end of the connection kills it, as the end of the one who started it kills a
///    program that was executed;
/// 5. the walls, and after them the first byte of the job;
/// 6. its exit status into the connection, and its end.
///
/// Until 4 nothing of the job is done, and a failure is answered with "refused".
/// REQUIRES: the process has one thread; no other descriptor from 100 on is needed by it.
[[noreturn]] void LiveAsJob(os::FileDescriptor connection, const JobBase& base, Library& library);

}  // namespace rastrel::interpreter::warm
