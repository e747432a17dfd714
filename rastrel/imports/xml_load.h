#pragma once

#include "rastrel/imports/xml_node.h"
#include "rastrel/imports/xml_parser.h"

namespace rastrel::imports {

/// The document element of what the source gives; or none, and `failure` says why. Reports nothing.
[[nodiscard]] XmlNode LoadXml(XmlSource& source, XmlEncoding encoding,
                              std::optional<XmlFailure>& failure);

}  // namespace rastrel::imports
