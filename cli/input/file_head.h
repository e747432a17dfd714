#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// A first look at a file that a user gave, before a reader of one format sees it.
namespace rastrel::cli {

/// How a file begins.
struct FileHead {
  std::string bytes;    ///< at most as many as were asked for
  std::string trouble;  ///< why there are none: "it is a directory"; empty if there are some
};

/// Reads the first bytes of a regular file by its native path. A file that holds nothing, or
/// blanks alone, is a trouble too.
[[nodiscard]] FileHead ReadFileHead(const std::string& path, std::size_t size);

/// Whether an XML document may begin so: with markup behind a byte order mark and blanks at most.
/// Nothing but blanks may go on so.
[[nodiscard]] bool MayBeXml(std::string_view head);

/// What a file of another kind that begins so is, for a user who took it for something else ("a PDF
/// file"); empty if that is not known.
[[nodiscard]] std::string_view KnownKind(std::string_view head);

}  // namespace rastrel::cli
