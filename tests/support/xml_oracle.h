#pragma once

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <string_view>

#include "rastrel/xml/node.h"

/// A document as the XML layer should see it, by another way: the parser's own tree, made
/// by its own reading from memory, looked at literally.
namespace rastrel::test {

/// All that the layer's functions return of a node and its descendants, as text.
[[nodiscard]] std::string DumpOf(const XmlNode& node);

/// The same of the literal tree of a document; nothing if it is not well-formed.
[[nodiscard]] std::optional<std::string> LiteralDump(std::string_view document);

/// Whether the layer refuses the document by rules of its own although XML allows it (a document
/// type, another version, an encoding), or although the literal reading takes it (a NUL).
[[nodiscard]] bool IsBeyondTheLayer(std::string_view document);

/// The differences between the layer's ways to read a document (whole; in pieces of a few bytes; as
/// a stream) and the literal one; empty if there are none.
[[nodiscard]] std::string DifferencesFromLiteral(std::string_view document, std::size_t pieces);

/// Documents made of all that XML has, most of them sound and some with a fault.
class XmlDocuments {
 public:
  explicit XmlDocuments(std::uint32_t seed) : m_Random(seed) {}
  [[nodiscard]] std::string Next();

 private:
  std::size_t Pick(std::size_t count) { return m_Random() % count; }
  void Element(std::string& text, int depth);
  void Content(std::string& text, int depth);
  void Spoil(std::string& text);

  std::mt19937 m_Random;
};

}  // namespace rastrel::test
