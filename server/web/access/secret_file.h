#pragma once

#include <cstdint>
#include <string>

#include "rastrel/platform/os/expected.h"

namespace rastrel::server::web {

/// The text of a file that only this user may read and change: 0600, or less. Fails for any other,
/// for a link, and for one that is larger than `limit`.
[[nodiscard]] Expected<std::string> ReadSecretFile(const std::string& path, std::uint64_t limit);

}  // namespace rastrel::server::web
