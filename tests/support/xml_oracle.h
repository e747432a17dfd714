#pragma once

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <string_view>

#include "rastrel/xml/node.h"

/// What a document should look like to the XML layer, by another way: the parser's own tree, made
/// by its own reading from memory, looked at literally.
namespace rastrel::test {

/// All that the layer's functions tell of a node and what is below it, as text.
[[nodiscard]] std::string DumpOf(const XmlNode& node);

/// The same of the literal tree of a document; nothing if it is not well-formed.
[[nodiscard]] std::optional<std::string> LiteralDump(std::string_view document);

/// Whether the layer refuses by rules of its own what XML allows (a document type, another version,
/// an encoding), or what the literal reading takes although it is not allowed (a NUL).
[[nodiscard]] bool IsBeyondTheLayer(std::string_view document);

/// What differs between the layer's ways to read a document (whole; in pieces of a few bytes; as a
/// stream) and the literal one; empty if nothing does.
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
