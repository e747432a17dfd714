#include "host/text/arc_layout.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "host/text/pango_letters.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::text {

using document::ArcTextShape;

namespace {

constexpr double FullTurn = 2 * std::numbers::pi;
// Smaller circles have no place for a letter that could be seen.
constexpr double SmallestRadius = 1e-3;

struct GlyphItemEnd {
  void operator()(PangoGlyphItem* item) const { pango_glyph_item_free(item); }
};
using GlyphItem = std::unique_ptr<PangoGlyphItem, GlyphItemEnd>;

std::wstring OneLine(std::wstring text) {
  if (text.size() > document::MaximumArcText) text.resize(document::MaximumArcText);
  std::ranges::replace_if(
      text, [](wchar_t letter) { return letter == L'\r' || letter == L'\n' || letter == L'\t'; },
      L' ');
  return text;
}

// The letters of a run, each as a run of its own, from left to right.
std::vector<GlyphItem> Split(PangoGlyphItem* run, const char* text) {
  std::vector<int> ends;  // of letters, in bytes of the run
  PangoGlyphItemIter letter;
  for (gboolean more = pango_glyph_item_iter_init_start(&letter, run, text); more;
       more = pango_glyph_item_iter_next_cluster(&letter)) {
    ends.push_back(letter.end_index - run->item->offset);
  }
  std::vector<GlyphItem> letters;
  GlyphItem rest(pango_glyph_item_copy(run));
  int done = 0;
  for (std::size_t i = 0; i + 1 < ends.size(); ++i) {
    letters.emplace_back(pango_glyph_item_split(rest.get(), text, ends[i] - done));
    done = ends[i];
  }
  letters.push_back(std::move(rest));
  const bool leftward = run->item->analysis.level % 2 == 1;
  if (leftward) std::ranges::reverse(letters);
  return letters;
}

// An angle that is finite and at most a turn.
double TurnOf(double degrees) {
  return std::isfinite(degrees) ? std::remainder(degrees, 360.0) / 360.0 * FullTurn : 0;
}

}  // namespace

struct ArcLayout::Glyphs {
  Owned<PangoLayout> layout;
  std::vector<GlyphItem> letters;
  double scale = 1;  // from the measured size to the text's
};

ArcLayout::ArcLayout(const ArcTextShape& shape, const FontCatalog& fonts)
    : m_Glyphs(std::make_unique<Glyphs>()) {
  Measure(shape, fonts);
  Place(shape);
}

ArcLayout::~ArcLayout() = default;

void ArcLayout::Measure(const ArcTextShape& shape, const FontCatalog& fonts) {
  m_Run.text = OneLine(shape.run.text);
  m_Run.face = fonts.FaceOf(shape.run.fontType, shape.run.font, shape.run.replacement);
  m_Run.size = LetterSize(shape.run);
  m_Run.colored = shape.run.colored;
  m_Run.color = shape.run.color;
  const auto font = DescriptionOf(m_Run.face);
  m_Glyphs->layout = LettersOf(font.get(), m_Run.text, true);
  m_Glyphs->scale = m_Run.size / MeasuredSize;
  LetterFaults faults = Examine(m_Glyphs->layout.get());
  m_Run.rightToLeft = faults.rightToLeft;
  m_Run.isFontUnreadable = faults.isFontUnreadable;
  m_Run.missing = std::move(faults.missing);
  const char* text = pango_layout_get_text(m_Glyphs->layout.get());
  const PangoLayoutLine* line = pango_layout_get_line_readonly(m_Glyphs->layout.get(), 0);
  for (const GSList* part = line->runs; part; part = part->next) {
    for (GlyphItem& letter : Split(static_cast<PangoGlyphItem*>(part->data), text)) {
      const PangoItem& item = *letter->item;
      const double width = static_cast<double>(pango_glyph_string_get_width(letter->glyphs)) /
                           PANGO_SCALE * m_Glyphs->scale;
      m_Letters.push_back(
          {os::WideFromUtf8({text + item.offset, static_cast<std::size_t>(item.length)}), 0,
           width});
      m_Run.width += width;
      m_Glyphs->letters.push_back(std::move(letter));
    }
  }
}

void ArcLayout::Place(const ArcTextShape& shape) {
  m_Radius = std::max(PointsFromWorld(shape.radius), SmallestRadius);
  const double circle = FullTurn * m_Radius;
  if (m_Run.width > circle) m_Run.scaleX = circle / m_Run.width;
  const double turn = m_Run.width * m_Run.scaleX / m_Radius;
  const double mark = -TurnOf(shape.rotation);
  m_Begin = mark - (shape.justification == JUSTIFY_CENTER  ? turn / 2
                    : shape.justification == JUSTIFY_RIGHT ? turn
                                                           : 0);
  double angle = m_Begin;
  for (ArcLetter& letter : m_Letters) {
    const double half = letter.width * m_Run.scaleX / m_Radius / 2;
    letter.angle = angle + half;
    angle += 2 * half;
  }
}

double ArcLayout::End() const { return m_Begin + m_Run.width * m_Run.scaleX / m_Radius; }

TM ArcLayout::PlaceOf(std::size_t letter) const {
  const ArcLetter& placed = m_Letters[letter];
  const double cosine = std::cos(placed.angle);
  const double sine = std::sin(placed.angle);
  // Squeezed, moved to the left by half its width, outward to the circle, and turned.
  const double left = -placed.width * m_Run.scaleX / 2;
  return {m_Run.scaleX * cosine,
          m_Run.scaleX * sine,
          -sine,
          cosine,
          left * cosine + m_Radius * sine,
          left * sine - m_Radius * cosine};
}

void ArcLayout::DrawLetter(cairo_t* context, std::size_t letter) const {
  cairo_save(context);
  cairo_scale(context, m_Glyphs->scale, m_Glyphs->scale);
  cairo_move_to(context, 0, 0);
  pango_cairo_show_glyph_item(context, pango_layout_get_text(m_Glyphs->layout.get()),
                              m_Glyphs->letters[letter].get());
  cairo_restore(context);
}

void ArcLayout::AddOutline(cairo_t* context, std::size_t letter) const {
  const PangoGlyphItem& item = *m_Glyphs->letters[letter];
  cairo_save(context);
  cairo_scale(context, m_Glyphs->scale, m_Glyphs->scale);
  cairo_move_to(context, 0, 0);
  pango_cairo_glyph_string_path(context, item.item->analysis.font, item.glyphs);
  cairo_restore(context);
}

}  // namespace rastrel::text
