#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "rastrel/platform/os/expected.h"

/// A first look at a file that a user gave, before a reader of one format sees it.
namespace rastrel::cli {

/// Reads the first bytes of a regular file by its native path, no more than `size`. Fails with a
/// reason for the user alone, "it is a directory", also for an empty file or one of whitespace
/// alone.
[[nodiscard]] Expected<std::string> ReadFileHead(const std::string& path, std::size_t size);

/// Whether an XML document may begin so: with markup after nothing but a byte order mark and
/// whitespace. A head of whitespace alone may be followed by markup.
[[nodiscard]] bool MayBeXml(std::string_view head);

/// The kind of a file that begins so, for a user who took it for something else: "a PDF file".
/// Empty if it is not known.
[[nodiscard]] std::string_view KnownKind(std::string_view head);

}  // namespace rastrel::cli
