// Placed files of any bytes, opened and drawn as in the drawing program: a
// picture has a size that can be drawn, or the file is refused with a reason.

#include <cairo.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "host/drawing/open_picture.h"
#include "host/graphics/picture.h"

namespace {

using namespace rastrel;

void Check(bool holds) {
  if (!holds) std::abort();
}

void Draw(const graphics::Picture& picture) {
  cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 32, 32);
  cairo_t* context = cairo_create(surface);
  cairo_scale(context, 32 / picture.Width(), 32 / picture.Height());
  const auto drawn = picture.Draw(context);
  Check(drawn || !drawn.Error().why.empty());
  cairo_destroy(context);
  cairo_surface_destroy(surface);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  auto file = std::make_shared<const std::string>(reinterpret_cast<const char*>(bytes), size);
  const auto kind = graphics::KindOf(*file);
  // EPS is an interpreter's. Faults in the reader of PDF are the reader's own, and it has a process
  // of its own.
  if (!kind || *kind == document::GraphicKind::Eps || *kind == document::GraphicKind::Pdf) return 0;
  const auto picture = drawing::OpenPicture(*kind, file);
  if (!picture) {
    Check(!picture.Error().why.empty());
    return 0;
  }
  constexpr double largest = graphics::LargestGraphicSide * 72 / 2.54 * (1 + 1e-9);
  for (const double side : {(*picture)->Width(), (*picture)->Height()}) {
    Check(side > 0 && side <= largest);
  }
  Check((*picture)->Pixels() <= graphics::MaximumGraphicPixels);
  if ((*picture)->Pixels() <= 1'000'000) Draw(**picture);
  return 0;
}
