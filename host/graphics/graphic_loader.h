#pragma once

#include <string>

#include "host/document/document.h"
#include "host/document/notices.h"
#include "host/graphics/drawing_process.h"

namespace rastrel::graphics {

/// Loads an SVG, PNG, JPEG, TIFF, PDF or EPS file by path, recognised by its content, and puts it
/// into the document: on the page on show, in true size, with its lower left corner in that of the
/// blank, as the one selected object. Returns 1. A file that can't be placed changes nothing: its
/// reason becomes a notice, and the result is 0. The drawing program reads the file (
/// drawing_process.h), within the limits.
int LoadGraphic(document::Document& document, document::Notices& notices, const std::wstring& path,
                const DrawingLimits& limits = {});

}  // namespace rastrel::graphics
