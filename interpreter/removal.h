#pragma once

namespace rastrel::interpreter {

/// Removes the file, or the directory with all below it, at that native path. A link is removed,
/// and never followed. Returns 0, also if nothing is there, or the first error's number; whatever
/// can be removed is removed then, too.
///
/// Takes no memory and makes system calls only, so it works in a process that was forked from one
/// with threads. Needs a stack of about 100 KiB.
[[nodiscard]] int RemoveAll(const char* path) noexcept;

}  // namespace rastrel::interpreter
