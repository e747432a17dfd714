#include "rastrel/prefix/path_names.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

using namespace rastrel::prefix;

TEST(PathNames, the_prefix_takes_the_place_of_the_last_extension) {
  EXPECT_EQ(PrefixPathOf(L"C:\\jobs\\job12.ps"), L"C:\\jobs\\job12.psp");
  EXPECT_EQ(PrefixPathOf(L"C:\\jobs\\a.b.ps"), L"C:\\jobs\\a.b.psp");
  EXPECT_EQ(PrefixPathOf(L"C:\\jobs.d\\job"), L"C:\\jobs.psp");
  EXPECT_EQ(PrefixPathOf(L"C:\\jobs\\.ps"), L"C:\\jobs\\.psp");
  EXPECT_EQ(PrefixPathOf(L"job."), L"job.psp");
}

TEST(PathNames, the_title_stands_behind_the_last_backslash) {
  EXPECT_EQ(TitleOf(L"C:\\jobs\\job12.ps"), L"job12");
  EXPECT_EQ(TitleOf(L"C:\\jobs\\a.b.ps"), L"a.b");
  EXPECT_EQ(TitleOf(L"C:\\jobs.d\\job"), L"jobs");
  EXPECT_EQ(TitleOf(L"C:\\jobs\\.ps"), L"");
  EXPECT_EQ(TitleOf(L"/home/jobs/x.ps"), L"/home/jobs/x");
  EXPECT_EQ(TitleOf(L"x.ps"), L"x");
}

TEST(PathNames, without_a_dot_both_raise) {
  for (const wchar_t* const path : {L"", L"job", L"C:\\jobs\\job"}) {
    EXPECT_THROW(static_cast<void>(PrefixPathOf(path)), std::length_error);
    EXPECT_THROW(static_cast<void>(TitleOf(path)), std::length_error);
    EXPECT_THROW(static_cast<void>(TitleSection(path)), std::length_error);
  }
}

TEST(PathNames, the_title_section_is_a_comment_between_empty_lines) {
  EXPECT_EQ(TitleSection(L"C:\\jobs\\job12.ps"), L"\n%%Title: job12\n\n");
}

}  // namespace
