#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "rastrel/xml/node.h"

/// The one door to XML. Importers and readers see documents through these functions and never
/// through a parser. docs/formats/xml.md describes the accepted documents; in short:
///
/// - XML 1.0 (fifth edition) with namespaces (1.0), in UTF-8, UTF-16 of either order, and the ISO
///   and Windows encodings that a declaration names. Strict: a document that is not well-formed,
///   has a document type, an entity other than the five that every document has, an attribute
///   twice, a prefix that is not declared, or bytes that are none in its encoding, is refused as a
///   whole. Nothing outside the document is ever fetched.
/// - Texts of whitespace alone (space, tab, carriage return, line feed) are no nodes. A CDATA
///   section always is one. Comments and instructions are nodes, count among children, and have no
///   name. Neighbouring text is one node.
/// - Names compare exactly, by case, and for elements by the local part: svg:svg answers to "svg".
///   Attributes are asked for by the name as written, prefix included.
///
/// Time and memory stay in proportion to a document's size; xml/limits.h has the bounds. The reason
/// for a refusal is in the application log, and TakeXmlFailure (xml/failure.h) returns it.
/// Thread: any; one document may be read by several threads at once. Nothing here throws but for
/// want of memory.

/// The document element of a file, by library path; none if it can't be read or is refused.
[[nodiscard]] XmlNode LoadXmlFile(std::wstring_view path);
/// The document element of a document in memory; none if it is refused. An encoding that the text
/// declares has no meaning here and is passed over.
[[nodiscard]] XmlNode LoadXmlString(std::wstring_view text);

/// The child nodes in order, comments, instructions and texts among them. `count` takes their
/// number.
[[nodiscard]] std::vector<XmlNode> NodeChildren(const XmlNode& node, int& count);
/// The child elements of that local name, in order.
[[nodiscard]] std::vector<XmlNode> ChildrenNamed(const XmlNode& node, std::wstring_view name);
/// The first of them, or none.
[[nodiscard]] XmlNode FirstChildNamed(const XmlNode& node, std::wstring_view name);

/// Whether the local name equals `name`. Only elements have one: anything else is false.
[[nodiscard]] bool NodeNameIs(const XmlNode& node, std::wstring_view name);
/// The local name, empty if the node is no element. True if it is not empty.
bool NodeBaseName(const XmlNode& node, std::wstring& name);

/// The text: of an element all texts and CDATA sections below it, joined in order and without
/// comments and instructions; of any other node its content. Whitespace at both ends is removed.
/// True if it is not empty; else false, and `text` is as it was. Uses the capacity that `text` has.
bool NodeText(const XmlNode& node, std::wstring& text);
/// The number that the text begins with, by the rules of number_text.h. True if the text is not
/// empty, even if it is no number (then it is 0); else false, and the value is as it was.
bool NodeDouble(const XmlNode& node, double& value);
/// The same, rounded to a float.
bool NodeFloat(const XmlNode& node, float& value);
/// The same for a whole number.
bool NodeInt(const XmlNode& node, std::int32_t& value);

/// The value of the attribute of that qualified name ("xlink:href", "xmlns:svg"), whitespace at its
/// ends included. False if it is absent or empty, and the output is as it was.
bool AttributeString(const XmlNode& node, std::wstring_view name, std::wstring& value);
/// The number that the value begins with, with the same results.
bool AttributeDouble(const XmlNode& node, std::wstring_view name, double& value);
/// The same for a whole number.
bool AttributeInt(const XmlNode& node, std::wstring_view name, std::int32_t& value);

/// Local name and value of every attribute with a value that is not empty, in the order written,
/// but for declarations of namespaces, which come first: xmlns:r has the local name "r", xmlns
/// itself "xmlns".
[[nodiscard]] std::vector<std::pair<std::wstring, std::wstring>> AttributeList(const XmlNode& node);

/// The line of its file that an element's start tag ends on, from 1, for messages about it; 0 for
/// anything but an element. Not counted beyond 16,777,215.
[[nodiscard]] int NodeLine(const XmlNode& node);

/// Writes the node and all below it to a new text file, in UTF-8, with the namespaces that it uses
/// declared on it, so that it is a document of its own. True if the file could be made and written.
bool SaveNodeXml(const XmlNode& node, std::wstring_view path);
