#pragma once

#include <functional>
#include <string>

#include "rastrel/platform/os/expected.h"

/// Results of a command on their way to the place that its user named. Paths are native.
namespace rastrel::os {

/// Called with the path of a hidden file before it is made, for who has to remove it if this
/// process ends first, and with an empty one when it is gone.
using OnHiddenFile = std::function<void(const std::string& path)>;

/// Gives a finished file its final place as a whole: a reader sees the old or the new content,
/// never a part, even after a crash. Its content is on the disk before it has the name, and the
/// name when this returns. A file of another file system is copied into a hidden one beside the
/// target first. A regular file that was there is replaced, and gives its permissions to the new
/// one; the caller decides whether it may be. Whatever fails leaves it alone, and leaves nothing
/// hidden.
///
/// `target` is no link: a caller that wants one followed hands its end over. The source has gone
/// afterwards, or is left to the caller if it was copied.
[[nodiscard]] Expected<void> DeliverFile(const std::string& source, const std::string& target,
                                         const OnHiddenFile& onHidden);

}  // namespace rastrel::os
