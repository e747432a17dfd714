#include "host/drawing/vector_drawing.h"

#include <cairo-script.h>
#include <cairo.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <new>
#include <string_view>
#include <utility>
#include <vector>

#include "host/drawing/open_picture.h"
#include "host/drawing/picture_formats.h"
#include "host/drawing/script_reader.h"
#include "host/graphics/drawing_records.h"
#include "host/graphics/picture.h"
#include "host/render/cairo_objects.h"

namespace rastrel::drawing {

using document::GraphicKind;
using graphics::LargestGraphicFile;

namespace {

constexpr double CentimetresPerPoint = 2.54 / 72;
// The drawing library keeps coordinates in 1/256 of a device unit, up to 8 million units: this many
// units of a point keep curves within a few millionths of a centimetre, and these of a side leave
// room for parts beyond the page.
constexpr double MaximumUnitsPerPoint = 64;
constexpr double UnitsPerSide = 1 << 20;
// Paths are rounded to this many centimetres, so that upright lines stay so.
constexpr double Grid = 1e-5;
// A script has no form for paths of upright lines that are no rectangles, and the library fails on
// them (1.16). So pages are drawn turned, by an angle that no drawing has, and turned back.
constexpr double Turn = 0.6180339887498949;

struct DeviceEnd {
  void operator()(cairo_device_t* device) const {
    cairo_device_finish(device);
    cairo_device_destroy(device);
  }
};

cairo_status_t WriteScript(void* reader, const unsigned char* bytes, unsigned count) {
  // NOLINTNEXTLINE: the library's bytes are unsigned
  const std::string_view piece(reinterpret_cast<const char*>(bytes), count);
  // Once the reading has ended nothing more is worth drawing.
  return static_cast<ScriptReader*>(reader)->Write(piece) ? CAIRO_STATUS_SUCCESS
                                                          : CAIRO_STATUS_WRITE_ERROR;
}

// A page on its device: as large as a scale says, turned, and moved to where x and y are above 0.
struct Device {
  Device(const Picture& picture, double pageScale)
      : scale(pageScale),
        width(picture.Width() * pageScale),
        height(picture.Height() * pageScale) {}

  [[nodiscard]] double ExtentX() const { return width * Cosine + height * Sine; }
  [[nodiscard]] double ExtentY() const { return width * Sine + height * Cosine; }
  [[nodiscard]] cairo_matrix_t FromPoints() const {
    return {scale * Cosine, scale * Sine, -scale * Sine, scale * Cosine, height * Sine, 0};
  }
  // Of a point of the device that of the page, in units.
  [[nodiscard]] TM ToPage() const {
    return {Cosine, -Sine, Sine, Cosine, -height * Sine * Cosine, height * Sine * Sine};
  }

  const double Cosine = std::cos(Turn);
  const double Sine = std::sin(Turn);
  double scale;   // units of a point
  double width;   // of the page, in units
  double height;  // ...
};

// Draws a picture into a reader. Fails as the picture does, unless the reader has ended it.
Expected<void> DrawInto(const Picture& picture, const Device& page, ScriptReader& reader) {
  Expected<void> drawn;
  {
    const std::unique_ptr<cairo_device_t, DeviceEnd> device(
        cairo_script_create_for_stream(WriteScript, &reader));
    const render::CairoSurface surface(
        cairo_script_surface_create(device.get(), CAIRO_CONTENT_COLOR_ALPHA,
                                    std::ceil(page.ExtentX()), std::ceil(page.ExtentY())));
    const render::CairoContext context(cairo_create(surface.get()));
    const cairo_matrix_t matrix = page.FromPoints();
    cairo_transform(context.get(), &matrix);
    drawn = picture.Draw(context.get());
    // Pictures go on without the part that there was no memory for.
    if (cairo_status(context.get()) == CAIRO_STATUS_NO_MEMORY) throw std::bad_alloc();
    cairo_surface_finish(surface.get());
  }
  const bool read = reader.Finish();
  return drawn || !read ? Expected<void>() : drawn;
}

double ScaleOf(const Picture& picture) {
  const double side = std::max(picture.Width(), picture.Height());
  return std::min(MaximumUnitsPerPoint, UnitsPerSide / side);
}

Expected<std::unique_ptr<Picture>> Open(GraphicKind kind,
                                        const std::shared_ptr<const std::string>& bytes,
                                        const std::string& stylesheet) {
  auto opened =
      kind == GraphicKind::Svg ? OpenSvg(*bytes, stylesheet) : OpenPdf(bytes, PdfLines::AsTheyAre);
  if (!opened) return opened.Error();
  const auto size = CheckPictureSize((*opened)->Width(), (*opened)->Height());
  if (!size) return size.Error();
  return opened;
}

// The part of a picture with marks; nothing for all of it. Fails as the picture does.
Expected<std::optional<CWorldRect>> ExtentOf(const Picture& picture) {
  const cairo_rectangle_t page{0, 0, picture.Width(), picture.Height()};
  const render::CairoSurface surface(
      cairo_recording_surface_create(CAIRO_CONTENT_COLOR_ALPHA, &page));
  const render::CairoContext context(cairo_create(surface.get()));
  const auto drawn = picture.Draw(context.get());
  if (!drawn) return drawn.Error();
  cairo_rectangle_t ink{};
  cairo_recording_surface_ink_extents(surface.get(), &ink.x, &ink.y, &ink.width, &ink.height);
  const CWorldRect extent{std::max(ink.x, 0.0), std::max(ink.y, 0.0),
                          std::min(ink.x + ink.width, page.width),
                          std::min(ink.y + ink.height, page.height)};
  if (extent.left >= extent.right || extent.top >= extent.bottom) {
    return std::optional<CWorldRect>();
  }
  return std::optional(extent);
}

// From units of the page, y downward, to centimetres from the page's lower left corner.
void MapToWorld(VectorPath& path, double unit, double height) {
  const auto rounded = [](double value) { return std::round(value / Grid) * Grid; };
  const auto map = [&](CWorldPoint& point) {
    point = {rounded(point.x * unit), rounded((height - point.y) * unit)};
  };
  for (document::SubPath& run : path.shape.subPaths) {
    map(run.start);
    for (document::PathSegment& segment : run.segments) {
      for (CWorldPoint& point : segment.points) map(point);
      if (!segment.curve) segment.points[0] = segment.points[1] = CWorldPoint();
    }
  }
  path.lineWidth *= unit;
}

// The colors of a paint, which are another in another reading where the file names none.
struct Colors {
  std::optional<VectorPath::Rgb> fill;
  std::optional<VectorPath::Rgb> line;
};

// An attribute that a file names nowhere is inherited from the root, in a color of ours.
std::string MarkingStylesheet(const std::string& color) {
  return ":root:not([fill]){fill:" + color + "}:root:not([stroke]){stroke:" + color + "}";
}

Expected<std::vector<Colors>> ReadColors(const std::shared_ptr<const std::string>& bytes) {
  const auto picture = Open(GraphicKind::Svg, bytes, MarkingStylesheet("#a1b2c3"));
  if (!picture) return picture.Error();
  std::vector<Colors> colors;
  const Device page(**picture, ScaleOf(**picture));
  ScriptReader reader(page.width, page.height, page.ToPage(), true, [&](const VectorPath& path) {
    colors.push_back({path.fill, path.line});
    return colors.size() <= graphics::MaximumVectorPaths;
  });
  const auto drawn = DrawInto(**picture, page, reader);
  if (!drawn) return drawn.Error();
  return colors;
}

// Filters and masks are drawn as pixels of the device: of one that is as fine as paths need, they
// would take memory without end.
bool MayHavePixels(GraphicKind kind, const std::string& bytes) {
  if (kind != GraphicKind::Svg) return false;
  return std::ranges::any_of(std::array{"filter", "mask", "pattern"}, [&](const char* word) {
    return bytes.find(word) != std::string::npos;
  });
}

}  // namespace

Expected<VectorDrawing> ReadVectorDrawing(GraphicKind kind,
                                          std::shared_ptr<const std::string> bytes, bool cutLine,
                                          PathSink& sink) {
  if (bytes->size() > LargestGraphicFile) {
    return FailureOf("it has " + std::to_string(bytes->size()) + " bytes; " +
                     std::to_string(LargestGraphicFile) + " are the most");
  }
  const bool marks = cutLine && kind == GraphicKind::Svg;
  const auto picture = Open(kind, bytes, marks ? MarkingStylesheet("#1a2b3c") : "");
  if (!picture) return picture.Error();
  VectorDrawing drawing{(*picture)->Width(), (*picture)->Height(), {}, {}};
  const auto readAt = [&](double scale, const ScriptReader::TakePaint& take) -> std::string {
    const Device page(**picture, scale);
    ScriptReader reader(page.width, page.height, page.ToPage(), cutLine, take);
    // A drawing that the library can't write as a script may be a picture all the same.
    if (!DrawInto(**picture, page, reader)) return std::string("it has parts that are no paths");
    if (reader.IsTooLong()) sink.HasRoomFor(graphics::MaximumVectorPoints + 1);
    return reader.Reason();
  };
  if (kind == GraphicKind::Pdf && HasDrawnLetters(*bytes)) {
    drawing.reason = graphics::LettersReason;
  } else if (MayHavePixels(kind, *bytes)) {
    drawing.reason = readAt(std::min(1.0, ScaleOf(**picture)), [](const auto&) { return true; });
  }
  std::vector<Colors> others;
  if (marks && drawing.reason.empty()) {
    // Where it can't be read the reading below says why.
    if (auto read = ReadColors(bytes)) others = std::move(*read);
  }
  if (drawing.reason.empty()) {
    const double scale = ScaleOf(**picture);
    std::size_t number = 0;
    drawing.reason = readAt(scale, [&](VectorPath path) {
      if (number < others.size()) {
        const Colors& other = others[number++];
        if (path.fill != other.fill) path.fill.reset();
        if (path.line != other.line) path.line.reset();
      }
      MapToWorld(path, CentimetresPerPoint / scale, drawing.height * scale);
      return sink.Take(path);
    });
    if (!sink.Taken()) return sink.Taken().Error();
  }
  if (!drawing.reason.empty()) {
    const auto unmarked = Open(kind, bytes, "");
    if (!unmarked) return unmarked.Error();
    drawing.width = (*unmarked)->Width();
    drawing.height = (*unmarked)->Height();
    const auto extent = ExtentOf(**unmarked);
    if (!extent) return extent.Error();
    drawing.extent = *extent;
  }
  return drawing;
}

}  // namespace rastrel::drawing
