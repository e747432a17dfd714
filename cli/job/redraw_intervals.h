#pragma once

#include <chrono>

/// How often a terminal or a reader of JSON lines hears of progress.
namespace rastrel::cli::redraw {

/// Between two drawings of a job's line that its events cause; a new state is drawn at once.
inline constexpr std::chrono::nanoseconds OnJobEvents =
    std::chrono::nanoseconds(std::chrono::seconds(1)) / 12;
/// Between two drawings of a job or a dialog for the elapsed time alone.
inline constexpr std::chrono::milliseconds ForElapsedTime{200};
/// Between two drawings of a dialog whose text or bar has changed.
inline constexpr std::chrono::milliseconds OnDialogChanges{50};
/// Before anything is shown of a spreadsheet's reading: most are over by then.
inline constexpr std::chrono::milliseconds BeforeSpreadsheet{1000};
/// Between two drawings of a spreadsheet's reading.
inline constexpr std::chrono::milliseconds OfSpreadsheet{100};
/// Between two JSON lines of a spreadsheet's reading.
inline constexpr std::chrono::milliseconds OfSpreadsheetAsJson{1000};

}  // namespace rastrel::cli::redraw
