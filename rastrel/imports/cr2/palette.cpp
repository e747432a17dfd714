#include "rastrel/imports/cr2/palette.h"

#include "rastrel/platform/host/application.h"
#include "rastrel/platform/values/color.h"

namespace rastrel::imports {

void AddMissingPaletteColor(host::Application& application, const CVKColor& color) {
  if (application.IsColorInPalette(color) == 0) application.AddColorToPalette(CVKFullColor(color));
}

}  // namespace rastrel::imports
