#pragma once

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file.h"

/// Copying of single files by native name, below open directories. CopyFileOver and CopyTreeInto
/// share it.
namespace rastrel::os {

/// A name below an open directory.
struct FileAt {
  int directory;     ///< open descriptor, or AT_FDCWD
  const char* name;  ///< native bytes, relative to it
};

/// Whether a source that is a link is followed or a failure.
enum class LinksInSource { Followed, Refused };

/// Copies a regular file's content, permission bits and modification time over the target, which is
/// made if it is missing. A target that is the source itself is a failure (EINVAL) and stays whole;
/// any other failure removes an incomplete target. The Failure's `what` is the call ("open" of the
/// source, any other of the target), and `where` the name as given. `access`: see CopyFileOver.
[[nodiscard]] Expected<void> CopyFileAt(FileAt source, FileAt target, LinksInSource links,
                                        Access access = Access::ByUmask);

}  // namespace rastrel::os
