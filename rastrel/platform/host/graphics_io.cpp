#include "rastrel/platform/host/graphics_io.h"

namespace rastrel::host {

GraphicsIO::~GraphicsIO() = default;

}  // namespace rastrel::host
