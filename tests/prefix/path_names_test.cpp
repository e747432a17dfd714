#include "rastrel/prefix/path_names.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

using namespace rastrel::prefix;

TEST(PathNames, the_prefix_takes_the_place_of_the_last_extension) {
  EXPECT_EQ(L"C:\\jobs\\job12.psp", PrefixPathOf(L"C:\\jobs\\job12.ps"));
  EXPECT_EQ(L"C:\\jobs\\a.b.psp", PrefixPathOf(L"C:\\jobs\\a.b.ps"));
  EXPECT_EQ(L"C:\\jobs.psp", PrefixPathOf(L"C:\\jobs.d\\job"));
  EXPECT_EQ(L"C:\\jobs\\.psp", PrefixPathOf(L"C:\\jobs\\.ps"));
  EXPECT_EQ(L"job.psp", PrefixPathOf(L"job."));
}

TEST(PathNames, the_title_stands_behind_the_last_backslash) {
  EXPECT_EQ(L"job12", TitleOf(L"C:\\jobs\\job12.ps"));
  EXPECT_EQ(L"a.b", TitleOf(L"C:\\jobs\\a.b.ps"));
  EXPECT_EQ(L"jobs", TitleOf(L"C:\\jobs.d\\job"));
  EXPECT_EQ(L"", TitleOf(L"C:\\jobs\\.ps"));
  EXPECT_EQ(L"/home/jobs/x", TitleOf(L"/home/jobs/x.ps"));
  EXPECT_EQ(L"x", TitleOf(L"x.ps"));
}

TEST(PathNames, without_a_dot_both_raise) {
  for (const wchar_t* const path : {L"", L"job", L"C:\\jobs\\job"}) {
    EXPECT_THROW(static_cast<void>(PrefixPathOf(path)), std::length_error);
    EXPECT_THROW(static_cast<void>(TitleOf(path)), std::length_error);
    EXPECT_THROW(static_cast<void>(TitleSection(path)), std::length_error);
  }
}

TEST(PathNames, the_title_section_is_a_comment_between_empty_lines) {
  EXPECT_EQ(L"\n%%Title: job12\n\n", TitleSection(L"C:\\jobs\\job12.ps"));
}

}  // namespace
