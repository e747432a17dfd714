#include <algorithm>
#include <cmath>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/document/document.h"
#include "host/document/measure_text.h"
#include "host/document/notices.h"
#include "host/layout/graphic_placer.h"
#include "host/layout/placing.h"
#include "host/layout/plate_text.h"
#include "host/layout/plates.h"
#include "host/layout/template_fonts.h"
#include "host/layout/template_layout.h"
#include "host/layout/undo_step.h"
#include "rastrel/imports/cro_file_import.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::layout {

using document::MeasureText;
using host::CentimetresPerInch;

namespace {

// Where neither the graphic nor the template has an origin.
constexpr std::int32_t DefaultOrigin = 7;
// Notices about squeezed lines; further ones are counted.
constexpr std::size_t MaximumSqueezed = 100;

std::wstring Wide(const std::string& text) { return os::WideFromUtf8(text); }

class CroLayout {
 public:
  CroLayout(const CCROFileImport& file, document::DocumentHost& host, const FileResolver& resolve)
      : m_File(file),
        m_Host(host),
        m_Document(host.GetDocument()),
        m_Notices(host.GetNotices()),
        m_Unit(file.UseMetric() ? 1 : CentimetresPerInch),
        m_Graphics(host, resolve),
        m_Fonts(host) {}

  [[nodiscard]] Expected<void> LayOut();

 private:
  // The differences of a line, by its number from 1; 0 for all lines.
  using LineStyles = std::unordered_map<std::int32_t, LineRequest>;

  [[nodiscard]] double Rotation() const;
  [[nodiscard]] double Margin(const PlateSize& size) const;
  void SetBlank(const PlateSize& size);
  void ReadStyles();
  void AddStyle(LineStyles& styles, const CROTextOverride& text, double unit);
  static void ApplyStyles(const LineStyles& styles, std::int32_t number, LineRequest& line);
  [[nodiscard]] std::vector<LineRequest> LinesOf(std::size_t plate);
  void PlaceText(std::size_t plate, const PlacedPlate& place);
  void PlaceGraphics(std::size_t plate, const PlacedPlate& place);
  void PlaceGraphic(const CROGraphic& graphic, std::size_t plate, const PlacedPlate& place);
  void TellSqueezed(const document::TextShape& text, const std::wstring& title);

  const CCROFileImport& m_File;
  document::DocumentHost& m_Host;
  document::Document& m_Document;
  document::Notices& m_Notices;
  double m_Unit;  // of the file, in world units
  GraphicPlacer m_Graphics;
  TemplateFonts m_Fonts;
  double m_Rotation = 0;
  double m_Margin = 0;
  LineStyles m_Styles;
  std::unordered_map<std::size_t, LineStyles> m_PlateStyles;
  std::unordered_map<std::wstring, const CROGraphic*> m_Named;
  std::size_t m_Squeezed = 0;
};

std::wstring TitleOf(std::size_t plate) { return L"plate " + std::to_wstring(plate + 1); }

CWorldPoint CenterOf(const CWorldRect& rect) {
  return PartOf({rect.left, rect.right, rect.bottom, rect.top}, 5);
}

double CroLayout::Rotation() const {
  if (std::isfinite(m_File.m_Rotation)) return m_File.m_Rotation;
  m_Notices.Add(L"the template's rotation is no angle: nothing is turned");
  return 0;
}

// The margin as far as it leaves half of the plate.
double CroLayout::Margin(const PlateSize& size) const {
  const double margin = m_File.m_Margins * m_Unit;
  if (margin == 0) return 0;
  const double largest = std::min(size.width, size.height) / 4;
  if (margin > 0 && margin <= largest) return margin;
  const double taken = margin > largest ? largest : 0;
  m_Notices.Add(L"the template's margins are " + Wide(MeasureText(margin)) +
                L" cm, which its plates have no room for: they are " + Wide(MeasureText(taken)) +
                L" cm");
  return taken;
}

void CroLayout::SetBlank(const PlateSize& size) {
  document::SignBlank blank = m_Document.Blank();
  if (m_File.m_bUseTemplateBlankSize) {
    blank.width = size.width;
    blank.height = size.height;
  }
  if (m_File.m_Origin != 0) blank.origin = m_File.m_Origin;
  m_Document.SetBlank(blank);
}

// A later one wins where it has a value.
void CroLayout::AddStyle(LineStyles& styles, const CROTextOverride& text, double unit) {
  LineRequest& style = styles[std::max(text.line, 0)];
  if (!text.font.empty()) style.font = text.font;
  const double height = text.height * unit;
  if (height == 0) return;
  if (IsLength(height) && height > 0) {
    style.height = height;
  } else {
    m_Notices.Add(L"the height of line " + std::to_wstring(text.line) + L" is " +
                  Wide(MeasureText(height)) + L" cm, which no letter has: it is passed over");
  }
}

// The importer has made inches of the template's heights, and of no other.
void CroLayout::ReadStyles() {
  for (const auto& text : m_File.m_TextOverrides) AddStyle(m_Styles, *text, CentimetresPerInch);
  for (const CROPlateOverride& plate : m_File.m_PlateOverrides) {
    AddStyle(m_PlateStyles[static_cast<std::size_t>(plate.plate)], *plate.text, m_Unit);
  }
  for (const auto& graphic : m_File.m_Graphics) m_Named.try_emplace(graphic->name, graphic.get());
}

Expected<void> CroLayout::LayOut() {
  if (m_File.m_PlateText.empty()) return FailureOf("the template has no plates");
  const Expected<PlateSize> size =
      SizeOf(m_Host, m_File.m_Width * m_Unit, m_File.m_Height * m_Unit);
  if (!size) return size.Error();
  const document::SignBlank before = m_Document.Blank();
  SetBlank(*size);
  const UndoStep step(m_Document, L"Import CRO");
  const auto plates =
      AddPlates(m_Document, m_Notices, m_File.m_PlateText.size(), size->width, size->height);
  if (!plates) {
    m_Document.SetBlank(before);
    return plates.Error();
  }
  m_Rotation = Rotation();
  m_Margin = Margin(*size);
  ReadStyles();
  for (std::size_t plate = 0; plate < plates->size(); ++plate) {
    PlaceGraphics(plate, (*plates)[plate]);
    PlaceText(plate, (*plates)[plate]);
  }
  if (m_Squeezed > MaximumSqueezed) {
    m_Notices.Add(std::to_wstring(m_Squeezed - MaximumSqueezed) + L" more lines are squeezed");
  }
  return {};
}

// --- Text ---

// The style of all lines, and that of the line over it.
void CroLayout::ApplyStyles(const LineStyles& styles, std::int32_t number, LineRequest& line) {
  for (const std::int32_t key : {0, number}) {
    const auto found = styles.find(key);
    if (found == styles.end()) continue;
    if (!found->second.font.empty()) line.font = found->second.font;
    if (found->second.height > 0) line.height = found->second.height;
  }
}

std::vector<LineRequest> CroLayout::LinesOf(std::size_t plate) {
  const CStringArray& texts = *m_File.m_PlateText[plate];
  const int count = std::min(texts.GetSize(), MaximumPlateLines);
  if (texts.GetSize() > count) {
    m_Notices.AddLoss(TitleOf(plate) + L" has " + std::to_wstring(texts.GetSize()) +
                      L" lines: those after " + std::to_wstring(count) + L" are left out");
  }
  const auto own = m_PlateStyles.find(plate);
  std::vector<LineRequest> lines;
  for (int i = 0; i < count; ++i) {
    LineRequest& line = lines.emplace_back();
    ApplyStyles(m_Styles, i + 1, line);
    if (own != m_PlateStyles.end()) ApplyStyles(own->second, i + 1, line);
    const std::wstring& text = texts.GetAt(i);
    line.text = text.substr(0, MaximumLineLength);
    if (line.text.size() < text.size()) {
      m_Notices.AddLoss(TitleOf(plate) + L", line " + std::to_wstring(i + 1) +
                        L", is cut off after " + std::to_wstring(MaximumLineLength) +
                        L" characters");
    }
  }
  return lines;
}

void CroLayout::TellSqueezed(const document::TextShape& text, const std::wstring& title) {
  for (const std::wstring& sentence : SqueezedLines(text, title, m_Host.GetFonts())) {
    if (++m_Squeezed <= MaximumSqueezed) m_Notices.Add(sentence);
  }
}

void CroLayout::PlaceText(std::size_t plate, const PlacedPlate& place) {
  const std::vector<LineRequest> lines = LinesOf(plate);
  if (std::ranges::all_of(lines, [](const LineRequest& line) { return line.text.empty(); })) return;
  const PlateText setter(FrameInside(place.edges, m_Rotation), m_Margin,
                         m_File.m_HasVerticalSpacing != 0);
  document::TextShape text = setter.Set(lines, m_Fonts);
  TellSqueezed(text, TitleOf(plate));
  document::Attributes attributes;
  attributes.layer = attributes.lineColor = Black();
  if (m_Rotation != 0) attributes.matrix = TurnAbout(CenterOf(place.edges), m_Rotation);
  AddToPlate(m_Document, m_Notices, std::move(text), attributes, place);
}

// --- Graphics ---

void CroLayout::PlaceGraphic(const CROGraphic& graphic, std::size_t plate,
                             const PlacedPlate& place) {
  GraphicPlacer::Request request;
  request.file = graphic.file;
  request.title = L"the graphic \"" + graphic.name + L"\" of " + TitleOf(plate);
  request.frame = ContentFrame(place.edges, m_Rotation);
  request.turn = TurnAbout(CenterOf(place.edges), m_Rotation);
  const std::int32_t usual = m_File.m_Origin == 0 ? DefaultOrigin : m_File.m_Origin;
  request.placement.origin = graphic.origin == 0 ? usual : graphic.origin;
  request.placement.x = graphic.x * m_Unit;
  request.placement.y = graphic.y * m_Unit;
  request.placement.width = graphic.width * m_Unit;
  request.placement.height = graphic.height * m_Unit;
  m_Graphics.Place(request, place);
}

void CroLayout::PlaceGraphics(std::size_t plate, const PlacedPlate& place) {
  const CStringArray& names = *m_File.m_PlateGraphics[plate];
  for (int i = 0; i < names.GetSize(); ++i) {
    const std::wstring& name = names.GetAt(i);
    if (name.empty()) continue;
    const auto found = m_Named.find(name);
    if (found == m_Named.end()) {
      m_Notices.AddLoss(L"the graphic \"" + name + L"\": the template has none of that name");
    } else {
      PlaceGraphic(*found->second, plate, place);
    }
  }
}

}  // namespace

Expected<void> ImportCro(const CCROFileImport& file, document::DocumentHost& host,
                         const FileResolver& resolve) {
  if (!file.m_bParsed) return FailureOf("it is no CRO template that can be read");
  return CroLayout(file, host, resolve).LayOut();
}

}  // namespace rastrel::layout
