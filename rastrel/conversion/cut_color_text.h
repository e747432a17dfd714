#pragma once

#include <string>

#include "rastrel/conversion/cut_data.h"

namespace rastrel::conversion {

/// The text of a record's color, by its colorKind: `rgb` formatted with red, green and blue from 0
/// to 1, `cmyk` with cyan, magenta, yellow and black, `named` with the name. Empty for a named
/// color without a name and for any other colorKind.
///
/// The header, the override and the comparison all come here: the queue program repeats a color as
/// it was given, so the precision of all three must be one.
struct CutColorFormats {
  const wchar_t* rgb;
  const wchar_t* cmyk;
  const wchar_t* named;
};
[[nodiscard]] std::wstring CutColorText(const CPS2CutData& cut, const CutColorFormats& formats);

}  // namespace rastrel::conversion
