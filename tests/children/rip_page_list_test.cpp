#include "children/corerast/page_list.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "rastrel/cfm/cfm2.h"
#include "rastrel/cfm/cfm_page.h"
#include "rastrel/platform/os/text.h"
#include "tests/support/library_fixture.h"

namespace rastrel::corerast {
namespace {

const std::vector<ListedPage> TwoPages{{"run-1", "/srv/pages/run/", "p0001"},
                                       {"run-2", "R:\\run\\", "p0002"}};

// By hand, after the format's worked example: exactly two blanks and the line feed after "<<".
TEST(PageList, is_written_to_the_byte) {
  EXPECT_EQ(FormatPageList(TwoPages),
            ">> -- C-Format 2.0 -- <<  \n"
            "begin := once\n\tid := run-1\n\tdir := /srv/pages/run/\n\ttitle := p0001\n"
            "\tcopies := 1\nend\n"
            "begin := once\n\tid := run-2\n\tdir := R:\\run\\\n\ttitle := p0002\n"
            "\tcopies := 1\nend\n");
}

TEST(PageList, of_no_page_is_its_heading) {
  EXPECT_EQ(FormatPageList({}), ">> -- C-Format 2.0 -- <<  \n");
}

TEST(PageList, reaches_the_library_page_by_page) {
  const test::LibraryRoot root;
  CCFM2 document;
  document.m_Text = os::WideFromUtf8(FormatPageList(TwoPages));
  ASSERT_TRUE(document.Parse());
  ASSERT_EQ(document.m_Pages.size(), 2U);
}

TEST(PlainValue, is_one_that_the_reader_gives_back) {
  for (const char* const value : {"p0001", "/srv/pages/", "R:\\a b\\", "a := b",
                                  "/gr\xC3\xBC"
                                  "n/",
                                  "/Begin/End/", "/a<<b/"}) {
    EXPECT_TRUE(IsPlainValue(value)) << value;
  }
}

TEST(PlainValue, holds_no_keyword_comment_or_control_character) {
  for (const char* const value :
       {"", " a", "a ", "/weekend/", "/beginners/", "/a>b/", "/a>>b<</", "/a\nb/", "/a\rb/",
        "/a\tb/", "/a\x07/", "/a\x7F/", "/\xFF/", "/\xC3"}) {
    EXPECT_FALSE(IsPlainValue(value)) << value;
  }
}

}  // namespace
}  // namespace rastrel::corerast
