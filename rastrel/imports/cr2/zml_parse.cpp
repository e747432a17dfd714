#include "rastrel/imports/cr2/zml_parse.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "rastrel/imports/cr2/cut_line_file.h"
#include "rastrel/imports/cr2/palette.h"
#include "rastrel/imports/cr2/plotter_choice.h"
#include "rastrel/imports/cr2/template_reader.h"
#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/host.h"
#include "rastrel/platform/os/hex.h"
#include "rastrel/platform/os/number_text.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/xml/layer.h"

namespace rastrel::imports {
namespace {

using namespace std::string_view_literals;

/// The highest number of a variable. A setting with more is broken, and each frame has a text for
/// each of them.
constexpr int MaxVariable = 255;

class ZmlReader : public TemplateReader {
 public:
  ZmlReader(std::wstring_view path, Cr2Document& document, ZmlFile& file)
      : TemplateReader(SecondGeneration, path, document), m_File(file) {}

  [[nodiscard]] bool ParseRoot(const XmlNode& root);

 private:
  void ParseUnits(const XmlNode& root);
  void ParseRotationAndDriver(const XmlNode& root);
  bool ParseCutLineNodeAttribute(const XmlNode& node, CR2_CUTLINE& line) override;
  void ParseFrameVariables(const XmlNode& node, CR2_GRAPHIC_FRAME& frame) override;
  void ParseFontSpecNode(const XmlNode& node, CR2_FONT_SPEC& font) override;
  std::optional<CVKColor> ParseColorNodeAttribute(const XmlNode& node) override;
  void ColorTaken(const CVKColor& color) override;

  ZmlFile& m_File;
  host::Application* m_Application = host::GetHost().GetApplication();
};

bool ZmlReader::ParseRoot(const XmlNode& root) {
  ParseUnits(root);
  ParseRotationAndDriver(root);
  const XmlNode tableSize = FirstChildNamed(root, L"table_size"sv);
  if (!tableSize || !ParseTableSizeNode(tableSize)) return false;
  const XmlNode plateTemplate = FirstChildNamed(root, L"template"sv);
  if (!plateTemplate || !ParseTemplateNode(plateTemplate)) return false;
  const XmlNode cutLine = FirstChildNamed(plateTemplate, L"cutline"sv);
  if (cutLine && !ParseCutLineNode(cutLine)) return false;
  ParseGraphicsNode(FirstChildNamed(root, L"graphics"sv));
  return ParsePlatesNode(FirstChildNamed(root, L"plates"sv));
}

void ZmlReader::ParseUnits(const XmlNode& root) {
  std::wstring units;
  NodeText(FirstChildNamed(root, L"Units"sv), units);
  m_File.isMetric = units == L"mm";
  if (m_File.isMetric) m_Dialect.length = Cr2Length::Millimetres;
}

void ZmlReader::ParseRotationAndDriver(const XmlNode& root) {
  std::wstring rotation;
  NodeText(FirstChildNamed(root, L"Rotation"sv), rotation);
  m_File.rotation = os::DoubleFromText(rotation);
  if (m_Application == nullptr) return;
  m_Application->SetImportRotation(m_File.rotation);
  if (!FirstChildNamed(root, L"Driver"sv)) return;
  // Writers of these files put the plotter's name where the rotation is; the text of Driver itself
  // means nothing.
  ChoosePlotter(*m_Application, rotation);
  m_Application->WriteStringDevice(L"Port Setup", L"File Name", os::SplitPath(m_Path).name.c_str());
}

bool ZmlReader::ParseCutLineNodeAttribute(const XmlNode& node, CR2_CUTLINE& line) {
  std::wstring format;
  AttributeString(node, L"format"sv, format);
  if (format == L"SVG") {
    const XmlNode svg = FirstChildNamed(node, L"svg"sv);
    if (svg) line.file = SaveCutLineForImport(svg);
    return static_cast<bool>(svg);
  }
  if (format != L"FILE" || !FirstChildNamed(node, L"FILE"sv)) return false;
  AttributeString(node, L"file"sv, line.file);
  return true;
}

/// One text for each number, also for those that the frame does not have.
void ZmlReader::ParseFrameVariables(const XmlNode& node, CR2_GRAPHIC_FRAME& frame) {
  const int highest = GetIntKorvane(L"zippo", L"NumStrings", 3, DS_USER, nullptr);
  for (int number = 0; number <= std::min(highest, MaxVariable); ++number) {
    const XmlNode variable = FirstChildNamed(node, L"variable" + std::to_wstring(number));
    NodeText(variable, frame.variables.emplace_back());
    frame.isVariablePresent.push_back(static_cast<bool>(variable));
  }
}

/// Three attributes are read through one text, so that one that is absent has the text of the one
/// before it: a line height without a value is that of the size.
void ZmlReader::ParseFontSpecNode(const XmlNode& node, CR2_FONT_SPEC& font) {
  AttributeString(node, L"face"sv, font.face);
  AttributeString(node, L"style"sv, font.style);
  std::wstring text;
  AttributeString(node, L"size"sv, text);
  font.size = InRecords(os::DoubleFromText(text));
  AttributeString(node, L"line_height"sv, text);
  font.lineHeight = InRecords(os::DoubleFromText(text));
  AttributeString(node, L"justification"sv, text);
  font.justification = JustificationCode(text);
  ParseColorsNode(node, font.colors);
}

/// Inks as percents.
CVKColor ColorOfInks(const std::array<int, 4>& inks) {
  CVKColor color;
  color.SetColor(inks[0] / 100.0, inks[1] / 100.0, inks[2] / 100.0, inks[3] / 100.0,
                 COLORSPACE_CMYK);
  return color;
}

CVKColor ColorOfCmyk(const XmlNode& node) {
  return ColorOfInks({WholeNumberOf(node, L"cyan"sv), WholeNumberOf(node, L"magenta"sv),
                      WholeNumberOf(node, L"yellow"sv), WholeNumberOf(node, L"black"sv)});
}

CVKColor ColorOfRgb(const XmlNode& node) {
  const auto value = [&](std::wstring_view name) {
    return static_cast<std::uint32_t>(WholeNumberOf(node, name));
  };
  // Blue is not cut to a byte: the highest one of the reference belongs to it.
  const std::uint32_t reference =
      (value(L"red"sv) & 0xFFU) + ((value(L"green"sv) & 0xFFU) << 8U) + (value(L"blue"sv) << 16U);
  return {static_cast<std::int32_t>(reference), COLORSPACE_RGB, 0, 0};
}

/// The byte of the two digits at a place. A character that is no digit counts as 0.
int ByteOfDigits(const std::wstring& text, std::size_t place) {
  const auto digit = [&](wchar_t character) {
    const bool isAscii = character >= 0 && character < 0x80;
    return isAscii ? os::HexDigitValue(static_cast<char>(character)).value_or(0) : 0U;
  };
  return static_cast<int>(digit(text[place]) * 16 + digit(text[place + 1]));
}

/// The length alone says which color it is:
///
///     0xRRGGBB     8 characters: red, green, blue
///     0xCCMMYYKK  10 characters: cyan, magenta, yellow, black, as percents
std::optional<CVKColor> ColorOfHex(const XmlNode& node) {
  std::wstring text;
  AttributeString(node, L"value"sv, text);
  if (text.size() == 8) {
    const int reference =
        ByteOfDigits(text, 2) + (ByteOfDigits(text, 4) << 8) + (ByteOfDigits(text, 6) << 16);
    return CVKColor(reference, COLORSPACE_RGB, 0, 0);
  }
  if (text.size() != 10) return std::nullopt;
  return ColorOfInks(
      {ByteOfDigits(text, 2), ByteOfDigits(text, 4), ByteOfDigits(text, 6), ByteOfDigits(text, 8)});
}

std::optional<CVKColor> ZmlReader::ParseColorNodeAttribute(const XmlNode& node) {
  std::wstring text;
  if (AttributeString(node, L"invisible"sv, text)) return CVKColor(-1, COLORSPACE_RGB, 0, 0);
  AttributeString(node, L"format"sv, text);
  const auto child = [&](std::wstring_view name) { return FirstChildNamed(node, name); };
  if (text == L"RGB" && child(L"rgb"sv)) return ColorOfRgb(child(L"rgb"sv));
  if (text == L"CMYK" && child(L"cmyk"sv)) return ColorOfCmyk(child(L"cmyk"sv));
  if (text == L"HEX" && child(L"hex"sv)) return ColorOfHex(child(L"hex"sv));
  return std::nullopt;
}

void ZmlReader::ColorTaken(const CVKColor& color) {
  if (m_Application != nullptr) AddMissingPaletteColor(*m_Application, color);
}

/// The setting of the image directory; empty without it.
std::wstring ImageDirectory() {
  std::array<wchar_t, 260> buffer{};
  GetStringKorvane(L"Crown", L"ImagePath", buffer.data(), buffer.size(), DS_USER, nullptr);
  return buffer.data();
}

}  // namespace

bool ParseZmlFile(const wchar_t* path, Cr2Document& document, ZmlFile& file) {
  if (!IsTemplatePath(path, SecondGeneration.extension)) return false;
  file.imageDirectory = ImageDirectory();
  const XmlNode root = LoadXmlFile(path);
  return root && ZmlReader(path, document, file).ParseRoot(root);
}

}  // namespace rastrel::imports
