#pragma once

#include <string>
#include <string_view>

#include "rastrel/xml/characters.h"

namespace rastrel::xml {

/// Whether UTF-16 that begins with these bytes, a byte-order mark or "<", has the high byte first.
[[nodiscard]] bool IsBigEndian(std::string_view head);

/// The encoding's name as the XML declaration has it; empty if there is no declaration or none in
/// it. `head` is the begin of the document's bytes, with any byte-order mark and the whole
/// declaration; more may follow.
/// REQUIRES: the parser took the declaration for well-formed.
[[nodiscard]] std::string DeclaredEncoding(XmlEncodingFamily family, std::string_view head);

}  // namespace rastrel::xml
