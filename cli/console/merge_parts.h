#pragma once

/// A merge in parts, as a batch has it done: a run that counts the pages, one for each page, and
/// one for the report. Each is a run of this program whose first argument is one of these,
/// which no command has; a `merge` command follows. Each merges the whole table, which
/// takes little beside drawing a page, so that a page is the one that the plain command makes.
///
///     rastrel :merge-count FILE merge OPTIONS TEMPLATE
///     rastrel :merge-page SUM merge OPTIONS TEMPLATE -- "page N"
///     rastrel :merge-report SUM merge OPTIONS TEMPLATE
///
/// The first writes the number of pages and the sum of the merged template to a file, as JSON
/// (MergeCountFormat); with another sum the others fail, since their pages are of another table.
namespace rastrel::cli {

inline constexpr const char* MergeCountWord = ":merge-count";
inline constexpr const char* MergePageWord = ":merge-page";
inline constexpr const char* MergeReportWord = ":merge-report";

inline constexpr const char* MergeCountFormat = "rastrel-merge-count";
/// In front of a page's number.
inline constexpr const char* MergePagePrefix = "page ";

}  // namespace rastrel::cli
