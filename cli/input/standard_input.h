#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "rastrel/platform/os/expected.h"

/// Standard input as a file: the readers and the RIP look at places of it again.
namespace rastrel::cli {

/// The operand that means it.
inline constexpr std::string_view StandardInputOperand = "-";

/// Its name in messages.
inline constexpr const char* StandardInputName = "standard input";

/// The most that is taken, in bytes.
inline constexpr std::uint64_t StandardInputLimit = std::uint64_t{4} << 30;

/// Copies standard input, to its end, into a file of `directory` (native path) that this user alone
/// may read, and returns the file's path. Its name is the title, or "standard input" if that is
/// empty, and an extension by the content. From then on messages name "standard input" in place of
/// the path. Fails with a message for the user if it can't be read or written, or is larger than
/// `limit`; a copy so far is the caller's to remove. REQUIRES: called once.
[[nodiscard]] Expected<std::string> TakeStandardInput(const std::string& directory,
                                                      const std::string& title,
                                                      std::uint64_t limit = StandardInputLimit);

/// The permission bits of the file that results from one at that path: its own, or, for a copy of
/// standard input, those of the file there. A pipe has none, and the umask alone decides.
[[nodiscard]] unsigned AccessOf(const std::string& path);

}  // namespace rastrel::cli
