#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "cli/console/exit_status.h"
#include "cli/console/options.h"
#include "cli/server/job_options.h"
#include "cli/server/merged_pages.h"
#include "server/queue/job.h"

namespace rastrel::cli {
namespace {

server::Job JobOf(server::JobWork work, server::JobOptions options) {
  server::Job job;
  job.work = work;
  job.file = "/queue/1/job.csv";
  job.options = std::move(options);
  return job;
}

TEST(MergeOptions, a_print_has_none_of_them_so_that_no_sender_names_files_of_this_machine) {
  for (const char* name : {"template", "data", "sheet", "blank"}) {
    const auto job = JobOf(server::JobWork::Print, {{name, "/etc/passwd"}});
    EXPECT_THROW(static_cast<void>(InvocationOf(job)), CommandError) << name;
  }
}

TEST(MergeOptions, those_of_the_print_remain_and_unknown_ones_are_refused) {
  const auto job = JobOf(server::JobWork::Merge,
                         {{"template", "/a"}, {"blank", "1x1in"}, {"mode", "RGB/300 dpi"}});
  const Invocation invocation = InvocationOf(job);
  EXPECT_EQ(invocation.options.size(), 1u);
  EXPECT_EQ(invocation.ValueOr(OptionId::Mode, ""), "RGB/300 dpi");
  EXPECT_THROW(static_cast<void>(InvocationOf(JobOf(server::JobWork::Merge, {{"rules", "x"}}))),
               CommandError);
}

TEST(MergeFiles, the_jobs_file_is_the_one_that_is_not_named) {
  const MergeFiles table =
      MergeFilesOf(JobOf(server::JobWork::Merge, {{"template", "/badge.xml"}}));
  EXPECT_EQ(table.merged, "/badge.xml");
  EXPECT_EQ(table.table, "/queue/1/job.csv");
  const MergeFiles badge = MergeFilesOf(JobOf(server::JobWork::Merge, {{"data", "/names.csv"}}));
  EXPECT_EQ(badge.merged, "/queue/1/job.csv");
  EXPECT_EQ(badge.table, "/names.csv");
}

TEST(MergeFiles, both_neither_and_a_path_that_is_not_full_are_refused) {
  for (const server::JobOptions& options :
       {server::JobOptions{}, server::JobOptions{{"template", "/a"}, {"data", "/b"}},
        server::JobOptions{{"template", "a"}}, server::JobOptions{{"data", ""}},
        server::JobOptions{{"data", "--output"}}})
    EXPECT_THROW(static_cast<void>(MergeFilesOf(JobOf(server::JobWork::Merge, options))),
                 CommandError);
}

}  // namespace
}  // namespace rastrel::cli
