#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cli/sheet/work_progress.h"
#include "cli/sheet/workspace.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// A row of a table below its headings.
struct MergeRow {
  std::uint64_t number = 0;        ///< its place in the table, from 1
  std::vector<std::string> cells;  ///< UTF-8; missing ones at the end are empty
  [[nodiscard]] const std::string& Cell(std::size_t column) const;
};

/// A table whose rows become plates. Its first row that is not empty has the headings.
struct MergeTable {
  std::vector<std::string> headings;  ///< without whitespace at their ends; an empty one is none
  std::vector<MergeRow> rows;         ///< those that are not empty

  /// The column of a heading, from 0. Fails if there is none or more than one, with the list of
  /// those that there are.
  [[nodiscard]] Expected<std::size_t> ColumnOf(const std::string& heading) const;
};

/// Reads a table: a spreadsheet's sheet as `rastrel sheet --as-shown` shows it, or a text with
/// separators (spreadsheet/separated_text.h) of any other file. `sheet` is the name or the place of
/// a sheet, or empty for the first that is not hidden. `path` is native. A failure whose `error` is
/// 0 is the table's fault.
[[nodiscard]] Expected<MergeTable> ReadMergeTable(const std::string& path, const std::string& sheet,
                                                  const sheet::Workspace& workspace,
                                                  sheet::WorkProgress& progress);

}  // namespace rastrel::cli
