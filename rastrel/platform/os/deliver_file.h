#pragma once

#include <string>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/output_file.h"

/// Results of a command on their way to the place that its user named. Paths are native.
namespace rastrel::os {

/// Gives a finished file its final place as a whole (OutputFile): a reader sees the old or the new
/// content, never a part, even after a crash. Its content is on the disk before it has the name,
/// and the name when this returns. A regular file that was there is replaced, and gives its
/// permissions to the new one; the caller decides whether it may be. Whatever fails leaves it
/// alone, and leaves nothing hidden.
///
/// The source has gone afterwards, or is left to the caller if it was copied, which it is to
/// another file system, or if this failed.
[[nodiscard]] Expected<void> DeliverFile(const std::string& source, const std::string& target,
                                         const OnHiddenFile& onHidden);

}  // namespace rastrel::os
