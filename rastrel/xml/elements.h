#pragma once

#include <optional>

#include "rastrel/xml/tree.h"

namespace rastrel::xml {

/// What is to become of an element whose start has been read.
enum class StreamChoice {
  Skip,   ///< it and all below it is read past (and must be well-formed)
  Enter,  ///< its child elements are announced in their turn; its own texts are read past
  Node,   ///< it is collected with all below it and handed over as one node
};

/// Takes elements whole that would otherwise be told part by part (XmlEvents, xml_parser.h).
class XmlElements {
 public:
  XmlElements() = default;
  XmlElements(const XmlElements&) = delete;
  XmlElements& operator=(const XmlElements&) = delete;
  virtual ~XmlElements() = default;

  /// The element that is being collected from its parts, and has to come to its end before another
  /// can be taken whole; null if there is none.
  [[nodiscard]] virtual const XmlName* Collected() const = 0;
  /// What is to become of the element that begins with `start`, which has no children yet and gets
  /// its parent here; nothing if the document is refused for it. An element may turn out not to be
  /// told whole after all: then it is asked for again, or told in parts from its start on.
  [[nodiscard]] virtual std::optional<StreamChoice> Choose(XmlTreeNode& start) = 0;
  /// The element of the last answer, if that was Skip (with nothing below it) or Node. Valid
  /// during the call only.
  virtual void Take(const XmlTreeNode& element) = 0;
  /// Whether texts of blanks alone are to stand in the nodes.
  [[nodiscard]] virtual bool KeepsBlanks() const = 0;
};

}  // namespace rastrel::xml
