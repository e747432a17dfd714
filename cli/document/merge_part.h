#pragma once

#include <string>

#include "cli/console/merge_parts.h"

namespace rastrel::cli {

/// The part of a merge that a run does (merge_parts.h).
struct MergePart {
  enum class Kind {
    Whole,   ///< the plain command
    Count,   ///< writes the number of pages to a file, and draws none
    Page,    ///< draws one page, and reports no row
    Report,  ///< draws none, and reports the rows; the pages' files are there already
  };
  Kind kind = Kind::Whole;
  std::string file;  ///< of the count
  std::string sum;   ///< that the merged template has to have
  int page = 0;      ///< from 1
};

/// Does the part that the program's first argument names, and returns the exit status of main; -1
/// if it names none, and nothing is done.
[[nodiscard]] int RunMergePart(int count, const char* const* arguments);

}  // namespace rastrel::cli
