#pragma once

#include "rastrel/xml/node.h"
#include "rastrel/xml/parser.h"

namespace rastrel::xml {

/// The document element of what the source gives; or none, and `failure` says why. Reports nothing.
[[nodiscard]] XmlNode LoadXml(XmlSource& source, XmlEncoding encoding,
                              std::optional<XmlFailure>& failure);

}  // namespace rastrel::xml
