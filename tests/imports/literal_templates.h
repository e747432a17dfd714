#pragma once

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <string_view>

/// Templates read by another way: the XML parser's own tree, asked for the last element of a path
/// that has a text. The importers walk forward and overwrite.
namespace rastrel::test {

/// The records of a CRO template as text, a line for each value; nothing if the file is refused.
[[nodiscard]] std::optional<std::string> LiteralCro(std::string_view document);
/// The same of an LLX template.
[[nodiscard]] std::optional<std::string> LiteralLlx(std::string_view document);
/// The same of a BrightStar template, all records.
[[nodiscard]] std::optional<std::string> LiteralBrightStar(std::string_view document);

/// Random documents of a format's elements, most in their places, with texts of every kind.
class TemplateDocuments {
 public:
  enum class Format { Cro, Llx, BrightStar };

  TemplateDocuments(Format format, std::uint32_t seed) : m_Format(format), m_Random(seed) {}
  [[nodiscard]] std::string Next();

 private:
  std::size_t Pick(std::size_t count) { return m_Random() % count; }
  std::string Root();
  void Element(std::string& text, std::string_view name, int depth);
  void Attributes(std::string& text);
  void Content(std::string& text, std::string_view name, int depth);
  std::string Value();

  Format m_Format;
  std::mt19937 m_Random;
};

}  // namespace rastrel::test
