#pragma once

#include <string>
#include <string_view>

#include "rastrel/imports/xml_node.h"

/// The node functions of xml_layer.h without a copy, for readers that meet millions of nodes. Same
/// nodes, same names, same texts. Bytes are UTF-8 and valid as long as the node is.
namespace rastrel::imports {

/// The first child and the next of the same parent; none behind the last.
[[nodiscard]] XmlNode FirstChild(const XmlNode& node);
[[nodiscard]] XmlNode NextSibling(const XmlNode& node);

/// Whether the node is an element (and has a name and attributes).
[[nodiscard]] bool IsElement(const XmlNode& node);
/// The local name; empty if the node is no element.
[[nodiscard]] std::wstring_view BaseName(const XmlNode& node);

/// An attribute's value as AttributeString gives it; empty if it is absent.
[[nodiscard]] std::string_view AttributeBytes(const XmlNode& node, std::wstring_view name);
/// The text as NodeText gives it. Stands in the node or, where it is made of several, in `scratch`.
[[nodiscard]] std::string_view TextBytes(const XmlNode& node, std::string& scratch);
/// The same with the blanks at both ends, and with texts of blanks alone where the stream was told
/// to keep them: what the document's writer meant a person to see.
[[nodiscard]] std::string_view RawTextBytes(const XmlNode& node, std::string& scratch);

}  // namespace rastrel::imports
