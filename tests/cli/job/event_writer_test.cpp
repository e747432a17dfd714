#include "cli/job/event_writer.h"

#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <set>

#include "cli/console/json_line.h"
#include "cli/job/failure_report.h"

namespace rastrel::cli {
namespace {

JobEvent EventOf(const wchar_t* line) { return EventOfLogLine(line).value_or(JobEvent{}); }

// The lines of code in docs/formats/events.md.
std::set<std::string> DocumentedLines() {
  std::ifstream file(std::string(RASTREL_SOURCE_DIR) + "/docs/formats/events.md");
  std::set<std::string> lines;
  for (std::string line; std::getline(file, line);)
    if (line.starts_with('{')) lines.insert(line + "\n");
  return lines;
}

void ExpectDocumented(const std::string& line) {
  EXPECT_TRUE(DocumentedLines().contains(line)) << line;
}

TEST(EventLine, has_the_documented_form_for_every_kind) {
  JobEvent event;
  event.kind = JobEventKind::State;
  event.originator = JTO_RIP;
  event.code = 257;
  event.text = "Rip Ready";
  EXPECT_EQ(EventLine(event),
            "{\"event\":\"state\",\"code\":257,\"originator\":\"rip\",\"text\":\"Rip Ready\"}\n");
  event = {};
  event.kind = JobEventKind::Progress;
  event.originator = JTO_ODALIS;
  event.percent = 42;
  EXPECT_EQ(EventLine(event),
            "{\"event\":\"progress\",\"originator\":\"odalis\",\"percent\":42}\n");
  event = {};
  event.kind = JobEventKind::Error;
  event.code = 14;
  event.text = "Can't generate spool file";
  EXPECT_EQ(EventLine(event),
            "{\"event\":\"error\",\"code\":14,\"originator\":\"system\","
            "\"text\":\"Can't generate spool file\"}\n");
  event.kind = JobEventKind::Warning;
  event.code.reset();
  event.text = "low ink";
  EXPECT_EQ(EventLine(event),
            "{\"event\":\"warning\",\"originator\":\"system\",\"text\":\"low ink\"}\n");
  EXPECT_EQ(EventLine(EventOf(L"[Rip]PAGE: 2")),
            "{\"event\":\"page\",\"originator\":\"rip\",\"page\":2}\n");
  EXPECT_EQ(EventLine(EventOf(L"[Odalis]OUTPUT: /a b/c.tif")),
            "{\"event\":\"output\",\"originator\":\"odalis\",\"path\":\"/a b/c.tif\"}\n");
  EXPECT_EQ(EventLine(EventOf(L"[Rip]some words")),
            "{\"event\":\"log\",\"originator\":\"rip\",\"text\":\"some words\"}\n");
}

TEST(EventLine, keeps_any_text_on_one_line_of_well_formed_json) {
  JobEvent event;
  event.text = "quote \" backslash \\ line\nend \xFF \xC3\xA4";
  const std::string line = EventLine(event);
  EXPECT_EQ(line.find('\n'), line.size() - 1);
  const auto json = nlohmann::json::parse(line);
  EXPECT_EQ(json["text"], "quote \" backslash \\ line\nend \xEF\xBF\xBD \xC3\xA4");
}

// U+009B begins a control sequence; U+202E turns the text after it.
TEST(EventLine, escapes_what_a_terminal_would_obey) {
  JobEvent event;
  event.text =
      "a\x1b\x7F\xC2\x9B"
      "b\u2028\u202E\U000E0041";
  const std::string line = EventLine(event);
  EXPECT_EQ(line,
            "{\"event\":\"log\",\"originator\":\"system\","
            "\"text\":\"a\\u001b\\u007f\\u009bb\\u2028\\u202e\\udb40\\udc41\"}\n");
  EXPECT_EQ(nlohmann::json::parse(line)["text"], event.text);
}

// No JSON can name half of a pair.
TEST(EventLine, has_the_replacement_character_for_a_lone_surrogate) {
  JobEvent event;
  event.text = "a\xED\xA0\x80z";
  const auto json = nlohmann::json::parse(EventLine(event));
  const std::string text = json["text"];
  EXPECT_EQ(text.find('\xED'), text.npos);
  EXPECT_TRUE(text.starts_with("a\uFFFD")) << text;
  EXPECT_TRUE(text.ends_with("\uFFFDz")) << text;
}

TEST(EventOfLogLine, leaves_reports_to_the_calls_that_the_ticket_gets) {
  for (const wchar_t* line : {L"[Rip]INFO: READY", L"[Rip]PROGRESS: 4 %", L"[Odalis]ERROR: no",
                              L"[Odalis]WARNING: x", L"", L"[Rip]", L"  "})
    EXPECT_FALSE(EventOfLogLine(line));
}

TEST(EventOfLogLine, takes_a_bad_page_number_as_text) {
  for (const wchar_t* line : {L"[Rip]PAGE: 0", L"[Rip]PAGE: x", L"[Rip]PAGE: 1 of 2", L"[Rip]PAGE:",
                              L"[Rip]PAGE: 99999999999", L"PAGE: 1"})
    EXPECT_EQ(EventOf(line).kind, JobEventKind::Log) << line;
}

TEST(EventOfLogLine, believes_only_the_output_engine_about_outputs) {
  EXPECT_EQ(EventOf(L"[Rip]OUTPUT: /x").kind, JobEventKind::Log);
  EXPECT_EQ(EventOf(L"OUTPUT: /x").kind, JobEventKind::Log);
  EXPECT_EQ(EventOf(L"[Odalis]OUTPUT:").kind, JobEventKind::Log);
}

TEST(EventOfLogLine, shows_the_numbers_of_control_characters) {
  EXPECT_EQ(EventOf(L"[Rip]a\x1b[2Jb\x07").text, "a\\x1b[2Jb\\x07");
}

TEST(EventLine, is_in_its_document_as_it_is_written) {
  ExpectDocumented(EventLine(EventOf(L"[Rip]PAGE: 2")));
  ExpectDocumented(EventLine(EventOf(L"[Odalis]OUTPUT: /a b/c.tif")));
  ExpectDocumented(EventLine(EventOf(L"[Rip]some words")));
  EXPECT_EQ(DocumentedLines().size(), 8U);
  for (const std::string& line : DocumentedLines())
    EXPECT_TRUE(nlohmann::json::parse(line)["event"].is_string()) << line;
}

TEST(FailureLine, is_one_object_with_all_that_is_known) {
  FailureReport report;
  report.stage = "rip";
  report.code = 260;
  report.text = "no";
  report.messages = {"a", "b"};
  report.childStatus = 3;
  report.log = "/r/l.log";
  report.hint = "h";
  ExpectDocumented(FailureLine(report));
  EXPECT_EQ(FailureLine(report),
            "{\"event\":\"failed\",\"code\":260,\"originator\":\"system\",\"text\":\"no\","
            "\"exit\":1,\"stage\":\"rip\",\"words\":[\"a\",\"b\"],\"status\":3,"
            "\"path\":\"/r/l.log\",\"hint\":\"h\"}\n");
}

}  // namespace
}  // namespace rastrel::cli
