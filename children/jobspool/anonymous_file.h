#pragma once

#include <string>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"

namespace rastrel::jobspool {

/// A new file on the file system of that native directory, open for reading and writing, that has
/// no name and is gone with its last descriptor.
[[nodiscard]] Expected<os::FileDescriptor> MakeAnonymousFile(const std::string& directory);

}  // namespace rastrel::jobspool
