#pragma once

#include "interpreter/interpreter.h"

namespace rastrel::corerast {

/// The printers of the data root's devices.txt whose files are the pages' own: TIFF without
/// compression in a directory. Only a hint of where the pages will go, since the output engine
/// decides; so a file that can't be read, a failure of the engine later, has no such printer. The
/// result may be called on any thread.
[[nodiscard]] interpreter::TakesTiff PrintersThatTakeTiff();

}  // namespace rastrel::corerast
