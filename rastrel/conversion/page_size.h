#pragma once

#include "rastrel/export.h"
#include "rastrel/platform/values/rect.h"

/// Measures the first page of a PostScript or EPS file. The queue program processes a copy of it,
/// since comments do not hold a page's size in general. `path` is a library path. Blocks until that
/// program has ended, without a time limit; any thread, and several at once on different files. The
/// host's BeginWaitCursor is called on that thread. Returns 1 with `bounds` in centimetres. Returns
/// 0 on any failure, and for a null path, with `bounds` as they were; the application log has the
/// reason. A side that is reported as exactly -1 inch counts as not reported.
///
/// The copy is made in the RIP directory and deleted at the end, unless "Keep PS Files" of section
/// "RASTREL" is set, or its job header could not be written.
RASTREL_API int GetPSPageSize(const wchar_t* path, BOUNDS& bounds);
