#pragma once

#include <cstdint>
#include <string_view>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"

/// Copying the content of open files that may be larger than memory.
namespace rastrel::os {

/// Opens a regular file for reading by library path. Anything else is a failure (EINVAL; EISDIR for
/// a directory) and is never waited for.
[[nodiscard]] Expected<FileDescriptor> OpenRegularFile(std::wstring_view path);

/// Gives `target` the permission bits of `source`, and reserves disk space for the content of
/// `source` and `more` bytes, so that a large copy does not grow it step by step. Failures are
/// ignored: the target can be written all the same.
void PrepareCopy(int target, int source, std::uint64_t more);

/// Appends the content of `source`, from its current position, to `target`, through one buffer of
/// 512 KiB. The bytes written before a failure stay. The Failure's `what` is "read" or "write", and
/// it has no `where`.
[[nodiscard]] Expected<void> AppendContent(int target, int source);

/// Gives a file another name, which must be free (EEXIST). The Failure's `where` is the target.
[[nodiscard]] Expected<void> RenameToNew(std::wstring_view source, std::wstring_view target);

}  // namespace rastrel::os
