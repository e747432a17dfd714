#pragma once

#include <string>

#include "rastrel/platform/os/expected.h"

namespace rastrel::server::web {

/// Digits of a secret: 256 bits of the system's random numbers.
[[nodiscard]] Expected<std::string> NewSecret();

/// Makes a new token and writes it to the file, for this user alone (0600), with a line end. The
/// old one counts no more. Returns it.
[[nodiscard]] Expected<std::string> MakeToken(const std::string& path);

/// The token of the file. Fails if others may read it, and if it holds none.
[[nodiscard]] Expected<std::string> ReadToken(const std::string& path);

}  // namespace rastrel::server::web
