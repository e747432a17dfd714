#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/document/document.h"
#include "host/render/document_images.h"

/// The drawing program's task of drawing a document, as the caller writes it and the program reads
/// it:
///
///     +------------------+----------+--------------------------------------------------+
///     | length of text   | text     | for each EPS file in use:                        |
///     | 8 bytes, lowest  | document | 'P' or 'R'  | length of bytes | bytes            |
///     | byte first       | (.rdoc)  | 1 byte      | 8 bytes         |                  |
///     +------------------+----------+--------------------------------------------------+
///
/// 'P' is the file as PDF, 'R' the reason why it could not become one. The EPS files are those of
/// EpsFilesInUse, in its order.
namespace rastrel::render {

/// Whether anything in the document is a foreign file.
[[nodiscard]] bool HasPlacedFiles(const document::Document& document);

/// The program's arguments.
[[nodiscard]] std::vector<std::string> DrawingTask(ImageFormat format, const ImageOptions& options);
/// Its input. Converts EPS files, each by an interpreter in its own process, and all in the time of
/// DrawingLimits::epsTime; a file for which none is left has that reason.
[[nodiscard]] Expected<std::string> DrawingRequestText(const document::Document& document,
                                                       const ImageOptions& options);

/// The format and options that DrawingTask wrote; nothing for other arguments.
struct DrawingTaskParts {
  ImageFormat format = ImageFormat::Svg;
  ImageOptions options;
};
[[nodiscard]] std::optional<DrawingTaskParts> ReadDrawingTask(
    const std::vector<std::string>& arguments);

/// An EPS file as PDF, or the reason why it is none.
using ConvertedEps = Expected<std::shared_ptr<const std::string>>;
/// The document of a request. Placed files with the same bytes share them.
struct DrawingRequest {
  std::unique_ptr<document::Document> document;
  /// By the bytes of the EPS file in `document`, and by whether it is placed whole.
  std::map<std::pair<const std::string*, bool>, ConvertedEps> converted;
};
[[nodiscard]] Expected<DrawingRequest> ReadDrawingRequest(std::string_view text,
                                                          const ImageOptions& options);

/// A number of decimal digits; 0 for anything else.
[[nodiscard]] int NumberOf(std::string_view digits);

}  // namespace rastrel::render
