#pragma once

#include <string>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"

namespace rastrel::server {

/// Takes the place of the one server of a data root, as long as the descriptor is open: it ends
/// with the process, whatever ends that. Waits 5 s for one that is just ending, and fails then with
/// "another server of this data root runs". REQUIRES: its queue was opened once.
[[nodiscard]] Expected<os::FileDescriptor> LockServer(const std::string& dataRoot);

/// Whether a server of the data root runs. False if that can't be known.
[[nodiscard]] bool IsServerRunning(const std::string& dataRoot);

/// The name of the user that this process runs as; its number where it has no name.
[[nodiscard]] std::string OwnUserName();

}  // namespace rastrel::server
