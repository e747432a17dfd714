// The repair of files that are no XML by a little.

#include "rastrel/imports/refused_text.h"

#include <array>
#include <random>
#include <vector>

#include "tests/imports/template_fixture.h"

namespace {

using namespace rastrel::imports;
using rastrel::test::TemplateTest;

constexpr std::array<ReferenceRewrite, 2> Rewrites{{{L"&copy;", L"&#169;"}, {L"&amp;", L"&#38;"}}};
constexpr RepairRules Rules{
    .settingsSection = L"impcml", .defaultCodePage = 1250, .rewrites = Rewrites};

std::wstring Repaired(std::wstring text) { return RepairText(std::move(text), {}); }

TEST(RepairText, a_sound_text_stays) {
  EXPECT_EQ(Repaired(L"<?xml version='1.0'?><a/>"), L"<?xml version='1.0'?><a/>");
  EXPECT_EQ(Repaired(L""), L"");
}

TEST(RepairText, one_character_in_front_is_deleted_and_no_more) {
  EXPECT_EQ(Repaired(L"\xFEFF<a/>"), L"<a/>");
  EXPECT_EQ(Repaired(L"xy<a/>"), L"y<a/>");
  EXPECT_EQ(Repaired(L"x"), L"");
}

TEST(RepairText, a_spaced_declaration_at_the_start_is_closed_up) {
  EXPECT_EQ(Repaired(L"<? xml version='1.0'?><a/>"), L"<?xml version='1.0'?><a/>");
  EXPECT_EQ(Repaired(L"\xFEFF<? xml?><a/>"), L"<?xml?><a/>");
}

TEST(RepairText, a_spaced_declaration_elsewhere_costs_the_third_character_of_the_text) {
  EXPECT_EQ(Repaired(L"<abc><? xml?></abc>"), L"<ac><? xml?></abc>");
  EXPECT_EQ(Repaired(L"<a>\"<? xml\"</a>"), L"<a\"<? xml\"</a>");
}

TEST(RepairText, two_spaces_in_the_declaration_are_not_looked_for) {
  EXPECT_EQ(Repaired(L"<?  xml?><a/>"), L"<?  xml?><a/>");
  EXPECT_EQ(Repaired(L"<? XML?><a/>"), L"<? XML?><a/>");
}

TEST(RepairText, references_are_rewritten_everywhere_and_one_after_the_other) {
  EXPECT_EQ(RepairText(L"<a>&copy;&amp;copy;&copy</a>", Rewrites), L"<a>&#169;&#38;copy;&copy</a>");
  EXPECT_EQ(RepairText(L"<&copy;", Rewrites), L"<&#169;");
  EXPECT_EQ(RepairText(L"<&copy;&copy;", Rewrites), L"<&#169;&#169;");
}

TEST(RepairText, a_rewrite_finds_what_the_one_before_it_made) {
  constexpr std::array<ReferenceRewrite, 2> chain{{{L"&a;", L"&b;"}, {L"&b;", L"c"}}};
  EXPECT_EQ(RepairText(L"<&a;&b;", chain), L"<cc");
}

TEST(RepairText, a_text_of_millions_of_references_takes_one_pass) {
  std::wstring text = L"<";
  for (int count = 0; count < 2'000'000; ++count) text += L"&amp;";
  EXPECT_EQ(RepairText(text, Rewrites).size(), text.size());
}

/// The same repair, literally: one edit after the other on the text, each looked for anew.
std::wstring LiteralRepair(std::wstring text) {
  if (!text.empty() && text.substr(0, 1) != L"<") text = text.substr(1);
  bool isSpaced = false;
  for (std::size_t place = 0; place + 6 <= text.size(); ++place)
    isSpaced = isSpaced || text.compare(place, 6, L"<? xml") == 0;
  if (isSpaced) text = text.substr(0, 2) + text.substr(3);
  for (const ReferenceRewrite& rewrite : Rewrites) {
    std::wstring done;
    while (!text.empty()) {
      const bool isThere = text.starts_with(rewrite.from);
      done += isThere ? std::wstring(rewrite.to) : text.substr(0, 1);
      text = text.substr(isThere ? rewrite.from.size() : 1);
    }
    text = done;
  }
  return text;
}

TEST(RepairText, random_texts_are_repaired_as_a_literal_repair_does) {
  const std::vector<std::wstring> pieces{L"<",     L"?",      L" ",     L"xml",   L"<? xml",
                                         L"<?xml", L"&",      L"copy;", L"&amp;", L"&copy;",
                                         L"amp;",  L"\xFEFF", L"a",     L"<a>",   L"#38;"};
  std::mt19937 random(11);
  for (int round = 0; round < 20000; ++round) {
    std::wstring text;
    for (std::size_t count = random() % 8; count > 0; --count)
      text += pieces[random() % pieces.size()];
    ASSERT_EQ(RepairText(text, Rewrites), LiteralRepair(text)) << testing::PrintToString(text);
  }
}

class RefusedText : public TemplateTest {
 protected:
  /// The text of the document element, or "(none)".
  std::wstring Load(std::string_view content) {
    m_Root = LoadRepairableXmlFile(Write(content, "template.xml"), Rules);
    if (!m_Root) return L"(none)";
    std::wstring text;
    NodeText(m_Root, text);
    return text;
  }

  XmlNode m_Root;
};

TEST_F(RefusedText, a_sound_file_is_read_as_it_is_and_no_setting_is_asked_for) {
  EXPECT_EQ(Load("<?xml version='1.0'?><a>\xC3\xA9&amp;amp;</a>"), L"\u00E9&amp;");
  EXPECT_EQ(Calls().Text(), "");
}

TEST_F(RefusedText, a_refused_file_is_decoded_by_the_code_page_of_its_format) {
  EXPECT_EQ(Load("<a>\xE9\xB9\xC0</a>"), L"\u00E9\u0105\u0154");  // code page 1250
}

TEST_F(RefusedText, a_setting_names_another_code_page) {
  m_Host.m_Settings[{L"impcml", L"CodePage"}] = L"1251";
  EXPECT_EQ(Load("<a>\xC0\xC1</a>"), L"\u0410\u0411");
  EXPECT_TRUE(Calls().Text().find("impcml") != std::string::npos) << Calls().Text();
}

TEST_F(RefusedText, a_file_that_the_repair_mends_leaves_no_failure) {
  EXPECT_EQ(Load("<? xml version='1.0'?><a>&copy;</a>"), L"\u00A9");
  EXPECT_TRUE(rastrel::xml::TakeXmlFailure());
}

TEST_F(RefusedText, a_file_that_stays_refused_leaves_the_reason_of_the_second_reading) {
  EXPECT_EQ(Load("<? xml version='1.0'?>\n<a>\n</b>"), L"(none)");
  const auto state = rastrel::xml::TakeXmlFailure();
  ASSERT_FALSE(state);
  EXPECT_EQ(state.Error().line, 3);
}

TEST_F(RefusedText, the_five_holes_of_code_page_1250_keep_their_values) {
  EXPECT_EQ(Load("<a>x\x81\x83\x88\x90\x98x</a>"), L"x\x81\x83\x88\x90\x98x");
}

TEST_F(RefusedText, a_mark_of_utf_8_is_three_characters_there_and_stays_refused) {
  EXPECT_EQ(Load("\xEF\xBB\xBF<? xml version='1.0'?><a/>"), L"(none)");
}

TEST_F(RefusedText, a_mark_of_utf_8_is_one_character_in_code_page_65001) {
  m_Host.m_Settings[{L"impcml", L"CodePage"}] = L"65001";
  EXPECT_EQ(Load("\xEF\xBB\xBF<? xml version='1.0'?><a>b</a>"), L"b");
}

TEST_F(RefusedText, a_document_type_is_refused_again) {
  EXPECT_EQ(Load("<!DOCTYPE a [<!ENTITY b 'c'>]><a>&b;</a>"), L"(none)");
}

TEST_F(RefusedText, what_is_no_regular_file_is_refused) {
  EXPECT_FALSE(LoadRepairableXmlFile(m_Scratch.Wide(), Rules));
  EXPECT_FALSE(LoadRepairableXmlFile(m_Scratch.Wide("absent.xml"), Rules));
  EXPECT_FALSE(LoadRepairableXmlFile(L"", Rules));
  EXPECT_FALSE(LoadRepairableXmlFile(L"/dev/zero", Rules));
}

/// A refused file of exactly so many bytes that the repair would mend.
std::string RefusedFileOf(std::size_t bytes) {
  const std::string begin = "<? xml version='1.0'?><a>";
  const std::string end = "</a>";
  return begin + std::string(bytes - begin.size() - end.size(), 'b') + end;
}

TEST_F(RefusedText, a_file_is_repaired_up_to_its_limit) {
  EXPECT_EQ(Load(RefusedFileOf(MaximumRefusedBytes - 1)).front(), L'b');
  EXPECT_EQ(Load(RefusedFileOf(MaximumRefusedBytes)).front(), L'b');
  EXPECT_EQ(Load(RefusedFileOf(MaximumRefusedBytes + 1)), L"(none)");
}

}  // namespace
