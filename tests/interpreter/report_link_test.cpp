// The interpreter's error stream under a secret name.

#include "interpreter/report_link.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/scratch_directory.h"

namespace rastrel::interpreter {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> NamesIn(const std::string& directory) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(directory))
    names.push_back(entry.path().filename());
  return names;
}

TEST(ReportLink, leads_to_the_error_stream_of_whoever_opens_it) {
  const test::ScratchDirectory scratch;
  const ReportLink link(scratch.Path());
  EXPECT_EQ(NamesIn(scratch.Path()), std::vector{link.Name()});
  EXPECT_EQ(fs::read_symlink(scratch.Path() + "/" + link.Name()), "/proc/self/fd/2");
}

TEST(ReportLink, has_another_name_each_time) {
  const test::ScratchDirectory scratch;
  const ReportLink one(scratch.Path());
  const ReportLink other(scratch.Path());
  EXPECT_EQ(one.Name().size(), 32U);
  EXPECT_NE(one.Name(), other.Name());
}

TEST(ReportLink, is_gone_once_it_is_removed_and_at_its_end) {
  const test::ScratchDirectory scratch;
  std::optional<ReportLink> link(scratch.Path());
  ASSERT_TRUE(link->Remove());
  EXPECT_TRUE(NamesIn(scratch.Path()).empty());
  EXPECT_TRUE(link->Remove()) << "there is nothing left to remove";
  link.emplace(scratch.Path());
  link.reset();
  EXPECT_TRUE(NamesIn(scratch.Path()).empty());
}

TEST(ReportLink, that_can_not_be_removed_is_a_failure) {
  const test::ScratchDirectory scratch;
  ReportLink link(scratch.Path());
  fs::remove(scratch.Path() + "/" + link.Name());
  const auto removed = link.Remove();
  ASSERT_FALSE(removed);
  EXPECT_NE(removed.Error().where.find(link.Name()), std::string::npos);
}

TEST(ReportLink, has_no_name_where_none_can_be_made) {
  const ReportLink link("/proc/self/no-such-directory");
  EXPECT_EQ(link.Name(), "");
}

}  // namespace
}  // namespace rastrel::interpreter
