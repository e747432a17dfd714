#pragma once

#include <optional>

#include "rastrel/xml/tree.h"

namespace rastrel::xml {

/// The handling of an element whose start has been read.
enum class StreamChoice {
  Skip,   ///< it and all below it is read past (and must be well-formed)
  Enter,  ///< its child elements are announced in their turn; its own texts are read past
  Node,   ///< it is collected with all below it and handed over as one node
};

/// Receives whole elements in place of their parts (XmlEvents, xml/parser.h).
class XmlElements {
 public:
  XmlElements() = default;
  XmlElements(const XmlElements&) = delete;
  XmlElements& operator=(const XmlElements&) = delete;
  virtual ~XmlElements() = default;

  /// The element that is being collected from its parts, and has to end before another can come
  /// whole; null if there is none.
  [[nodiscard]] virtual const XmlName* Collected() const = 0;
  /// Decides on the element that begins with `start`, which has no children yet and gets its parent
  /// here; nothing if the document is refused for it. An element may turn out not to come whole
  /// after all: then this is called for it again, or its parts are reported from its start on.
  [[nodiscard]] virtual std::optional<StreamChoice> Choose(XmlTreeNode& start) = 0;
  /// Receives the element of the last Choose, if that returned Skip (with nothing below it) or
  /// Node. Valid during the call only.
  virtual void Take(const XmlTreeNode& element) = 0;
  /// Whether the nodes include texts of whitespace alone.
  [[nodiscard]] virtual bool KeepsWhitespace() const = 0;
};

}  // namespace rastrel::xml
