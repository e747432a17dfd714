#pragma once

#include <cstddef>
#include <list>
#include <memory>
#include <string>

#include "host/document/document.h"
#include "host/document/notices.h"
#include "host/graphics/drawing_process.h"
#include "host/graphics/graphic_file.h"
#include "rastrel/platform/os/file.h"

namespace rastrel::graphics {

/// Loads foreign files and documents into a document, recognised by their content.
///
/// - Vector files (SVG, PDF, EPS and other PostScript, DXF, HPGL) become path objects, one a
///   painted path, in painting order, as direct members of the document. Layer and line color are
///   those of the path: a path without a fill has an invisible layer, one without a line the kind
///   of line 16. Of a PDF or PostScript file the first page counts. Letters become paths, those of
///   a PDF only where LoadOptions::textAsGraphics says so.
/// - SVG, PDF and PostScript that paths can't express stay one placed file. Its bounds are those of
///   the drawn part, and its colors its own; `reason` of the object says why.
/// - Images (PNG, JPEG, TIFF) are placed files in true size.
/// - A document of the host's own gives copies of its objects.
///
/// Objects are on the page on show, the first where all are, with the file's lower left corner,
/// or a drawing's origin, in that of the blank; they become the selection.
///
/// The drawing program reads a foreign file (drawing_process.h). A file that is loaded again is not
/// read again as long as size and time of its last change are the same and there is room for it.
class GraphicLoader {
 public:
  /// Both must outlive the loader.
  GraphicLoader(document::Document& document, document::Notices& notices,
                const DrawingLimits& limits = {});
  ~GraphicLoader();
  GraphicLoader(const GraphicLoader&) = delete;
  GraphicLoader& operator=(const GraphicLoader&) = delete;

  /// Returns 1. A file that can't be loaded changes nothing: its reason becomes a loss, and the
  /// result is 0.
  int Load(const std::wstring& path, const LoadOptions& options = {});

  /// Files that were read, so far.
  [[nodiscard]] std::size_t FilesRead() const { return m_FilesRead; }

 private:
  struct Entry {
    std::wstring path;
    LoadOptions options;
    os::FileStamp stamp;
    std::shared_ptr<const LoadedGraphic> graphic;
  };
  [[nodiscard]] Expected<std::shared_ptr<const LoadedGraphic>> Read(const std::wstring& path,
                                                                    const LoadOptions& options);
  void Keep(Entry entry);
  [[nodiscard]] Expected<void> Place(const LoadedGraphic& graphic);

  document::Document& m_Document;
  document::Notices& m_Notices;
  DrawingLimits m_Limits;
  std::list<Entry> m_Entries;  // the last used first
  std::size_t m_FilesRead = 0;
};

/// Loads one file with a loader of its own.
int LoadGraphic(document::Document& document, document::Notices& notices, const std::wstring& path,
                const DrawingLimits& limits = {});

}  // namespace rastrel::graphics
