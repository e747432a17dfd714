#include <cmath>
#include <optional>
#include <string>

#include "host/document/document.h"
#include "host/document/measure_text.h"
#include "host/document/notices.h"
#include "host/layout/graphic_placer.h"
#include "host/layout/placing.h"
#include "host/layout/plates.h"
#include "host/layout/template_fonts.h"
#include "host/layout/template_layout.h"
#include "host/layout/undo_step.h"
#include "host/text/arc_layout.h"
#include "rastrel/imports/llx_file_import.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::layout {

using document::MeasureText;
using host::CentimetresPerInch;

namespace {

// Codes in place of one that the file lacks.
constexpr std::int32_t PlateOrigin = 7;
constexpr std::int32_t GraphicOrigin = 5;

constexpr double CentimetresPerPoint = CentimetresPerInch / 72;

std::wstring Wide(const std::string& text) { return os::WideFromUtf8(text); }

class LlxLayout {
 public:
  LlxLayout(const CLLXFileImport& file, document::DocumentHost& host, const FileResolver& resolve)
      : m_File(file),
        m_Host(host),
        m_Document(host.GetDocument()),
        m_Graphics(host, resolve),
        m_Fonts(host) {}

  [[nodiscard]] Expected<void> LayOut();

 private:
  [[nodiscard]] std::int32_t Origin() const {
    return m_File.m_Origin == 0 ? PlateOrigin : m_File.m_Origin;
  }
  void PlaceGraphic(const LLXGraphic& graphic, int number, const PlacedPlate& plate);
  void PlaceArcText(const LLXArcText& text, int number, const PlacedPlate& plate);
  [[nodiscard]] std::optional<document::ArcTextShape> ArcOf(const LLXArcText& text,
                                                            const std::wstring& title,
                                                            const CWorldRect& frame);
  void TellSqueezed(const document::ArcTextShape& shape, const std::wstring& title);

  const CLLXFileImport& m_File;
  document::DocumentHost& m_Host;
  document::Document& m_Document;
  GraphicPlacer m_Graphics;
  TemplateFonts m_Fonts;
};

Expected<void> LlxLayout::LayOut() {
  const Expected<PlateSize> size =
      SizeOf(m_Host, m_File.m_Width * CentimetresPerInch, m_File.m_Height * CentimetresPerInch);
  if (!size) return size.Error();
  const UndoStep step(m_Document, L"Import LLX");
  m_Document.SetBlank({size->width, size->height, Origin()});
  const auto plates = AddPlates(m_Document, m_Host.GetNotices(), 1, size->width, size->height);
  if (!plates) return plates.Error();
  int number = 0;
  for (const auto& graphic : m_File.m_Graphics) {
    PlaceGraphic(*graphic, ++number, plates->front());
  }
  number = 0;
  for (const auto& text : m_File.m_ArcTexts) PlaceArcText(*text, ++number, plates->front());
  return {};
}

void LlxLayout::PlaceGraphic(const LLXGraphic& graphic, int number, const PlacedPlate& plate) {
  GraphicPlacer::Request request;
  request.file = graphic.file;
  request.title = L"the graphic " + std::to_wstring(number) + L", \"" + graphic.file + L"\"";
  request.frame = plate.edges;
  request.placement.origin = graphic.origin == 0 ? GraphicOrigin : graphic.origin;
  request.placement.x = graphic.x * CentimetresPerInch;
  request.placement.y = graphic.y * CentimetresPerInch;
  request.placement.width = graphic.width * CentimetresPerInch;
  request.placement.height = graphic.height * CentimetresPerInch;
  request.placement.rotation = graphic.rotation;
  m_Graphics.Place(request, plate);
}

// The shape of a text, or nothing if it has no place, with a notice.
std::optional<document::ArcTextShape> LlxLayout::ArcOf(const LLXArcText& text,
                                                       const std::wstring& title,
                                                       const CWorldRect& frame) {
  const double size = text.height * CentimetresPerInch;
  document::ArcTextShape shape;
  shape.center = PointFrom(frame, Origin(), text.centerX * CentimetresPerInch,
                           text.centerY * CentimetresPerInch);
  shape.radius = text.radius * CentimetresPerInch;
  shape.rotation = text.rotation;
  shape.justification = text.justify;
  const auto lost = [&](const std::wstring& reason) {
    m_Host.GetNotices().AddLoss(title + reason);
    return std::nullopt;
  };
  if (!IsLength(shape.center.x) || !IsLength(shape.center.y) || !std::isfinite(text.rotation)) {
    return lost(L" has its center or rotation beyond all plates");
  }
  if (!IsLength(shape.radius) || shape.radius <= 0) {
    return lost(L": its radius is " + Wide(MeasureText(text.radius)) +
                L" inches, which no circle has");
  }
  if (!IsLength(size) || size <= 0) {
    return lost(L": its height is " + Wide(MeasureText(text.height)) +
                L" inches, which no letter has");
  }
  if (text.text.size() > document::MaximumArcText) {
    m_Host.GetNotices().AddLoss(title + L" is cut off after " +
                                std::to_wstring(document::MaximumArcText) + L" characters");
  }
  auto run = m_Fonts.Run(text.text.substr(0, document::MaximumArcText), text.font, size);
  if (!run) return lost(L" has no font");
  shape.run = std::move(*run);
  return shape;
}

void LlxLayout::TellSqueezed(const document::ArcTextShape& shape, const std::wstring& title) {
  const text::ArcLayout layout(shape, m_Host.GetFonts());
  if (!layout.IsSqueezed()) return;
  const text::PlacedRun& run = layout.Run();
  m_Host.GetNotices().Add(title + L" is " + Wide(MeasureText(run.width * CentimetresPerPoint)) +
                          L" cm long and its circle " +
                          Wide(MeasureText(run.width * run.scaleX * CentimetresPerPoint)) +
                          L" cm: its letters are squeezed to " +
                          Wide(MeasureText(std::round(run.scaleX * 1000) / 10)) +
                          L" percent of their width");
}

void LlxLayout::PlaceArcText(const LLXArcText& text, int number, const PlacedPlate& plate) {
  if (text.text.empty()) return;
  constexpr std::size_t named = 40;
  std::wstring title = L"the text on a circle " + std::to_wstring(number) + L", \"" +
                       text.text.substr(0, named) + (text.text.size() > named ? L"...\"" : L"\"");
  auto shape = ArcOf(text, title, plate.edges);
  if (!shape) return;
  TellSqueezed(*shape, title);
  document::Attributes attributes;
  attributes.layer = attributes.lineColor = Black();
  AddToPlate(m_Document, m_Host.GetNotices(), std::move(*shape), attributes, plate);
}

}  // namespace

Expected<void> ImportLlx(const CLLXFileImport& file, document::DocumentHost& host,
                         const FileResolver& resolve) {
  if (!file.m_bParsed) return FailureOf("it is no LLX template that can be read");
  return LlxLayout(file, host, resolve).LayOut();
}

}  // namespace rastrel::layout
