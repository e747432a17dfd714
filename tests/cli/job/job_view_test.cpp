#include "cli/job/job_view.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace rastrel::cli {
namespace {

JobEvent Event(JobEventKind kind, JT_ORIGINATOR originator) {
  JobEvent event;
  event.kind = kind;
  event.originator = originator;
  return event;
}

// Where standard error is no terminal.
std::string Shown(const std::vector<JobEvent>& events) {
  testing::internal::CaptureStderr();
  JobView view(false);
  for (const JobEvent& event : events) view.OnEvent(event);
  view.Finish();
  return testing::internal::GetCapturedStderr();
}

TEST(JobView, shows_pages_and_warnings_as_lines_with_their_originator) {
  JobEvent page = Event(JobEventKind::Page, JTO_RIP);
  page.page = 7;
  JobEvent warning = Event(JobEventKind::Warning, JTO_ODALIS);
  warning.text = "no ink";
  EXPECT_EQ(Shown({page, warning}), "RIP: page 7\noutput engine: warning: no ink\n");
}

TEST(JobView, shows_progress_in_steps_and_from_a_fresh_start_after_a_state) {
  std::vector<JobEvent> events;
  for (const int percent : {5, 10, 15, 20}) {
    events.push_back(Event(JobEventKind::Progress, JTO_RIP));
    events.back().percent = percent;
  }
  events.push_back(Event(JobEventKind::State, JTO_SYSTEM));
  events.back().text = "Start Printing";
  events.push_back(Event(JobEventKind::Progress, JTO_ODALIS));
  events.back().percent = 10;
  EXPECT_EQ(Shown(events), "RIP: 10 %\nRIP: 20 %\nStart Printing\noutput engine: 10 %\n");
}

TEST(JobView, leaves_errors_and_files_to_the_report) {
  JobEvent error = Event(JobEventKind::Error, JTO_RIP);
  error.text = "undefined in foo";
  EXPECT_EQ(Shown({error, Event(JobEventKind::Output, JTO_ODALIS)}), "");
}

}  // namespace
}  // namespace rastrel::cli
