#include "rastrel/printing/stderr_parser.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "tests/support/literal_lines.h"
#include "tests/support/transcript.h"
#include "tests/support/utf8_oracle.h"

using rastrel::test::Lines;
using rastrel::test::LiteralLines;
using rastrel::test::RecordingMessaging;

namespace {

/// A parser whose pieces the test hands over itself.
class Parser {
 public:
  explicit Parser(int originator = JTO_RIP)
      : m_Parser(&m_Messaging, &m_Pipe, static_cast<JT_ORIGINATOR>(originator)) {}
  Parser& Take(std::string_view piece) {
    m_Parser.OnData(piece.data(), static_cast<unsigned>(piece.size()));
    return *this;
  }
  [[nodiscard]] Lines Told() const { return m_Messaging.m_Told.All(); }

 private:
  HANDLE m_Pipe = INVALID_HANDLE_VALUE;
  RecordingMessaging m_Messaging;
  CStderrParser m_Parser;
};

Lines ToldOf(std::string_view piece) { return Parser().Take(piece).Told(); }

struct CodeOfKeyword {
  const char* keyword;
  const char* told;
};

TEST(StderrParser, every_state_keyword_becomes_its_info) {
  constexpr CodeOfKeyword table[] = {
      {"UNDEFINED", "Info 255 rip"},      {"INITIALISING", "Info 256 rip"},
      {"READY", "Info 257 rip"},          {"INTERPRETING", "Info 258 rip"},
      {"CONVERTING", "Info 259 rip"},     {"FLUSHING", "Info 260 rip"},
      {"PRINTING", "Info 261 rip"},       {"SPOOLING", "Info 262 rip"},
      {"VALID_RECOVERY", "Info 263 rip"}, {"CLQ_success", "Info 10 rip"},
      {"CLQ_failure", "Info 11 rip"}};
  for (const auto& [keyword, told] : table) {
    const std::string line = std::string("INFO: ") + keyword;
    EXPECT_EQ(ToldOf(line + "\n"), (Lines{"Log [Rip]" + line, told}));
  }
}

TEST(StderrParser, every_error_keyword_becomes_its_error) {
  constexpr CodeOfKeyword table[] = {{"ERROR", "Error 255 rip"},
                                     {"RUN_INSTALL", "Error 256 rip"},
                                     {"INVALID_RECOVERY", "Error 257 rip"}};
  for (const auto& [keyword, told] : table) {
    const std::string line = std::string("ERROR: ") + keyword;
    EXPECT_EQ(ToldOf(line + "\n"), (Lines{"Log [Rip]" + line, told}));
  }
}

TEST(StderrParser, the_documented_examples_have_their_effect) {
  EXPECT_EQ(ToldOf("INFO: READY\n"), (Lines{"Log [Rip]INFO: READY", "Info 257 rip"}));
  EXPECT_EQ(ToldOf("ERROR: RUN_INSTALL\n"),
            (Lines{"Log [Rip]ERROR: RUN_INSTALL", "Error 256 rip"}));
  EXPECT_EQ(ToldOf("ERROR: Out of memory\n"),
            (Lines{"Log [Rip]ERROR: Out of memory", "Error \"Out of memory\" rip"}));
  EXPECT_EQ(ToldOf("WARNING: Font substituted\n"),
            (Lines{"Log [Rip]WARNING: Font substituted", "Warning \"Font substituted\" rip"}));
  EXPECT_EQ(ToldOf("PROGRESS: 42 %\n"), (Lines{"Log [Rip]PROGRESS: 42 %", "Progress 42 rip"}));
}

TEST(StderrParser, an_unknown_state_is_logged_and_changes_nothing) {
  for (const char* line : {"INFO: BOGUS", "INFO:", "INFO: READY NOW", "INFO: ready", "INFO: ERROR"})
    EXPECT_EQ(ToldOf(std::string(line) + "\n"), (Lines{std::string("Log [Rip]") + line}));
}

TEST(StderrParser, the_keyword_may_follow_directly_or_stand_between_white_space) {
  for (const std::string text :
       {"READY", " READY", "\t \a\f\vREADY\v\f\a \t", "READY   ", "    READY"})
    EXPECT_EQ(ToldOf("INFO:" + text + "\n"), (Lines{"Log [Rip]INFO:" + text, "Info 257 rip"}));
}

TEST(StderrParser, characters_outside_the_trim_set_belong_to_the_keyword) {
  for (const std::string text : {"\bREADY", "READY\x1B", "\xC2\xA0READY", "READY\xE2\x80\x83"})
    EXPECT_EQ(ToldOf("INFO:" + text + "\n"), (Lines{"Log [Rip]INFO:" + text}));
}

TEST(StderrParser, a_tag_in_another_case_or_column_is_plain_text) {
  for (const char* line : {"info: READY", "Info: READY", " INFO: READY", "\tERROR: ERROR",
                           "xWARNING: y", "progress: 5%", " PROGRESS: 5%", "INFO READY",
                           "INFO : READY", "ERROR", "plain words", "%s%n%d"})
    EXPECT_EQ(ToldOf(std::string(line) + "\n"), (Lines{std::string("Log [Rip]") + line}));
}

TEST(StderrParser, an_error_tag_alone_is_an_error_with_an_empty_text) {
  EXPECT_EQ(ToldOf("ERROR:\n"), (Lines{"Log [Rip]ERROR:", "Error \"\" rip"}));
  EXPECT_EQ(ToldOf("ERROR: \t \n"), (Lines{"Log [Rip]ERROR: \t ", "Error \"\" rip"}));
}

TEST(StderrParser, a_warning_tag_alone_is_a_warning_with_an_empty_text) {
  EXPECT_EQ(ToldOf("WARNING:\n"), (Lines{"Log [Rip]WARNING:", "Warning \"\" rip"}));
}

TEST(StderrParser, only_the_first_tag_of_a_line_counts) {
  EXPECT_EQ(ToldOf("ERROR:INFO: READY\n"),
            (Lines{"Log [Rip]ERROR:INFO: READY", "Error \"INFO: READY\" rip"}));
  EXPECT_EQ(ToldOf("INFO:PROGRESS: 5%\n"), (Lines{"Log [Rip]INFO:PROGRESS: 5%"}));
}

TEST(StderrParser, the_log_names_the_rip_and_the_output_engine_and_nobody_else) {
  EXPECT_EQ(Parser(JTO_RIP).Take("x\n").Told(), (Lines{"Log [Rip]x"}));
  EXPECT_EQ(Parser(JTO_ODALIS).Take("x\n").Told(), (Lines{"Log [Odalis]x"}));
  EXPECT_EQ(Parser(JTO_SYSTEM).Take("x\n").Told(), (Lines{"Log x"}));
  EXPECT_EQ(Parser(4).Take("INFO: CLQ_success\n").Told(),
            (Lines{"Log INFO: CLQ_success", "Info 10 4"}));
}

TEST(StderrParser, the_originator_goes_along_with_every_report) {
  EXPECT_EQ(Parser(JTO_ODALIS)
                .Take("ERROR: ERROR\nERROR: x\nWARNING: y\nINFO: READY\nPROGRESS: 7%\n")
                .Told(),
            (Lines{"Log [Odalis]ERROR: ERROR", "Error 255 odalis", "Log [Odalis]ERROR: x",
                   "Error \"x\" odalis", "Log [Odalis]WARNING: y", "Warning \"y\" odalis",
                   "Log [Odalis]INFO: READY", "Info 257 odalis", "Log [Odalis]PROGRESS: 7%",
                   "Progress 7 odalis"}));
}

TEST(StderrProgress, without_a_percent_sign_is_only_logged) {
  for (const char* line : {"PROGRESS: 42", "PROGRESS:", "PROGRESS: "})
    EXPECT_EQ(ToldOf(std::string(line) + "\n"), (Lines{std::string("Log [Rip]") + line}));
}

TEST(StderrProgress, zero_is_only_logged) {
  EXPECT_EQ(ToldOf("PROGRESS: 0%\n"), (Lines{"Log [Rip]PROGRESS: 0%"}));
}

TEST(StderrProgress, a_text_that_is_no_number_is_only_logged) {
  for (const char* line : {"PROGRESS: %", "PROGRESS: x%", "PROGRESS: x5%", "PROGRESS: -%",
                           "PROGRESS: + 5%", "PROGRESS: --5%", "PROGRESS: .5%"})
    EXPECT_EQ(ToldOf(std::string(line) + "\n"), (Lines{std::string("Log [Rip]") + line}));
}

// A number is read as 16 bits: higher bits are lost, and a sign negates.
TEST(StderrProgress, a_number_keeps_its_low_16_bits) {
  constexpr CodeOfKeyword table[] = {{"1", "1"},
                                     {"100", "100"},
                                     {"65535", "65535"},
                                     {"65537", "1"},
                                     {"65578", "42"},
                                     {"-1", "65535"},
                                     {"-65494", "42"},
                                     {"+42", "42"},
                                     {"007", "7"},
                                     {"4294967338", "42"},            // 2^32 + 42
                                     {"18446744073709551658", "42"},  // 2^64 + 42
                                     {"42 of 100", "42"},
                                     {"42.9", "42"},
                                     {"42x", "42"}};
  for (const auto& [text, value] : table) {
    const std::string line = std::string("PROGRESS: ") + text + " %";
    EXPECT_EQ(ToldOf(line + "\n"),
              (Lines{"Log [Rip]" + line, std::string("Progress ") + value + " rip"}));
  }
}

TEST(StderrProgress, a_number_whose_low_16_bits_are_zero_is_only_logged) {
  EXPECT_EQ(ToldOf("PROGRESS: 65536%\n"), (Lines{"Log [Rip]PROGRESS: 65536%"}));
}

TEST(StderrProgress, text_after_the_first_percent_sign_is_not_looked_at) {
  EXPECT_EQ(ToldOf("PROGRESS: 5% 77%\n").back(), "Progress 5 rip");
  EXPECT_EQ(ToldOf("PROGRESS: 5%s%n\n"), (Lines{"Log [Rip]PROGRESS: 5%s%n", "Progress 5 rip"}));
}

TEST(StderrProgress, several_lines_in_one_piece_make_one_report_of_the_last) {
  EXPECT_EQ(ToldOf("PROGRESS: 10%\nPROGRESS: 20%\n"),
            (Lines{"Log [Rip]PROGRESS: 10%", "Log [Rip]PROGRESS: 20%", "Progress 20 rip"}));
}

TEST(StderrProgress, lines_in_two_pieces_make_two_reports) {
  EXPECT_EQ(Parser().Take("PROGRESS: 10%\n").Take("PROGRESS: 20%\n").Told(),
            (Lines{"Log [Rip]PROGRESS: 10%", "Progress 10 rip", "Log [Rip]PROGRESS: 20%",
                   "Progress 20 rip"}));
}

TEST(StderrProgress, comes_after_the_other_reports_of_its_piece) {
  EXPECT_EQ(
      ToldOf("PROGRESS: 10%\nINFO: READY\n"),
      (Lines{"Log [Rip]PROGRESS: 10%", "Log [Rip]INFO: READY", "Info 257 rip", "Progress 10 rip"}));
}

TEST(StderrProgress, a_last_zero_in_a_piece_takes_the_report_away) {
  EXPECT_EQ(ToldOf("PROGRESS: 10%\nPROGRESS: 0%\n"),
            (Lines{"Log [Rip]PROGRESS: 10%", "Log [Rip]PROGRESS: 0%"}));
}

TEST(StderrProgress, a_last_bad_number_in_a_piece_leaves_the_one_before) {
  EXPECT_EQ(ToldOf("PROGRESS: 10%\nPROGRESS: x%\n").back(), "Progress 10 rip");
}

TEST(StderrProgress, the_value_does_not_stay_for_the_next_piece) {
  EXPECT_EQ(Parser().Take("PROGRESS: 10%\n").Take("PROGRESS: x%\n").Told(),
            (Lines{"Log [Rip]PROGRESS: 10%", "Progress 10 rip", "Log [Rip]PROGRESS: x%"}));
}

TEST(StderrLines, end_at_carriage_return_at_line_feed_and_at_both) {
  const Lines three = {"Log [Rip]a", "Log [Rip]b", "Log [Rip]c"};
  EXPECT_EQ(ToldOf("a\rb\rc\r"), three);
  EXPECT_EQ(ToldOf("a\nb\nc\n"), three);
  EXPECT_EQ(ToldOf("a\r\nb\r\nc\r\n"), three);
  EXPECT_EQ(ToldOf("\n\r\na\n\n\n\rb\r\rc\n\n"), three);
}

TEST(StderrLines, cut_by_a_piece_are_joined_and_parsed_once) {
  EXPECT_EQ(Parser().Take("INF").Take("O: REA").Take("DY").Take("\nx").Told(),
            (Lines{"Log [Rip]INFO: READY", "Info 257 rip"}));
}

TEST(StderrLines, with_the_carriage_return_and_the_line_feed_in_two_pieces_are_one_line) {
  EXPECT_EQ(Parser().Take("a\r").Take("\nb\r").Take("\n").Told(),
            (Lines{"Log [Rip]a", "Log [Rip]b"}));
}

TEST(StderrLines, without_an_end_are_neither_logged_nor_parsed) {
  EXPECT_EQ(ToldOf("INFO: READY"), Lines{});
  EXPECT_EQ(ToldOf("a\nINFO: READY"), (Lines{"Log [Rip]a"}));
}

TEST(StderrLines, lose_the_text_after_a_zero_byte_of_their_piece) {
  EXPECT_EQ(Parser().Take(std::string_view("a\nb\0c\nd\n", 8)).Take("e\n").Told(),
            (Lines{"Log [Rip]a", "Log [Rip]be"}));
  EXPECT_EQ(ToldOf(std::string_view("\0a\n", 3)), Lines{});
}

TEST(StderrLines, are_read_as_utf_8) {
  EXPECT_EQ(ToldOf("WARNING: \xC3\xA4\xE2\x82\xAC\xF0\x9F\x96\xA8\n").back(),
            "Warning \"\xC3\xA4\xE2\x82\xAC\xF0\x9F\x96\xA8\" rip");
}

TEST(StderrLines, have_replacement_text_for_a_character_that_a_piece_cuts) {
  EXPECT_EQ(Parser().Take("\xE2\x82").Take("\xAC\n").Told(),
            (Lines{"Log [Rip]\xEF\xBF\xBD\xEF\xBF\xBD"}));
}

/// Keeps the lines alone.
class LineKeeper : public CBaseStderrParser {
 public:
  LineKeeper() : CBaseStderrParser(&m_NoPipe) {}
  void ParseLine(const std::wstring& line) override { m_Lines.push_back(line); }
  LineKeeper& Take(std::string_view piece) {
    OnData(piece.data(), static_cast<unsigned>(piece.size()));
    return *this;
  }
  std::vector<std::wstring> m_Lines;

 private:
  HANDLE m_NoPipe = INVALID_HANDLE_VALUE;
};

std::string RandomPiece(std::mt19937& random) {
  // Line ends, tags' letters, zeros, and bytes that begin and continue characters of several bytes.
  static constexpr std::string_view Bytes("ab \t\r\n\r\n\0\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80\xFF",
                                          19);
  std::string piece(1 + random() % 40, '\0');
  for (char& byte : piece) byte = Bytes[random() % Bytes.size()];
  return piece;
}

TEST(StderrLines, are_those_of_the_literal_way_for_random_pieces) {
  std::mt19937 random(20240611);
  for (int round = 0; round < 500; ++round) {
    LineKeeper keeper;
    LiteralLines literal;
    for (auto pieces = random() % 30; pieces > 0; --pieces) {
      const std::string piece = RandomPiece(random);
      keeper.Take(piece);
      literal.Add(rastrel::test::DecodeUtf8Literally(piece.substr(0, piece.find('\0'))));
    }
    ASSERT_EQ(keeper.m_Lines, literal.All()) << "round " << round;
  }
}

constexpr std::size_t Limit = CBaseStderrParser::LineLimit;

void TakeLong(LineKeeper& keeper, std::size_t characters) {
  const std::string piece(CPipeReader::BufferSize, 'x');
  for (; characters > piece.size(); characters -= piece.size()) keeper.Take(piece);
  keeper.Take(std::string(characters, 'x') + "\ny\n");
}

// docs/formats/stderr-protocol.md states both for the writer of a child.
TEST(StderrLines, are_read_in_pieces_of_1024_bytes_and_cut_at_1048576_characters) {
  EXPECT_EQ(CPipeReader::BufferSize, 1024U);
  EXPECT_EQ(Limit, 1'048'576U);
}

TEST(StderrLines, up_to_the_limit_are_whole) {
  for (const std::size_t length : {Limit - 1, Limit}) {
    LineKeeper keeper;
    TakeLong(keeper, length);
    ASSERT_EQ(keeper.m_Lines.size(), 2U);
    EXPECT_EQ(keeper.m_Lines[0].size(), length);
    EXPECT_EQ(keeper.m_Lines[1], L"y");
  }
}

TEST(StderrLines, beyond_the_limit_are_cut_there) {
  for (const std::size_t length : {Limit + 1, Limit + 1023, Limit + 5000, 2 * Limit}) {
    LineKeeper keeper;
    TakeLong(keeper, length);
    ASSERT_EQ(keeper.m_Lines.size(), 2U);
    EXPECT_EQ(keeper.m_Lines[0].size(), Limit) << length;
    EXPECT_EQ(keeper.m_Lines[1], L"y");
  }
}

// Looking at the whole line again for every piece would be 50,000 pieces by up to a million
// characters: minutes, where the run's limit for one test ends it.
TEST(StderrLines, of_50_megabytes_take_no_time_with_their_square) {
  LineKeeper keeper;
  TakeLong(keeper, 50'000'000);
  ASSERT_EQ(keeper.m_Lines.size(), 2U);
  EXPECT_EQ(keeper.m_Lines[0].size(), Limit);
}

TEST(StderrLines, by_the_hundred_thousand_in_one_piece_take_no_time_with_their_square) {
  std::string piece;
  for (int line = 0; line < 500'000; ++line) piece += "ab\n";
  LineKeeper keeper;
  keeper.Take(piece);
  EXPECT_EQ(keeper.m_Lines.size(), 500'000U);
}

}  // namespace
