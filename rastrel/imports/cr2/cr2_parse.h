#pragma once

#include "rastrel/imports/cr2/cr2_document.h"

namespace rastrel::imports {

/// Reads a Crown Trophy template of the first generation (docs/formats/crown-trophy.md) by library
/// path into `document`, which is new. Lengths stay in inches, as the file has them.
///
/// A document that the parser refuses is repaired and tried once more. Colors by name are looked up
/// in the palette of the host's application; without one no name is found. The `svg` element of a
/// cut line goes to the file cutline.svg beside the template, or to the directory
/// `Application::LoadBaseDir` if it can't be written there.
///
/// Returns true if the file has at least one plate. Also true, with the records read before it, if
/// the document can't be read even then, has another root element, or lacks the table's size, the
/// template or the plates. False if the path is null, shorter than 5 characters, names nothing, or
/// ends in anything but ".cr2" in any case; if the table's size, the template or the cut line can't
/// be read; and if there is no plate. Thread: the host's user interface thread.
[[nodiscard]] bool ParseCr2File(const wchar_t* path, Cr2Document& document);

}  // namespace rastrel::imports
