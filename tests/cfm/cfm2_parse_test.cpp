#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

#include "rastrel/cfm/cfm2.h"
#include "rastrel/cfm/cfm2_text.h"
#include "tests/support/library_fixture.h"
#include "tests/support/literal_cfm2.h"
#include "tests/support/private_member.h"

namespace {

using rastrel::test::LibraryTest;
using rastrel::test::LiteralPage;
using rastrel::test::Once;
using rastrel::test::Only;
using rastrel::test::Reprint;

class Cfm2Parse : public LibraryTest {
 protected:
  bool Parse(const std::wstring& text) {
    m_Mark = m_Library.LogMark();
    m_Document.m_Text = text;
    const bool result = m_Document.Parse();
    EXPECT_EQ(text, m_Document.m_Text);
    return result;
  }
  [[nodiscard]] std::string Logged() const { return m_Library.LogTextsBehind(m_Mark); }
  [[nodiscard]] std::size_t Count() const { return m_Document.m_Pages.size(); }
  [[nodiscard]] LiteralPage Page(std::size_t index) const {
    const auto& page = *m_Document.m_Pages.at(index);
    return {page.m_Id, page.m_Directory, page.m_Title, page.m_TicketType};
  }
  [[nodiscard]] std::wstring Output() const {
    return m_Library.RipDirectory() + L"System\\c-out\\";
  }

  CCFM2 m_Document;
  std::size_t m_Mark = 0;
};

TEST_F(Cfm2Parse, the_document_has_no_virtual_operations) {
  EXPECT_FALSE(std::is_polymorphic_v<CCFM2>);
  EXPECT_LT(rastrel::test::PlaceOf(m_Document.m_Pages), rastrel::test::PlaceOf(m_Document.m_Text));
}

TEST_F(Cfm2Parse, the_worked_example) {
  EXPECT_TRUE(
      Parse(L">> -- C-Format 2.0 -- <<  \n"
            L"begin := once  \n"
            L"\tid := rip42   \n"
            L"\tdir := default   \n"
            L"\ttitle := Sign Panel A   \n"
            L"\tcopies := 1   \n"
            L"end   \n"));
  ASSERT_EQ(Count(), 1U);
  EXPECT_EQ((LiteralPage{L"rip42", Output(), L"Sign Panel A", Once}), Page(0));
  EXPECT_EQ(Logged(), "");
}

TEST_F(Cfm2Parse, every_ticket_type_has_its_number) {
  const std::pair<const wchar_t*, int> rows[] = {
      {L"once", 0}, {L"reprint", 1}, {L"only", 2}, {L"delete", 3}};
  for (const auto& [word, type] : rows) {
    EXPECT_TRUE(Parse(std::wstring(L"begin := ") + word + L"\ntitle := t\nend"));
    EXPECT_EQ(type, Page(0).type);
  }
}

TEST_F(Cfm2Parse, a_capital_letter_makes_a_type_unknown_and_the_page_a_reprint) {
  EXPECT_TRUE(Parse(L"begin := Once\ntitle := t\nend"));
  EXPECT_EQ(Page(0).type, Reprint);
  EXPECT_EQ(Logged(), "Unknown ticket type: Once\r\n");
}

TEST_F(Cfm2Parse, a_begin_without_a_value_is_a_reprint_without_a_word) {
  EXPECT_TRUE(Parse(L"begin\ntitle := t\nend"));
  EXPECT_EQ(Page(0).type, Reprint);
  EXPECT_EQ(Logged(), "");
  EXPECT_TRUE(Parse(L"begin :=\ntitle := t\nend"));
  EXPECT_EQ(Logged(), "Unknown ticket type: \r\n");
}

TEST_F(Cfm2Parse, of_several_lines_with_one_keyword_the_last_counts) {
  EXPECT_TRUE(
      Parse(L"begin := once\ntitle := a\nid := 1\ntitle := b\nid := 2\nbegin := only\ndir := "
            L"x\ndir := y\nend"));
  EXPECT_EQ((LiteralPage{L"2", L"y\\", L"b", Only}), Page(0));
}

TEST_F(Cfm2Parse, an_unknown_keyword_is_named_and_the_page_stays) {
  EXPECT_TRUE(Parse(L"begin := once\nTitle := x\nweight := 5 := 6\ntitle := t\nend"));
  EXPECT_EQ(Page(0).title, L"t");
  EXPECT_EQ(
      Logged(),
      "Unknown instruction: Title, value: x\r\nUnknown instruction: weight, value: 5 := 6\r\n");
}

TEST_F(Cfm2Parse, a_line_is_split_at_its_first_separator_and_trimmed) {
  EXPECT_TRUE(Parse(L"begin:=once\n\t \r\a\f\vtitle\t:=\va  b := c\f\r\nid:=i\nend"));
  EXPECT_EQ((LiteralPage{L"i", Output(), L"a  b := c", Once}), Page(0));
}

TEST_F(Cfm2Parse, a_line_without_a_separator_is_ignored_without_a_word) {
  EXPECT_TRUE(Parse(L"begin := once\nstray line : = x\n\ntitle := t\nend"));
  EXPECT_EQ(Logged(), "");
}

TEST_F(Cfm2Parse, without_id_and_dir_a_page_has_the_defaults) {
  EXPECT_TRUE(Parse(L"begin := once\ntitle := t\nend"));
  EXPECT_EQ((LiteralPage{L"QueueCMF2Generator", Output(), L"t", Once}), Page(0));
}

TEST_F(Cfm2Parse, a_page_without_a_title_is_rejected_and_the_others_stay) {
  EXPECT_FALSE(
      Parse(L"begin := once\ntitle := a\nend begin := once\nid := x\nend begin := only\ntitle := "
            L"c\nend"));
  ASSERT_EQ(Count(), 2U);
  EXPECT_EQ(Page(0).title, L"a");
  EXPECT_EQ(Page(1).title, L"c");
  EXPECT_EQ(Logged(), "");
}

TEST_F(Cfm2Parse, an_empty_id_or_title_rejects_the_page_and_an_empty_dir_does_not) {
  EXPECT_FALSE(Parse(L"begin := once\nid :=  \ntitle := t\nend"));
  EXPECT_EQ(Count(), 0U);
  EXPECT_FALSE(Parse(L"begin := once\ntitle := \t\nend"));
  EXPECT_EQ(Count(), 0U);
  EXPECT_TRUE(Parse(L"begin := once\ndir :=\ntitle := t\nend"));
  EXPECT_EQ(Page(0).directory, L"\\");
}

TEST_F(Cfm2Parse, copies_have_no_effect) {
  EXPECT_TRUE(Parse(L"begin := once\ntitle := t\ncopies := 5\nend"));
  EXPECT_EQ(Count(), 1U);
  EXPECT_EQ(Logged(), "");
}

TEST_F(Cfm2Parse, without_a_begin_there_is_no_page) {
  for (const wchar_t* const text :
       {L"", L"end", L"Begin := once\ntitle := t\nend", L"title := t\nend"}) {
    EXPECT_FALSE(Parse(text));
    EXPECT_EQ(Count(), 0U);
  }
}

TEST_F(Cfm2Parse, a_begin_without_an_end_stops_and_the_pages_before_it_count) {
  EXPECT_TRUE(Parse(L"begin := once\ntitle := a\nend\nbegin := once\ntitle := b\n"));
  EXPECT_EQ(Count(), 1U);
  EXPECT_FALSE(Parse(L"begin := once\ntitle := b\n"));
  EXPECT_EQ(Count(), 0U);
}

TEST_F(Cfm2Parse, a_title_that_holds_end_is_read_whole_and_ends_its_block) {
  EXPECT_TRUE(Parse(L"begin := once\ntitle := Legend\nid := lost\nend"));
  ASSERT_EQ(Count(), 1U);
  EXPECT_EQ((LiteralPage{L"QueueCMF2Generator", Output(), L"Legend", Once}), Page(0));
  EXPECT_TRUE(Parse(L"begin := once\ntitle := Calendar\nid := lost\nend"));
  EXPECT_EQ(Page(0).title, L"Calend");
}

TEST_F(Cfm2Parse, a_directory_that_holds_end_is_cut_and_its_page_rejected) {
  EXPECT_FALSE(Parse(L"begin := once\ndir := C:\\Vendor\\spool\\\ntitle := t\nend"));
  EXPECT_EQ(Count(), 0U);
  // With the title first the cut directory shows.
  EXPECT_TRUE(Parse(L"begin := once\ntitle := t\ndir := C:\\Vendor\\spool\\\nend"));
  EXPECT_EQ(Page(0).directory, L"C:\\Vend\\");
}

TEST_F(Cfm2Parse, words_inside_words_open_blocks_too) {
  EXPECT_TRUE(Parse(L"The beginning := nothing\ntitle := t\nbackend"));
  EXPECT_EQ(Page(0).title, L"t");
  EXPECT_EQ(Logged(), "Unknown instruction: beginning, value: nothing\r\n");
}

TEST_F(Cfm2Parse, a_mark_in_a_title_cuts_the_title_there) {
  EXPECT_TRUE(Parse(L"begin := once\ntitle := a > b\nid := i\nend"));
  EXPECT_EQ((LiteralPage{L"i", Output(), L"a", Once}), Page(0));
}

TEST_F(Cfm2Parse, two_marks_in_a_title_without_an_end_cut_the_whole_text) {
  EXPECT_FALSE(Parse(L"begin := once\ntitle := a >> b\nid := i\nend"));
  EXPECT_EQ(Count(), 0U);
  EXPECT_EQ(Logged(), "No comment end in CFF2");
}

TEST_F(Cfm2Parse, a_missing_comment_end_keeps_the_pages_before_it) {
  EXPECT_TRUE(Parse(L"begin := once\ntitle := a\nend\n>> no end begin := once\ntitle := b\nend"));
  EXPECT_EQ(Count(), 1U);
  EXPECT_EQ(Logged(), "No comment end in CFF2");
}

TEST_F(Cfm2Parse, carriage_returns_are_trimmed_away) {
  EXPECT_TRUE(Parse(L"begin := once\r\ntitle := t\r\nid := i\r\nend\r\n"));
  EXPECT_EQ((LiteralPage{L"i", Output(), L"t", Once}), Page(0));
}

TEST_F(Cfm2Parse, a_comment_takes_three_characters_behind_its_end) {
  EXPECT_TRUE(Parse(L">> c <<  \nbegin := once\ntitle := t\nend"));
  // One character after it: the line that follows loses two, and here that is the word's start.
  EXPECT_FALSE(Parse(L">> c <<\nbegin := once\ntitle := t\nend"));
}

TEST_F(Cfm2Parse, may_be_repeated_and_starts_from_an_empty_list) {
  EXPECT_TRUE(Parse(L"begin := once\ntitle := a\nend"));
  EXPECT_TRUE(m_Document.Parse());
  EXPECT_EQ(Count(), 1U);
  EXPECT_FALSE(Parse(L""));
  EXPECT_EQ(Count(), 0U);
}

TEST_F(Cfm2Parse, a_null_and_characters_beyond_the_first_plane_stay) {
  const std::wstring title = std::wstring(L"a") + L'\0' + L"\U0001F5A8";
  EXPECT_TRUE(Parse(L"begin := once\ntitle := " + title + L"\nend"));
  EXPECT_EQ(title, Page(0).title);
}

struct CommentRow {
  const wchar_t *text, *rest;
  bool missingEnd = false;
};

TEST(Cfm2Comments, are_removed_as_the_format_says) {
  const CommentRow rows[] = {
      {L"", L""},
      {L"no comment", L"no comment"},
      {L"a>b\nc", L"a\nc"},
      {L"a>b", L"a"},
      {L"a>", L"a"},
      {L">", L""},
      {L">\n", L"\n"},
      {L"a>b>c\nd", L"a\nd"},
      {L"a>b>>c\nd", L"a\nd"},
      {L">><<123x", L"x"},
      {L">><<12", L""},
      {L">><<", L""},
      {L"a>>b<<   c", L"ac"},
      {L"a>>b<<  \nc", L"a\nc"},
      {L"a>>b<<\n\n\nc", L"a\nc"},
      {L"a>>1\n2\n3\n4\n5<<   c", L"a\nc"},
      {L"a>>b<<\n", L"a\n"},
      {L"a>>b\n<<", L"a\n"},
      {L"a>>b<c<<   d", L"ad"},
      {L"a>>b>>c<<   d<<   e", L"ad<<   e"},
      {L"a<<b", L"a<<b"},
      {L"a<<>>b", L"a<<", true},
      {L"a>>b", L"a", true},
      {L"a>>", L"a", true},
      {L"a>>b<", L"a", true},
      {L"a>>>b<<   c", L"ac"},
      {L">>a<<>>>b<<123c", L"b<<123c"},
      {L">>a<<xy>b<<\nc", L"b<<\nc"},
      {L">>a<<x>y\nz", L"\nz"},
  };
  for (const CommentRow& row : rows) {
    bool missingEnd = false;
    EXPECT_EQ(row.rest, rastrel::cfm::WithoutComments(row.text, L'\n', missingEnd))
        << std::wstring(row.text);
    EXPECT_EQ(row.missingEnd, missingEnd) << std::wstring(row.text);
  }
}

}  // namespace
