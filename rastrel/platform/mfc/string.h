#pragma once

#include <string>

/// The framework's string is the standard wide string here: one Unicode code point a character.
using CString = std::wstring;
