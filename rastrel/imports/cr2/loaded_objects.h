#pragma once

#include <string>

#include "rastrel/imports/cr2/load_graphic.h"
#include "rastrel/imports/cr2/object_list.h"
#include "rastrel/imports/cr2/template_import.h"
#include "rastrel/platform/values/tm.h"

namespace rastrel::imports {

/// Loads a file into the document and selects the objects that it brought, also if it could not be
/// loaded whole. A path with ".krv" or ".KRV" in it is one of the host's own files, whose sheet
/// layers are removed again; any other goes through the host's file filters, with `thickLines`
/// passed on. Returns the selected objects; no list if the file could not be loaded, which the user
/// is shown.
[[nodiscard]] ObjectList LoadObjects(TemplateImport& import, const std::wstring& path,
                                     LoadPurpose purpose, int thickLines);

/// Moves objects to the sheet layer of a plate object.
void AssignSheetLayer(TemplateImport& import, const ObjectList& objects, host::ObjectHandle plate);

/// Maps objects to their place on a page, and takes them out of the selection.
void PlaceObjects(TemplateImport& import, const ObjectList& objects, const TM& matrix, int page);

}  // namespace rastrel::imports
