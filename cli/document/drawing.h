#pragma once

#include <string>
#include <vector>

#include "cli/console/options.h"
#include "host/document_host.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/output_file.h"

namespace rastrel::cli {

/// The kind of file that a document is drawn into.
enum class DrawingKind {
  Svg,       ///< a drawing a page
  Pdf,       ///< one file of all pages
  Png,       ///< a picture a page
  Document,  ///< the document itself
};

/// How a file is made of a document.
struct DrawingRequest {
  DrawingKind kind = DrawingKind::Document;
  int page = 0;    ///< from 1; 0 for all
  int dpi = 96;    ///< pixels per inch of a picture
  int pixels = 0;  ///< not 0: the sides that a picture fits into, in place of `dpi`
  bool outlines = false;
  os::Existing numbered = os::Existing::Refused;  ///< for the files of several pages
  os::Existing single = os::Existing::Followed;   ///< for the file of one
};

/// Reads the options of drawing; the kind by the extension of `output`, .svg, .pdf, .png, .json
/// or .rdoc. Any other, and values out of range, fail with a message for the user. An empty output
/// asks for no file.
[[nodiscard]] Expected<DrawingRequest> DrawingRequestOf(const Invocation& invocation,
                                                        const std::string& output);

/// Makes the file, whole or not at all; of a drawing or picture of several pages one file a page,
/// with "-1", "-2" before the extension, all of them or none. Returns the files' names.
[[nodiscard]] Expected<std::vector<std::string>> WriteDrawing(document::DocumentHost& host,
                                                              const DrawingRequest& request,
                                                              const std::string& output);

/// The same for a command, which a failure ends.
[[nodiscard]] std::vector<std::string> DrawOrEnd(document::DocumentHost& host,
                                                 const DrawingRequest& request,
                                                 const std::string& output);

}  // namespace rastrel::cli
