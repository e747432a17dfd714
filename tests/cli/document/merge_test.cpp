#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <numbers>
#include <string>
#include <vector>

#include "tests/cli/command_runner.h"

namespace rastrel::cli {
namespace {

using nlohmann::json;
using test::CommandResult;
using test::CommandRunner;

constexpr const char* Badge =
    "<ABB>\n<ENGRAVINGTEMPLATE><PLATES/>\n<PLATE><COLOR>Gold</COLOR><WIDTH>3</WIDTH>"
    "<HEIGHT>1</HEIGHT><TEXTCOLOR>Black</TEXTCOLOR><TEXTFRAME>5</TEXTFRAME>"
    "<TEXT data='{Name}'><FONT name='DejaVuSans.ttf' size='0.25'/></TEXT>"
    "</PLATE></ENGRAVINGTEMPLATE></ABB>\n";

class Merge : public ::testing::Test {
 protected:
  CommandResult RunOn(const std::string& content, const std::string& table,
                      std::vector<std::string> more = {}) {
    m_Command.Place().Write("badge.xml", content);
    m_Command.Place().Write("names.csv", table);
    std::vector<std::string> arguments{"merge", "badge.xml", "--data", "names.csv"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return m_Command.Run(arguments);
  }

  static json Row(const CommandResult& result, std::size_t place) {
    return json::parse(result.Lines().at(place));
  }

  CommandRunner m_Command{CommandRunner::Children::None};
};

TEST_F(Merge, a_sheet_of_names_becomes_a_blank_of_badges) {
  const auto result = RunOn(Badge, "Name,Team\nAda,A\nBob,B\nEve,C\n", {"-o", "badges.svg"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(result.output,
            "row 2: placed on page 1\nrow 3: placed on page 1\nrow 4: placed on page 1\n"
            "1 page of 60 by 40 cm: 3 plates, 3 texts, 0 drill points; written to badges.svg\n");
  const std::string drawing = m_Command.Place().Read("badges.svg");
  for (const char* name : {"Ada", "Bob", "Eve"}) EXPECT_NE(drawing.find(name), std::string::npos);
}

TEST_F(Merge, rows_that_the_blank_has_no_room_for_go_to_further_pages) {
  const auto result = RunOn(Badge, "Name\na\nb\nc\n", {"--blank", "3.5x2.5in", "--json"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(Row(result, 0)["pages"], json({1}));
  EXPECT_EQ(Row(result, 1)["pages"], json({1}));
  EXPECT_EQ(Row(result, 2)["pages"], json({2}));
}

TEST_F(Merge, a_template_of_two_plates_makes_two_plates_a_row) {
  std::string two = Badge;
  two.insert(two.find("</ENGRAVINGTEMPLATE>"), "<PLATE><WIDTH>1</WIDTH><HEIGHT>1</HEIGHT></PLATE>");
  const auto result = RunOn(two, "Name\nAda\nBob\n", {"--json"});
  EXPECT_EQ(json::parse(result.LastLine())["plates"], 4);
  EXPECT_EQ(Row(result, 1)["row"], 3);
  EXPECT_EQ(Row(result, 1)["placed"], true);
}

TEST_F(Merge, a_name_that_is_too_long_is_told_with_what_it_lacks) {
  const auto result =
      RunOn(Badge, "Name\nAda\nBartholomew Featherstonehaugh-Cholmondeley\n", {"--json"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(Row(result, 0)["overflowed"], json::array());
  EXPECT_EQ(Row(result, 0)["bad"], false);
  const json bad = Row(result, 1);
  EXPECT_EQ(bad["bad"], true);
  ASSERT_EQ(bad["overflowed"].size(), 1U);
  const json& text = bad["overflowed"][0];
  EXPECT_EQ(text["text"], "Bartholomew Featherstonehaugh-Cholmondel...");
  EXPECT_EQ(text["squeezed"], true);
  // The frame is 90 % of 3 inches wide, and the text as long as the percentage says.
  const double frame = 3 * 25.4 * 0.9;
  EXPECT_NEAR(text["beyond_mm"].get<double>(), frame * (text["percent"].get<double>() / 100 - 1),
              frame / 100 + 0.01);
  EXPECT_GT(text["percent"], 150);
}

TEST_F(Merge, a_text_that_is_too_high_needs_more_than_its_frame) {
  std::string high = Badge;
  high.replace(high.find("0.25"), 4, "2.00");
  const auto result = RunOn(high, "Name\ni\n", {"--json"});
  const json row = Row(result, 0);
  ASSERT_EQ(row["overflowed"].size(), 1U);
  EXPECT_GT(row["overflowed"][0]["percent"], 200);
}

TEST_F(Merge, an_empty_cell_gives_an_empty_text_and_a_line) {
  const auto result = RunOn(Badge, "Name,Team\nAda,A\n,B\n");
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_NE(result.output.find("row 3: placed on page 1; no value for \"Name\"\n"),
            std::string::npos)
      << result.output;
}

TEST_F(Merge, a_missing_font_is_told_of_each_row) {
  std::string other = Badge;
  other.replace(other.find("DejaVuSans.ttf"), 14, "NoSuchFont.ttf");
  const auto result = RunOn(other, "Name\nAda\nBob\n", {"--json"});
  EXPECT_EQ(Row(result, 0)["missing_fonts"], json({"NoSuchFont"}));
  EXPECT_EQ(Row(result, 1)["missing_fonts"], json({"NoSuchFont"}));
}

constexpr const char* Seal =
    "<A><ENGRAVINGTEMPLATE><PLATE><WIDTH>4</WIDTH><HEIGHT>4</HEIGHT><ORIGIN>bottom left</ORIGIN>"
    "<ARCTEXT><CENTERX>2</CENTERX><CENTERY>2</CENTERY><RADIUS>0.5</RADIUS><HEIGHT>0.5</HEIGHT>"
    "<FONT>DejaVuSans.ttf</FONT><JUSTIFY>center</JUSTIFY><TEXT>{Name}</TEXT></ARCTEXT>"
    "</PLATE></ENGRAVINGTEMPLATE></A>";

class MergeOfSeals : public Merge {
 protected:
  CommandResult RunSeals(const std::string& content, const std::string& table) {
    m_Command.Place().Write("seal.llx", content);
    m_Command.Place().Write("names.csv", table);
    return m_Command.Run({"merge", "seal.llx", "--data", "names.csv", "--json"});
  }
};

TEST_F(MergeOfSeals, a_text_that_is_longer_than_its_circle_is_reported_with_what_it_lacks) {
  const auto result = RunSeals(Seal, "Name\nAda\nTown council of Harlow\n");
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(Row(result, 0)["overflowed"], json::array());
  EXPECT_EQ(Row(result, 0)["bad"], false);
  ASSERT_EQ(Row(result, 1)["overflowed"].size(), 1U);
  const json text = Row(result, 1)["overflowed"][0];
  EXPECT_EQ(text["text"], "Town council of Harlow");
  EXPECT_EQ(text["squeezed"], true);
  // The circle is as long as its radius of half an inch says, and the text as the percentage says.
  const double circle = 25.4 * std::numbers::pi;
  EXPECT_NEAR(text["beyond_mm"].get<double>(), circle * (text["percent"].get<double>() / 100 - 1),
              circle / 100 + 0.01);
  EXPECT_GT(text["percent"], 105);
}

TEST_F(MergeOfSeals, a_missing_font_of_a_text_on_a_circle_is_reported_of_each_row) {
  std::string other = Seal;
  other.replace(other.find("DejaVuSans.ttf"), 14, "NoSuchFont.ttf");
  const auto result = RunSeals(other, "Name\nAda\nBob\n");
  EXPECT_EQ(Row(result, 0)["missing_fonts"], json({"NoSuchFont"})) << result.output;
  EXPECT_EQ(Row(result, 1)["missing_fonts"], json({"NoSuchFont"}));
}

TEST_F(MergeOfSeals, letters_that_no_font_has_are_notes) {
  const auto result = RunSeals(Seal, "Name\na\xEE\x80\x80\n");
  ASSERT_EQ(Row(result, 0)["notes"].size(), 1U) << result.output;
  EXPECT_NE(Row(result, 0)["notes"][0].get<std::string>().find("U+E000"), std::string::npos);
}

TEST_F(Merge, a_row_that_is_not_placed_is_told_and_is_a_failure) {
  std::string sized = Badge;
  sized.replace(sized.find("<WIDTH>3<"), 9, "<WIDTH>{W}<");
  const auto result = RunOn(sized, "Name,W\nAda,3\nBob,300\nEve,2\n", {"--json"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(Row(result, 0)["placed"], true);
  EXPECT_EQ(Row(result, 1)["placed"], false);
  EXPECT_EQ(Row(result, 1)["row"], 3);
  EXPECT_EQ(Row(result, 2)["placed"], true);
  EXPECT_NE(Row(result, 1)["notes"].dump().find("does not fit"), std::string::npos);
}

TEST_F(Merge, only_bad_rows_of_a_report_are_merged_again) {
  const std::string table = "Name\nAda\n\nBartholomew Featherstonehaugh-Cholmondeley\nEve\n";
  const auto first = RunOn(Badge, table, {"--json"});
  m_Command.Place().Write("report.json", first.output);
  const auto again = RunOn(Badge, table, {"--json", "--only-bad", "report.json"});
  EXPECT_EQ(again.status, 0) << again.error;
  ASSERT_EQ(again.Lines().size(), 2U);
  EXPECT_EQ(Row(again, 0)["row"], 4);
}

TEST_F(Merge, a_report_without_bad_rows_or_that_is_none_is_refused) {
  m_Command.Place().Write("good.json", RunOn(Badge, "Name\nAda\n", {"--json"}).output);
  const auto good = RunOn(Badge, "Name\nAda\n", {"--only-bad", "good.json"});
  EXPECT_EQ(good.status, 3);
  EXPECT_EQ(good.error, "rastrel: good.json: none of its rows is bad\n");
  const auto none = RunOn(Badge, "Name\nAda\n", {"--only-bad", "names.csv"});
  EXPECT_EQ(none.status, 3);
  EXPECT_EQ(none.error, "rastrel: names.csv: it is no report of `rastrel merge --json`\n");
  m_Command.Place().Write("other.json",
                          "{\"event\":\"merge-row\",\"row\":\"2\",\"bad\":1}\n[1]\n{\n\xFF\n"
                          "{\"event\":\"merge-row\",\"row\":77,\"bad\":true}\n");
  const auto gone = RunOn(Badge, "Name\nAda\n", {"--only-bad", "other.json"});
  EXPECT_EQ(gone.error,
            "rastrel: other.json: the table has none of the rows that it says are bad\n");
}

TEST_F(Merge, a_value_that_the_importer_refuses_is_told_with_its_row) {
  const auto result = RunOn(Badge, "Name\nAda\n" + std::string(300, 'x') + "\n");
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.error,
            "rastrel: names.csv: row 3: badge.xml: the value of data has 300 characters, and its "
            "field has room for 255\n");
}

TEST_F(Merge, a_heading_that_the_table_lacks_ends_it_with_both_lists) {
  const auto result = RunOn(Badge, "Nam,Team\nAda,A\n");
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.error,
            "rastrel: badge.xml:3: the table has no heading \"Name\". The table has the headings "
            "\"Nam\", \"Team\"; the template has the fields \"Name\"\n");
}

TEST_F(Merge, strict_refuses_bad_rows) {
  EXPECT_EQ(RunOn(Badge, "Name\nAda\n", {"--strict"}).status, 0);
  std::string colored = Badge;
  colored.replace(colored.find("<COLOR>Gold"), 11, "<COLOR>{C}");
  const auto result = RunOn(colored, "Name,C\nAda,Gold\nBob,Octarine\n", {"--strict", "--json"});
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(Row(result, 0)["bad"], false);
  EXPECT_EQ(Row(result, 1)["notes"],
            json({"the palette has no colour \"Octarine\"; it becomes black"}));
}

TEST_F(Merge, a_table_without_rows_or_headings_is_refused) {
  EXPECT_EQ(RunOn(Badge, "").error, "rastrel: names.csv: it is empty\n");
  EXPECT_EQ(RunOn(Badge, "\n,,\n").error,
            "rastrel: names.csv: the table is empty: its first row has to have the headings\n");
  EXPECT_EQ(RunOn(Badge, "Name\n").error,
            "rastrel: names.csv: the table has no row below its headings\n");
  EXPECT_EQ(RunOn(Badge, "Name\n\"Ada\n").error,
            "rastrel: names.csv: line 2: a value in double quotes has no end\n");
  const auto missing = m_Command.Run({"merge", "badge.xml", "--data", "none.csv"});
  EXPECT_EQ(missing.status, 3);
  EXPECT_EQ(m_Command.Run({"merge", "badge.xml"}).status, 2);
}

TEST_F(Merge, a_document_is_no_template) {
  EXPECT_EQ(RunOn(Badge, "Name\nAda\n", {"-o", "out.rdoc"}).status, 0);
  const auto result = m_Command.Run({"merge", "out.rdoc", "--data", "names.csv"});
  EXPECT_EQ(result.status, 2);
  EXPECT_NE(result.error.find("a document has no fields"), std::string::npos) << result.error;
}

TEST_F(Merge, values_of_a_spreadsheet_are_those_that_it_shows) {
  m_Command.Place().Write("badge.xml", Badge);
  std::filesystem::copy_file(std::string(RASTREL_SOURCE_DIR) + "/examples/price-list.fods",
                             m_Command.Place().Path("prices.fods"));
  const auto shown = m_Command.Run({"merge", "badge.xml", "--data", "prices.fods"});
  // The message lists its headings, since none of them is "Name".
  EXPECT_EQ(shown.status, 3);
  EXPECT_NE(shown.error.find("The table has the headings "), std::string::npos) << shown.error;
}

TEST_F(Merge, nothing_is_left_of_its_work) {
  const auto result = RunOn(Badge, "Name\nAda\n", {"-o", "out.pdf"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_TRUE(m_Command.NamesIn("jobs").empty());
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(m_Command.Place().Path()), {}), 3);
}

TEST_F(Merge, the_fields_are_listed_without_a_table) {
  m_Command.Place().Write("badge.xml", Badge);
  const auto text = m_Command.Run({"merge", "badge.xml", "--fields"});
  EXPECT_EQ(text.status, 0) << text.error;
  EXPECT_EQ(text.output, "Name: text, at most 255 characters\n");
  const auto lines = m_Command.Run({"merge", "badge.xml", "--fields", "--json"});
  EXPECT_EQ(json::parse(lines.Lines().at(0)),
            json({{"event", "merge-field"}, {"name", "Name"}, {"kind", "text"}, {"maximum", 255}}));
  EXPECT_EQ(m_Command.Run({"merge", "badge.xml", "--fields", "--data", "names.csv"}).status, 2);
  m_Command.Place().Write("plain.xml",
                          "<ABB><ENGRAVINGTEMPLATE><PLATES/><PLATE/></ENGRAVINGTEMPLATE></ABB>");
  const auto none = m_Command.Run({"merge", "plain.xml", "--fields"});
  EXPECT_EQ(none.status, 3);
  EXPECT_NE(none.error.find("plain.xml: no text of the template has a field"), std::string::npos)
      << none.error;
}

TEST_F(Merge, a_blank_as_large_as_the_plate_has_a_page_for_each_row) {
  const auto result = RunOn(Badge, "Name\nAda\nBob\n", {"--blank", "plate", "--json"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(Row(result, 0)["pages"], json({1}));
  EXPECT_EQ(Row(result, 1)["pages"], json({2}));
  // Three by one inch.
  EXPECT_NEAR(Row(result, 2)["width_cm"].get<double>(), 7.62, 1e-5);
  EXPECT_NEAR(Row(result, 2)["height_cm"].get<double>(), 2.54, 1e-5);
}

TEST_F(Merge, a_picture_is_as_large_as_fits_into_the_pixels) {
  // The width and height of the PNG file's header.
  const auto sideOf = [&](std::size_t place) {
    const std::string png = m_Command.Place().Read("badge.png");
    std::uint32_t side = 0;
    for (std::size_t i = place; i < place + 4; ++i)
      side = side * 256 + static_cast<unsigned char>(png.at(i));
    return side;
  };
  // 200 by 3 inches is 66.7: at 66 pixels per inch the plate has 198 by 66.
  EXPECT_EQ(RunOn(Badge, "Name\nAda\n", {"--blank", "plate", "--pixels", "200", "-o", "badge.png"})
                .status,
            0);
  EXPECT_EQ(sideOf(16), 198U);
  EXPECT_EQ(sideOf(20), 66U);
  // No finer than 300 per inch.
  EXPECT_EQ(RunOn(Badge, "Name\nAda\n",
                  {"--blank", "plate", "--pixels", "20000", "-o", "badge.png", "--force"})
                .status,
            0);
  EXPECT_EQ(sideOf(16), 900U);
  for (const char* pixels : {"0", "20001", "wide"})
    EXPECT_EQ(RunOn(Badge, "Name\nAda\n", {"--pixels", pixels, "-o", "b.png"}).status, 2) << pixels;
  EXPECT_EQ(RunOn(Badge, "Name\nAda\n", {"--pixels", "9", "--dpi", "9", "-o", "b.png"}).status, 2);
}

}  // namespace
}  // namespace rastrel::cli
