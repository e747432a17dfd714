// Elements that are taken whole and elements that come part by part: no handler sees a difference.

#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/support/library_fixture.h"
#include "tests/support/xml_oracle.h"
#include "tests/support/xml_streaming.h"

namespace {

using rastrel::test::CallsOf;
using rastrel::test::DifferencesInStreaming;

class XmlStreaming : public rastrel::test::LibraryTest {};

std::uint32_t Documents() {
  const char* const wanted = std::getenv("RASTREL_TEST_FILES");
  return wanted == nullptr ? 20000 : static_cast<std::uint32_t>(std::strtoul(wanted, nullptr, 10));
}

TEST_F(XmlStreaming, random_tables_come_the_same_whole_and_in_parts) {
  std::uint32_t sound = 0;
  const std::uint32_t count = Documents();
  for (std::uint32_t seed = 0; seed < count; ++seed) {
    const std::string document = rastrel::test::XmlTables(seed).Next(12);
    ASSERT_EQ(DifferencesInStreaming(document, 1 + seed % 40, seed), "") << seed << "\n"
                                                                         << document;
    sound += CallsOf(document, {}).find("refused") == std::string::npos ? 1 : 0;
  }
  // A generator of faults alone, or of none, would show nothing.
  EXPECT_GT(sound, count / 4);
  EXPECT_LT(sound, count * 19 / 20);
}

TEST_F(XmlStreaming, random_documents_come_the_same_whole_and_in_parts) {
  rastrel::test::XmlDocuments documents(77);
  for (std::uint32_t choices = 0; choices < 6000; ++choices) {
    const std::string document = documents.Next();
    ASSERT_EQ(DifferencesInStreaming(document, 1 + choices % 9, choices), "") << document;
  }
}

// A piece of reading ends somewhere in a row, and some rows are longer than a piece.
TEST_F(XmlStreaming, long_tables_come_the_same_whole_and_in_parts) {
  for (std::uint32_t seed = 0; seed < 12; ++seed) {
    const std::string document = rastrel::test::XmlTables(seed).Next(9000);
    ASSERT_EQ(DifferencesInStreaming(document, 1000 + 999 * seed, seed), "") << seed;
  }
}

TEST_F(XmlStreaming, a_row_of_any_length_comes_the_same_whole_and_in_parts) {
  constexpr std::size_t window = std::size_t{128} << 10;
  for (const std::size_t size : {window - 40, window - 20, window - 1, window, window + 1,
                                 window + 20, 2 * window, 3 * window + 7}) {
    std::string row = "<row>";
    while (row.size() + 6 < size) row += "<c>1</c>";
    row += "</row>";
    for (const std::size_t blanks : {0, 1, 5, 11}) {
      const std::string document =
          "<t><data>" + std::string(blanks, ' ') + row + "<row/>" + row + "</data></t>";
      ASSERT_EQ(DifferencesInStreaming(document, 0, 0), "") << size << " " << blanks;
      ASSERT_EQ(DifferencesInStreaming(document, 0, 2), "") << size << " " << blanks;
    }
  }
}

TEST_F(XmlStreaming, a_table_that_is_cut_anywhere_is_refused_the_same) {
  const std::string document =
      "<?xml version='1.0'?>\n<t xmlns:p='u'><data>\n<row r='1'><c p:n=\"x\"><v>1 \xC3\xA9</v>"
      "</c></row><row/>\n<row>&amp;<c/></row><row><v>]</v></row ></data></t>";
  for (std::size_t size = 0; size < document.size(); ++size)
    for (std::uint32_t choices = 0; choices < 12; ++choices)
      ASSERT_EQ(DifferencesInStreaming(document.substr(0, size), 1 + size % 7, choices), "")
          << size;
}

TEST_F(XmlStreaming, comments_that_begin_with_a_bracket_are_comments_wherever_they_stand) {
  for (const std::string comment :
       {"<!--> c -->", "<!---> c -->", "<!-->\n<t>-->", "<!---->", "<!--> <!-->"}) {
    const std::string padding(70, ' ');
    // Too long to lie in the least that the parser is given.
    const std::string longer =
        comment.substr(0, comment.size() - 3) + padding + "> " + padding + "> " + padding + "-->";
    for (const std::string& document :
         {comment + "<t><d><r/></d></t>", "<?xml version='1.0'?>" + comment + "<t><d/></t>",
          "<t>" + comment + "<d>" + comment + "<r/></d>" + comment + "</t>", longer + "<t/>",
          "<?i?>" + longer + "<t/>", "<t><d/></t>" + longer, longer + longer + "<t/>",
          "<t><d><r/></d></t>" + comment, "<t><d><r/></d></t>" + padding + comment + comment}) {
      EXPECT_EQ(CallsOf(document, {}).find("refused"), std::string::npos) << document;
      EXPECT_EQ(DifferencesInStreaming(document, 0, 0), "") << document;
    }
  }
}

TEST_F(XmlStreaming, the_calls_show_all_differences) {
  EXPECT_EQ(CallsOf("<t><d>\n<r a='1'><c/>x</r></d></t>", {}),
            "\nbegin 0 t@1\nbegin 1 d@1\nbegin 2 r@2 a=[1]\nnode (0 r@2 a=[1](0 c@2)(1 [x]))"
            "\nend 1 d\nend 0 t");
  EXPECT_NE(CallsOf("<t><d><r a='1'/></d></t>", {}), CallsOf("<t><d><r a='2'/></d></t>", {}));
}

}  // namespace
