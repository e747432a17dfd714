#include "rastrel/imports/cr2/cr2_parse.h"

#include <array>
#include <cstdint>

#include "rastrel/imports/cr2/cut_line_file.h"
#include "rastrel/imports/cr2/template_reader.h"
#include "rastrel/imports/refused_text.h"
#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/host.h"
#include "rastrel/xml/layer.h"
#include "rastrel/xml/walk.h"

namespace rastrel::imports {
namespace {

using namespace std::string_view_literals;

class Cr2Reader : public TemplateReader {
 public:
  Cr2Reader(std::wstring_view path, Cr2Document& document)
      : TemplateReader(FirstGeneration, path, document) {}

  [[nodiscard]] bool ParseRoot(const XmlNode& root);

 private:
  bool ParseCutLineNodeAttribute(const XmlNode& node, CR2_CUTLINE& line) override;
  void ParseFrameVariables(const XmlNode&, CR2_GRAPHIC_FRAME&) override {}
  void ParseFontSpecNode(const XmlNode& node, CR2_FONT_SPEC& font) override;
  std::optional<CVKColor> ParseColorNodeAttribute(const XmlNode& node) override;
  void ColorTaken(const CVKColor&) override {}  // colors go to the palette when they are used

  static CVKColor ParseRGBNodeAttribute(const XmlNode& node);
  static CVKColor ParseCMYKNodeAttribute(const XmlNode& node);
  static std::optional<CVKColor> ParseNameNodeAttribute(const XmlNode& node);
  void ParseColorFilters(const XmlNode& node);
};

bool Cr2Reader::ParseRoot(const XmlNode& root) {
  const XmlNode tableSize = FirstChildNamed(root, L"table_size"sv);
  if (!tableSize) return true;
  if (!ParseTableSizeNode(tableSize)) return false;
  const XmlNode plateTemplate = FirstChildNamed(root, L"template"sv);
  if (!plateTemplate) return true;
  if (!ParseTemplateNode(plateTemplate)) return false;
  const XmlNode cutLine = FirstChildNamed(plateTemplate, L"cutline"sv);
  if (cutLine && !ParseCutLineNode(cutLine)) return false;
  ParseColorFilters(FirstChildNamed(root, L"Output_Filter"sv));
  ParseGraphicsNode(FirstChildNamed(root, L"graphics"sv));
  const XmlNode plates = FirstChildNamed(root, L"plates"sv);
  return !plates || ParsePlatesNode(plates);
}

bool Cr2Reader::ParseCutLineNodeAttribute(const XmlNode& node, CR2_CUTLINE& line) {
  std::wstring format;
  AttributeString(node, L"format"sv, format);
  if (format == L"SVG") {
    const XmlNode svg = FirstChildNamed(node, L"svg"sv);  // with any prefix
    if (svg) line.file = SaveCutLineBeside(svg, m_Path);
    return static_cast<bool>(svg);
  }
  // The value that should name a file is the one that never does: templates that want a file leave
  // the format out.
  if (format == L"FILE") return false;
  const XmlNode file = FirstChildNamed(node, L"file"sv);
  NodeText(file, line.file);
  return static_cast<bool>(file);
}

void Cr2Reader::ParseFontSpecNode(const XmlNode& node, CR2_FONT_SPEC& font) {
  font.face.clear();
  font.style.clear();
  AttributeString(node, L"face"sv, font.face);
  AttributeString(node, L"style"sv, font.style);
  AttributeDouble(node, L"size"sv, font.size);
  AttributeDouble(node, L"line_height"sv, font.lineHeight);
  std::wstring justification;
  AttributeString(node, L"justification"sv, justification);
  font.justification = JustificationCode(justification);
  ParseColorsNode(node, font.colors);
}

/// By the element of its format. A `hex` in that element's place is no color.
std::optional<CVKColor> Cr2Reader::ParseColorNodeAttribute(const XmlNode& node) {
  std::wstring format;
  AttributeString(node, L"format"sv, format);
  if (format == L"NAME") return ParseNameNodeAttribute(node);
  if (format == L"RGB") {
    const XmlNode rgb = FirstChildNamed(node, L"rgb"sv);
    if (rgb) return ParseRGBNodeAttribute(rgb);
  }
  if (format == L"CMYK") {
    const XmlNode cmyk = FirstChildNamed(node, L"cmyk"sv);
    if (cmyk) return ParseCMYKNodeAttribute(cmyk);
  }
  return std::nullopt;
}

CVKColor Cr2Reader::ParseRGBNodeAttribute(const XmlNode& node) {
  // Values beyond a byte run into the next one's place, as the sum has it.
  const auto value = [&](std::wstring_view name) {
    return static_cast<std::uint32_t>(WholeNumberOf(node, name));
  };
  const std::uint32_t reference =
      value(L"red"sv) + (value(L"green"sv) << 8U) + (value(L"blue"sv) << 16U);
  return {static_cast<std::int32_t>(reference), COLORSPACE_RGB, 0, 0};
}

CVKColor Cr2Reader::ParseCMYKNodeAttribute(const XmlNode& node) {
  CVKColor color;
  color.SetColor(WholeNumberOf(node, L"cyan"sv), WholeNumberOf(node, L"magenta"sv),
                 WholeNumberOf(node, L"yellow"sv), WholeNumberOf(node, L"black"sv),
                 COLORSPACE_CMYK);
  return color;
}

std::optional<CVKColor> Cr2Reader::ParseNameNodeAttribute(const XmlNode& node) {
  std::wstring name;
  host::Application* const application = host::GetHost().GetApplication();
  if (!NodeText(FirstChildNamed(node, L"name"sv), name) || application == nullptr)
    return std::nullopt;
  CVKFullColor color;
  if (application->FindPaletteColor(name.c_str(), color) == 0) return std::nullopt;
  return color;
}

void Cr2Reader::ParseColorFilters(const XmlNode& node) {
  WalkColors(node, [&](const std::wstring&, const CVKColor& color) {
    m_Document.outputFilter.push_back(std::make_unique<CVKColor>(color));
  });
}

}  // namespace

bool ParseCr2File(const wchar_t* path, Cr2Document& document) {
  if (!IsTemplatePath(path, FirstGeneration.extension)) return false;
  const XmlNode root = LoadRepairableXmlFile(path, Cr2Repair);
  if (!NodeNameIs(root, L"engraving_template"sv)) return true;
  return Cr2Reader(path, document).ParseRoot(root);
}

}  // namespace rastrel::imports
