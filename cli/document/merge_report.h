#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "cli/document/merge_template.h"
#include "cli/sheet/work_progress.h"
#include "host/document_host.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// A text that is longer or higher than its frame has room for, or longer than its circle.
struct OverflowedText {
  std::string text;       ///< its first characters, UTF-8
  double beyondMm = 0;    ///< millimetres that the longest line lacks; 0 if only the height does
  int percent = 0;        ///< percent of the frame or circle that the text would need, above 100
  bool squeezed = false;  ///< it was made to fit; else it is drawn beyond its frame
};

/// The fate of a row.
struct RowReport {
  std::uint64_t row = 0;  ///< its place in the table, from 1
  bool placed = false;    ///< all of its plates have a place
  std::vector<int> pages;
  std::vector<OverflowedText> overflowed;
  std::vector<std::string> missingValues;  ///< headings of fields without a value
  std::vector<std::string> missingFonts;   ///< fonts in whose place others are used
  std::vector<std::string> notes;          ///< other sentences, without full stops

  [[nodiscard]] bool IsBad() const {
    return !placed || !overflowed.empty() || !missingValues.empty() || !missingFonts.empty() ||
           !notes.empty();
  }
  /// "row 7: placed on page 2; ..." for a person.
  [[nodiscard]] std::string Text() const;
  /// The same as a line of JSON (docs/formats/events.md), with a line feed.
  [[nodiscard]] std::string JsonLine() const;
};

/// Begins the reports of rows with the faults that the table alone shows.
[[nodiscard]] std::vector<RowReport> BeginReports(const MergeTemplate& merge,
                                                  const MergeTable& table,
                                                  const std::vector<MergeRow>& rows);

/// Gives the panes of a document to the rows that they were made for, in order: `platesARow` panes
/// to each. False, and nothing is changed, if the document has another number of panes, since a
/// plate was refused.
[[nodiscard]] bool PlaceRows(const document::Document& document, std::size_t platesARow,
                             std::vector<RowReport*>& rows);

/// Looks at all texts of a document, and adds its faults to the row of each. A
/// text belongs to the row of the pane that its middle is in, or that is nearest to it on its page.
/// `panes` are as PlaceRows took them.
void CheckTexts(const document::DocumentHost& host, std::size_t platesARow,
                const std::vector<RowReport*>& rows, sheet::WorkProgress& progress);

/// The same for a document that is one row's as a whole.
void CheckTextsOfRow(const document::DocumentHost& host, RowReport& row);

/// The rows that are bad in the report of an earlier merge. Fails if the file is no such report.
[[nodiscard]] Expected<std::vector<std::uint64_t>> BadRowsOf(const std::string& path);

}  // namespace rastrel::cli
