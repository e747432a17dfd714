#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "cli/reading/cars_command.h"
#include "tests/cli/command_runner.h"
#include "tests/support/environment_guard.h"

namespace rastrel::cli {
namespace {

using nlohmann::json;
using test::CommandResult;
using test::CommandRunner;

const std::string Examples = std::string(RASTREL_SOURCE_DIR) + "/examples/";

// A command in a place with this file in it.
class Lists : public ::testing::Test {
 protected:
  CommandResult RunOn(const std::string& content, std::vector<std::string> arguments) {
    m_Command.Place().Write("file.xml", content);
    return m_Command.Run(arguments);
  }

  CommandRunner m_Command{CommandRunner::Children::None};
};

TEST_F(Lists, notes_show_the_fields_of_a_company_and_leave_out_empty_ones) {
  const auto result = RunOn(
      "<JOBNOTESLIST><COMPANY><ADDRESS><NAME>Old\nMill</NAME><CITY/></ADDRESS><JOB><JOBNUMBER>7"
      "</JOBNUMBER><JOBSELLINGPRICE>65.50</JOBSELLINGPRICE><JOBDELIVERY>3</JOBDELIVERY></JOB>"
      "</COMPANY><COMPANY><CONTACT><EMAIL>a@b.example</EMAIL></CONTACT></COMPANY></JOBNOTESLIST>",
      {"notes", "file.xml"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.error, "");
  EXPECT_EQ(result.output,
            "company 1\n"
            "  address\n"
            "    name:            Old Mill\n"
            "  job\n"
            "    number:          7\n"
            "    selling price:   65.5\n"
            "    delivery:        3\n"
            "company 2\n"
            "  contact\n"
            "    email:           a@b.example\n");
}

TEST_F(Lists, notes_as_json_have_an_object_a_company_with_every_field) {
  const auto lines = m_Command.Run({"notes", Examples + "job-notes.xml", "--json"}).Lines();
  ASSERT_EQ(lines.size(), 2U);
  const json company = json::parse(lines[0]);
  EXPECT_EQ(company["event"], "company");
  EXPECT_EQ(company["addresses"][0]["CITY"], "Lunenburg");
  EXPECT_EQ(company["contacts"][0]["FIRSTNAME"], "Zo\xC3\xAB");
  EXPECT_EQ(company["contacts"][0]["FAX"], "");
  EXPECT_EQ(company["jobs"][0]["JOBMATERIALSCOST"], 38.5);
  EXPECT_EQ(company["jobs"][1]["JOBDELIVERY"], 0);
  EXPECT_EQ(company["jobs"][0].size(), 18U);
  EXPECT_EQ(json::parse(lines[1])["jobs"].size(), 0U);
}

TEST_F(Lists, notes_without_companies_say_so_and_are_no_failure) {
  const auto result = RunOn("<JOBNOTESLIST/>", {"notes", "file.xml"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "no companies\n");
  EXPECT_EQ(RunOn("<JOBNOTESLIST/>", {"notes", "file.xml", "--json"}).output, "");
}

TEST_F(Lists, a_document_that_is_refused_is_reported_with_line_column_and_reason) {
  for (const char* const command : {"notes", "cars"}) {
    const auto result = RunOn("<A>\n  <B></C>\n</A>", {command, "file.xml"});
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.output, "");
    EXPECT_TRUE(result.error.starts_with("rastrel: file.xml:2:")) << result.error;
  }
  const auto type = RunOn("<!DOCTYPE CAPSET>\n<CAPSET/>", {"chart", "caps", "file.xml", "--json"});
  EXPECT_EQ(type.status, 3);
  const json line = json::parse(type.output);
  EXPECT_EQ(line["event"], "failed");
  EXPECT_EQ(line["exit"], 3);
  EXPECT_NE(line["text"].get<std::string>().find("file.xml:1:"), std::string::npos) << line;
}

TEST_F(Lists, a_value_that_is_too_long_is_reported_with_its_element) {
  const auto result = RunOn("<JOBNOTESLIST><COMPANY><ADDRESS><CITY>" + std::string(255, 'x') +
                                "</CITY></ADDRESS></COMPANY></JOBNOTESLIST>",
                            {"notes", "file.xml"});
  EXPECT_EQ(result.status, 3);
  EXPECT_NE(result.error.find("file.xml: the value of CITY has 255 characters"), std::string::npos)
      << result.error;
}

TEST_F(Lists, a_missing_or_misnamed_file_and_another_root_have_their_own_messages) {
  EXPECT_EQ(m_Command.Run({"notes", "none.xml"}).error,
            "rastrel: can't read 'none.xml': there is no such file\n");
  m_Command.Place().Write("notes.txt", "<JOBNOTESLIST/>");
  EXPECT_EQ(m_Command.Run({"notes", "notes.txt"}).error,
            "rastrel: can't read 'notes.txt': its name does not end in .xml\n");
  const auto root = RunOn("<LIBRARY/>", {"notes", "file.xml"});
  EXPECT_EQ(root.status, 3);
  EXPECT_EQ(root.error,
            "rastrel: can't read 'file.xml': its root is <LIBRARY>, and not <JOBNOTESLIST>\n");
  EXPECT_EQ(RunOn("<LIBRARY/>", {"chart", "caps", "file.xml"}).error,
            "rastrel: can't read 'file.xml': its root is <LIBRARY>, and not <CAPSET>\n");
}

TEST_F(Lists, other_files_than_xml_are_refused_with_their_kind) {
  m_Command.Place().Write("folder.xml/a", "");
  const std::vector<std::vector<std::string>> commands = {
      {"notes", "file.xml"}, {"cars", "file.xml"}, {"chart", "caps", "file.xml"}};
  const std::vector<std::pair<std::string, std::string>> files = {
      {"", "it is empty"},
      {"\n", "it holds nothing but blanks"},
      {"words", "it is no document of XML"},
      {"%!PS-Adobe-3.0\n", "it is no document of XML, but PostScript"},
      {"PK\x03\x04", "it is no document of XML, but a zip file, as spreadsheets are"}};
  for (auto command : commands) {
    for (const auto& [content, why] : files) {
      const auto result = RunOn(content, command);
      EXPECT_EQ(result.status, 3);
      EXPECT_EQ(result.error, "rastrel: can't read 'file.xml': " + why + "\n");
    }
    command.back() = "folder.xml";
    EXPECT_EQ(m_Command.Run(command).error,
              "rastrel: can't read 'folder.xml': it is a directory\n");
  }
  const auto picture = RunOn("\x89PNG", {"notes", "--json", "file.xml"});
  EXPECT_EQ(json::parse(picture.output)["text"],
            "can't read 'file.xml': it is no document of XML, but a picture (PNG)");
}

TEST_F(Lists, cars_are_a_tree_in_box_drawing_or_in_ascii) {
  m_Command.Set("LC_ALL", "en_US.UTF-8");
  const auto tree = m_Command.Run({"cars", Examples + "car-library.xml"});
  EXPECT_EQ(tree.status, 0);
  EXPECT_EQ(tree.output,
            "Vans/\n"
            "├── Long wheelbase/\n"
            "│   ├── Left side [eps] vans/long-left.eps\n"
            "│   └── Right side [eps] vans/long-right.eps\n"
            "├── Short wheelbase/\n"
            "│   └── Left side [eps] vans/short-left.eps\n"
            "└── Price list [txt] vans/prices.txt\n"
            "Estate cars/\n"
            "└── Rear [eps] estates/rear.eps\n");
  CommandRunner plain(CommandRunner::Children::None);
  plain.Set("LC_ALL", "C");
  const auto ascii = plain.Run({"cars", Examples + "car-library.xml"});
  EXPECT_EQ(ascii.Lines()[1], "|-- Long wheelbase/");
  EXPECT_EQ(ascii.Lines()[3], "|   `-- Right side [eps] vans/long-right.eps");
}

TEST_F(Lists, cars_as_json_have_an_object_a_folder) {
  const auto lines = m_Command.Run({"cars", "--json", Examples + "car-library.xml"}).Lines();
  ASSERT_EQ(lines.size(), 2U);
  const json folder = json::parse(lines[0]);
  EXPECT_EQ(folder["event"], "folder");
  EXPECT_EQ(folder["kind"], "folder");
  EXPECT_EQ(folder["name"], "Vans");
  EXPECT_EQ(folder["children"][0]["children"][1]["url"], "vans/long-right.eps");
  EXPECT_EQ(folder["children"][2]["kind"], "file");
  EXPECT_FALSE(folder["children"][2].contains("children"));
}

// Longer than the pieces in which it goes out.
TEST_F(Lists, long_lists_come_out_whole) {
  constexpr int count = 2000;
  std::string jobs;
  std::string files;
  for (int number = 0; number < count; ++number) {
    const std::string name = std::to_string(number) + std::string(200, 'x');
    jobs += "<JOB><JOBNUMBER>" + name + "</JOBNUMBER></JOB>";
    files += "<FILE name='" + name + "'/>";
  }
  const std::string notes = "<JOBNOTESLIST><COMPANY>" + jobs + "</COMPANY></JOBNOTESLIST>";
  const std::string cars = "<LIBRARY><FOLDER name='a'>" + files + "</FOLDER></LIBRARY>";
  const json company = json::parse(RunOn(notes, {"notes", "file.xml", "--json"}).output);
  ASSERT_EQ(company["jobs"].size(), static_cast<std::size_t>(count));
  EXPECT_EQ(company["jobs"][count - 1]["JOBNUMBER"],
            std::to_string(count - 1) + std::string(200, 'x'));
  EXPECT_EQ(RunOn(notes, {"notes", "file.xml"}).Lines().size(), 1U + 2U * count);
  const json folder = json::parse(RunOn(cars, {"cars", "file.xml", "--json"}).output);
  ASSERT_EQ(folder["children"].size(), static_cast<std::size_t>(count));
  EXPECT_EQ(folder["children"][count - 1]["name"],
            std::to_string(count - 1) + std::string(200, 'x'));
  EXPECT_EQ(RunOn(cars, {"cars", "file.xml"}).Lines().size(), 1U + count);
}

TEST_F(Lists, an_empty_library_says_so) {
  EXPECT_EQ(RunOn("<LIBRARY/>", {"cars", "file.xml"}).output, "no folders\n");
}

TEST(TextIsUtf8, the_first_variable_that_is_set_decides) {
  const test::EnvironmentGuard all("LC_ALL", nullptr);
  const test::EnvironmentGuard kind("LC_CTYPE", nullptr);
  const test::EnvironmentGuard none("LANG", nullptr);
  EXPECT_FALSE(TextIsUtf8());
  const test::EnvironmentGuard language("LANG", "de_DE.utf8");
  EXPECT_TRUE(TextIsUtf8());
  const test::EnvironmentGuard characters("LC_CTYPE", "POSIX");
  EXPECT_FALSE(TextIsUtf8());
  const test::EnvironmentGuard over("LC_ALL", "C.UTF-8");
  EXPECT_TRUE(TextIsUtf8());
}

TEST_F(Lists, each_chart_of_the_examples_answers) {
  const std::string charts = Examples + "charts/";
  EXPECT_EQ(m_Command
                .Run({"chart", "trademark", charts + "trademarks.xml", "--mark", "Anchor",
                      "--quality", "Fine"})
                .output,
            "anchor-fine.eps\n");
  EXPECT_EQ(m_Command.Run({"chart", "symbol", charts + "symbols.xml", "--size", "6"}).output,
            "height 0.07, trademark 0.05, signature 0\n");
  EXPECT_EQ(m_Command.Run({"chart", "font", charts + "fonts.xml", "--node", "INSIDE_TEXT"}).output,
            "Harbour Script\n");
  EXPECT_EQ(
      m_Command
          .Run({"chart", "copyright", charts + "copyright.xml", "--style", "Court", "--style-size",
                "4", "--font", "Quay Sans Bold", "--rows", "1", "--finger", "5"})
          .output,
      "1.1\n");
  EXPECT_EQ(m_Command.Run({"chart", "caps", charts + "capitals.xml"}).output,
            "McArthur\ndeVries\nO'Neill\n");
}

TEST_F(Lists, each_chart_answers_as_json) {
  const std::string charts = Examples + "charts/";
  const auto object = [&](std::vector<std::string> arguments) {
    arguments.emplace_back("--json");
    return json::parse(m_Command.Run(arguments).output);
  };
  EXPECT_EQ(object({"chart", "trademark", charts + "trademarks.xml", "--mark", "Gull", "--quality",
                    "925"}),
            json({{"event", "trademark"}, {"file", "gull-925.eps"}}));
  EXPECT_EQ(
      object({"chart", "symbol", charts + "symbols.xml", "--size", "4"}),
      json({{"event", "symbol"}, {"height", 0.055}, {"trademark", 0.04}, {"signature", 0.06}}));
  EXPECT_EQ(object({"chart", "font", charts + "fonts.xml", "--node", "OUTSIDE_TEXT"}),
            json({{"event", "font"}, {"font", "Quay Sans Bold"}}));
  EXPECT_EQ(
      object({"chart", "copyright", charts + "copyright.xml", "--style", "Court", "--style-size",
              "4", "--font", "Quay Sans Bold", "--rows", "1", "--finger", "7"}),
      json({{"event", "copyright"}, {"font_size", 1.25}}));
  EXPECT_EQ(object({"chart", "caps", charts + "capitals.xml"})["words"].size(), 3U);
}

TEST_F(Lists, a_question_that_no_entry_answers_has_a_status_of_its_own) {
  const std::vector<std::vector<std::string>> questions = {
      {"chart", "trademark", Examples + "charts/trademarks.xml", "--mark", "Gull", "--quality",
       "750"},
      {"chart", "symbol", Examples + "charts/symbols.xml", "--size", "6.0"},
      {"chart", "font", Examples + "charts/fonts.xml", "--node", "NONE"},
      {"chart", "font", Examples + "charts/fonts.xml", "--node", std::string(600, 'n')},
      {"chart", "copyright", Examples + "charts/copyright.xml", "--style", "Other", "--style-size",
       "4", "--font", "Quay Sans Bold", "--rows", "1", "--finger", "5"}};
  for (const auto& question : questions) {
    const auto result = m_Command.Run(question);
    EXPECT_EQ(result.status, 6) << question[1];
    EXPECT_EQ(result.output, "");
    EXPECT_NE(result.error.find("no entry of '" + question[2] + "' matches"), std::string::npos);
  }
  EXPECT_EQ(RunOn("<CAPSET><SPECIAL/></CAPSET>", {"chart", "caps", "file.xml"}).status, 6);
}

TEST_F(Lists, a_part_of_the_question_that_is_missing_is_wrong_use) {
  const auto result = m_Command.Run({"chart", "trademark", "file.xml", "--mark", "Gull"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.error, "rastrel: the question needs --quality TEXT\n");
  EXPECT_EQ(m_Command.Run({"chart", "trademark"}).status, 2);
  EXPECT_EQ(m_Command.Run({"chart"}).status, 2);
  EXPECT_EQ(m_Command.Run({"chart", "other", "file.xml"}).status, 2);
}

TEST_F(Lists, an_empty_part_of_the_question_is_a_question) {
  EXPECT_EQ(m_Command
                .Run({"chart", "trademark", Examples + "charts/trademarks.xml", "--mark", "Gull",
                      "--quality", ""})
                .output,
            "gull-925.eps\n");
}

TEST_F(Lists, a_chart_with_a_short_name_is_read_too) {
  m_Command.Place().Write("a", "<CAPSET><SPECIAL><CASE>b</CASE></SPECIAL></CAPSET>");
  EXPECT_EQ(m_Command.Run({"chart", "caps", "a"}).output, "b\n");
  m_Command.Place().Write("a", "<CAPSET>");
  EXPECT_TRUE(m_Command.Run({"chart", "caps", "a"}).error.starts_with("rastrel: a:1:"));
}

}  // namespace
}  // namespace rastrel::cli
