#pragma once

#include <cstddef>
#include <vector>

#include "host/document/document.h"
#include "host/document/notices.h"
#include "host/document_host.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::layout {

/// The size of a plate in world units.
struct PlateSize {
  double width = 0;
  double height = 0;
};

/// The size that a template gives its plates. A side of 0, which is none, is that of the host's
/// blank, with a notice. Fails for sides that no plate can have.
[[nodiscard]] Expected<PlateSize> SizeOf(document::DocumentHost& host, double width, double height);

/// A plate that has its place on a page.
struct PlacedPlate {
  CWorldRect edges;
  int page = 1;
  int sheetLayer = 0;
};

/// Adds plates of one size, in world units, as panes of one plate object that goes on over further
/// pages, without margins or gaps: rows from the bottom if the blank's origin is 7, else from the
/// top. They are white, begin on the page on show, or after the last page that has objects, and are
/// returned in order. Fails, with nothing added, if one does not fit on the blank, or if there are
/// more than a document holds; plates for which the document has no pages left are missing in the
/// result, with a notice.
[[nodiscard]] Expected<std::vector<PlacedPlate>> AddPlates(document::Document& document,
                                                           document::Notices& notices,
                                                           std::size_t count, double width,
                                                           double height);

/// The color of letters on a plate.
[[nodiscard]] CVKColor Black();

/// Adds an object to the document, on a plate's page and sheet layer, visible and selectable. 0,
/// with a notice, if the document is full.
document::ObjectHandle AddToPlate(document::Document& document, document::Notices& notices,
                                  document::Shape shape, document::Attributes attributes,
                                  const PlacedPlate& plate);

}  // namespace rastrel::layout
