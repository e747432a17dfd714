#pragma once

#include <cstddef>
#include <string_view>

/// What kind of document some bytes are. A sender's word for it is not trusted.
namespace rastrel::server {

enum class DocumentFormat { Unknown, PostScript, Pdf, Jpeg, Png };

/// So many bytes from a document's beginning are looked at.
inline constexpr std::size_t DocumentHeadSize = 1024;

/// The format of a document by its first bytes. PostScript may begin with a control-D, a byte-order
/// mark, or the header of a DOS EPS file; "%PDF-" may be anywhere in the head.
[[nodiscard]] DocumentFormat FormatOfDocument(std::string_view head);

/// The extension of the file that the queue keeps: "ps", "eps" for a DOS EPS file, "pdf", "jpg",
/// "png"; "" for an unknown format.
[[nodiscard]] const char* ExtensionOfDocument(std::string_view head);

}  // namespace rastrel::server
