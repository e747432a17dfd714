#pragma once

#include "rastrel/export.h"

/// Prints the test page, the library path `C:\tmp\testpage.ps`, to the printer
/// "KVI Tiff Screen Preview" in its default mode, and waits for the end, without a time limit. For
/// programs that only link the library. True if the print started; the job log, which goes to the
/// standard error stream, says how it ended. No other ticket may be in use: the process's log and
/// paths are deleted at the end. Call it on one thread.
RASTREL_API bool TestPrint();
