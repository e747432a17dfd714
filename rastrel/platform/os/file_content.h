#pragma once

#include <cstdint>
#include <string_view>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"

/// Moving the content of open files, for what is larger than memory should be.
namespace rastrel::os {

/// Opens a regular file for reading by library path. Anything else is a failure (EINVAL; EISDIR for
/// a directory) and is never waited for.
[[nodiscard]] Expected<FileDescriptor> OpenRegularFile(std::wstring_view path);

/// Gives `target` the permission bits of `source`, and room on the disk for what `source` holds and
/// `more` bytes besides, so that a large copy does not grow it step by step. A target that can have
/// neither is filled all the same.
void PrepareCopy(int target, int source, std::uint64_t more);

/// Appends what `source` holds from its present place on to what `target` holds, through one buffer
/// of 512 KiB. False with errno set if a read or a write fails; what was written stays.
[[nodiscard]] bool AppendContent(int target, int source);

/// Gives a file another name that nothing has. False with errno set; EEXIST if something has it.
[[nodiscard]] bool RenameToNew(std::wstring_view source, std::wstring_view target);

}  // namespace rastrel::os
