#pragma once

#include <string>

#include "rastrel/conversion/cut_data.h"

/// Size of a page in centimetres.
struct PageSize {
  double height = 0;
  double width = 0;
};

namespace rastrel::conversion {

/// The lines that tell the queue program what to do with a file; docs/formats/job-header.md has
/// them. `page` and `resolution` may be null: no line then. A resolution below 1 has none either.
[[nodiscard]] std::wstring JobHeaderText(const PageSize* page, const CPS2CutData* cut,
                                         const CPS2CutData* halfCut, const int* resolution);

/// Puts that text in front of a file, in place. False if that failed; PrependToFile tells what is
/// left then. Nothing is logged.
[[nodiscard]] bool WriteJobHeader(const wchar_t* file, const PageSize* page, const CPS2CutData* cut,
                                  const CPS2CutData* halfCut, const int* resolution);

/// Puts a text, in Windows-1252, in front of a file by way of a new file beside it, "vktmp" and six
/// characters. True if the file has both. False otherwise:
/// - no name to be had, the directory can't be written, or the file can't be read: the file is as
///   it was and nothing else is there;
/// - a read or a write failed: the file is as it was, and what there is of the new one stays;
/// - the old file could not be deleted: it is as it was, and the new one stays;
/// - the new file could not be given the name: the old one is gone, the new one stays, whole.
/// Costs a copy of the file and 512 KiB of memory.
[[nodiscard]] bool PrependToFile(const wchar_t* file, const std::wstring& text);

}  // namespace rastrel::conversion
