#pragma once

#include "rastrel/imports/cr2/cr2_records.h"
#include "rastrel/imports/document_host.h"
#include "rastrel/platform/host/plate_object.h"
#include "rastrel/platform/values/document_values.h"
#include "rastrel/platform/values/world.h"

namespace rastrel::imports {

/// A pane that content is put on.
struct PanePlace {
  CWorldRect edges;              ///< world units
  host::ObjectHandle plate = 0;  ///< the plate object whose pages and sheet layer content gets
  bool isNamed = false;          ///< the host named that object as the pane's own
};

/// The place of a pane that `plate` was asked for. Panes that went on on a further page belong to a
/// plate object there, if the host says so.
[[nodiscard]] PanePlace PlaceOf(const CPane& pane, host::ObjectHandle plate);

/// The page on show, 1 when all are; for a pane whose plate object the host named, that object's
/// first page.
[[nodiscard]] int PageOf(const DocumentHost& document, const PanePlace& pane);

/// The placement with the document's origin if it has none of its own, as one that the template
/// does not give. 0 stays without a view.
[[nodiscard]] CR2_PLACEMENT WithOrigin(const DocumentHost& document,
                                       const CR2_PLACEMENT& placement);

}  // namespace rastrel::imports
