#include <cairo-pdf.h>
#include <pango/pangocairo.h>

#include <memory>
#include <string>

#include "bench/measure.h"
#include "bench/require.h"
#include "host/document/document.h"
#include "host/document/notices.h"
#include "host/render/document_images.h"

// A page of a document as PDF, against the same lines, circles and letters given to cairo and Pango
// by hand.
namespace rastrel::bench {
namespace {

constexpr int Columns = 100;
constexpr int Rows = 100;
constexpr double Side = 0.5;  // centimetres between objects
constexpr double PointsPerCentimetre = 72 / 2.54;
constexpr double PageHeight = Rows * Side * PointsPerCentimetre;
constexpr double Thin = 0.25;

document::Attributes Colored(int red, int green, int blue) {
  document::Attributes attributes;
  attributes.layer = attributes.lineColor =
      CVKColor(red | green << 8 | blue << 16, COLORSPACE_RGB, 0, 0);
  return attributes;
}

template <typename Visit>
void EachPlace(int step, Visit visit) {
  for (int row = 0; row < Rows; row += step) {
    for (int column = 0; column < Columns; column += step) visit(column * Side, row * Side);
  }
}

void Add(document::Document& document, document::Shape shape, const document::Attributes& looks) {
  document.Insert(document.Create(std::move(shape), looks), host::DocumentRoot);
}

// A plate with a curve and a drill point at every place.
void AddShapes(document::Document& document) {
  EachPlace(1, [&](double x, double y) {
    document::PlateShape plate;
    plate.panes = {{x, y + 0.4, x + 0.4, y}};
    Add(document, plate, Colored(212, 175, 55));
    document::PathShape path;
    path.subPaths.push_back(
        {{x, y},
         {{true, {CWorldPoint{x + 0.1, y + 0.4}, {x + 0.3, y}, {x + 0.4, y + 0.4}}}},
         false});
    Add(document, path, Colored(0, 0, 255));
    Add(document, document::DrillShape{{x + 0.2, y + 0.2}, 0.1}, Colored(255, 0, 0));
  });
}

const std::wstring Words = L"Name plate 4711";

void AddTexts(document::Document& document) {
  EachPlace(3, [&](double x, double y) {
    document::TextShape text;
    text.frame = {x, y + 0.4, x + 1.4, y};
    document::TextRun run;
    run.text = Words;
    run.font = L"DejaVuSans";
    run.size = 60;
    text.lines.push_back({{run}, JUSTIFY_LEFT, 0, 0, 0});
    Add(document, text, Colored(0, 0, 0));
  });
}

cairo_status_t Append(void* text, const unsigned char* bytes, unsigned count) {
  static_cast<std::string*>(text)->append(reinterpret_cast<const char*>(bytes), count);
  return CAIRO_STATUS_SUCCESS;
}

template <typename Paint>
std::size_t Bare(Paint paint) {
  std::string bytes;
  cairo_surface_t* surface = cairo_pdf_surface_create_for_stream(
      Append, &bytes, Columns * Side * PointsPerCentimetre, PageHeight);
  cairo_t* context = cairo_create(surface);
  paint(context);
  cairo_destroy(context);
  cairo_surface_destroy(surface);
  return bytes.size();
}

void BareShapes(cairo_t* context) {
  const auto at = [](double value) { return value * PointsPerCentimetre; };
  const auto down = [](double value) { return PageHeight - value * PointsPerCentimetre; };
  cairo_set_line_width(context, Thin);
  EachPlace(1, [&](double x, double y) {
    cairo_move_to(context, at(x), down(y + 0.4));
    cairo_line_to(context, at(x + 0.4), down(y + 0.4));
    cairo_line_to(context, at(x + 0.4), down(y));
    cairo_line_to(context, at(x), down(y));
    cairo_close_path(context);
    cairo_set_source_rgb(context, 0.83, 0.69, 0.22);
    cairo_fill_preserve(context);
    cairo_set_source_rgb(context, 0.5, 0.5, 0.5);
    cairo_stroke(context);
    cairo_move_to(context, at(x), down(y));
    cairo_curve_to(context, at(x + 0.1), down(y + 0.4), at(x + 0.3), down(y), at(x + 0.4),
                   down(y + 0.4));
    cairo_set_source_rgb(context, 0, 0, 1);
    cairo_stroke(context);
    cairo_arc(context, at(x + 0.2), down(y + 0.2), at(0.05), 0, 6.283185307179586);
    cairo_close_path(context);
    cairo_set_source_rgb(context, 1, 0, 0);
    cairo_stroke(context);
    cairo_move_to(context, at(x + 0.135), down(y + 0.2));
    cairo_line_to(context, at(x + 0.265), down(y + 0.2));
    cairo_move_to(context, at(x + 0.2), down(y + 0.135));
    cairo_line_to(context, at(x + 0.2), down(y + 0.265));
    cairo_stroke(context);
  });
}

void BareTexts(cairo_t* context) {
  PangoFontMap* map = pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT);
  PangoContext* letters = pango_font_map_create_context(map);
  PangoFontDescription* font = pango_font_description_from_string("DejaVu Sans");
  pango_font_description_set_absolute_size(font, 60 * 0.072 * PANGO_SCALE);
  cairo_set_source_rgb(context, 0, 0, 0);
  const std::string words(Words.begin(), Words.end());
  EachPlace(3, [&](double x, double y) {
    PangoLayout* layout = pango_layout_new(letters);
    pango_layout_set_font_description(layout, font);
    pango_layout_set_text(layout, words.c_str(), -1);
    cairo_move_to(context, x * PointsPerCentimetre, PageHeight - (y + 0.1) * PointsPerCentimetre);
    pango_cairo_show_layout_line(context, pango_layout_get_line_readonly(layout, 0));
    g_object_unref(layout);
  });
  pango_font_description_free(font);
  g_object_unref(letters);
  g_object_unref(map);
}

template <typename AddObjects, typename Paint>
void Measure(const std::string& name, const std::string& peer, AddObjects add, Paint paint) {
  document::Document document;
  document.SetBlank({Columns * Side, Rows * Side, 7});
  add(document);
  document::Notices notices;
  const text::FontCatalog fonts(notices);
  // Once, so that both find their fonts open.
  std::size_t size = Bare(paint);
  Compare(
      {name, peer, 7, 2, Clock::Processor}, [] {},
      [&] {
        const auto images =
            render::DrawDocument({document, fonts, notices}, render::ImageFormat::Pdf, {});
        Require(images && images->front().size() >= size / 2, "the page was not drawn");
      },
      [&] { size = Bare(paint); });
}

}  // namespace
}  // namespace rastrel::bench

int main() {
  using namespace rastrel::bench;
  Measure("a page of 30,000 plates, paths and drill points as PDF", "cairo by hand", AddShapes,
          BareShapes);
  Measure("a page of 1,156 texts as PDF", "Pango and cairo by hand", AddTexts, BareTexts);
}
