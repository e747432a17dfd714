#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "host/document/document.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/expected_or.h"

/// The document file: JSON in UTF-8, for people and programs (docs/formats/document.md). It holds
/// all of a document but its selection, its history and objects that stand nowhere; placed files
/// are carried along whole.
namespace rastrel::document {

/// A text of a document. The same document gives the same bytes. Lengths are written so that
/// reading them gives the same numbers.
[[nodiscard]] std::string DocumentText(const Document& document);

/// A document, or why there is none: what is wrong, and where in the file, in words for the user.
using ReadDocument = os::ExpectedOr<std::unique_ptr<Document>, std::wstring>;

/// Reads a text. Unknown members are passed over, so that a later version's files can be read where
/// they say no more than this one's; a later version itself is refused.
[[nodiscard]] ReadDocument ReadDocumentText(std::string_view text);

/// Saves to a path of the library's kind (platform/os/path.h): whole or not at all.
[[nodiscard]] Expected<void> SaveDocument(const Document& document, const std::wstring& path);
/// Loads from a path.
[[nodiscard]] ReadDocument LoadDocument(const std::wstring& path);

/// Bytes that a document file may have.
inline constexpr std::size_t LargestDocumentFile = std::size_t{1} << 30;

}  // namespace rastrel::document
