#pragma once

#include "rastrel/platform/values/paragraph.h"

namespace rastrel::imports {

/// The paragraph that an importer has open. The records are the text engine's and end with the
/// paragraph; the flag is the importer's, which takes it back itself once the text is placed.
struct PlacedText {
  CurrentParagraph current;
  bool isOpen = false;
};

}  // namespace rastrel::imports
