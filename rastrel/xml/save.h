#pragma once

#include <string>
#include <string_view>

#include "rastrel/xml/node.h"

/// Documents as text again, for who changes them on the way (layer.h has SaveNodeXml for all
/// others).
namespace rastrel::xml {

/// Where a text is in its document.
enum class XmlTextPlace {
  Content,    ///< among an element's children
  Cdata,      ///< the same, in a section of CDATA
  Attribute,  ///< the value of an attribute
  Namespace,  ///< the value of one that declares a namespace
};

/// Takes a document piece by piece, in order. Nothing that is passed outlives its call.
class XmlPieces {
 public:
  virtual ~XmlPieces() = default;
  /// An element begins. False passes it over with all that is in it, and `End` does not follow.
  [[nodiscard]] virtual bool Begin(const XmlNode& /*element*/) { return true; }
  /// The end tag of that element was written.
  virtual void End(const XmlNode& /*element*/) {}
  /// Markup, to be written as it is.
  virtual void Markup(std::string_view bytes) = 0;
  /// A text without its escapes: the taker writes it so that it reads back (AppendXmlText).
  virtual void Text(std::string_view text, XmlTextPlace place) = 0;
};

/// Hands over a node and all below it, with the namespaces that it uses declared on it.
void WriteXml(const XmlNode& node, XmlPieces& pieces);

/// Appends a text so that it reads back unchanged: between tags, or, with `attribute`, in double
/// quotes. UTF-8 without the characters that XML can't have.
void AppendXmlText(std::string& target, std::string_view text, bool attribute);

}  // namespace rastrel::xml
