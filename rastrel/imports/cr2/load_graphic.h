#pragma once

#include <string>

#include "rastrel/imports/cr2/cr2_records.h"
#include "rastrel/imports/cr2/object_list.h"
#include "rastrel/imports/cr2/pane_place.h"
#include "rastrel/imports/cr2/template_import.h"

/// Loading the file of a graphic or of a cut line as objects of the document, and placing them on a
/// pane. In both generations the host's settings are restored before the objects are returned, a
/// file that can't be loaded is shown to the user with its path, and the objects are on the plate
/// object's sheet layer and no longer selected.
namespace rastrel::imports {

/// The purposes of a loaded file.
enum class LoadPurpose {
  Graphic,
  CutLine,  ///< the host is asked not to fill paths without a fill
};

/// A file to load, and where it goes.
struct GraphicToLoad {
  const std::wstring& path;  ///< as the template has it
  LoadPurpose purpose;
  PanePlace pane;
  CR2_PLACEMENT placement;  ///< world units; cr2: effective, see EffectivePlacement
};

/// Loads a file of a first generation template (cr2). Returns the objects; an empty list without
/// any, and if the file can't be loaded.
[[nodiscard]] ObjectList LoadGraphic(TemplateImport& import, const GraphicToLoad& graphic);

/// Loads a file of a second generation template (zml) in the same way. `plate` has the origin and
/// the margins that the placement's point counts by. Lines of the objects get the width, in world
/// units, unless it is negative or no line; objects without a line keep none. Values replace the
/// replaceable items of texts; `frame` may be null, for none.
[[nodiscard]] ObjectList LoadGraphic(TemplateImport& import, const GraphicToLoad& graphic,
                                     const CR2_TEMPLATE& plate, double lineWidth,
                                     const CR2_GRAPHIC_FRAME* frame);

}  // namespace rastrel::imports
