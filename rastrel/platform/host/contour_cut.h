#pragma once

/// Making objects of the document into cut lines.

#include "rastrel/export.h"
#include "rastrel/platform/values/document_values.h"
// The polygons' references were declared here until version 0.1.
#include "rastrel/platform/values/poly_reference.h"

namespace rastrel::host {

/// Makes objects into lines that a knife cuts. The objects keep their handles, colors and places.
/// An object of the list that is gone is passed over, and ListHandle::None is an empty list. Only
/// the user interface thread calls.
class RASTREL_API ContourCut {
 public:
  ContourCut() = default;
  virtual ~ContourCut();
  ContourCut(const ContourCut&) = delete;
  ContourCut& operator=(const ContourCut&) = delete;

  /// Makes the members of a list lines that are cut into the material. The library passes 0. The
  /// list stays the caller's.
  virtual void ChangeObjectsToContourCut(ListHandle list, int reserved) = 0;
  /// The same for lines that are cut all the way through the material.
  virtual void ChangeObjectsToContourCutThrough(ListHandle list, int reserved) = 0;
};

}  // namespace rastrel::host
