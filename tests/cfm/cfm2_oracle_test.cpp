#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "rastrel/cfm/cfm2.h"
#include "rastrel/cfm/cfm2_text.h"
#include "rastrel/platform/os/text.h"
#include "tests/support/library_fixture.h"
#include "tests/support/literal_cfm2.h"

namespace {

using rastrel::os::Utf8FromWide;
using rastrel::test::LibraryTest;
using rastrel::test::LiteralPage;
using rastrel::test::LiteralReader;

class Cfm2Oracle : public LibraryTest {
 protected:
  LiteralReader Reader() const {
    return LiteralReader(m_Library.RipDirectory() + L"System\\c-out\\");
  }

  static std::vector<LiteralPage> PagesOf(const CCFM2& document) {
    std::vector<LiteralPage> pages;
    for (const auto& page : document.m_Pages)
      pages.push_back({page->m_Id, page->m_Directory, page->m_Title, page->m_TicketType});
    return pages;
  }
};

void CompareComments(const std::wstring& text) {
  std::wstring literal = text;
  const std::wstring log = rastrel::test::RemoveCommentsLiterally(literal);
  bool missingEnd = false;
  ASSERT_EQ(literal, rastrel::cfm::WithoutComments(text, L'\n', missingEnd)) << Utf8FromWide(text);
  ASSERT_EQ(!log.empty(), missingEnd) << Utf8FromWide(text);
}

TEST(Cfm2CommentOracle, every_text_of_ten_marks_agrees) {
  constexpr wchar_t letters[] = {L'>', L'<', L'\n', L'a'};
  for (std::size_t length = 0; length <= 10; ++length) {
    std::wstring text(length, letters[0]);
    for (unsigned number = 0; number < 1U << (2 * length); ++number) {
      for (std::size_t at = 0; at < length; ++at) text[at] = letters[number >> (2 * at) & 3U];
      CompareComments(text);
    }
  }
}

TEST(Cfm2CommentOracle, random_runs_of_marks_agree) {
  std::mt19937 random(7);
  const std::vector<std::wstring> pieces = {L">>", L"<<", L">", L"<", L"\n", L"ab", L" "};
  for (int round = 0; round < 200'000; ++round) {
    std::wstring text;
    for (auto piece = random() % 24; piece > 0; --piece) text += pieces[random() % pieces.size()];
    CompareComments(text);
  }
}

std::wstring RandomText(std::mt19937& random) {
  static const std::vector<std::wstring> pieces = {L">",
                                                   L">>",
                                                   L"<<",
                                                   L"<<   ",
                                                   L"\n",
                                                   L"\n",
                                                   L"\n",
                                                   L"begin",
                                                   L"begin",
                                                   L"begin",
                                                   L"end",
                                                   L"end",
                                                   L"end",
                                                   L":=",
                                                   L" := ",
                                                   L" := ",
                                                   L"title",
                                                   L"title",
                                                   L"title := t\n",
                                                   L"id",
                                                   L"dir",
                                                   L"copies",
                                                   L"once",
                                                   L"only",
                                                   L"reprint",
                                                   L"delete",
                                                   L" ",
                                                   L"\t",
                                                   L"\r",
                                                   L"x",
                                                   L"default",
                                                   L"C:\\a",
                                                   L"/b/",
                                                   L"\u00e9",
                                                   L"Once",
                                                   L"Legend",
                                                   L"=",
                                                   L":",
                                                   L"begin := once\n"};
  std::wstring text;
  for (auto piece = random() % 30; piece > 0; --piece) text += pieces[random() % pieces.size()];
  return text;
}

// Blocks as the RIP writes them, with something odd now and then.
std::wstring NearlyGoodText(std::mt19937& random) {
  static const std::vector<std::wstring> lines = {L"title := t",     L"title := Sign Panel A",
                                                  L"title:=x := y",  L"id := rip42",
                                                  L"dir := default", L"dir := C:\\out",
                                                  L"dir := /a/",     L"copies := 5",
                                                  L"stray",          L"weight := 3",
                                                  L"title := a > b", L"title := Legend",
                                                  L"id :=",          L"> comment",
                                                  L">> c <<  ",      L">> c\n\nd <<  ",
                                                  L"begin := only",  L"\r",
                                                  L"title :=",       L">> c <<"};
  static const std::vector<std::wstring> types = {L"once",   L"reprint", L"only",
                                                  L"delete", L"Once",    L""};
  std::wstring text;
  for (auto block = random() % 4; block > 0; --block) {
    text += L"begin := " + types[random() % types.size()] + L"  \n";
    for (auto line = random() % 6; line > 0; --line)
      text += L"\t" + lines[random() % lines.size()] + L"   \n";
    if (random() % 8 != 0) text += L"end   \n";
    if (random() % 8 == 0) text += lines[random() % lines.size()];
  }
  return text;
}

TEST_F(Cfm2Oracle, the_reader_agrees_on_random_and_hostile_texts) {
  std::mt19937 random(20260204);
  LiteralReader reader = Reader();
  CCFM2 document;
  std::size_t pages = 0;
  for (int batch = 0; batch < 100; ++batch) {
    rastrel::test::LibraryRoot::Forget();
    const std::size_t mark = m_Library.LogMark();
    std::wstring log;
    for (int round = 0; round < 1'000; ++round) {
      document.m_Text = round % 2 == 0 ? RandomText(random) : NearlyGoodText(random);
      const bool expected = reader.Parse(document.m_Text);
      log += reader.Log();
      ASSERT_EQ(expected, document.Parse()) << Utf8FromWide(document.m_Text);
      ASSERT_EQ(reader.Pages(), PagesOf(document)) << Utf8FromWide(document.m_Text);
      pages += reader.Pages().size();
    }
    ASSERT_EQ(Utf8FromWide(log), m_Library.LogTextsBehind(mark));
  }
  EXPECT_LT(10'000U, pages);  // otherwise the texts would prove little
}

TEST_F(Cfm2Oracle, the_writer_agrees_on_random_documents) {
  std::mt19937 random(5);
  const std::vector<std::wstring> words = {L"",  L"a", L"Sign Panel",        L"C:\\out\\", L"100%s",
                                           L"%", L">", L"\u20ac \U0001F5A8", L"x\ny"};
  const auto word = [&] { return words[random() % words.size()]; };
  for (int round = 0; round < 5'000; ++round) {
    CCFM2 document;
    std::vector<LiteralPage> pages;
    const std::size_t count = 1 + random() % 4;
    for (std::size_t page = 0; page < count; ++page) {
      auto one = std::make_unique<PrintingThread::CCFMPage>(word(), word());
      one->m_Id = word();
      one->m_TicketType = static_cast<std::int32_t>(random() % 4);
      pages.push_back({one->m_Id, one->m_Directory, one->m_Title, one->m_TicketType});
      document.m_Pages.push_back(std::move(one));
    }
    std::deque<std::int32_t> queue;
    for (auto entry = random() % 5; entry > 0; --entry)
      queue.push_back(static_cast<std::int32_t>(random() % count));
    const std::uint32_t copies = static_cast<std::uint32_t>(random() % 4);
    const std::wstring expected = rastrel::test::GenerateLiterally(pages, copies, queue);
    ASSERT_TRUE(document.Generate(copies, queue));
    ASSERT_EQ(expected, document.m_Text);
    ASSERT_TRUE(std::is_sorted(queue.begin(), queue.end()));
  }
}

TEST_F(Cfm2Oracle, many_comments_are_read_in_a_time_that_grows_with_the_text) {
  // 20 MB of comments; a search from the beginning after each would not end in a test's time.
  CCFM2 document;
  std::wstring text;
  for (int comment = 0; comment < 500'000; ++comment) text += L"> c\n>> d <<  \n";
  document.m_Text = text + L"begin := once\ntitle := t\nend";
  EXPECT_TRUE(document.Parse());
  EXPECT_EQ(document.m_Pages.size(), 1U);
}

}  // namespace
