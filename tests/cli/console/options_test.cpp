#include "cli/console/options.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

#include "cli/console/exit_status.h"
#include "cli/console/help.h"
#include "cli/input/pdf_options.h"

namespace rastrel::cli {
namespace {

std::vector<std::string> ManualLines() {
  std::ifstream file(std::string(RASTREL_SOURCE_DIR) + "/packaging/rastrel.1");
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
}

// The first word of each entry of the manual's lists that begins with the macro.
std::set<std::string> ManualEntries(const std::string& macro) {
  std::set<std::string> names;
  const std::string begin = ".It " + macro + " ";
  for (const std::string& line : ManualLines()) {
    if (!line.starts_with(begin)) continue;
    std::istringstream words(line.substr(begin.size()));
    std::string name;
    words >> name;
    names.insert(name);
  }
  return names;
}

Invocation Parse(std::vector<const char*> words) {
  words.insert(words.begin(), "rastrel");
  return ParseArguments(static_cast<int>(words.size()), words.data());
}

TEST(Options, each_has_a_description_and_each_command_too) {
  for (const OptionRow& row : Options()) {
    EXPECT_TRUE(std::string(row.name).starts_with("--")) << row.name;
    EXPECT_TRUE(std::string(row.description).ends_with(".")) << row.name;
  }
  for (const CommandRow& row : Commands()) {
    EXPECT_TRUE(std::string(row.description).ends_with(".")) << row.name;
  }
}

TEST(Options, the_manual_has_an_entry_for_each_and_none_for_another) {
  std::set<std::string> options;
  for (const OptionRow& row : Options()) options.insert(std::string(row.name).substr(1));
  EXPECT_EQ(ManualEntries("Fl"), options);
}

TEST(Options, the_manual_has_an_entry_for_each_command_and_none_for_another) {
  std::set<std::string> commands;
  for (const CommandRow& row : Commands()) {
    const std::string name = row.name;
    commands.insert(name.substr(0, name.find(' ')));
  }
  EXPECT_EQ(ManualEntries("Cm"), commands);
}

// The lines of an option's entry in the manual, joined by blanks.
std::string ManualEntryOf(const std::string& option) {
  std::string text;
  bool isInside = false;
  for (const std::string& line : ManualLines()) {
    if (isInside && (line.starts_with(".It ") || line.starts_with(".El"))) break;
    if (isInside) text += line + " ";
    if (line == ".It Fl " + option || line.starts_with(".It Fl " + option + " ")) isInside = true;
  }
  return text;
}

// That these are the defaults in force is tested where they are used.
TEST(Options, the_help_and_the_manual_state_the_same_resolutions) {
  const std::string preview = "from 1 to 4800; 72 if not given.";
  const std::string picture = "from 1 to 2400; 96 if not given.";
  EXPECT_NE(std::string(OptionOf(OptionId::Dpi).description).find(preview), std::string::npos);
  EXPECT_TRUE(std::string(OptionOf(OptionId::PictureDpi).description).ends_with(picture));
  EXPECT_NE(ManualEntryOf("-dpi").find(preview), std::string::npos);
  EXPECT_NE(ManualEntryOf("-dpi").find(picture), std::string::npos);
  EXPECT_EQ(ManualEntryOf("-dsc").find("if not given"), std::string::npos);
}

TEST(Options, the_manual_has_every_exit_status_in_the_same_words) {
  const auto lines = ManualLines();
  for (const ExitStatusRow& row : ExitStatuses) {
    const std::string entry = ".It " + std::to_string(static_cast<int>(row.status));
    const auto found = std::find(lines.begin(), lines.end(), entry);
    ASSERT_NE(found, lines.end()) << entry;
    EXPECT_EQ(*std::next(found), row.meaning);
  }
}

TEST(Options, the_choices_of_a_box_are_the_boxes_that_are_taken) {
  std::istringstream words(OptionOf(OptionId::Box).choices);
  int count = 0;
  for (std::string word; words >> word; ++count) {
    Invocation invocation;
    invocation.options[OptionId::Box] = word;
    EXPECT_TRUE(PdfOptions::Apply(invocation)) << word;
    EXPECT_NE(std::string(OptionOf(OptionId::Box).description).find(word), std::string::npos);
  }
  EXPECT_EQ(count, 4);
  ASSERT_EQ(::unsetenv("RASTREL_RIP_BOX"), 0);
}

TEST(Options, the_help_of_a_command_has_each_of_its_options) {
  for (const CommandRow& row : Commands()) {
    const std::string text = HelpText(row.name);
    for (const OptionId id : row.options)
      EXPECT_NE(text.find(OptionOf(id).description), std::string::npos) << row.name;
    EXPECT_NE(SummaryText().find(row.description), std::string::npos);
  }
}

std::size_t CountIn(std::string_view text, std::string_view part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1)) ++count;
  return count;
}

// Only a chart is asked for an entry.
TEST(HelpText, says_each_status_once_and_those_of_one_kind_of_command_for_that_alone) {
  for (const CommandRow& row : Commands()) {
    const bool isChart = std::string_view(row.name).starts_with("chart ");
    const bool isConversion = row.id == CommandId::Convert || row.id == CommandId::Cut;
    for (const ExitStatusRow& status : ExitStatuses) {
      const bool ofConversions = status.status >= ExitStatus::NotPrepared;
      const bool ofCharts = status.status == ExitStatus::NoMatch;
      const bool isSaid = (isChart || !ofCharts) && (isConversion || !ofConversions);
      EXPECT_EQ(CountIn(HelpText(row.name), status.meaning), isSaid ? 1U : 0U) << row.name;
    }
  }
  for (const ExitStatusRow& status : ExitStatuses) {
    const bool ofConversions = status.status >= ExitStatus::NotPrepared;
    EXPECT_EQ(CountIn(HelpText("chart"), status.meaning), ofConversions ? 0U : 1U);
    EXPECT_EQ(CountIn(SummaryText(), status.meaning), 1U);
  }
}

TEST(ParseArguments, reads_a_command_with_its_options) {
  const Invocation print =
      Parse({"print", "a.ps", "--copies", "3", "--spool", "--printer=PNG files", "--json"});
  EXPECT_EQ(print.command, CommandId::Print);
  EXPECT_EQ(print.operand, "a.ps");
  EXPECT_EQ(print.ValueOr(OptionId::Copies, ""), "3");
  EXPECT_EQ(print.ValueOr(OptionId::Printer, ""), "PNG files");
  EXPECT_TRUE(print.Has(OptionId::Spool));
  EXPECT_TRUE(print.Has(OptionId::Json));
  EXPECT_FALSE(print.Has(OptionId::Planar));
}

TEST(ParseArguments, takes_an_operand_that_bears_a_commands_name_or_looks_like_an_option) {
  EXPECT_EQ(Parse({"print", "doctor"}).operand, "doctor");
  EXPECT_EQ(Parse({"print", "print"}).command, CommandId::Print);
  EXPECT_EQ(Parse({"spool", "show", "list"}).operand, "list");
  EXPECT_EQ(Parse({"spool", "show", "list"}).command, CommandId::SpoolShow);
  EXPECT_EQ(Parse({"print", "--", "--json"}).operand, "--json");
}

TEST(ParseArguments, reads_every_command_of_the_table) {
  for (const CommandRow& row : Commands()) {
    std::istringstream words{std::string(row.name)};
    std::vector<std::string> list{std::istream_iterator<std::string>(words), {}};
    if (*row.operand != '\0') list.emplace_back("something");
    std::vector<const char*> pointers;
    for (const std::string& word : list) pointers.push_back(word.c_str());
    const Invocation invocation = Parse(pointers);
    EXPECT_EQ(invocation.command, row.id) << row.name;
    EXPECT_EQ(invocation.hasOperand, *row.operand != '\0') << row.name;
  }
}

TEST(ParseArguments, refuses_words_that_the_tables_do_not_have) {
  const std::vector<std::vector<const char*>> wrong = {
      {"frobnicate"},        {"print"},           {"print", ""},
      {"reprint", "a", "b"}, {"--frob"},          {"print", "a", "--frob"},
      {"printers", "x"},     {"spool", "frob"},   {"print", "a", "--copies"},
      {"ticket", "show"},    {"modes", "--spool"}};
  for (const auto& words : wrong) {
    try {
      static_cast<void>(Parse(words));
      ADD_FAILURE() << words.front() << " was taken";
    } catch (const CommandError& error) {
      EXPECT_EQ(error.Status(), ExitStatus::WrongUse);
    }
  }
}

TEST(HelpText, knows_groups_and_nothing_that_is_no_command) {
  EXPECT_NE(HelpText("spool").find("rastrel spool remove NAME"), std::string::npos);
  EXPECT_EQ(HelpText("spool list").find("spool remove"), std::string::npos);
  EXPECT_EQ(HelpText("spo"), "");
  EXPECT_EQ(HelpText(""), "");
}

// The message for arguments that can't be understood.
std::string WordsFor(const std::vector<const char*>& words) {
  try {
    static_cast<void>(Parse(words));
  } catch (const CommandError& error) {
    EXPECT_EQ(error.Status(), ExitStatus::WrongUse);
    return error.what();
  }
  return "understood";
}

TEST(Options, an_unknown_command_is_named_with_its_group) {
  EXPECT_EQ(WordsFor({"shet", "a.xlsx"}), "there is no command 'shet'; see `rastrel help`");
  EXPECT_EQ(WordsFor({"chart", "capitals", "a.xml"}),
            "there is no command 'chart capitals'; see `rastrel help chart`");
}

TEST(Options, an_unexpected_word_is_reported_with_the_help_that_belongs_to_it) {
  const auto endsIn = [](const std::vector<const char*>& words, const char* end) {
    const std::string said = WordsFor(words);
    EXPECT_TRUE(said.ends_with(end)) << said;
  };
  endsIn({"sheet", "a.xlsx", "b.xlsx"}, "b.xlsx; see `rastrel help sheet`");
  endsIn({"chart", "caps", "--lst", "a.xml"}, "--lst; see `rastrel help chart caps`");
  endsIn({"chart", "--lst"}, "--lst; see `rastrel help chart`");
  endsIn({"--lst"}, "--lst; see `rastrel help`");
}

}  // namespace
}  // namespace rastrel::cli
