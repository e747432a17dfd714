#include "server/queue/shown_text.h"

#include <gtest/gtest.h>

namespace rastrel::server {
namespace {

TEST(WithTitle, the_file_in_the_queue_is_named_as_the_job) {
  EXPECT_EQ(WithTitle("can't print '/root/server/jobs/4/job.pdf': it is empty",
                      "/root/server/jobs/4", "sign for Ada.pdf"),
            "can't print 'sign for Ada.pdf': it is empty");
  EXPECT_EQ(WithTitle("open /q/4/job.ps: /q/4/picture.pdf", "/q/4", "a"), "open a: a");
  EXPECT_EQ(WithTitle("/q/4/job.ps", "/q/4", "a"), "a");
}

TEST(WithTitle, blanks_of_the_queues_path_are_a_part_of_it) {
  EXPECT_EQ(WithTitle("can't print '/my root/4/job.pdf', no", "/my root/4", "a b"),
            "can't print 'a b', no");
  EXPECT_EQ(WithTitle("open /my root/4/job.pdf: no", "/my root/4", "a"), "open a: no");
}

TEST(WithTitle, another_jobs_file_and_a_file_further_below_are_not_called_by_the_title) {
  EXPECT_EQ(WithTitle("'/q/44/job.ps'", "/q/4", "a"), "'/q/44/job.ps'");
  EXPECT_EQ(WithTitle("'/q/4/outbox-1/x.tif' is there", "/q/4", "a"), "'x.tif' is there");
  EXPECT_EQ(WithTitle("", "/q/4", "a"), "");
}

TEST(WithTitle, a_title_that_is_such_a_path_is_not_looked_into_again) {
  EXPECT_EQ(WithTitle("'/q/4/job.ps'", "/q/4", "/q/4/job.ps"), "'/q/4/job.ps'");
}

TEST(WithoutFolders, a_delivered_file_is_named_alone) {
  EXPECT_EQ(WithoutFolders("delivered /srv/My Signs/sign 1.tif"), "delivered sign 1.tif");
}

TEST(WithoutFolders, paths_in_and_without_quotation_marks_become_names) {
  EXPECT_EQ(WithoutFolders("open '/a b/c d.ps': no such file"), "open 'c d.ps': no such file");
  EXPECT_EQ(WithoutFolders("program /usr/bin/lp failed; see (/var/log/x)"),
            "program lp failed; see (x)");
  EXPECT_EQ(WithoutFolders("'/never/closed here"), "'closed here");
}

TEST(WithoutFolders, names_of_postscript_addresses_and_fractions_stay) {
  for (const char* text : {"PostScript error: /undefined in foo.", "socket://plotter/9100",
                           "--dict:770/1123(ro)(G)--", "print mode RGB/300 dpi.ps", "/", ""})
    EXPECT_EQ(WithoutFolders(text), text);
}

}  // namespace
}  // namespace rastrel::server
