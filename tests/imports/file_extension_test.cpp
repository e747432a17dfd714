#include "rastrel/imports/file_extension.h"

#include <gtest/gtest.h>

#include "tests/support/scratch_directory.h"

namespace {

using rastrel::imports::ExtensionTrim;
using rastrel::imports::FileExtension;
using rastrel::imports::IsFileOfType;

TEST(FileExtension, is_the_part_after_the_last_dot_of_the_name_in_lower_case) {
  EXPECT_EQ(FileExtension(L"C:\\jobs\\plates.XML"), L"xml");
  EXPECT_EQ(FileExtension(L"a.b.Cro"), L"cro");
  EXPECT_EQ(FileExtension(L"plates.d/plates"), L"");
  EXPECT_EQ(FileExtension(L"plates."), L"");
  EXPECT_EQ(FileExtension(L".xml"), L"xml");
}

TEST(FileExtension, keeps_or_loses_tabs_and_line_ends_at_its_ends) {
  EXPECT_EQ(FileExtension(L"a.\t\r\nxml\v\f ", ExtensionTrim::Whitespace), L"xml");
  EXPECT_EQ(FileExtension(L"a.\t", ExtensionTrim::Whitespace), L"");
  EXPECT_EQ(FileExtension(L"a.\txml ", ExtensionTrim::Spaces), L"\txml");
}

TEST(FileExtension, has_no_spaces_at_its_ends) {
  EXPECT_EQ(FileExtension(L"a. xml  "), L"xml");
  EXPECT_EQ(FileExtension(L"a.  "), L"");
  EXPECT_EQ(FileExtension(L"a.x ml"), L"x ml");
}

TEST(IsFileOfType, wants_something_that_exists_with_one_of_the_extensions) {
  const rastrel::test::ScratchDirectory scratch;
  scratch.Write("a.cml", "");
  EXPECT_TRUE(IsFileOfType(scratch.Wide("a.cml").c_str(), {L"xml", L"cml"}));
  EXPECT_FALSE(IsFileOfType(scratch.Wide("a.cml").c_str(), {L"xml"}));
  EXPECT_FALSE(IsFileOfType(scratch.Wide("b.cml").c_str(), {L"cml"}));
  scratch.Write("b.xml\t", "");
  EXPECT_TRUE(IsFileOfType(scratch.Wide("b.xml\t").c_str(), {L"xml"}, ExtensionTrim::Whitespace));
  EXPECT_FALSE(IsFileOfType(scratch.Wide("b.xml\t").c_str(), {L"xml"}));
  EXPECT_FALSE(IsFileOfType(L"", {L""}));
  EXPECT_FALSE(IsFileOfType(nullptr, {L"xml"}));
}

}  // namespace
