#pragma once

#include "rastrel/platform/values/document_values.h"

namespace rastrel::imports {

/// The plate object that an importer used last, and its panes' size in inches. The handle is 0
/// before the first.
struct LastPlate {
  host::ObjectHandle object = 0;
  double width = 0;
  double height = 0;
};

}  // namespace rastrel::imports
