#pragma once

#include <string>
#include <string_view>

namespace rastrel::interpreter {

/// UTF-8 of a text string of a PDF: UTF-16 with the high byte first after its mark FE FF, UTF-8
/// after its mark EF BB BF, and else PDFDocEncoding. Bytes that make no character become U+FFFD.
[[nodiscard]] std::string Utf8FromPdfText(std::string_view bytes);

}  // namespace rastrel::interpreter
