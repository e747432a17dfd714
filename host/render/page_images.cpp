#include "host/render/page_images.h"

#include <cairo-pdf.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "host/document/measure_text.h"
#include "host/render/cairo_canvas.h"
#include "host/render/cairo_objects.h"
#include "host/render/page_renderer.h"
#include "host/render/picture_png.h"
#include "host/render/svg_canvas.h"

namespace rastrel::render {

namespace {

constexpr double PointsPerInch = 72;
constexpr double ThinnestLine = 0.25;  // points; still visible in print
// Larger letters are drawn as paths: pictures of single letters take memory, and the font library
// has a maximum size.
constexpr double LargestPixelLetter = 1000;
constexpr double LargestPdfLetter = 10'000;

using Image = Expected<std::string>;

Failure NotDrawn(cairo_status_t status) {
  return FailureOf(std::string("the page can't be drawn: ") + cairo_status_to_string(status));
}

struct Pages {
  int first;
  int last;
};

// Whole pixels of a length, at least 1.
double PixelsOf(double points, double dpi) {
  return std::max(1.0, std::round(points * dpi / PointsPerInch));
}

// Whether a PNG of the page may have the resolution that is asked for.
Expected<void> CheckPngSize(const PageRenderer& renderer, double dpi) {
  if (!(dpi >= LowestDpi && dpi <= HighestDpi)) {
    return FailureOf(document::MeasureText(dpi) + " dpi: a picture has " +
                     document::MeasureText(LowestDpi) + " to " + document::MeasureText(HighestDpi));
  }
  const double width = PixelsOf(renderer.Width(), dpi);
  const double height = PixelsOf(renderer.Height(), dpi);
  if (width * height <= static_cast<double>(MaximumPixels) &&
      std::max(width, height) <= MaximumPixelSide) {
    return {};
  }
  return FailureOf("a picture of " + std::to_string(std::llround(width)) + " by " +
                   std::to_string(std::llround(height)) +
                   " pixels is too large: " + std::to_string(MaximumPixels) + " pixels, and " +
                   std::to_string(MaximumPixelSide) + " a side, are the most; " +
                   document::MeasureText(dpi) + " dpi are too many");
}

Image DrawSvg(PageRenderer& renderer, int page, const ImageOptions& options) {
  SvgCanvas canvas(renderer.Width(), renderer.Height(), options.outlines);
  if (const auto drawn = renderer.Draw(page, canvas, options.blank); !drawn) return drawn.Error();
  return canvas.Finish();
}

Image DrawPng(PageRenderer& renderer, int page, const ImageOptions& options) {
  if (const auto size = CheckPngSize(renderer, options.dpi); !size) return size.Error();
  const double scale = options.dpi / PointsPerInch;
  const CairoSurface surface(cairo_image_surface_create(
      CAIRO_FORMAT_RGB24, static_cast<int>(PixelsOf(renderer.Width(), options.dpi)),
      static_cast<int>(PixelsOf(renderer.Height(), options.dpi))));
  const CairoContext context(cairo_create(surface.get()));
  cairo_set_source_rgb(context.get(), 1, 1, 1);
  cairo_paint(context.get());
  cairo_scale(context.get(), scale, scale);
  CairoCanvas canvas(context.get(), {scale, std::max(ThinnestLine, 1 / scale), LargestPixelLetter},
                     options.outlines);
  if (const auto drawn = renderer.Draw(page, canvas, options.blank); !drawn) return drawn.Error();
  const cairo_status_t status = cairo_status(context.get());
  if (status != CAIRO_STATUS_SUCCESS) return NotDrawn(status);
  std::string png = PngOfSurface(surface.get(), options.dpi);
  if (png.empty()) return NotDrawn(CAIRO_STATUS_NO_MEMORY);
  return png;
}

Image DrawPdf(PageRenderer& renderer, Pages pages, const ImageOptions& options) {
  std::string bytes;
  const CairoSurface surface = PdfSurface(bytes, renderer.Width(), renderer.Height());
  // With a date the same document would not make the same bytes.
  cairo_pdf_surface_set_metadata(surface.get(), CAIRO_PDF_METADATA_CREATE_DATE, "");
  {
    const CairoContext context(cairo_create(surface.get()));
    CairoCanvas canvas(context.get(), {1, ThinnestLine, LargestPdfLetter}, options.outlines);
    for (int page = pages.first; page <= pages.last; ++page) {
      if (const auto drawn = renderer.Draw(page, canvas, options.blank); !drawn) {
        return drawn.Error();
      }
      cairo_show_page(context.get());
    }
    const cairo_status_t status = cairo_status(context.get());
    if (status != CAIRO_STATUS_SUCCESS) return NotDrawn(status);
  }
  cairo_surface_finish(surface.get());
  const cairo_status_t status = cairo_surface_status(surface.get());
  if (status != CAIRO_STATUS_SUCCESS) return NotDrawn(status);
  return bytes;
}

Expected<Pages> PagesOf(const PageRenderer& renderer, const ImageOptions& options) {
  if (!renderer.Drawable()) return renderer.Drawable().Error();
  if (!options.page) return Pages{1, renderer.PageCount()};
  if (*options.page < 1 || *options.page > renderer.PageCount()) {
    return FailureOf("there is no page " + std::to_string(*options.page) + ": the document has " +
                     std::to_string(renderer.PageCount()));
  }
  return Pages{*options.page, *options.page};
}

}  // namespace

Expected<void> DrawImages(const ImageSource& source, ImageFormat format,
                          const ImageOptions& options, const PictureOpener& opener,
                          const TakeImage& take) {
  PageRenderer renderer(source.document, source.fonts, source.notices, opener);
  const auto pages = PagesOf(renderer, options);
  if (!pages) return pages.Error();
  const bool single = format == ImageFormat::Pdf || pages->first == pages->last;
  for (int page = pages->first; page <= (single ? pages->first : pages->last); ++page) {
    Image image = format == ImageFormat::Pdf   ? DrawPdf(renderer, *pages, options)
                  : format == ImageFormat::Svg ? DrawSvg(renderer, page, options)
                                               : DrawPng(renderer, page, options);
    if (!image) return image.Error();
    if (Expected<void> taken = take(std::move(*image), single ? 0 : page); !taken) return taken;
  }
  return {};
}

}  // namespace rastrel::render
