#pragma once

#include "rastrel/export.h"

/// Prints the test page, `C:\tmp\testpage.ps` on the data root's drive C, to the printer
/// "KVI Tiff Screen Preview" in its default mode, and waits for the end. For programs that only
/// link the library. Returns whether the print started; the job log goes to the standard error
/// stream and tells how it ended. No other ticket may be in use: the process's log and paths are
/// taken down at the end.
RASTREL_API bool TestPrint();
