#pragma once

#include "rastrel/xml/node.h"
#include "rastrel/xml/parser.h"

namespace rastrel::xml {

/// Reads a whole document and returns its document element. Fails as ParseXml does, without a path
/// in the failure, and reports nothing.
[[nodiscard]] Expected<XmlNode> LoadXml(XmlSource& source, XmlEncoding encoding);

}  // namespace rastrel::xml
