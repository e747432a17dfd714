#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "host/document/document.h"
#include "rastrel/platform/os/expected.h"

/// The document file: JSON in UTF-8, for people and programs (docs/formats/document.md). It holds
/// a whole document except its selection, its history and objects without a place; placed files are
/// in it whole.
namespace rastrel::document {

/// The text of a document. The same document has the same bytes. Lengths are written with as many
/// digits as bring back the same numbers. Separated planes are read for it: fails if one can't be.
[[nodiscard]] Expected<std::string> WriteDocumentText(const Document& document);
/// The same. REQUIRES: the document has no plane whose pixels are elsewhere (plane_pixels.h).
[[nodiscard]] std::string DocumentText(const Document& document);

/// Reads a text. Unknown members are passed over, so that a later version's files can be read where
/// they say no more than this one's; a later version itself is refused. A failure's `where` is the
/// place as a JSON pointer (RFC 6901), or "the file", and its `why` the rule that is broken.
[[nodiscard]] Expected<std::unique_ptr<Document>> ReadDocumentText(std::string_view text);

/// Saves to a path of the library's kind (platform/os/path.h): whole or not at all. Fails as
/// WriteDocumentText does too.
[[nodiscard]] Expected<void> SaveDocument(const Document& document, const std::wstring& path);
/// Loads from a path of the library's kind. Fails as ReadDocumentText does, and with the system's
/// error where the file can't be read or is larger than LargestDocumentFile.
[[nodiscard]] Expected<std::unique_ptr<Document>> LoadDocument(const std::wstring& path);

/// Bytes that a document file may have.
inline constexpr std::size_t LargestDocumentFile = std::size_t{1} << 30;

}  // namespace rastrel::document
