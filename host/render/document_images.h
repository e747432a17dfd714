#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/document/document.h"
#include "host/document/notices.h"
#include "host/graphics/drawing_process.h"
#include "host/text/font_catalog.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/output_file.h"

/// Pictures of a document's pages in true size. The same document has the same pictures to the
/// byte, in every process, as long as the same fonts are installed.
namespace rastrel::render {

enum class ImageFormat { Svg, Pdf, Png };

/// The content of a picture, and its form.
struct ImageOptions {
  std::optional<int> page;         ///< counted from 1; nothing for all of them
  bool outlines = false;           ///< every letter as a path, rather than as text in a font
  bool blank = true;               ///< the blank and its edge under the objects
  double dpi = 150;                ///< of PNG, LowestDpi to HighestDpi
  graphics::DrawingLimits limits;  ///< of drawing a document that has placed files
};

inline constexpr double LowestDpi = 1;
inline constexpr double HighestDpi = 10'000;
/// Pixels of a PNG, and of its longer side.
inline constexpr std::uint64_t MaximumPixels = 100'000'000;
inline constexpr int MaximumPixelSide = 32'767;

/// The source of the pictures. All must outlive the call; placed files that can't be opened and
/// missing fonts become notices. A document with placed files is drawn by the drawing program
/// (host/graphics/drawing_process.h); a file that passes its limits, or ends it, is a failure that
/// names the file.
struct ImageSource {
  const document::Document& document;
  const text::FontCatalog& fonts;
  document::Notices& notices;
};

/// Pictures as bytes: of PDF one with all pages, of SVG and PNG one for each page. A failure's
/// `why` is a sentence for the user.
[[nodiscard]] Expected<std::vector<std::string>> DrawDocument(const ImageSource& source,
                                                              ImageFormat format,
                                                              const ImageOptions& options);

/// Draws the pictures and writes them: one to `path`, for which `single` says whether an entry of
/// that name is replaced; several to `path` with "-1", "-2" and so on before the extension, for
/// which `numbered` says it. Paths are native: a name that differs from another in case alone is
/// another. Returns the paths. Fails as DrawDocument does, and as OutputFile where a file can't be
/// written; then none has its name, and old files stay.
[[nodiscard]] Expected<std::vector<std::string>> SaveImages(
    const ImageSource& source, ImageFormat format, const ImageOptions& options,
    const std::string& path, os::Existing numbered = os::Existing::Refused,
    os::Existing single = os::Existing::Followed);

}  // namespace rastrel::render
