#pragma once

#include <string>
#include <string_view>

#include "rastrel/platform/os/expected.h"
#include "rastrel/xml/node.h"

namespace rastrel::cutting {

/// Parses the text. A document type without declarations of its own is passed over. Fails with the
/// line and the reason.
[[nodiscard]] Expected<XmlNode> LoadSvg(std::string_view text, const std::string& name);

}  // namespace rastrel::cutting
