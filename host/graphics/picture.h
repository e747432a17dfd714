#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "host/document/shapes.h"
#include "rastrel/platform/os/expected.h"

// The drawing library's context, whose header only sources include.
typedef struct _cairo cairo_t;

namespace rastrel::graphics {

/// Limits of a placed file.
inline constexpr std::size_t LargestGraphicFile = std::size_t{256} << 20;  ///< bytes
inline constexpr std::uint64_t MaximumGraphicPixels = 100'000'000;         ///< of an image
inline constexpr double LargestGraphicSide = 10'000;                       ///< centimetres

/// A placed file, ready to be drawn. Only the drawing program (host/drawing) has any: foreign files
/// are read and drawn in a process of their own.
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
  /// upper left corner at the origin. A failure is a sentence about the file; a part of it may be
  /// drawn then.
  [[nodiscard]] virtual Expected<void> Draw(cairo_t* context) const = 0;
  /// The kind by which an SVG or a browser can show the file's bytes as they are, or null.
  [[nodiscard]] virtual const char* MimeType() const { return nullptr; }
  /// Pixels that it keeps in memory.
  [[nodiscard]] virtual std::uint64_t Pixels() const { return 0; }
  /// The file. REQUIRES: SetFile was called, as the opener of a picture does.
  [[nodiscard]] const std::string& Bytes() const { return *m_Bytes; }
  [[nodiscard]] const std::shared_ptr<const std::string>& File() const { return m_Bytes; }
  void SetFile(std::shared_ptr<const std::string> bytes) { m_Bytes = std::move(bytes); }

 protected:
  void SetSize(double width, double height) {
    m_Width = width;
    m_Height = height;
  }

 private:
  double m_Width = 0;
  double m_Height = 0;
  std::shared_ptr<const std::string> m_Bytes;
};

/// The kind of a file, by its first bytes; nothing for one that can't be placed as a picture. Eps
/// is all PostScript.
[[nodiscard]] std::optional<document::GraphicKind> KindOf(std::string_view bytes);

/// Files that are paths and nothing else.
enum class PathFileKind { Dxf, Hpgl };
/// The kind of such a file, by its first lines or instructions; nothing for any other.
[[nodiscard]] std::optional<PathFileKind> PathFileKindOf(std::string_view bytes);
/// Whether a file looks like a document of the host's own (docs/formats/document.md).
[[nodiscard]] bool IsDocumentFile(std::string_view bytes);

}  // namespace rastrel::graphics
