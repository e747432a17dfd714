#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/document/document.h"
#include "host/document/notices.h"
#include "rastrel/platform/host/graphics_io.h"

namespace rastrel::graphics {

/// Copies all objects of one document into another, as its last, at the places and in the sizes
/// that they have, on one page or, without one, on the pages that they have. Groups keep their
/// members, and plates the plates that continue them. Sheet layers that the target lacks come
/// along; colors are the objects' own. Returns the copies of the source's direct members, in their
/// order; those that the target has no room for are missing.
std::vector<document::ObjectHandle> CopyObjects(const document::Document& source,
                                                document::Document& target,
                                                std::optional<int> page = std::nullopt);

/// Loads graphics of the host's own kind, which are document files (docs/formats/document.md), on
/// the page on show, the first where all are.
class NativeGraphics : public host::GraphicsIO {
 public:
  /// Both must outlive this.
  NativeGraphics(document::Document& document, document::Notices& notices)
      : m_Document(document), m_Notices(notices) {}

  /// The reason why a file can't be read becomes a notice.
  int LoadVEFile(CWnd* window, const wchar_t* path, int reserved) override;

 private:
  document::Document& m_Document;
  document::Notices& m_Notices;
};

}  // namespace rastrel::graphics
