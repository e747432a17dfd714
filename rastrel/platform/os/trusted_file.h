#pragma once

#include <string>

#include "rastrel/platform/os/expected.h"

namespace rastrel::os {

/// Whether only this user and the superuser may change a file and the directories that it is found
/// by, from `top` down; or, if the file is not below `top`, the one directory that it is in. For
/// programs before they are started, and for settings that name programs.
///
/// Fails for one that somebody else owns, or may write to: everybody, or a group that is not this
/// user's own, which has the user's name and no other members. In a directory with the sticky bit
/// nobody replaces a file of another, so that it may be open to all. Fails too if anything can't be
/// looked at. The failure's `where` is the file or directory, its `why` a text for the user. Links
/// are followed. Paths are native; any thread.
[[nodiscard]] Expected<void> CheckTrusted(const std::string& path, const std::string& top);

/// The same, of the file alone, wherever it lies.
[[nodiscard]] Expected<void> CheckTrustedFile(const std::string& path);

}  // namespace rastrel::os
