// A change of one of these is seen by everybody at a terminal, or by programs that read the lines.

#include "cli/job/redraw_intervals.h"

#include <gtest/gtest.h>

namespace rastrel::cli {
namespace {

using namespace std::chrono_literals;

TEST(RedrawIntervals, let_a_second_of_elapsed_time_be_seen_as_it_passes) {
  EXPECT_EQ(redraw::ForElapsedTime, 200ms);
  EXPECT_EQ(redraw::OnDialogChanges, 50ms);
}

TEST(RedrawIntervals, keep_events_below_the_flicker_of_a_terminal) {
  EXPECT_EQ(redraw::OnJobEvents, 83'333'333ns);  // twelve a second
}

TEST(RedrawIntervals, of_a_spreadsheet_are_those_of_its_documents) {
  EXPECT_EQ(redraw::BeforeSpreadsheet, 1s);    // docs/formats/sheet-text.md: from the first one on
  EXPECT_EQ(redraw::OfSpreadsheetAsJson, 1s);  // each second
  EXPECT_EQ(redraw::OfSpreadsheet, 100ms);
}

}  // namespace
}  // namespace rastrel::cli
