#pragma once

#include "rastrel/export.h"
#include "rastrel/platform/values/rect.h"

/// Measures the first page of a PostScript or EPS file by having the queue program process a copy
/// of it, since a page's size can't be had from comments in general. Blocks until that program has
/// ended. 1 with `bounds` in centimetres; 0, with `bounds` as they were, on any failure, which the
/// application log tells of. A side that is told as exactly -1 inch counts as not told.
///
/// The copy lies in the RIP directory and is deleted, unless "Keep PS Files" of section "RASTREL"
/// is set, or its job header could not be written.
RASTREL_API int GetPSPageSize(const wchar_t* path, BOUNDS& bounds);
