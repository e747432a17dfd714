#include "host/render/object_painter.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <variant>

#include "host/render/letter_outlines.h"
#include "host/render/picture_cache.h"
#include "host/text/text_check.h"
#include "host/text/text_layout.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::render {

using document::ArcTextShape;
using document::BitmapShape;
using document::CutLine;
using document::DrillShape;
using document::GraphicShape;
using document::PathShape;
using document::PlateShape;
using document::SeparationShape;
using document::TextShape;

namespace {

constexpr double PointsPerCentimetre = 72 / 2.54;
// A line that has a width keeps one, however small.
constexpr double ThinnestWidth = 0.01;
// Room around the page for the lines of objects beside it.
constexpr double PageMargin = 72;
// Letters narrower or lower than this, in points, are nothing that a device could show.
constexpr double SmallestLetter = 0.001;
// The smallest area under a matrix that is still drawn.
constexpr double SmallestArea = 1e-18;
// Longer lines are drawn without dashes, of which there would be too many to draw.
constexpr double MaximumDashedLine = 500'000;
// The arms of a drill point's cross, in radii.
constexpr double CrossArm = 1.3;

constexpr Color EdgeGray{0.5, 0.5, 0.5};

// The color that paints, or nothing for the one that does not.
std::optional<Color> ColorOf(const CVKColor& color) {
  if (color.IsInvisible()) return std::nullopt;
  double red = 0;
  double green = 0;
  double blue = 0;
  color.GetColorChannels(&red, &green, &blue, nullptr);
  const auto part = [](double channel) {
    return std::isnan(channel) ? 0 : std::clamp(channel / 255, 0.0, 1.0);
  };
  return Color{part(red), part(green), part(blue)};
}

// An upright box that grows.
struct Box {
  double left = INFINITY, top = INFINITY, right = -INFINITY, bottom = -INFINITY;

  void Add(Point point) {
    left = std::min(left, point.x);
    right = std::max(right, point.x);
    top = std::min(top, point.y);
    bottom = std::max(bottom, point.y);
  }
  [[nodiscard]] bool Meets(Point page) const {
    return right >= -PageMargin && bottom >= -PageMargin && left <= page.x + PageMargin &&
           top <= page.y + PageMargin;
  }
  [[nodiscard]] bool IsWithin(double farthest) const {
    return left >= -farthest && top >= -farthest && right <= farthest && bottom <= farthest;
  }
};

bool IsSimilarity(const TM& m) {
  const bool turned = m.a == m.d && m.b == -m.c;
  const bool mirrored = m.a == -m.d && m.b == m.c;
  return turned || mirrored;
}

// Length of an outline's control polygon.
double LengthOf(const Outline& outline) {
  double length = 0;
  for (std::size_t i = 1; i < outline.points.size(); ++i) {
    length += std::hypot(outline.points[i].x - outline.points[i - 1].x,
                         outline.points[i].y - outline.points[i - 1].y);
  }
  return length;
}

}  // namespace

ObjectPainter::ObjectPainter(const document::Document& document, const text::FontCatalog& fonts,
                             document::Notices& notices, PictureCache& pictures, Point page,
                             Canvas& canvas)
    : m_Document(document),
      m_Fonts(fonts),
      m_Notices(notices),
      m_Pictures(pictures),
      m_Page(page),
      m_Canvas(canvas) {}

void ObjectPainter::Paint(const document::Object& object) {
  m_Attributes = &object.attributes;
  const TM& matrix = object.attributes.matrix;
  m_Scale = std::sqrt(std::abs(matrix.a * matrix.d - matrix.b * matrix.c));
  for (const double part :
       {matrix.a, matrix.b, matrix.c, matrix.d, matrix.tx, matrix.ty, m_Scale}) {
    if (!std::isfinite(part)) return;
  }
  // Letters may be outside the bounds of their text, which are those of the frame.
  const bool bounded = !std::holds_alternative<TextShape>(object.shape) &&
                       !std::holds_alternative<ArcTextShape>(object.shape);
  if (bounded && IsBesidePage(object.shape)) return;
  std::visit(*this, object.shape);
}

bool ObjectPainter::IsBesidePage(const document::Shape& shape) const {
  const BOUNDS bounds = BoundsOf(shape, m_Attributes->matrix);
  const double height = m_Page.y / PointsPerCentimetre;
  const double width = m_Page.x / PointsPerCentimetre;
  const double margin = PageMargin / PointsPerCentimetre + m_Attributes->lineStyle.width * m_Scale;
  // Written so that NaN counts as beside.
  return !(bounds.xmax >= -margin && bounds.ymax >= -margin && bounds.xmin <= width + margin &&
           bounds.ymin <= height + margin);
}

// A point of the shape on the page. A point beyond the canvas is moved to its end: the page is
// never there.
Point ObjectPainter::OnPage(double x, double y) const {
  const TM& m = m_Attributes->matrix;
  const double farthest = m_Canvas.Farthest();
  const auto bounded = [&](double value) {
    return std::isnan(value) ? farthest : std::clamp(value, -farthest, farthest);
  };
  return {bounded((m.a * x + m.c * y + m.tx) * PointsPerCentimetre),
          bounded(m_Page.y - (m.b * x + m.d * y + m.ty) * PointsPerCentimetre)};
}

// From coordinates of the shape's own, points with y downward from `origin` (points, y upward), to
// the page's.
TM ObjectPainter::PlaceOf(Point origin, double scaleX, double scaleY) const {
  const TM& m = m_Attributes->matrix;
  TM placed;
  placed.a = m.a * scaleX;
  placed.b = -m.b * scaleX;
  placed.c = -m.c * scaleY;
  placed.d = m.d * scaleY;
  placed.tx = m.a * origin.x + m.c * origin.y + m.tx * PointsPerCentimetre;
  placed.ty = m_Page.y - (m.b * origin.x + m.d * origin.y + m.ty * PointsPerCentimetre);
  return placed;
}

// The same. Nothing if the box between `upper` and `lower` of them does not show on the page.
std::optional<TM> ObjectPainter::Placed(Point origin, double scaleX, double scaleY, Point upper,
                                        Point lower) const {
  const TM placed = PlaceOf(origin, scaleX, scaleY);
  if (!(std::abs(placed.a * placed.d - placed.b * placed.c) > SmallestArea)) return std::nullopt;
  Box box;
  for (const Point corner : {upper, lower, Point{upper.x, lower.y}, Point{lower.x, upper.y}}) {
    const Point mapped{placed.a * corner.x + placed.c * corner.y + placed.tx,
                       placed.b * corner.x + placed.d * corner.y + placed.ty};
    if (!std::isfinite(mapped.x) || !std::isfinite(mapped.y)) return std::nullopt;
    box.Add(mapped);
  }
  if (!box.Meets(m_Page) || !box.IsWithin(m_Canvas.Farthest())) return std::nullopt;
  return placed;
}

std::optional<Pen> ObjectPainter::LinePen() const {
  const std::optional<Color> color = ColorOf(m_Attributes->lineColor);
  const LINESTYLE& style = m_Attributes->lineStyle;
  const std::uint32_t kind = style.style & LINESTYLE_KIND;
  if (!color || kind == LINESTYLE_NONE) return std::nullopt;
  if (kind == LINESTYLE_HAIRLINE || style.width == LineStyleHairline) return Pen{*color};
  if (!(style.width > 0)) return std::nullopt;
  const double width = style.width * m_Scale * PointsPerCentimetre;
  return Pen{*color, std::clamp(width, ThinnestWidth, m_Canvas.Farthest())};
}

bool ObjectPainter::HasMaterial() const {
  const auto layer = m_Document.SheetLayers().find(m_Attributes->sheetLayer);
  return layer == m_Document.SheetLayers().end() || layer->second.hasSubstrate;
}

// --- Paths and cut lines ---

void ObjectPainter::AddPath(const PathShape& path, bool closedAlone) {
  m_Outline.Clear();
  m_Outline.fillRule = path.fillRule;
  for (const document::SubPath& part : path.subPaths) {
    if (closedAlone && !part.closed) continue;
    m_Outline.MoveTo(OnPage(part.start.x, part.start.y));
    for (const document::PathSegment& segment : part.segments) {
      const auto point = [&](std::size_t number) {
        return OnPage(segment.points[number].x, segment.points[number].y);
      };
      if (segment.curve) {
        m_Outline.CurveTo(point(0), point(1), point(2));
      } else {
        m_Outline.LineTo(point(2));
      }
    }
    if (part.closed) m_Outline.Close();
  }
}

void ObjectPainter::operator()(const PathShape& path) {
  if (path.cutLine != CutLine::None) {
    AddPath(path, false);
    DrawCutLine(path.cutLine);
    return;
  }
  m_Canvas.Begin(Role::Path);
  const std::optional<Color> inside = ColorOf(m_Attributes->layer);
  const auto closed = std::ranges::count_if(path.subPaths, &document::SubPath::closed);
  const bool all = path.fillsOpen || static_cast<std::size_t>(closed) == path.subPaths.size();
  const bool some = document::HasInside(path);
  if (inside && some && !all) {
    AddPath(path, true);
    m_Canvas.DrawOutline(m_Outline, inside, std::nullopt);
  }
  const std::optional<Pen> pen = LinePen();
  const bool fills = inside && some && all;
  AddPath(path, false);
  if (fills || pen) m_Canvas.DrawOutline(m_Outline, fills ? inside : std::nullopt, pen);
  m_Canvas.End();
}

// Draws the outline as the way of a knife.
void ObjectPainter::DrawCutLine(CutLine kind) {
  const bool through = kind == CutLine::Through;
  m_Canvas.Begin(through ? Role::CutThroughLine : Role::CutLine);
  if (const std::optional<Color> color = ColorOf(m_Attributes->lineColor)) {
    const Dashes dashes = through ? Dashes::LongAndDot : Dashes::Long;
    const bool dashed = LengthOf(m_Outline) <= MaximumDashedLine;
    m_Canvas.DrawOutline(m_Outline, std::nullopt, Pen{*color, 0, dashed ? dashes : Dashes::None});
  }
  m_Canvas.End();
}

// --- Plates ---

void ObjectPainter::AddRect(const CWorldRect& rect) {
  m_Outline.Clear();
  m_Outline.MoveTo(OnPage(rect.left, rect.top));
  m_Outline.LineTo(OnPage(rect.right, rect.top));
  m_Outline.LineTo(OnPage(rect.right, rect.bottom));
  m_Outline.LineTo(OnPage(rect.left, rect.bottom));
  m_Outline.Close();
}

void ObjectPainter::operator()(const PlateShape& plate) {
  const std::optional<Color> inside =
      HasMaterial() ? ColorOf(m_Attributes->layer) : std::optional<Color>();
  const Pen edge = LinePen().value_or(Pen{EdgeGray});
  m_Canvas.Begin(Role::Pane);
  for (const CWorldRect& pane : plate.panes) {
    AddRect(pane);
    m_Canvas.DrawOutline(m_Outline, inside, edge);
  }
  m_Canvas.End();
}

// --- Text ---

void ObjectPainter::TellReplacedFont(const document::TextRun& run) {
  const text::FontFace face = m_Fonts.FaceOf(run.fontType, run.font, run.replacement);
  if (face.replaced) m_Notices.Add(text::ReplacementNotice(run.font, face));
}

template <typename Shape, typename Layout>
void ObjectPainter::TellMissingLetters(const Shape& text, const Layout& layout) {
  if (const auto missing = text::MissingLettersNotice(text, layout)) m_Notices.Add(*missing);
  if (const auto unseen = text::InvisibleTextNotice(text, layout, m_Scale)) {
    m_Notices.AddLoss(*unseen);
  }
  const auto unreadable = text::UnreadableFontNotice(text, layout);
  if (unreadable && m_Painted) m_Painted = FailureOf(os::Utf8FromWide(*unreadable));
}

void ObjectPainter::operator()(const TextShape& text) {
  const text::TextLayout layout(text, m_Fonts);
  const auto& runs = layout.Runs();
  if (std::ranges::any_of(runs, [](const auto& run) { return run.face.replaced; })) {
    for (const document::TextLine& line : text.lines) {
      for (const document::TextRun& run : line.runs) TellReplacedFont(run);
    }
  }
  TellMissingLetters(text, layout);
  m_Canvas.Begin(Role::Text);
  for (std::size_t i = 0; i < runs.size(); ++i) {
    const text::PlacedRun& run = runs[i];
    const std::optional<Color> color = ColorOf(run.colored ? run.color : m_Attributes->layer);
    const double smallest = run.size * m_Scale * std::min(run.scaleX, run.scaleY);
    if (!color || !(smallest > SmallestLetter)) continue;
    // Accents and descenders stay within two heights of their line.
    const std::optional<TM> place =
        Placed({run.left, run.baseline}, run.scaleX, run.scaleY, {0, -2 * run.size},
               {std::max(run.width, run.size), 2 * run.size});
    if (place) m_Canvas.DrawText(layout, i, *color, *place);
  }
  m_Canvas.End();
}

// Whether the letters on a circle may show on the page: of a large circle most don't, and its own
// box says nothing.
bool ObjectPainter::IsOnPage(const text::ArcLayout& layout, const TM& place) const {
  const double size = layout.Run().size;
  Box box;
  for (std::size_t i = 0; i < layout.Letters().size(); ++i) {
    const TM letter = Composed(layout.PlaceOf(i), place);
    const double right = std::max(layout.Letters()[i].width, size);
    for (const Point corner : {Point{0, -2 * size}, Point{right, -2 * size}, Point{0, 2 * size},
                               Point{right, 2 * size}}) {
      const Point mapped{letter.a * corner.x + letter.c * corner.y + letter.tx,
                         letter.b * corner.x + letter.d * corner.y + letter.ty};
      if (!std::isfinite(mapped.x) || !std::isfinite(mapped.y)) return false;
      box.Add(mapped);
    }
  }
  return box.Meets(m_Page) && box.IsWithin(m_Canvas.Farthest());
}

void ObjectPainter::operator()(const ArcTextShape& text) {
  const text::ArcLayout layout(text, m_Fonts);
  const text::PlacedRun& run = layout.Run();
  if (run.face.replaced) TellReplacedFont(text.run);
  TellMissingLetters(text, layout);
  m_Canvas.Begin(Role::Text);
  const std::optional<Color> color = ColorOf(run.colored ? run.color : m_Attributes->layer);
  const double smallest = run.size * m_Scale * run.scaleX;
  const TM place =
      PlaceOf({text.center.x * PointsPerCentimetre, text.center.y * PointsPerCentimetre});
  if (color && smallest > SmallestLetter && IsOnPage(layout, place)) {
    m_Canvas.DrawArcText(layout, *color, place);
  }
  m_Canvas.End();
}

// --- Placed files ---

// In place of an object that can't be drawn.
void ObjectPainter::DrawCrossedBox(double width, double height) {
  AddRect({0, height, width, 0});
  m_Outline.MoveTo(OnPage(0, 0));
  m_Outline.LineTo(OnPage(width, height));
  m_Outline.MoveTo(OnPage(0, height));
  m_Outline.LineTo(OnPage(width, 0));
  m_Canvas.DrawOutline(m_Outline, std::nullopt, Pen{EdgeGray});
}

void ObjectPainter::operator()(const GraphicShape& graphic) {
  const double width = graphic.width * PointsPerCentimetre;
  const double height = graphic.height * PointsPerCentimetre;
  m_Canvas.Begin(Role::Graphic);
  const graphics::Picture* picture = m_Pictures.Get(graphic);
  if (!picture) {
    DrawCrossedBox(graphic.width, graphic.height);
  } else if (const std::optional<TM> place =
                 Placed({0, height}, width / picture->Width(), height / picture->Height(), {0, 0},
                        {picture->Width(), picture->Height()})) {
    auto drawn = m_Canvas.DrawPicture(*picture, *place);
    if (!drawn && m_Painted) m_Painted = std::move(drawn);
  }
  m_Canvas.End();
}

void ObjectPainter::operator()(const BitmapShape& bitmap) {
  const double width = bitmap.width * PointsPerCentimetre;
  const double height = bitmap.height * PointsPerCentimetre;
  const Point pixels{static_cast<double>(bitmap.pixels->width),
                     static_cast<double>(bitmap.pixels->height)};
  m_Canvas.Begin(Role::Graphic);
  if (const std::optional<TM> place =
          Placed({0, height}, width / pixels.x, height / pixels.y, {0, 0}, pixels)) {
    if (const auto drawn = m_Canvas.DrawBitmap(*bitmap.pixels, *place); !drawn) {
      m_Notices.Add(L"a bitmap can't be drawn: " + os::WideFromUtf8(Describe(drawn.Error())));
      DrawCrossedBox(bitmap.width, bitmap.height);
    }
  }
  m_Canvas.End();
}

// --- Separated planes ---

void ObjectPainter::operator()(const SeparationShape& shape) {
  SeparationPlane plane;
  shape.ink.GetColorName(plane.name);
  const double width = shape.Width() * PointsPerCentimetre;
  const double height = shape.Height() * PointsPerCentimetre;
  const auto place =
      Placed({0, height}, width / shape.pixelWidth, height / shape.pixelHeight, {0, 0},
             {static_cast<double>(shape.pixelWidth), static_cast<double>(shape.pixelHeight)});
  const std::optional<Color> ink = ColorOf(shape.ink);
  if (!place || !ink) return;
  const auto pixels = shape.pixels->Read();
  if (!pixels) {
    m_Notices.AddLoss(L"the plane \"" + plane.name + L"\" can't be drawn: " +
                      os::WideFromUtf8(Describe(pixels.Error())));
    m_Canvas.Begin(Role::Separation);
    DrawCrossedBox(shape.Width(), shape.Height());
    m_Canvas.End();
    return;
  }
  plane.page = shape.page;
  plane.ink = *ink;
  plane.width = shape.pixelWidth;
  plane.height = shape.pixelHeight;
  plane.pixels = *pixels;
  auto drawn = m_Canvas.DrawPlane(plane, *place);
  if (!drawn && m_Painted) m_Painted = std::move(drawn);
}

// --- Drill points ---

// A circle that a matrix made an ellipse of, by four curves.
void ObjectPainter::AddEllipse(const DrillShape& drill) {
  constexpr double bow = 0.5522847498;  // of a quarter circle's control points
  const double r = drill.diameter / 2;
  const auto at = [&](double x, double y) {
    return OnPage(drill.centre.x + x * r, drill.centre.y + y * r);
  };
  m_Outline.Clear();
  m_Outline.MoveTo(at(1, 0));
  m_Outline.CurveTo(at(1, bow), at(bow, 1), at(0, 1));
  m_Outline.CurveTo(at(-bow, 1), at(-1, bow), at(-1, 0));
  m_Outline.CurveTo(at(-1, -bow), at(-bow, -1), at(0, -1));
  m_Outline.CurveTo(at(bow, -1), at(1, -bow), at(1, 0));
  m_Outline.Close();
}

void ObjectPainter::operator()(const DrillShape& drill) {
  const std::optional<Color> color = ColorOf(m_Attributes->lineColor);
  if (!color) return;
  const Pen pen{*color};
  m_Canvas.Begin(Role::DrillPoint);
  if (IsSimilarity(m_Attributes->matrix)) {
    const double radius = drill.diameter / 2 * m_Scale * PointsPerCentimetre;
    m_Canvas.DrawCircle(OnPage(drill.centre.x, drill.centre.y),
                        std::min(radius, m_Canvas.Farthest() / 2), pen);
  } else {
    AddEllipse(drill);
    m_Canvas.DrawOutline(m_Outline, std::nullopt, pen);
  }
  const double arm = drill.diameter / 2 * CrossArm;
  m_Outline.Clear();
  m_Outline.MoveTo(OnPage(drill.centre.x - arm, drill.centre.y));
  m_Outline.LineTo(OnPage(drill.centre.x + arm, drill.centre.y));
  m_Outline.MoveTo(OnPage(drill.centre.x, drill.centre.y - arm));
  m_Outline.LineTo(OnPage(drill.centre.x, drill.centre.y + arm));
  m_Canvas.DrawOutline(m_Outline, std::nullopt, pen);
  m_Canvas.End();
}

}  // namespace rastrel::render
