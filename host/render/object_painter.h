#pragma once

#include <optional>

#include "host/document/document.h"
#include "host/document/notices.h"
#include "host/render/canvas.h"
#include "host/text/arc_layout.h"
#include "host/text/font_catalog.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::render {

class PictureCache;

/// Paints single objects of a document on a page: all but groups. Objects wholly beside the page
/// are left out, as are those that a matrix makes empty or infinite.
class ObjectPainter {
 public:
  /// All must outlive the painter. `page` is the page's lower right corner.
  ObjectPainter(const document::Document& document, const text::FontCatalog& fonts,
                document::Notices& notices, PictureCache& pictures, Point page, Canvas& canvas);

  void Paint(const document::Object& object);
  /// Success, or why an object could not be painted; the picture is not to be used then.
  [[nodiscard]] const Expected<void>& Painted() const { return m_Painted; }

  // One for each kind of shape, for std::visit.
  void operator()(const document::GroupShape& /*group*/) {}
  void operator()(const document::PathShape& path);
  void operator()(const document::TextShape& text);
  void operator()(const document::ArcTextShape& text);
  void operator()(const document::PlateShape& plate);
  void operator()(const document::GraphicShape& graphic);
  void operator()(const document::DrillShape& drill);
  void operator()(const document::SeparationShape& plane);
  void operator()(const document::BitmapShape& bitmap);

 private:
  [[nodiscard]] Point OnPage(double x, double y) const;
  [[nodiscard]] std::optional<Pen> LinePen() const;
  [[nodiscard]] bool HasMaterial() const;
  [[nodiscard]] bool IsBesidePage(const document::Shape& shape) const;
  [[nodiscard]] TM PlaceOf(Point origin, double scaleX = 1, double scaleY = 1) const;
  [[nodiscard]] std::optional<TM> Placed(Point origin, double scaleX, double scaleY, Point upper,
                                         Point lower) const;
  void AddPath(const document::PathShape& path, bool closedAlone);
  void AddRect(const CWorldRect& rect);
  void DrawCrossedBox(double width, double height);
  void AddEllipse(const document::DrillShape& drill);
  [[nodiscard]] bool IsOnPage(const text::ArcLayout& layout, const TM& place) const;
  void TellReplacedFont(const document::TextRun& run);
  template <typename Shape, typename Layout>
  void TellMissingLetters(const Shape& text, const Layout& layout);
  void DrawCutLine(document::CutLine kind);

  const document::Document& m_Document;
  const text::FontCatalog& m_Fonts;
  document::Notices& m_Notices;
  PictureCache& m_Pictures;
  Point m_Page;
  Canvas& m_Canvas;
  const document::Attributes* m_Attributes = nullptr;  // of the object that is painted
  double m_Scale = 1;                                  // of lengths, by its matrix
  Outline m_Outline;                                   // kept, so that its memory is
  Expected<void> m_Painted;
};

}  // namespace rastrel::render
