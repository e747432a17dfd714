#pragma once

#include "rastrel/export.h"

/// Copies the path of the RIP's directory, with its closing separator, to `buffer`, which holds
/// `size` wide characters, and returns the length of the text without its terminator. If `size` is
/// not greater than that length, or `buffer` is null, nothing is copied, and the result is the
/// needed size: the length plus 1. Any thread.
RASTREL_API int GetCmdLineRipDir(wchar_t* buffer, int size);

/// 1 if the queue program exists, which all conversions need; otherwise 0. Any thread.
RASTREL_API int IsQAvailable();
