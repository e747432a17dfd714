#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "host/document/shapes.h"
#include "rastrel/platform/os/expected.h"

// The drawing library's context, whose header only sources include.
typedef struct _cairo cairo_t;

namespace rastrel::graphics {

/// Limits of a placed file.
inline constexpr std::size_t LargestGraphicFile = std::size_t{256} << 20;  ///< bytes
inline constexpr std::uint64_t MaximumGraphicPixels = 100'000'000;         ///< of an image
inline constexpr double LargestGraphicSide = 10'000;                       ///< centimetres

/// A placed file, ready to be drawn.
class Picture {
 public:
  Picture() = default;
  virtual ~Picture() = default;
  Picture(const Picture&) = delete;
  Picture& operator=(const Picture&) = delete;

  /// True size in points, as the file says it: above 0.
  [[nodiscard]] double Width() const { return m_Width; }
  [[nodiscard]] double Height() const { return m_Height; }
  /// Draws into a context whose unit is a point and whose y grows downward, in true size with the
  /// upper left corner at the origin.
  virtual void Draw(cairo_t* context) const = 0;
  /// The kind by which an SVG or a browser can show the file's bytes as they are, or null.
  [[nodiscard]] virtual const char* MimeType() const { return nullptr; }
  /// Pixels that it keeps in memory.
  [[nodiscard]] virtual std::uint64_t Pixels() const { return 0; }
  /// The file.
  [[nodiscard]] const std::string& Bytes() const { return *m_Bytes; }

 protected:
  void SetSize(double width, double height) {
    m_Width = width;
    m_Height = height;
  }

 private:
  friend Expected<std::unique_ptr<Picture>> OpenPicture(document::GraphicKind kind,
                                                        std::shared_ptr<const std::string> bytes);
  double m_Width = 0;
  double m_Height = 0;
  std::shared_ptr<const std::string> m_Bytes;
};

/// The kind of a file, by its first bytes; nothing for one that can't be placed.
[[nodiscard]] std::optional<document::GraphicKind> KindOf(std::string_view bytes);

/// A file of that kind as a picture. Images are decoded and documents read here, so that a picture
/// can be drawn once it is open. A failure's `why` is a sentence about the file ("it has no
/// pixels") for the user. Of a PDF file the first page counts, with its
/// crop box.
///
/// True size: an SVG by its own units, with 96 px to the inch; an image by the resolution that it
/// names, and 96 dpi where that is missing or not plausible; PDF and EPS by their points.
[[nodiscard]] Expected<std::unique_ptr<Picture>> OpenPicture(
    document::GraphicKind kind, std::shared_ptr<const std::string> bytes);

}  // namespace rastrel::graphics
