#pragma once

#include <string>

namespace rastrel::xml {

/// Why no document can be read at all, in UTF-8: the parser's library can't be had, or is another
/// one than it should be. Empty if there is nothing of that. Looks once for the life of the
/// process. Thread: any.
[[nodiscard]] std::string WhyNoXmlParser();

}  // namespace rastrel::xml
