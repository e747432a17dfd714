#pragma once

#include <string>

#include "rastrel/platform/os/expected.h"

namespace rastrel::server::web {

/// Sends a POST without a body to the HTTP interface of this user by its Unix socket, and returns
/// the body of the answer. Fails if nobody answers within ten seconds, and for an answer that is no
/// success; its status is in the reason.
[[nodiscard]] Expected<std::string> PostLocally(const std::string& socketPath,
                                                const std::string& path);

}  // namespace rastrel::server::web
