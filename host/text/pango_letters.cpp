#include "host/text/pango_letters.h"

#include <algorithm>
#include <cmath>

#include "rastrel/platform/os/text.h"
#include "rastrel/platform/values/world.h"

namespace rastrel::text {

namespace {

constexpr double PointsPerInch = 72;
constexpr double SmallestSize = 0.01;
constexpr double LargestSize = 100'000;
// Beyond every page. Keeps all coordinates of a frame finite.
constexpr double Far = 1e9;

double Bounded(double value) { return std::isnan(value) ? 0 : std::clamp(value, -Far, Far); }

// Letters are placed by the font, and not on a grid of pixels: the same on paper and on screen.
Owned<PangoContext> NewContext() {
  const Owned<PangoFontMap> map(pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT));
  pango_cairo_font_map_set_resolution(PANGO_CAIRO_FONT_MAP(map.get()), PointsPerInch);
  Owned<PangoContext> context(pango_font_map_create_context(map.get()));
  cairo_font_options_t* options = cairo_font_options_create();
  cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
  cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
  cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
  pango_cairo_context_set_font_options(context.get(), options);
  cairo_font_options_destroy(options);
  pango_context_set_round_glyph_positions(context.get(), FALSE);
  // The locale's preferred script must not change a picture.
  pango_context_set_language(context.get(), pango_language_from_string("en"));
  return context;
}

// Fonts are found and opened once.
PangoContext* Context() {
  static const Owned<PangoContext> context = NewContext();
  return context.get();
}

// Letters that a font would draw as one stay apart.
void SeparateLetters(PangoLayout* layout) {
  PangoAttrList* attributes = pango_attr_list_new();
  pango_attr_list_insert(attributes, pango_attr_font_features_new("liga=0, clig=0"));
  pango_layout_set_attributes(layout, attributes);
  pango_attr_list_unref(attributes);
}

// The character of a glyph for which no font has a picture.
wchar_t CharacterOf(PangoGlyph unknown) {
  constexpr PangoGlyph lastCharacter = 0x10FFFF;
  const PangoGlyph code = unknown & ~PANGO_GLYPH_UNKNOWN_FLAG;
  return static_cast<wchar_t>(code <= lastCharacter ? code : 0xFFFD);
}

void AddMissing(const PangoGlyphString& glyphs, std::wstring& missing) {
  for (int i = 0; i < glyphs.num_glyphs; ++i) {
    const PangoGlyph glyph = glyphs.glyphs[i].glyph;
    if (glyph == PANGO_GLYPH_EMPTY || (glyph & PANGO_GLYPH_UNKNOWN_FLAG) == 0) continue;
    const wchar_t character = CharacterOf(glyph);
    if (missing.find(character) == std::wstring::npos) missing += character;
  }
}

bool CanOpen(PangoFont* font) {
  cairo_scaled_font_t* opened = pango_cairo_font_get_scaled_font(PANGO_CAIRO_FONT(font));
  return opened && cairo_scaled_font_status(opened) == CAIRO_STATUS_SUCCESS;
}

}  // namespace

double PointsFromText(double value) {
  return Bounded(value / host::TextUnitsPerInch * PointsPerInch);
}

double PointsFromWorld(double value) {
  return Bounded(value / host::CentimetresPerInch * PointsPerInch);
}

double LetterSize(const document::TextRun& run) {
  return std::clamp(PointsFromText(run.size), SmallestSize, LargestSize);
}

FontDescription DescriptionOf(const FontFace& face) {
  FontDescription font(pango_font_description_new());
  pango_font_description_set_family(font.get(), face.family.c_str());
  pango_font_description_set_weight(font.get(), static_cast<PangoWeight>(face.weight));
  pango_font_description_set_stretch(font.get(), static_cast<PangoStretch>(face.stretch));
  pango_font_description_set_style(font.get(),
                                   face.italic ? PANGO_STYLE_ITALIC : PANGO_STYLE_NORMAL);
  pango_font_description_set_absolute_size(font.get(), MeasuredSize * PANGO_SCALE);
  return font;
}

Owned<PangoLayout> LettersOf(const PangoFontDescription* font, std::wstring_view text,
                             bool separate) {
  Owned<PangoLayout> layout(pango_layout_new(Context()));
  pango_layout_set_font_description(layout.get(), font);
  pango_layout_set_single_paragraph_mode(layout.get(), TRUE);
  if (separate) SeparateLetters(layout.get());
  const std::string bytes = os::Utf8FromWide(text);
  pango_layout_set_text(layout.get(), bytes.data(), static_cast<int>(bytes.size()));
  return layout;
}

// Text in which no letter has a direction takes that of its surroundings: it changes with them.
Direction DirectionOf(std::wstring_view text) {
  const std::string bytes = os::Utf8FromWide(text);
  const auto runsToLeftIn = [&](PangoDirection surroundings) {
    pango_context_set_base_dir(Context(), surroundings);
    const Owned<PangoLayout> layout(pango_layout_new(Context()));
    pango_layout_set_text(layout.get(), bytes.data(), static_cast<int>(bytes.size()));
    PangoLayoutLine* line = pango_layout_get_line_readonly(layout.get(), 0);
    return pango_layout_line_get_resolved_direction(line) == PANGO_DIRECTION_RTL;
  };
  const bool toLeft = runsToLeftIn(PANGO_DIRECTION_RTL);
  const bool toLeftAnyway = runsToLeftIn(PANGO_DIRECTION_LTR);
  if (toLeft != toLeftAnyway) return Direction::None;
  return toLeft ? Direction::RightToLeft : Direction::LeftToRight;
}

LetterExtents ExtentsOf(PangoLayout* letters) {
  PangoRectangle logical;
  pango_layout_line_get_extents(pango_layout_get_line_readonly(letters, 0), nullptr, &logical);
  return {static_cast<double>(logical.width) / PANGO_SCALE,
          -static_cast<double>(logical.y) / PANGO_SCALE,
          static_cast<double>(logical.y + logical.height) / PANGO_SCALE};
}

LetterFaults Examine(PangoLayout* letters) {
  LetterFaults faults;
  PangoLayoutLine* line = pango_layout_get_line_readonly(letters, 0);
  faults.rightToLeft = pango_layout_line_get_resolved_direction(line) == PANGO_DIRECTION_RTL;
  for (const GSList* part = line->runs; part; part = part->next) {
    const auto* item = static_cast<const PangoGlyphItem*>(part->data);
    if (!CanOpen(item->item->analysis.font)) faults.isFontUnreadable = true;
    AddMissing(*item->glyphs, faults.missing);
  }
  return faults;
}

}  // namespace rastrel::text
