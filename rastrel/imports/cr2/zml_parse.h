#pragma once

#include <string>

#include "rastrel/imports/cr2/cr2_document.h"

namespace rastrel::imports {

/// The parts of a template of the second generation that are not in its records.
struct ZmlFile {
  std::wstring imageDirectory;  ///< the setting "Crown"/"ImagePath": where else graphics are looked
                                ///< for; at most 259 characters, empty without it
  bool isMetric = false;        ///< the file's lengths are millimetres and not inches
  double rotation = 0;          ///< the number that the host's import rotation was set to
};

/// Reads a Crown Trophy template of the second generation (docs/formats/crown-trophy.md) by library
/// path into `document` and `file`, which are new. Lengths become world units (centimetres) here.
///
/// While it reads it sets the rotation of the import at the host's application, chooses the plotter
/// that a `Driver` element asks for (settings "plottersetup"), stores the template's name for it,
/// and adds each color of the template that the palette lacks to it. Without an application that
/// is left out. The `svg` element of a cut line goes to cutline.svg in `Application::LoadBaseDir`.
///
/// Returns true if all that a template needs could be read: the table's size, the template, its cut
/// line if it has one, and at least one plate. False otherwise, with the part read before in
/// `document`, and if the path is null, shorter than 5 characters, names nothing, or ends in
/// anything but ".zml" in any case. Thread: the host's user interface thread.
[[nodiscard]] bool ParseZmlFile(const wchar_t* path, Cr2Document& document, ZmlFile& file);

}  // namespace rastrel::imports
