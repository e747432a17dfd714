#include "host/text/text_layout.h"

#include <pango/pangocairo.h>

#include <algorithm>
#include <utility>

#include "rastrel/platform/host/world.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::text {

using document::TextLine;
using document::TextRun;
using document::TextShape;

namespace {

constexpr double PointsPerInch = 72;
// Sizes beyond these are laid out as these: the font engine counts in 1/1024 of a point.
constexpr double SmallestSize = 0.01;
constexpr double LargestSize = 100'000;

template <typename Kind>
struct ObjectEnd {
  void operator()(Kind* object) const { g_object_unref(object); }
};
template <typename Kind>
using Owned = std::unique_ptr<Kind, ObjectEnd<Kind>>;

struct DescriptionEnd {
  void operator()(PangoFontDescription* description) const {
    pango_font_description_free(description);
  }
};

double PointsFromText(double value) { return value / host::TextUnitsPerInch * PointsPerInch; }
double PointsFromWorld(double value) { return value / host::CentimetresPerInch * PointsPerInch; }

// Letters stand where the font says, and not on a grid of pixels: the same on paper and on screen.
Owned<PangoContext> NewContext() {
  static const Owned<PangoFontMap> map(pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT));
  pango_cairo_font_map_set_resolution(PANGO_CAIRO_FONT_MAP(map.get()), PointsPerInch);
  Owned<PangoContext> context(pango_font_map_create_context(map.get()));
  cairo_font_options_t* options = cairo_font_options_create();
  cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
  cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
  cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
  pango_cairo_context_set_font_options(context.get(), options);
  cairo_font_options_destroy(options);
  pango_context_set_round_glyph_positions(context.get(), FALSE);
  return context;
}

}  // namespace

// A run with its letters.
struct TextLayout::Run {
  TextRun source;
  Owned<PangoLayout> letters;
  double width = 0;
};

struct TextLayout::Line {
  std::vector<Run> runs;
  int justification = JUSTIFY_LEFT;
  double width = 0;
  double ascent = 0;
  double descent = 0;
  double leading = 0;
  double scaleX = 1;
};

namespace {

double SizeOf(const TextRun& run) {
  return std::clamp(PointsFromText(run.size), SmallestSize, LargestSize);
}

Owned<PangoLayout> LettersOf(PangoContext* context, const FontFace& face, double size,
                             const std::wstring& text) {
  Owned<PangoLayout> layout(pango_layout_new(context));
  const std::unique_ptr<PangoFontDescription, DescriptionEnd> font(pango_font_description_new());
  pango_font_description_set_family(font.get(), face.family.c_str());
  pango_font_description_set_weight(font.get(), static_cast<PangoWeight>(face.weight));
  pango_font_description_set_style(font.get(),
                                   face.italic ? PANGO_STYLE_ITALIC : PANGO_STYLE_NORMAL);
  pango_font_description_set_absolute_size(font.get(), size * PANGO_SCALE);
  pango_layout_set_font_description(layout.get(), font.get());
  pango_layout_set_single_paragraph_mode(layout.get(), TRUE);
  const std::string bytes = os::Utf8FromWide(text);
  pango_layout_set_text(layout.get(), bytes.data(), static_cast<int>(bytes.size()));
  return layout;
}

// The one size of a text whose lines are to be of equal height; 0 for any other text.
double CommonSize(const TextShape& shape) {
  if (shape.paragraph.lineFit != LINEFIT_EQUAL_HEIGHT) return 0;
  double size = 0;
  for (const TextLine& line : shape.lines) {
    for (const TextRun& run : line.runs) size = std::max(size, SizeOf(run));
  }
  return size;
}

// The room for lines, in points.
struct Room {
  double left, top, width, height;
};

Room RoomOf(const TextShape& shape) {
  const bool margins = shape.justifyMode == 2;
  const paragraphStruct& paragraph = shape.paragraph;
  const double left = margins ? PointsFromText(paragraph.leftMargin) : 0;
  const double right = margins ? PointsFromText(paragraph.rightMargin) : 0;
  const double top = margins ? PointsFromText(paragraph.topMargin) : 0;
  const double bottom = margins ? PointsFromText(paragraph.bottomMargin) : 0;
  return {PointsFromWorld(shape.frame.left) + left, PointsFromWorld(shape.frame.top) - top,
          std::max(0.0, PointsFromWorld(shape.frame.right - shape.frame.left) - left - right),
          std::max(0.0, PointsFromWorld(shape.frame.top - shape.frame.bottom) - top - bottom)};
}

}  // namespace

TextLayout::TextLayout(const TextShape& shape, const FontCatalog& fonts) {
  Measure(shape, fonts);
  const Room room = RoomOf(shape);
  if (shape.paragraph.fit != 0) Squeeze(shape, room.width, room.height);
  Place(shape);
}

TextLayout::~TextLayout() = default;

void TextLayout::Measure(const TextShape& shape, const FontCatalog& fonts) {
  const Owned<PangoContext> context = NewContext();
  const double common = CommonSize(shape);
  for (const TextLine& source : shape.lines) {
    auto line = std::make_unique<Line>();
    line->justification = source.justification;
    for (const TextRun& run : source.runs) {
      const double size = common > 0 ? common : SizeOf(run);
      Run placed{run,
                 LettersOf(context.get(), fonts.FaceOf(run.fontType, run.font), size, run.text), 0};
      PangoRectangle logical;
      pango_layout_line_get_extents(pango_layout_get_line_readonly(placed.letters.get(), 0),
                                    nullptr, &logical);
      placed.width = static_cast<double>(logical.width) / PANGO_SCALE;
      line->width += placed.width;
      line->ascent = std::max(line->ascent, -static_cast<double>(logical.y) / PANGO_SCALE);
      line->descent =
          std::max(line->descent, static_cast<double>(logical.y + logical.height) / PANGO_SCALE);
      line->runs.push_back(std::move(placed));
    }
    // A line without letters keeps the place of the one before it.
    if (source.runs.empty() && !m_Content.empty()) {
      line->ascent = m_Content.back()->ascent;
      line->descent = m_Content.back()->descent;
    }
    line->leading = source.spacingKind == 0 && source.leading > 0 ? PointsFromText(source.leading)
                                                                  : line->ascent + line->descent;
    m_Content.push_back(std::move(line));
  }
}

void TextLayout::Squeeze(const TextShape& shape, double width, double height) {
  double common = 1;
  for (const auto& line : m_Content) {
    if (line->width > width) line->scaleX = width / line->width;
    common = std::min(common, line->scaleX);
  }
  const bool each = shape.paragraph.lineFit == LINEFIT_EACH_LINE;
  double total = 0;
  for (const auto& line : m_Content) {
    if (!each) line->scaleX = common;
    total += line->leading;
  }
  if (total <= height || total <= 0) return;
  // Too high: the whole text becomes smaller, which widths take part in.
  const double smaller = height / total;
  for (const auto& line : m_Content) {
    line->scaleX = std::min(line->scaleX, smaller);
    line->ascent *= smaller;
    line->descent *= smaller;
    line->leading *= smaller;
  }
}

void TextLayout::Place(const TextShape& shape) {
  const Room room = RoomOf(shape);
  double total = 0;
  for (const auto& line : m_Content) total += line->leading;
  const bool block = shape.lineMode != 1;
  double top = room.top - (block ? (room.height - total) / 2 : 0);
  for (const auto& line : m_Content) {
    PlacedLine placed;
    placed.natural = line->width;
    placed.scaleX = line->scaleX;
    placed.width = line->width * line->scaleX;
    placed.ascent = line->ascent;
    placed.descent = line->descent;
    // The letters stand in the middle of their leading.
    const double spare = line->leading - line->ascent - line->descent;
    placed.baseline = top - spare / 2 - line->ascent;
    const double over = room.width - placed.width;
    placed.left = room.left + (line->justification == JUSTIFY_CENTER  ? over / 2
                               : line->justification == JUSTIFY_RIGHT ? over
                                                                      : 0);
    PangoRectangle logical{};
    if (!line->runs.empty()) {
      pango_layout_line_get_extents(
          pango_layout_get_line_readonly(line->runs.front().letters.get(), 0), nullptr, &logical);
      const double natural = -static_cast<double>(logical.y) / PANGO_SCALE;
      double highest = natural;
      for (const Run& run : line->runs) {
        pango_layout_line_get_extents(pango_layout_get_line_readonly(run.letters.get(), 0), nullptr,
                                      &logical);
        highest = std::max(highest, -static_cast<double>(logical.y) / PANGO_SCALE);
      }
      if (highest > 0) placed.scaleY = line->ascent / highest;
    }
    m_Lines.push_back(placed);
    top -= line->leading;
  }
}

bool TextLayout::IsSqueezed() const {
  return std::ranges::any_of(
      m_Lines, [](const PlacedLine& line) { return line.scaleX < 1 || line.scaleY < 1; });
}

void TextLayout::Draw(cairo_t* context, double pageHeight, bool outlines,
                      const std::function<void(const TextRun&)>& color) const {
  for (std::size_t i = 0; i < m_Content.size(); ++i) {
    const PlacedLine& placed = m_Lines[i];
    double pen = 0;
    for (const Run& run : m_Content[i]->runs) {
      // Nothing can be drawn in no width.
      if (placed.scaleX <= 0 || placed.scaleY <= 0) continue;
      cairo_save(context);
      cairo_translate(context, placed.left, pageHeight - placed.baseline);
      cairo_scale(context, placed.scaleX, placed.scaleY);
      cairo_move_to(context, pen, 0);
      color(run.source);
      PangoLayoutLine* line = pango_layout_get_line_readonly(run.letters.get(), 0);
      if (outlines) {
        pango_cairo_layout_line_path(context, line);
        cairo_fill(context);
      } else {
        pango_cairo_show_layout_line(context, line);
      }
      cairo_restore(context);
      pen += run.width;
    }
  }
}

}  // namespace rastrel::text
