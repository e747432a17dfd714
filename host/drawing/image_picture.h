#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "host/graphics/picture.h"

// The drawing library's surface, whose header only sources include.
typedef struct _cairo_surface cairo_surface_t;

namespace rastrel::drawing {

using graphics::Picture;

/// Dots to the inch across and down.
struct Resolution {
  double x = 96;
  double y = 96;
};

/// The resolution that a file names; 96 dpi if it is not plausible.
[[nodiscard]] Resolution Plausible(double x, double y);

/// Succeeds if an image of that many pixels may be opened.
[[nodiscard]] Expected<void> CheckImageSize(std::uint64_t width, std::uint64_t height);

struct SurfaceEnd {
  void operator()(cairo_surface_t* surface) const;
};
using Surface = std::unique_ptr<cairo_surface_t, SurfaceEnd>;

/// An image in memory.
class ImagePicture : public Picture {
 public:
  /// `mimeType` as Picture::MimeType says.
  ImagePicture(Surface surface, const Resolution& resolution, const char* mimeType);
  ~ImagePicture() override;

  [[nodiscard]] Expected<void> Draw(cairo_t* context) const override;
  [[nodiscard]] const char* MimeType() const override { return m_MimeType; }
  [[nodiscard]] std::uint64_t Pixels() const override;

 private:
  Surface m_Surface;
  Resolution m_Resolution;
  const char* m_MimeType;
};

}  // namespace rastrel::drawing
