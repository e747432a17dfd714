#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <string_view>

/// The calls of a stream's handler, by the two ways in which elements reach it.
namespace rastrel::test {

/// How a document is streamed.
struct Streaming {
  bool takesWhole = true;        ///< plain elements come whole; else all comes part by part
  bool isUnchecked = false;      ///< the parser is taken for a version that was not checked
  bool keepsWhitespace = false;  ///< as xml::XmlWhitespace::Keep
  std::size_t piece = 0;         ///< the source returns at most so many bytes at a time; 0 for all
  std::uint32_t choices = 0;     ///< by which the handler skips, enters, collects, and refuses
};

/// All calls that the handler gets, with all that the nodes have, their lines among it, and at the
/// end where and why the document was refused.
[[nodiscard]] std::string CallsOf(std::string_view document, const Streaming& streaming);

/// The differences between the two ways, or in a parser that was not checked, for handlers that
/// choose in this manner; empty if there are none.
[[nodiscard]] std::string DifferencesInStreaming(std::string_view document, std::size_t piece,
                                                 std::uint32_t choices);

/// Tables as programs write them, with now and then something in them that few programs write, and
/// some with a fault.
class XmlTables {
 public:
  explicit XmlTables(std::uint32_t seed) : m_Random(seed) {}
  /// A document of about so many rows.
  [[nodiscard]] std::string Next(std::size_t rows);

 private:
  std::size_t Pick(std::size_t count) { return m_Random() % count; }
  bool Seldom() { return Pick(m_Rarity) == 0; }
  void Row(std::string& text);
  void Cell(std::string& text);
  void Spoil(std::string& text);

  std::mt19937 m_Random;
  std::size_t m_Rarity = 10;
  std::string m_Prefix;
};

}  // namespace rastrel::test
