#include "cli/job/progress_line.h"

#include <gtest/gtest.h>

namespace rastrel::cli {
namespace {

JobEvent State(int code, JT_ORIGINATOR originator) {
  JobEvent event;
  event.kind = JobEventKind::State;
  event.originator = originator;
  event.code = code;
  return event;
}

JobEvent Percent(int percent) {
  JobEvent event;
  event.kind = JobEventKind::Progress;
  event.percent = percent;
  return event;
}

JobEvent Page(int page) {
  JobEvent event;
  event.kind = JobEventKind::Page;
  event.page = page;
  return event;
}

JobProgress Interpreting() {
  JobProgress progress;
  progress.Take(State(JTI_INTERPRETING, JTO_RIP));
  progress.Take(Percent(42));
  progress.Take(Page(2));
  return progress;
}

TEST(RenderProgress, shows_stage_percentage_bar_page_and_time) {
  EXPECT_EQ(RenderProgress(Interpreting(), 7, 80),
            "RIP interpreting     42 %  [########------------]  page 2  0:07");
}

TEST(RenderProgress, leaves_out_parts_that_do_not_fit) {
  EXPECT_EQ(RenderProgress(Interpreting(), 7, 50), "RIP interpreting     42 %  page 2  0:07");
  EXPECT_EQ(RenderProgress(Interpreting(), 7, 30), "RIP interpreting   42 %");
  EXPECT_EQ(RenderProgress(Interpreting(), 7, 20), "RIP interpreting");
  EXPECT_EQ(RenderProgress(Interpreting(), 7, 5), "RIP ");
  EXPECT_EQ(RenderProgress(Interpreting(), 7, 1), "");
  EXPECT_EQ(RenderProgress(Interpreting(), 7, 0), "");
}

TEST(RenderProgress, is_shorter_than_every_width) {
  for (unsigned columns = 1; columns < 120; ++columns)
    EXPECT_LT(RenderProgress(Interpreting(), 1000000, columns).size(), columns);
}

TEST(RenderProgress, has_no_bar_without_a_percentage) {
  JobProgress progress;
  progress.Take(State(JTI_CONVERTING, JTO_RIP));
  progress.Take(Page(3));
  EXPECT_EQ(RenderProgress(progress, 61, 80), "RIP converting        page 3  1:01");
}

TEST(RenderProgress, shows_hours_when_there_are_some) {
  const std::string line = RenderProgress(JobProgress(), 3 * 3600 + 5 * 60 + 9, 80);
  EXPECT_TRUE(line.ends_with("3:05:09")) << line;
}

TEST(RenderProgress, fills_the_bar_at_a_hundred) {
  JobProgress progress;
  progress.Take(State(JTI_PRINTING, JTO_ODALIS));
  progress.Take(Percent(100));
  EXPECT_NE(RenderProgress(progress, 0, 80).find("100 %  [####################]"),
            std::string::npos);
}

TEST(JobProgress, begins_anew_with_the_second_child) {
  JobProgress progress = Interpreting();
  progress.Take(State(JTI_START_PRINTING, JTO_SYSTEM));
  EXPECT_FALSE(progress.Percent());
  EXPECT_FALSE(progress.Page());
  EXPECT_EQ(progress.Stage(), "output engine");
}

}  // namespace
}  // namespace rastrel::cli
