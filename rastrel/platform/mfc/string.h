#pragma once

#include <string>

/// The framework's string type, which is the standard wide string here: each character is one
/// Unicode code point.
using CString = std::wstring;
