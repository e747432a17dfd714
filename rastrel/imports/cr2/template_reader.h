#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "rastrel/imports/cr2/cr2_dialect.h"
#include "rastrel/imports/cr2/cr2_document.h"
#include "rastrel/platform/values/color.h"
#include "rastrel/xml/node.h"

namespace rastrel::host {
class Application;
}  // namespace rastrel::host

namespace rastrel::imports {

/// Reads the elements that both generations of templates share into one document. Each `Parse`
/// routine takes the element that it reads. Names and keywords compare exactly; elements and
/// attributes of other names are passed over, and an attribute that is empty counts as absent.
///
/// A text is copied only as often as the records need it. The font of a block that a span inherits is
/// such a copy, so a file could make records that are much larger than itself. One that does is
/// refused and reported (xml/failure.h): all of the document is empty then.
class TemplateReader {
 public:
  /// Characters that the spans of one document may inherit as faces and styles.
  static constexpr std::size_t MaxInheritedCharacters = std::size_t{16} << 20;

  virtual ~TemplateReader() = default;
  TemplateReader(const TemplateReader&) = delete;
  TemplateReader& operator=(const TemplateReader&) = delete;

 protected:
  /// `path` is the template's and outlives the reader.
  TemplateReader(const Cr2Dialect& dialect, std::wstring_view path, Cr2Document& document)
      : m_Dialect(dialect), m_Path(path), m_Document(document) {}

  // Of the document. False if a required part is missing or can't be read.
  [[nodiscard]] bool ParseTableSizeNode(const XmlNode& node);
  [[nodiscard]] bool ParseTemplateNode(const XmlNode& node);
  [[nodiscard]] bool ParseCutLineNode(const XmlNode& node);
  void ParseGraphicsNode(const XmlNode& node);
  /// True if there is at least one plate. The last part of a document to be read.
  [[nodiscard]] bool ParsePlatesNode(const XmlNode& node);

  /// False without a width or a height; `placement`, which is new, stays all zeros then.
  [[nodiscard]] bool ParsePlacementNode(const XmlNode& node, CR2_PLACEMENT& placement) const;
  void ParseMarginsNode(const XmlNode& node, CR2_MARGINS& margins) const;
  /// The `color` children. False if one has no target, which ends the list.
  bool ParseColorsNode(const XmlNode& node, CR2_COLORS& colors);
  /// Calls `take` with the target and the color of each `color` child that results in a color.
  bool WalkColors(const XmlNode& node,
                  const std::function<void(const std::wstring&, const CVKColor&)>& take);

  /// A length of the file as the records have it.
  [[nodiscard]] double InRecords(double length) const;

  // The steps that each generation has its own way with.

  /// The file of a cut line, by its `format`. False if the cut line can't be read.
  [[nodiscard]] virtual bool ParseCutLineNodeAttribute(const XmlNode& node, CR2_CUTLINE& line) = 0;
  /// A frame's own parts besides graphic, placement and colors.
  virtual void ParseFrameVariables(const XmlNode& node, CR2_GRAPHIC_FRAME& frame) = 0;
  /// The attributes of a `font` or a `span`, over those that `font` has.
  virtual void ParseFontSpecNode(const XmlNode& node, CR2_FONT_SPEC& font) = 0;
  /// The color of a `color` element; nothing if it results in none.
  [[nodiscard]] virtual std::optional<CVKColor> ParseColorNodeAttribute(const XmlNode& node) = 0;
  /// A color that went into the records.
  virtual void ColorTaken(const CVKColor& color) = 0;

  Cr2Dialect m_Dialect;
  std::wstring_view m_Path;
  Cr2Document& m_Document;

 private:
  void ParseGraphicLocationNode(const XmlNode& node);
  void ParsePlateGraphicsNode(const XmlNode& node, CR2_PLATE& plate);
  [[nodiscard]] bool ParseGraphicFrameNode(const XmlNode& node, CR2_GRAPHIC_FRAME& frame);
  void ParsePlateTextNode(const XmlNode& node, CR2_PLATE& plate);
  [[nodiscard]] bool ParseTextFrameNode(const XmlNode& node, CR2_TEXT_FRAME& frame);
  void ParsePlateFontTextNode(const XmlNode& node, CR2_TEXT& text);
  void ParseTextLineNode(const XmlNode& node, const CR2_FONT_SPEC& font, CR2_TEXT_LINE& line);
  [[nodiscard]] bool ParsePlacementOf(const XmlNode& parent, CR2_PLACEMENT& placement) const;
  [[nodiscard]] double LengthOf(const XmlNode& node, std::wstring_view attribute) const;
  [[nodiscard]] double StrokeOf(const XmlNode& node) const;
  void ParseSpacing(const XmlNode& node, CR2_TEMPLATE& plateTemplate) const;
  [[nodiscard]] bool IsTooLarge() const { return m_InheritedCharacters > MaxInheritedCharacters; }
  void Refuse(const XmlNode& node);
  [[nodiscard]] CR2_SPAN InheritedSpan(const CR2_FONT_SPEC& font);

  std::size_t m_InheritedCharacters = 0;
};

/// The code of a justification's keyword: "left" 0, "right" 1, "center" 2; 0 for any other text.
[[nodiscard]] std::int32_t JustificationCode(std::wstring_view keyword);

/// A value of an attribute as a whole number; 0 without one.
[[nodiscard]] std::int32_t WholeNumberOf(const XmlNode& node, std::wstring_view attribute);

/// Whether a library path has 5 characters at least, names something, and ends in that extension,
/// which is in lower case with its dot. Case of the path does not count.
[[nodiscard]] bool IsTemplatePath(const wchar_t* path, std::wstring_view extension);

}  // namespace rastrel::imports
