#pragma once

#include <string>

#include "rastrel/conversion/cut_data.h"

/// Size of a page in centimetres.
struct PageSize {
  double height = 0;
  double width = 0;
};

namespace rastrel::conversion {

/// The lines that say how the queue program is to process a file; docs/formats/job-header.md has
/// them. `page` and `resolution` (dots per inch) may be null: they have no line then. Neither has a
/// resolution below 1.
[[nodiscard]] std::wstring JobHeaderText(const PageSize* page, const CPS2CutData* cut,
                                         const CPS2CutData* halfCut, const int* resolution);

/// Puts that text in front of a file, in place. False if that failed; PrependToFile (prepend.h) has
/// the states of the file then. Nothing is logged.
[[nodiscard]] bool WriteJobHeader(const wchar_t* file, const PageSize* page, const CPS2CutData* cut,
                                  const CPS2CutData* halfCut, const int* resolution);

}  // namespace rastrel::conversion
