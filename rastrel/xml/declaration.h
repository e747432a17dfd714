#pragma once

#include <string>
#include <string_view>

#include "rastrel/xml/characters.h"

namespace rastrel::xml {

/// Whether UTF-16 that begins with these bytes, by a mark or by "<", has the high byte first.
[[nodiscard]] bool IsBigEndian(std::string_view head);

/// The encoding's name as the XML declaration has it; empty if there is no declaration or none in
/// it. `head` is the document's begin as its bytes stand, with the whole declaration and any mark
/// of byte order; it may go on behind that.
/// REQUIRES: the parser took the declaration for well-formed.
[[nodiscard]] std::string DeclaredEncoding(XmlEncodingFamily family, std::string_view head);

}  // namespace rastrel::xml
