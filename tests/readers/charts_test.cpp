#include "rastrel/readers/charts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cwchar>

#include "tests/readers/written_file.h"
#include "tests/support/comma_locale.h"

namespace {

using rastrel::test::ExamplePath;
using rastrel::test::Many;
using rastrel::test::WrittenFile;

// A text of a question: the interface takes no constant ones.
class Question {
 public:
  Question(const wchar_t* text) : m_Text(text) {}  // NOLINT(google-explicit-constructor)
  operator wchar_t*() { return m_Text.data(); }    // NOLINT(google-explicit-constructor)

 private:
  std::wstring m_Text;
};

// A number with a point whatever the locale.
std::string Text(double number) {
  std::array<char, 40> text{};
  return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
}

// The answers as texts; "none" if the reader found none.

std::string TrademarkOf(const std::wstring& path, Question mark, Question quality) {
  CHTrademarkXMLReader reader(mark, quality, path.c_str(), nullptr);
  wchar_t target[CHTrademarkXMLReader::FileSize] = L"untouched";
  const bool found = reader.GetTrademarkFile(target);
  EXPECT_EQ(found, reader.m_bValid);
  const std::wstring answer = target;
  if (!found) {
    EXPECT_EQ(answer, L"untouched");
    EXPECT_STREQ(reader.m_TrademarkFile, L"");
    return "none";
  }
  return {answer.begin(), answer.end()};
}

std::string Trademark(const std::string& files, Question mark, Question quality) {
  const WrittenFile file("<TRADEMARKCHART>" + files + "</TRADEMARKCHART>");
  return TrademarkOf(file.Path(), mark, quality);
}

std::string SymbolOf(const std::wstring& path, Question size) {
  const CHSymbolChartXMLReader reader(size, path.c_str(), nullptr);
  const std::string text =
      Text(reader.m_Height) + " " + Text(reader.m_Trademark) + " " + Text(reader.m_SigHeight);
  if (!reader.m_bValid) {
    EXPECT_EQ(text, "0 0 0");
    return "none";
  }
  return text;
}

std::string Symbol(const std::string& rings, Question size) {
  const WrittenFile file("<SYMBOLTABLE>" + rings + "</SYMBOLTABLE>");
  return SymbolOf(file.Path(), size);
}

std::string FontOf(const std::wstring& path, const std::wstring& node) {
  wchar_t font[CHFontXMLReader::FontSize + 4];
  std::fill(std::begin(font), std::end(font), L'#');
  std::wcscpy(font, node.c_str());
  const CHFontXMLReader reader(font, path.c_str(), nullptr);
  EXPECT_EQ(std::wstring_view(font + CHFontXMLReader::FontSize, 4), L"####");
  const std::wstring answer = font;
  if (!reader.m_bValid) {
    EXPECT_EQ(answer, node);
    return "none";
  }
  return {answer.begin(), answer.end()};
}

std::string Font(const std::string& entries, const std::wstring& node) {
  const WrittenFile file("<FONTTABLE>" + entries + "</FONTTABLE>");
  return FontOf(file.Path(), node);
}

std::string CopyrightOf(const std::wstring& path, Question style, Question size, Question font,
                        Question rows, Question finger) {
  const CHCopyrightEngravingXMLReader reader(style, size, font, rows, finger, path.c_str(),
                                             nullptr);
  if (!reader.m_bValid) {
    EXPECT_EQ(reader.m_FontSize, 0);
    return "none";
  }
  return Text(reader.m_FontSize);
}

std::string Copyright(const std::string& entries, Question finger) {
  const WrittenFile file("<COPYRIGHTENGRAVING><ENTRIES>" + entries +
                         "</ENTRIES></COPYRIGHTENGRAVING>");
  return CopyrightOf(file.Path(), L"s", L"4", L"f", L"1", finger);
}

// An entry of the question s, 4, f, 1.
std::string Entry(const std::string& rule, const std::string& size) {
  return "<ENTRY><RINGSTYLE>s</RINGSTYLE><STYLESIZE>4</STYLESIZE><FONT>f</FONT><NUMROWS>1"
         "</NUMROWS><FINGERSIZE>" +
         rule + "</FINGERSIZE><FONTSIZE>" + size + "</FONTSIZE></ENTRY>";
}

std::string CapsOf(const std::wstring& path) {
  std::vector<std::wstring> words{L"before"};
  const CHCapRulesXMLReader reader(words, path.c_str(), nullptr);
  EXPECT_EQ(words.front(), L"before");
  if (!reader.m_bValid) {
    EXPECT_EQ(words.size(), 1U);
    return "none";
  }
  std::string text = "words";
  for (std::size_t index = 1; index < words.size(); ++index)
    text += ":" + std::string(words[index].begin(), words[index].end());
  return text;
}

std::string Caps(const std::string& content) {
  const WrittenFile file(content);
  return CapsOf(file.Path());
}

std::string AllOf(const std::wstring& path) {
  return TrademarkOf(path, L"m", L"q") + "|" + SymbolOf(path, L"4") + "|" + FontOf(path, L"n") +
         "|" + CopyrightOf(path, L"s", L"4", L"f", L"1", L"5") + "|" + CapsOf(path);
}

const std::string Gull = "<FILE name='g.eps'><WJMO>Gull</WJMO><QUALITY>Extra Fine</QUALITY></FILE>";
const std::string Caps2 = "<CAPSET><SPECIAL><CASE>McA</CASE><CASE>deV</CASE></SPECIAL></CAPSET>";

TEST(Charts, a_null_path_one_of_four_characters_and_one_of_no_file_fail) {
  const rastrel::test::ScratchDirectory scratch;
  const std::filesystem::path before = std::filesystem::current_path();
  scratch.Write("abcd", Caps2);
  scratch.Write("abcde", Caps2);
  std::filesystem::current_path(scratch.Path());
  EXPECT_EQ(CapsOf(L"abcd"), "none");
  EXPECT_EQ(CapsOf(L"abcde"), "words:McA:deV");
  EXPECT_EQ(AllOf(L"abcd"), "none|none|none|none|none");
  std::filesystem::current_path(before);
  EXPECT_EQ(AllOf(L"/no/such/file.xml"), "none|none|none|none|none");
  EXPECT_EQ(AllOf(scratch.Wide()), "none|none|none|none|none");
  std::vector<std::wstring> words;
  Question text = L"a";
  EXPECT_FALSE(CHCapRulesXMLReader(words, nullptr, nullptr).m_bValid);
  EXPECT_FALSE(CHTrademarkXMLReader(text, text, nullptr, nullptr).m_bValid);
  EXPECT_FALSE(CHSymbolChartXMLReader(text, nullptr, nullptr).m_bValid);
  EXPECT_FALSE(CHFontXMLReader(text, nullptr, nullptr).m_bValid);
  EXPECT_FALSE(
      CHCopyrightEngravingXMLReader(text, text, text, text, text, nullptr, nullptr).m_bValid);
}

TEST(Charts, another_root_fails_but_is_a_chart_without_words_for_capitals) {
  const WrittenFile file("<OTHER/>");
  EXPECT_EQ(AllOf(file.Path()), "none|none|none|none|words");
}

TEST(Charts, a_document_that_is_not_well_formed_fails_for_all_five) {
  for (const char* const content : {"", "<OTHER>", "<!DOCTYPE OTHER><OTHER/>", "OTHER"}) {
    const WrittenFile file(content);
    EXPECT_EQ(AllOf(file.Path()), "none|none|none|none|none") << content;
  }
}

TEST(Charts, the_extension_does_not_matter) {
  const WrittenFile file(Caps2, "chart.dat");
  EXPECT_EQ(CapsOf(file.Path()), "words:McA:deV");
}

TEST(Charts, null_texts_of_a_question_are_empty_ones) {
  const WrittenFile file("<TRADEMARKCHART><FILES><FILE name='f'/></FILES></TRADEMARKCHART>");
  CHTrademarkXMLReader reader(nullptr, nullptr, file.Path().c_str(), nullptr);
  EXPECT_TRUE(reader.m_bValid);
  EXPECT_FALSE(CHSymbolChartXMLReader(nullptr, file.Path().c_str(), nullptr).m_bValid);
  EXPECT_FALSE(CHFontXMLReader(nullptr, file.Path().c_str(), nullptr).m_bValid);
  const WrittenFile copyright(
      "<COPYRIGHTENGRAVING><ENTRIES><ENTRY><FONTSIZE>2</FONTSIZE></ENTRY></ENTRIES>"
      "</COPYRIGHTENGRAVING>");
  EXPECT_EQ(CHCopyrightEngravingXMLReader(nullptr, nullptr, nullptr, nullptr, nullptr,
                                          copyright.Path().c_str(), nullptr)
                .m_FontSize,
            2);
  EXPECT_FALSE(reader.GetTrademarkFile(nullptr));
}

TEST(Charts, the_stream_is_never_written_to) {
  std::FILE* const stream = std::tmpfile();
  ASSERT_NE(stream, nullptr);
  std::vector<std::wstring> words;
  const CHCapRulesXMLReader caps(words, L"/no/such/file.xml", stream);
  Question text = L"a";
  const WrittenFile file("<SYMBOLTABLE><RINGS>");
  const CHSymbolChartXMLReader symbol(text, file.Path().c_str(), stream);
  const CHTrademarkXMLReader trademark(text, text, file.Path().c_str(), stream);
  const CHFontXMLReader font(text, file.Path().c_str(), stream);
  const CHCopyrightEngravingXMLReader copyright(text, text, text, text, text, file.Path().c_str(),
                                                stream);
  EXPECT_EQ(std::ftell(stream), 0);
  std::fclose(stream);
}

TEST(Charts, a_chart_cut_at_any_byte_gives_no_answer) {
  const std::string charts[] = {
      "<TRADEMARKCHART><FILES><FILE name='a'><WJMO>m</WJMO><QUALITY>q</QUALITY></FILE></FILES>"
      "</TRADEMARKCHART>",
      "<SYMBOLTABLE><RINGS><RING size='4'><HEIGHT>1</HEIGHT></RING></RINGS></SYMBOLTABLE>",
      "<FONTTABLE><A node='n'><FONT_NAME>x</FONT_NAME></A></FONTTABLE>",
      "<COPYRIGHTENGRAVING><ENTRIES>" + Entry("L6", "2") + "</ENTRIES></COPYRIGHTENGRAVING>",
      Caps2};
  const char* const answers[] = {"a|none|none|none|words", "none|1 0 0|none|none|words",
                                 "none|none|x|none|words", "none|none|none|2|words",
                                 "none|none|none|none|words:McA:deV"};
  const WrittenFile file("");
  for (std::size_t chart = 0; chart < std::size(charts); ++chart) {
    for (std::size_t length = 0; length < charts[chart].size(); ++length) {
      file.Write(std::string_view(charts[chart]).substr(0, length));
      ASSERT_EQ(AllOf(file.Path()), "none|none|none|none|none") << chart << " " << length;
    }
    file.Write(charts[chart]);
    EXPECT_EQ(AllOf(file.Path()), answers[chart]);
  }
}

TEST(TrademarkChart, the_quality_may_stand_anywhere_in_the_charts_text) {
  const std::string chart = "<FILES>" + Gull + "</FILES>";
  EXPECT_EQ(Trademark(chart, L"Gull", L"Fine"), "g.eps");
  EXPECT_EQ(Trademark(chart, L"Gull", L"Extra Fine"), "g.eps");
  EXPECT_EQ(Trademark(chart, L"Gull", L"tra"), "g.eps");
  EXPECT_EQ(Trademark(chart, L"Gull", L""), "g.eps");
  EXPECT_EQ(Trademark(chart, L"Gull", L"fine"), "none");
  EXPECT_EQ(Trademark(chart, L"Gull", L"Extra Fine Too"), "none");
}

TEST(TrademarkChart, the_mark_is_compared_whole_and_by_case) {
  const std::string chart = "<FILES>" + Gull + "</FILES>";
  EXPECT_EQ(Trademark(chart, L"Gul", L"Fine"), "none");
  EXPECT_EQ(Trademark(chart, L"gull", L"Fine"), "none");
  EXPECT_EQ(Trademark(chart, L"", L"Fine"), "none");
}

TEST(TrademarkChart, a_chart_without_the_list_or_with_an_empty_one_fails) {
  EXPECT_EQ(Trademark("", L"", L""), "none");
  EXPECT_EQ(Trademark("<FILES/>", L"", L""), "none");
  EXPECT_EQ(Trademark("<files>" + Gull + "</files>", L"Gull", L"Fine"), "none");
  EXPECT_EQ(Trademark(Gull, L"Gull", L"Fine"), "none");
  EXPECT_EQ(Trademark("<FILES><OTHER/></FILES>", L"", L""), "none");
}

TEST(TrademarkChart, only_the_first_list_counts) {
  EXPECT_EQ(Trademark("<FILES/><FILES>" + Gull + "</FILES>", L"Gull", L"Fine"), "none");
  EXPECT_EQ(Trademark("<OTHER/><FILES>" + Gull + "</FILES><FILES/>", L"Gull", L"Fine"), "g.eps");
}

TEST(TrademarkChart, the_last_mark_and_quality_of_an_entry_count_and_empty_ones_do_not) {
  const std::string chart =
      "<FILES><FILE name='a'><WJMO>One</WJMO><QUALITY>q</QUALITY><WJMO>Two</WJMO><QUALITY>r"
      "</QUALITY><WJMO/><QUALITY> </QUALITY></FILE></FILES>";
  EXPECT_EQ(Trademark(chart, L"Two", L"r"), "a");
  EXPECT_EQ(Trademark(chart, L"One", L"r"), "none");
  EXPECT_EQ(Trademark(chart, L"Two", L"q"), "none");
}

TEST(TrademarkChart, the_first_of_two_entries_that_match_wins) {
  EXPECT_EQ(Trademark("<FILES>" + Gull +
                          "<FILE name='later'><WJMO>Gull</WJMO><QUALITY>Fine</QUALITY></FILE>"
                          "</FILES>",
                      L"Gull", L"Fine"),
            "g.eps");
}

TEST(TrademarkChart, an_entry_takes_nothing_over_from_the_one_before) {
  const std::string chart =
      "<FILES><FILE name='a'><WJMO>Gull</WJMO><QUALITY>other</QUALITY></FILE><FILE name='b'>"
      "<QUALITY>Fine</QUALITY></FILE><FILE name='c'><WJMO>Gull</WJMO></FILE></FILES>";
  EXPECT_EQ(Trademark(chart, L"Gull", L"Fine"), "none");
  EXPECT_EQ(Trademark(chart, L"", L"Fine"), "b");
}

TEST(TrademarkChart, a_match_without_a_name_is_a_match_with_an_empty_file) {
  EXPECT_EQ(Trademark("<FILES><FILE><WJMO>m</WJMO></FILE></FILES>", L"m", L""), "");
}

TEST(TrademarkChart, a_name_of_259_characters_fits_and_one_more_fails) {
  const auto chart = [](std::size_t count) {
    return "<TRADEMARKCHART><FILES><FILE name='" + Many(count) +
           "'><WJMO>m</WJMO></FILE><FILE name='next'><WJMO>m</WJMO></FILE></FILES>"
           "</TRADEMARKCHART>";
  };
  const WrittenFile fits(chart(259));
  EXPECT_EQ(TrademarkOf(fits.Path(), L"m", L""), Many(259));
  EXPECT_EQ(fits.LogTexts(), "(none)");
  for (const std::size_t count : {260, 261, 5000}) {
    const WrittenFile file(chart(count));
    EXPECT_EQ(TrademarkOf(file.Path(), L"m", L""), "none") << count;
    EXPECT_NE(file.LogTexts().find("name"), std::string::npos) << file.LogTexts();
  }
}

TEST(TrademarkChart, a_name_too_long_in_an_entry_that_does_not_match_is_no_matter) {
  EXPECT_EQ(
      Trademark("<FILES><FILE name='" + Many(300) + "'/>" + Gull + "</FILES>", L"Gull", L"Fine"),
      "g.eps");
}

TEST(TrademarkChart, asking_again_changes_the_file_and_not_the_constructors_values) {
  const WrittenFile file("<TRADEMARKCHART><FILES>" + Gull + "</FILES></TRADEMARKCHART>");
  Question gull = L"Gull";
  Question fine = L"Fine";
  Question other = L"Other";
  CHTrademarkXMLReader reader(other, fine, file.Path().c_str(), nullptr);
  EXPECT_TRUE(reader.ParseFile(gull, fine, file.Path().c_str(), nullptr));
  EXPECT_FALSE(reader.m_bValid);
  EXPECT_STREQ(reader.m_TrademarkFile, L"g.eps");
  wchar_t target[CHTrademarkXMLReader::FileSize] = L"untouched";
  EXPECT_FALSE(reader.GetTrademarkFile(target));
  EXPECT_STREQ(target, L"untouched");
  EXPECT_FALSE(reader.ParseFile(other, fine, file.Path().c_str(), nullptr));
  EXPECT_STREQ(reader.m_TrademarkFile, L"g.eps");
}

TEST(TrademarkChart, copies_copy_the_file) {
  const WrittenFile file("<TRADEMARKCHART><FILES>" + Gull + "</FILES></TRADEMARKCHART>");
  Question gull = L"Gull";
  Question fine = L"Fine";
  const CHTrademarkXMLReader reader(gull, fine, file.Path().c_str(), nullptr);
  CHTrademarkXMLReader copy = reader;
  CHTrademarkXMLReader assigned(gull, fine, L"/no/such/file.xml", nullptr);
  assigned = reader;
  for (CHTrademarkXMLReader* const one : {&copy, &assigned}) {
    wchar_t target[CHTrademarkXMLReader::FileSize] = L"untouched";
    EXPECT_TRUE(one->GetTrademarkFile(target));
    EXPECT_STREQ(target, L"g.eps");
  }
}

TEST(SymbolChart, the_first_ring_of_the_size_wins_and_sizes_are_texts) {
  const std::string chart =
      "<RINGS><RING size='4.0'><HEIGHT>9</HEIGHT></RING><RING size='4'><HEIGHT>1</HEIGHT>"
      "<TRADEMARK>2</TRADEMARK><SIGHEIGHT>3.5</SIGHEIGHT></RING><RING size='4'><HEIGHT>7</HEIGHT>"
      "</RING></RINGS>";
  EXPECT_EQ(Symbol(chart, L"4"), "1 2 3.5");
  EXPECT_EQ(Symbol(chart, L"4.0"), "9 0 0");
  EXPECT_EQ(Symbol(chart, L"04"), "none");
  EXPECT_EQ(Symbol(chart, L" 4"), "none");
}

TEST(SymbolChart, a_child_without_text_leaves_its_field_and_the_last_with_text_counts) {
  EXPECT_EQ(Symbol("<RINGS><RING size='a'><HEIGHT>1</HEIGHT><HEIGHT/><TRADEMARK>x</TRADEMARK>"
                   "<SIGHEIGHT>2</SIGHEIGHT><SIGHEIGHT>3</SIGHEIGHT></RING></RINGS>",
                   L"a"),
            "1 0 3");
}

TEST(SymbolChart, a_ring_without_a_size_matches_nothing) {
  EXPECT_EQ(Symbol("<RINGS><RING/><RING size=''/></RINGS>", L""), "none");
}

TEST(SymbolChart, a_chart_without_the_list_or_with_an_empty_one_fails) {
  EXPECT_EQ(Symbol("<RING size='4'/>", L"4"), "none");
  EXPECT_EQ(Symbol("<RINGS/>", L"4"), "none");
  EXPECT_EQ(Symbol("<RINGS/><RINGS><RING size='4'/></RINGS>", L"4"), "none");
  EXPECT_EQ(Symbol("<RINGS><RING size='4'/></RINGS>", L"4"), "0 0 0");
}

TEST(SymbolChart, copies_copy_the_heights) {
  const WrittenFile file(
      "<SYMBOLTABLE><RINGS><RING size='4'><HEIGHT>1</HEIGHT></RING></RINGS></SYMBOLTABLE>");
  Question four = L"4";
  const CHSymbolChartXMLReader reader(four, file.Path().c_str(), nullptr);
  const CHSymbolChartXMLReader copy = reader;
  CHSymbolChartXMLReader assigned(four, L"/no/such/file.xml", nullptr);
  assigned = copy;
  EXPECT_TRUE(assigned.m_bValid);
  EXPECT_EQ(assigned.m_Height, 1);
}

TEST(FontTable, any_element_with_the_node_counts_and_the_first_wins) {
  const std::string table =
      "<!-- node --><FONT node='other'/><ANY node='n'><FONT_NAME>Quay Sans</FONT_NAME></ANY>"
      "<FONT node='n'><FONT_NAME>Later</FONT_NAME></FONT>";
  EXPECT_EQ(Font(table, L"n"), "Quay Sans");
  EXPECT_EQ(Font(table, L"N"), "none");
  EXPECT_EQ(Font(table, L"other"), "other");
  EXPECT_EQ(Font("", L"n"), "none");
}

TEST(FontTable, the_last_name_of_an_entry_counts_and_an_empty_one_does_not) {
  EXPECT_EQ(Font("<F node='n'><FONT_NAME>long first name</FONT_NAME><FONT_NAME>b</FONT_NAME>"
                 "<FONT_NAME/><OTHER>c</OTHER></F>",
                 L"n"),
            "b");
}

TEST(FontTable, an_entry_without_a_node_matches_nothing) {
  EXPECT_EQ(Font("<F/><F node=''/>text", L""), "none");
}

TEST(FontTable, a_name_of_255_characters_fits_and_one_more_fails) {
  const auto table = [](std::size_t count) {
    return "<FONTTABLE><F node='n'><FONT_NAME>fits</FONT_NAME><FONT_NAME>" + Many(count) +
           "</FONT_NAME></F></FONTTABLE>";
  };
  const WrittenFile fits(table(255));
  EXPECT_EQ(FontOf(fits.Path(), L"n"), Many(255));
  for (const std::size_t count : {256, 257, 5000}) {
    const WrittenFile file(table(count));
    EXPECT_EQ(FontOf(file.Path(), L"n"), "none") << count;
    EXPECT_NE(file.LogTexts().find("FONT_NAME"), std::string::npos) << file.LogTexts();
  }
}

TEST(CopyrightChart, the_first_entry_whose_rule_holds_wins) {
  const std::string chart =
      Entry("L4.5", "1") + Entry("4.5,6", "2") + Entry("G6", "3") + Entry("0,100", "4");
  EXPECT_EQ(Copyright(chart, L"4"), "1");
  EXPECT_EQ(Copyright(chart, L"4.5"), "2");
  EXPECT_EQ(Copyright(chart, L"6"), "2");
  EXPECT_EQ(Copyright(chart, L"7"), "3");
  EXPECT_EQ(Copyright(Entry("L4.5", "1"), L"5"), "none");
}

TEST(CopyrightChart, each_of_the_four_texts_is_compared_whole_and_by_case) {
  const WrittenFile file("<COPYRIGHTENGRAVING><ENTRIES>" + Entry("0,9", "2") +
                         "</ENTRIES></COPYRIGHTENGRAVING>");
  const std::wstring path = file.Path();
  EXPECT_EQ(CopyrightOf(path, L"s", L"4", L"f", L"1", L"5"), "2");
  EXPECT_EQ(CopyrightOf(path, L"S", L"4", L"f", L"1", L"5"), "none");
  EXPECT_EQ(CopyrightOf(path, L"s", L"4.0", L"f", L"1", L"5"), "none");
  EXPECT_EQ(CopyrightOf(path, L"s", L"4", L"ff", L"1", L"5"), "none");
  EXPECT_EQ(CopyrightOf(path, L"s", L"4", L"f", L"", L"5"), "none");
}

TEST(CopyrightChart, an_entry_takes_nothing_over_from_the_one_before) {
  const std::string first = Entry("L1", "7");
  for (const std::string missing : {"RINGSTYLE", "STYLESIZE", "FONT", "NUMROWS"}) {
    std::string second = Entry("0,9", "2");
    for (const std::string& tag : {"<" + missing + ">", "</" + missing + ">"})
      second.replace(second.find(tag), tag.size(),
                     tag.front() == '<' && tag[1] == '/' ? "</O>" : "<O>");
    EXPECT_EQ(Copyright(first + second, L"5"), "none") << missing;
  }
  // Without a rule only the finger size 0 is met; without a font size it is 0.
  std::string bare = Entry("", "");
  EXPECT_EQ(Copyright(Entry("0,9", "7")
                              .replace(0, 7, "<OTHER>")
                              .replace(Entry("0,9", "7").size() - 8, 8, "</OTHER>") +
                          bare,
                      L"5"),
            "none");
  EXPECT_EQ(Copyright(first + bare, L"0.5"), "7");
  EXPECT_EQ(Copyright(Entry("L-5", "7") + bare, L"0"), "0");
}

TEST(CopyrightChart, the_last_child_of_a_name_counts_and_an_empty_one_does_not) {
  std::string entry = Entry("L1", "3");
  entry.insert(entry.find("</ENTRY>"),
               "<FINGERSIZE>L9</FINGERSIZE><FINGERSIZE/><FONTSIZE>4</FONTSIZE><FONTSIZE/>");
  EXPECT_EQ(Copyright(entry, L"5"), "4");
}

TEST(CopyrightChart, numbers_never_follow_the_locale_and_other_texts_are_0) {
  const rastrel::test::CommaLocale locale;
  EXPECT_EQ(Copyright(Entry("0,9", "1.5"), L"5"), "1.5");
  EXPECT_EQ(Copyright(Entry("0,9", "large"), L"5"), "0");
}

TEST(CopyrightChart, a_chart_without_the_list_or_with_an_empty_one_fails) {
  EXPECT_EQ(Copyright("", L"5"), "none");
  const WrittenFile file("<COPYRIGHTENGRAVING>" + Entry("0,9", "2") + "</COPYRIGHTENGRAVING>");
  EXPECT_EQ(CopyrightOf(file.Path(), L"s", L"4", L"f", L"1", L"5"), "none");
}

TEST(CopyrightChart, copies_copy_the_size) {
  const WrittenFile file(
      "<COPYRIGHTENGRAVING><ENTRIES><ENTRY><RINGSTYLE>a</RINGSTYLE><STYLESIZE>a</STYLESIZE>"
      "<FONT>a</FONT><NUMROWS>a</NUMROWS><FINGERSIZE>G1</FINGERSIZE><FONTSIZE>1.5</FONTSIZE>"
      "</ENTRY></ENTRIES></COPYRIGHTENGRAVING>");
  Question same = L"a";
  Question size = L"5";
  const CHCopyrightEngravingXMLReader reader(same, same, same, same, size, file.Path().c_str(),
                                             nullptr);
  CHCopyrightEngravingXMLReader assigned(same, same, same, same, size, nullptr, nullptr);
  EXPECT_FALSE(assigned.m_bValid);
  assigned = reader;
  const CHCopyrightEngravingXMLReader copy = assigned;
  EXPECT_TRUE(copy.m_bValid);
  EXPECT_EQ(copy.m_FontSize, 1.5);
}

TEST(CapRules, all_words_are_appended_in_order_and_an_empty_entry_is_an_empty_word) {
  EXPECT_EQ(Caps("<CAPSET><SPECIAL><CASE>b</CASE><OTHER>x</OTHER><CASE/><CASE> a </CASE><CASE>b"
                 "</CASE></SPECIAL></CAPSET>"),
            "words:b::a:b");
}

TEST(CapRules, a_chart_without_the_list_or_with_an_empty_one_fails) {
  EXPECT_EQ(Caps("<CAPSET/>"), "none");
  EXPECT_EQ(Caps("<CAPSET><CASE>a</CASE></CAPSET>"), "none");
  EXPECT_EQ(Caps("<CAPSET><SPECIAL/><SPECIAL><CASE>a</CASE></SPECIAL></CAPSET>"), "none");
}

TEST(CapRules, another_root_is_true_and_gives_no_words) {
  EXPECT_EQ(Caps("<capset><SPECIAL><CASE>a</CASE></SPECIAL></capset>"), "words");
  EXPECT_EQ(Caps("<SPECIAL><CASE>a</CASE></SPECIAL>"), "words");
}

TEST(Charts, each_example_answers) {
  EXPECT_EQ(TrademarkOf(ExamplePath("charts/trademarks.xml"), L"Anchor", L"Fine"),
            "anchor-fine.eps");
  EXPECT_EQ(SymbolOf(ExamplePath("charts/symbols.xml"), L"6"), "0.07 0.05 0");
  EXPECT_EQ(FontOf(ExamplePath("charts/fonts.xml"), L"OUTSIDE_TEXT"), "Quay Sans Bold");
  EXPECT_EQ(CopyrightOf(ExamplePath("charts/copyright.xml"), L"Court", L"4", L"Quay Sans Bold",
                        L"1", L"5"),
            "1.1");
  EXPECT_EQ(CapsOf(ExamplePath("charts/capitals.xml")), "words:McArthur:deVries:O'Neill");
}

TEST(Charts, a_reader_is_deleted_as_its_own_type) {
  struct Derived : CHFontXMLReader {
    Derived(wchar_t* font, bool& flag) : CHFontXMLReader(font, nullptr, nullptr), gone(flag) {}
    ~Derived() override { gone = true; }
    bool& gone;
  };
  bool gone = false;
  Question font = L"n";
  CHFontXMLReader* const reader = new Derived(font, gone);
  delete reader;
  EXPECT_TRUE(gone);
}

}  // namespace
