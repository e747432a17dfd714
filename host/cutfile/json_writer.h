#pragma once

#include <string>

#include "host/cutfile/cut_drawing.h"

namespace rastrel::cutfile {

/// A JSON document in centimetres. Numbers have a point whatever the locale.
[[nodiscard]] std::string JsonFileText(const CutDrawing& drawing);

}  // namespace rastrel::cutfile
