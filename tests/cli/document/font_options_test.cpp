#include <gtest/gtest.h>

#include <iostream>
#include <sstream>

#include "cli/document/font_prompt.h"
#include "host/text/font_dialog.h"
#include "tests/cli/command_runner.h"

namespace rastrel::cli {
namespace {

// Standard input with these lines, for this object's life.
class TypedLines {
 public:
  explicit TypedLines(const std::string& lines)
      : m_Lines(lines), m_Before(std::cin.rdbuf(m_Lines.rdbuf())) {
    std::cin.clear();
  }
  ~TypedLines() {
    std::cin.rdbuf(m_Before);
    std::cin.clear();
  }
  TypedLines(const TypedLines&) = delete;
  TypedLines& operator=(const TypedLines&) = delete;

 private:
  std::istringstream m_Lines;
  std::streambuf* m_Before;
};

std::optional<std::wstring> AnswerTo(const std::string& typed) {
  const TypedLines lines(typed);
  FontPrompts prompts;
  return text::AskForFont(prompts, L"No Such Font",
                          {L"DejaVu Sans", L"DejaVu Sans Mono", L"Nimbus Roman"});
}

TEST(FontPrompt, an_empty_line_takes_the_usual_font) {
  EXPECT_EQ(AnswerTo("\n"), L"DejaVu Sans");
  EXPECT_EQ(AnswerTo("  \r\n"), L"DejaVu Sans");
}

TEST(FontPrompt, a_font_is_typed_in_any_case_and_cut_short) {
  EXPECT_EQ(AnswerTo("nimb\n"), L"Nimbus Roman");
  EXPECT_EQ(AnswerTo(" DEJAVU SANS MONO \n"), L"DejaVu Sans Mono");
  EXPECT_EQ(AnswerTo("dejavu sans\n"), L"DejaVu Sans") << "the whole name of one font";
}

TEST(FontPrompt, what_names_no_font_or_several_is_asked_again) {
  EXPECT_EQ(AnswerTo("dejavu\narial\n?\nnim\n"), L"Nimbus Roman");
}

TEST(FontPrompt, q_and_the_end_of_the_input_cancel) {
  EXPECT_EQ(AnswerTo("q\n"), std::nullopt);
  EXPECT_EQ(AnswerTo("arial\nQ\n"), std::nullopt);
  EXPECT_EQ(AnswerTo(""), std::nullopt);
  EXPECT_EQ(AnswerTo("arial"), std::nullopt);
}

TEST(EntryOf, an_empty_list_has_no_entry_and_an_empty_name_is_the_beginning_of_all) {
  EXPECT_EQ(EntryOf({}, "a"), std::nullopt);
  EXPECT_EQ(EntryOf({"one"}, ""), 0U);
  EXPECT_EQ(EntryOf({"one", "two"}, ""), std::nullopt);
  EXPECT_EQ(EntryOf({"aa", "ab", "ac"}, "a"), std::nullopt);
}

class FontOptions : public ::testing::Test {
 protected:
  // A plate whose text is in a font that no machine has.
  test::CommandResult RunWith(std::vector<std::string> arguments) {
    m_Command.Place().Write(
        "plates.xml",
        "<ABB><ENGRAVINGTEMPLATE><PLATES/><PLATE><COLOR>Gold</COLOR><WIDTH>3</WIDTH>"
        "<HEIGHT>1</HEIGHT><TEXTCOLOR>Black</TEXTCOLOR><TEXT data='Ada'>"
        "<FONT name='NoSuchFont.ttf' size='0.25'/></TEXT></PLATE></ENGRAVINGTEMPLATE></ABB>");
    arguments.insert(arguments.begin(), {"import", "plates.xml"});
    return m_Command.Run(arguments);
  }

  test::CommandRunner m_Command{test::CommandRunner::Children::None};
};

TEST_F(FontOptions, a_missing_font_gets_the_usual_one_and_a_note) {
  const auto result = RunWith({});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.error,
            "rastrel: the font \"NoSuchFont\" can't be had; DejaVu Sans stands in for it\n");
}

TEST_F(FontOptions, a_missing_font_gets_the_one_that_is_named_for_it) {
  const auto result = RunWith(
      {"--font", "other=DejaVu Sans", "--font", "No Such Font=dejavu serif", "-o", "out.svg"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(result.error,
            "rastrel: the font \"NoSuchFont\" can't be had; DejaVu Serif stands in for it\n");
  EXPECT_NE(m_Command.Place().Read("out.svg").find("DejaVu Serif"), std::string::npos);
}

TEST_F(FontOptions, the_font_that_was_named_is_saved_with_the_document) {
  EXPECT_EQ(RunWith({"--font", "NoSuchFont=DejaVu Serif Bold", "-o", "out.rdoc"}).status, 0);
  EXPECT_NE(m_Command.Place().Read("out.rdoc").find("\"replacement\": \"DejaVu Serif Bold\""),
            std::string::npos);
  const auto drawn = m_Command.Run({"import", "out.rdoc", "-o", "again.svg"});
  EXPECT_EQ(drawn.status, 0) << drawn.error;
  const std::string svg = m_Command.Place().Read("again.svg");
  EXPECT_NE(svg.find("DejaVu Serif"), std::string::npos);
  EXPECT_NE(svg.find("font-weight=\"700\""), std::string::npos) << svg;
}

TEST_F(FontOptions, missing_fonts_that_cancel_leave_the_line_out_and_fail) {
  const auto result = RunWith({"--cancel-missing-fonts"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.error, "rastrel: left out: the font \"NoSuchFont\" can't be had\n");
  EXPECT_EQ(RunWith({"--cancel-missing-fonts", "--font", "NoSuchFont=DejaVu Sans"}).status, 0);
}

TEST_F(FontOptions, a_replacement_that_is_no_font_is_refused_before_anything_is_made) {
  const auto missing = RunWith({"--font", "NoSuchFont=None Either", "-o", "out.svg"});
  EXPECT_EQ(missing.status, 2);
  EXPECT_EQ(missing.error,
            "rastrel: --font NoSuchFont=None Either: the font \"None Either\" is not on this "
            "machine\n");
  EXPECT_EQ(RunWith({"--font", "NoSuchFont"}).error, "rastrel: --font NoSuchFont: not NAME=FONT\n");
  EXPECT_EQ(RunWith({"--font", "NoSuchFont="}).status, 2);
}

TEST_F(FontOptions, a_document_takes_none_of_the_options) {
  ASSERT_EQ(RunWith({"-o", "out.rdoc"}).status, 0);
  const auto result = m_Command.Run({"import", "out.rdoc", "--cancel-missing-fonts"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.error,
            "rastrel: --cancel-missing-fonts: a document has its replacements already\n");
}

}  // namespace
}  // namespace rastrel::cli
