#pragma once

#include <chrono>

/// How often progress is shown on a terminal or written as JSON lines.
namespace rastrel::cli::redraw {

/// Between two drawings of a job's line that its events cause; a new state is drawn at once.
inline constexpr std::chrono::nanoseconds OnJobEvents =
    std::chrono::nanoseconds(std::chrono::seconds(1)) / 12;
/// Between two drawings of a job or a dialog for the elapsed time alone.
inline constexpr std::chrono::milliseconds ForElapsedTime{200};
/// Between two drawings of a dialog whose text or bar has changed.
inline constexpr std::chrono::milliseconds OnDialogChanges{50};
/// Before the reading of a spreadsheet is shown at all: usually it is over by then.
inline constexpr std::chrono::milliseconds BeforeSpreadsheet{1000};
/// Between two drawings of the reading of a spreadsheet.
inline constexpr std::chrono::milliseconds OfSpreadsheet{100};
/// Between two JSON lines about the reading of a spreadsheet.
inline constexpr std::chrono::milliseconds OfSpreadsheetAsJson{1000};

}  // namespace rastrel::cli::redraw
