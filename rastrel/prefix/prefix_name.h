#pragma once

#include <string>

#include "rastrel/platform/os/claimed_file.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::prefix {

/// A prefix file under the name that it was given.
struct NamedPrefix {
  std::wstring path;     ///< library path
  os::ClaimedFile file;  ///< empty, or with an earlier prefix
};

/// Chooses the name of a job's prefix and makes the file. It is PrefixPathOf's name, and an earlier
/// prefix of that name is taken, which this library knows by its first line. Where that would take
/// the job's own file, a file of somebody else's, a directory, a link, or the prefix of a ticket
/// that is printing, it is STEM-rastrel-N.psp beside it, with the first N from 1 that is free.
/// `Failure` if no file can be made. std::length_error if the path holds no dot.
[[nodiscard]] Expected<NamedPrefix> ClaimPrefix(const std::wstring& jobPath);

}  // namespace rastrel::prefix
