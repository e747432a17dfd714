// The program itself, with shell scripts in the children's places.

#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/cli/command_runner.h"

namespace rastrel::test {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

class CommandTest : public ::testing::Test {
 protected:
  CommandTest() {
    m_Command.WriteUsualChildren();
    m_Command.Place().Write("job.ps", "%!PS\nshowpage\n");
  }
  // Nothing of a job is left but the files that were asked for.
  void ExpectNothingLeft() const {
    EXPECT_EQ(m_Command.NamesIn("jobs"), Names());
    EXPECT_EQ(m_Command.NamesIn("Queue/rip/CFM"), Names());
    EXPECT_EQ(m_Command.Processes(), 0);
  }
  [[nodiscard]] nlohmann::json Failure(const std::vector<std::string>& arguments, int status) {
    const CommandResult result = m_Command.Run(arguments);
    EXPECT_EQ(result.status, status) << result.error;
    auto last = nlohmann::json::parse(result.LastLine(), nullptr, false);
    return last.is_object() ? last : nlohmann::json::object();
  }
  CommandRunner m_Command{CommandRunner::Children::None};
};

TEST_F(CommandTest, prints_and_ends_with_the_delivered_files) {
  const CommandResult result = m_Command.Run({"print", "job.ps"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(result.Lines(), Names({"/out/p0001.1", "/out/p0002.2"}));
  ExpectNothingLeft();
}

TEST_F(CommandTest, help_and_version_make_no_data_root) {
  for (const char* word : {"--help", "--version", "help"}) {
    CommandRunner fresh(CommandRunner::Children::None);
    const CommandResult result = fresh.Run({word});
    EXPECT_EQ(result.status, 0) << word;
    EXPECT_FALSE(result.output.empty()) << word;
    EXPECT_FALSE(fs::exists(fresh.Root())) << word;
  }
}

TEST_F(CommandTest, wrong_use_is_2_and_is_said_on_standard_error) {
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{},
                                             {"frob"},
                                             {"print"},
                                             {"print", "job.ps", "--pages", "3-1"},
                                             {"print", "job.ps", "--copies", "0"},
                                             {"print", "job.ps", "--printer", "none such"},
                                             {"print", "job.ps", "--mode", "TIFF/none such"},
                                             {"print", "job.ps", "--mode", "no slash"},
                                             {"print", "job.ps", "--output", "job.ps/below"},
                                             {"help", "frob"},
                                             {"spool"}}) {
    const CommandResult result = m_Command.Run(arguments);
    EXPECT_EQ(result.status, 2) << result.error;
    EXPECT_FALSE(result.error.empty());
    EXPECT_TRUE(result.output.empty());
  }
  ExpectNothingLeft();
}

TEST_F(CommandTest, an_unknown_printer_or_mode_is_refused_with_the_known_ones) {
  const auto printer = m_Command.Run({"print", "job.ps", "--printer", "PNG"});
  EXPECT_NE(printer.error.find("'PNG files'"), std::string::npos) << printer.error;
  const auto mode = m_Command.Run({"print", "job.ps", "--mode", "TIFF/x"});
  EXPECT_NE(mode.error.find("'TIFF/tiff default.ps'"), std::string::npos) << mode.error;
}

TEST_F(CommandTest, bad_input_is_3) {
  m_Command.Place().Write("letter.txt", "Dear customer\n");
  m_Command.Place().Write("cut.ticket", std::string_view("\1\0\0\0\xFF\xFE", 6));
  m_Command.Place().Write("other.ticket", "no ticket at all");
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"print", "missing.ps"},
                                             {"print", "letter.txt"},
                                             {"print", "."},
                                             {"reprint", "missing"},
                                             {"reprint", "./missing"},
                                             {"ticket", "show", "missing"},
                                             {"ticket", "show", "cut.ticket"},
                                             {"ticket", "hold", "other.ticket"},
                                             {"spool", "show", "missing"},
                                             {"spool", "remove", ".."}}) {
    const CommandResult result = m_Command.Run(arguments);
    EXPECT_EQ(result.status, 3) << result.error;
    EXPECT_FALSE(result.error.empty());
  }
}

TEST_F(CommandTest, a_missing_child_is_5_with_the_way_to_mend_it) {
  fs::remove(m_Command.Root() + "/Queue/rip/corerast.exe");
  const CommandResult result = m_Command.Run({"print", "job.ps"});
  EXPECT_EQ(result.status, 5);
  EXPECT_NE(result.error.find("RIP executable missing"), std::string::npos) << result.error;
  EXPECT_NE(result.error.find("rastrel doctor"), std::string::npos) << result.error;
  ExpectNothingLeft();
}

TEST_F(CommandTest, a_data_root_that_can_not_be_written_is_5_at_once) {
  m_Command.Set("RASTREL_HOME", "/proc/nowhere");
  const CommandResult result = m_Command.Run({"print", "job.ps"});
  EXPECT_EQ(result.status, 5);
  EXPECT_NE(result.error.find("/proc/nowhere"), std::string::npos) << result.error;
  EXPECT_EQ(m_Command.Run({"doctor"}).status, 5);
}

TEST_F(CommandTest, a_failed_rip_is_reported_with_its_message_status_and_log) {
  m_Command.WriteRip("echo 'ERROR: undefined in foo' >&2\necho 'more words' >&2\nexit 3\n");
  const auto failure = Failure({"print", "job.ps", "--json"}, 1);
  EXPECT_EQ(failure["event"], "failed");
  EXPECT_EQ(failure["stage"], "rip");
  EXPECT_EQ(failure["code"], 260);
  EXPECT_EQ(failure["exit"], 1);
  EXPECT_EQ(failure["status"], 3);
  EXPECT_EQ(failure["text"], "undefined in foo");
  EXPECT_EQ(failure["words"], nlohmann::json({"undefined in foo", "more words"}));
  EXPECT_TRUE(fs::exists(failure["path"].get<std::string>())) << failure["path"];
  const CommandResult plain = m_Command.Run({"print", "job.ps"});
  for (const char* part :
       {"the RIP failed", "undefined in foo", "more words", "exit status: 3", "Queue/rip/Rastrel-"})
    EXPECT_NE(plain.error.find(part), std::string::npos) << plain.error;
  ExpectNothingLeft();
}

// Its exit status, 1, is code 258, whose own text is "Unknown error".
TEST_F(CommandTest, one_failure_of_the_rip_is_one_event_with_its_reason) {
  m_Command.WriteRip("echo 'ERROR: undefined in foo' >&2\nexit 1\n");
  const CommandResult result = m_Command.Run({"print", "job.ps", "--json"});
  Names errors;
  for (const std::string& line : result.Lines()) {
    const auto event = nlohmann::json::parse(line);
    if (event["event"] == "error") errors.push_back(event["text"]);
  }
  EXPECT_EQ(errors, Names{"undefined in foo"});
  const auto failed = nlohmann::json::parse(result.LastLine());
  EXPECT_EQ(failed["event"], "failed");
  EXPECT_EQ(failed["code"], 258);
  EXPECT_EQ(failed["text"], "undefined in foo");
}

struct Misbehaviour {
  const char* script;
  int code;
  const char* stage;
};

TEST_F(CommandTest, every_way_of_the_rip_to_fail_names_its_stage) {
  for (const Misbehaviour& one : std::vector<Misbehaviour>{
           {"exit 1", 258, "rip"},
           {"exit 2", 259, "rip"},
           {"exit 4", 8, "rip"},
           {"kill -9 $$", 8, "rip"},
           {"exec 2>&-; exit 255", 8, "rip"},
           {"exit 0", 16, "page-list"},
           {"echo nonsense", 16, "page-list"},
           {"i=0; while [ $i -lt 5000 ]; do echo 'flood of words' >&2; i=$((i+1)); done; exit 3",
            260, "rip"}}) {
    m_Command.WriteRip(one.script);
    const auto failure = Failure({"print", "job.ps", "--json"}, 1);
    EXPECT_EQ(failure["code"], one.code) << one.script;
    EXPECT_EQ(failure["stage"], one.stage) << one.script;
    ExpectNothingLeft();
  }
}

TEST_F(CommandTest, every_way_of_the_output_engine_to_fail_names_its_stage) {
  for (const Misbehaviour& one :
       std::vector<Misbehaviour>{{"cat >/dev/null; exit 1", 261, "output-engine"},
                                 {"cat >/dev/null; exit 2", 262, "output-engine"},
                                 {"cat >/dev/null; exit 3", 9, "output-engine"},
                                 {"cat >/dev/null; kill -15 $$", 9, "output-engine"}}) {
    m_Command.WriteOdalis(one.script);
    const auto failure = Failure({"print", "job.ps", "--spool", "--json"}, 1);
    EXPECT_EQ(failure["code"], one.code) << one.script;
    EXPECT_EQ(failure["stage"], one.stage) << one.script;
    ExpectNothingLeft();
  }
}

// The write to it may or may not come before its end, and the library has a code for each.
TEST_F(CommandTest, an_output_engine_that_ignores_its_input_is_a_failure_and_no_cancelling) {
  m_Command.WriteOdalis("exec <&-\nexit 3\n");
  const auto failure = Failure({"print", "job.ps", "--json"}, 1);
  EXPECT_EQ(failure["event"], "failed");
  EXPECT_EQ(failure["stage"], "output-engine");
  EXPECT_TRUE(failure["code"] == 9 || failure["code"] == 12) << failure;
  ExpectNothingLeft();
}

TEST_F(CommandTest, a_page_that_the_job_does_not_have_is_named_by_number) {
  const auto failure = Failure({"print", "job.ps", "--pages", "1,9", "--json"}, 1);
  EXPECT_EQ(failure["stage"], "page-selection");
  EXPECT_EQ(failure["text"], "page 9 was asked for, and the job has 2");
}

TEST_F(CommandTest, files_that_were_delivered_before_a_failure_are_reported) {
  m_Command.WriteOdalis("echo 'OUTPUT: /out/first.tif' >&2\ncat >/dev/null\nexit 1\n");
  const CommandResult result = m_Command.Run({"print", "job.ps"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.Lines(), Names({"/out/first.tif"}));
}

TEST_F(CommandTest, an_output_path_longer_than_a_log_line_comes_whole) {
  const std::string path = "/" + std::string(2000, 'x');
  m_Command.WriteOdalis("cat >/dev/null\necho 'OUTPUT: " + path + "' >&2\n");
  EXPECT_EQ(m_Command.Run({"print", "job.ps"}).Lines(), Names({path}));
}

TEST_F(CommandTest, the_job_is_a_copy_with_a_safe_name_and_the_users_folder_stays_as_it_was) {
  const std::string name = "we\\ird (na\"me)'\nx";
  m_Command.Place().Write("inner/" + name, "%!PS\n");
  fs::permissions(m_Command.Place().Path("inner"), fs::perms::owner_read | fs::perms::owner_exec);
  m_Command.WriteRip("printf 'job is %s\\n' \"$5\" | tr '\\\\' / >&2\nexit 3\n");
  const auto failure = Failure({"print", "inner/" + name, "--json"}, 1);
  const std::string words = failure["words"][0];
  EXPECT_TRUE(words.starts_with("job is " + m_Command.Root() + "/jobs/")) << words;
  EXPECT_TRUE(words.ends_with("/we_ird _na_me___x.ps")) << words;
  EXPECT_EQ(std::distance(fs::directory_iterator(m_Command.Place().Path("inner")), {}), 1);
  fs::permissions(m_Command.Place().Path("inner"), fs::perms::owner_all);
}

TEST_F(CommandTest, keep_ps_keeps_copy_and_prefix_and_no_setting) {
  const CommandResult result = m_Command.Run({"print", "job.ps", "--keep-ps"});
  EXPECT_EQ(result.status, 0);
  const auto jobs = m_Command.NamesIn("jobs");
  ASSERT_EQ(jobs.size(), 1U);
  EXPECT_NE(result.error.find(m_Command.Root() + "/jobs/" + jobs.front()), std::string::npos);
  EXPECT_EQ(m_Command.NamesIn("jobs/" + jobs.front()), Names({"job.ps", "job.psp"}));
  EXPECT_FALSE(fs::exists(m_Command.Root() + "/settings.ini"));
}

TEST_F(CommandTest, the_printers_name_reaches_rip_and_engine) {
  m_Command.WriteRip("cat \"$(printf %s \"$4\" | tr '\\\\' /)\" >&2\nexit 1\n");
  const auto failure = m_Command.Run({"print", "job.ps", "--printer", "PDF files", "--json"});
  EXPECT_NE(failure.output.find("(PDF files:) SelectPrinter"), std::string::npos);
  m_Command.WriteUsualChildren();
  m_Command.Set("RASTREL_PRINTER", "something else");
  const auto printed = m_Command.Run({"print", "job.ps", "--printer", "PDF files", "--json"});
  EXPECT_NE(printed.output.find("printer is PDF files"), std::string::npos) << printed.output;
}

TEST_F(CommandTest, a_relative_output_directory_is_made_and_reaches_the_engine_whole) {
  const auto result = m_Command.Run({"print", "job.ps", "--output", "a/b", "--pages", "2"});
  EXPECT_EQ(result.Lines(), Names({m_Command.Place().Path("a/b/p0002.1")}));
  EXPECT_TRUE(fs::is_directory(m_Command.Place().Path("a/b")));
}

TEST_F(CommandTest, an_interrupt_aborts_the_job_and_leaves_nothing) {
  m_Command.WriteRip("echo 'INFO: INTERPRETING' >&2\nexec sleep 600\n");
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    m_Command.Start({"print", "job.ps", "--spool"}, "Rip Interpreting");
    m_Command.Signal(signal);
    m_Command.Signal(SIGINT);
    const CommandResult result = m_Command.Wait();
    EXPECT_EQ(result.status, 4) << result.error;
    EXPECT_NE(result.error.find("stopping"), std::string::npos) << result.error;
    EXPECT_NE(result.error.find("cancelled"), std::string::npos) << result.error;
    ExpectNothingLeft();
  }
}

TEST_F(CommandTest, an_interrupt_in_the_output_stage_is_reported_as_json_too) {
  m_Command.WriteOdalis("echo 'OUTPUT: /out/one' >&2\nexec sleep 600\n");
  m_Command.Start({"print", "job.ps", "--json"}, "/out/one");
  m_Command.Signal(SIGINT);
  const CommandResult result = m_Command.Wait();
  EXPECT_EQ(result.status, 4);
  const auto last = nlohmann::json::parse(result.LastLine());
  EXPECT_EQ(last["event"], "cancelled");
  EXPECT_EQ(last["code"], 12);
  EXPECT_EQ(last["exit"], 4);
  EXPECT_EQ(last["paths"], nlohmann::json({"/out/one"}));
  ExpectNothingLeft();
}

TEST_F(CommandTest, every_line_of_json_is_an_object_with_an_event) {
  m_Command.WriteOdalis("printf 'a \\377 \"quoted\" \\\\ line\\n' >&2\ncat >/dev/null\n");
  ASSERT_EQ(m_Command.Run({"print", "job.ps", "--spool", "--save-ticket", "t"}).status, 0);
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"print", "job.ps", "--json"},
                                             {"reprint", "job", "--json"},
                                             {"reprint", "none", "--json"},
                                             {"print", "--json"},
                                             {"printers", "--json"},
                                             {"modes", "--json"},
                                             {"doctor", "--json"},
                                             {"ticket", "show", "t", "--json"},
                                             {"ticket", "hold", "t", "--json"},
                                             {"ticket", "release", "t", "--json"},
                                             {"spool", "list", "--json"},
                                             {"spool", "show", "job", "--json"},
                                             {"spool", "size", "--json"},
                                             {"spool", "open", "job", "--json"},
                                             {"spool", "remove", "job", "--json"}}) {
    const CommandResult result = m_Command.Run(arguments);
    EXPECT_FALSE(result.Lines().empty()) << arguments[0];
    for (const std::string& line : result.Lines()) {
      const auto json = nlohmann::json::parse(line, nullptr, false);
      ASSERT_TRUE(json.is_object()) << line;
      EXPECT_TRUE(json["event"].is_string()) << line;
    }
  }
}

TEST_F(CommandTest, a_reader_that_goes_away_does_not_stop_the_job) {
  ASSERT_EQ(m_Command.Run({"modes"}).status, 0);  // lays the root out
  m_Command.Place().Write("go.sh", std::string("#!/bin/sh\n\"") + RASTREL_COMMAND +
                                       "\" print job.ps --spool --json | head -n 1 >/dev/null\n");
  const std::string shell = "sh '" + m_Command.Place().Path("go.sh") + "'";
  const std::string environment = "cd '" + m_Command.Place().Path() + "' && RASTREL_HOME='" +
                                  m_Command.Root() + "' RASTREL_RESOURCES=/nowhere ";
  ASSERT_EQ(std::system((environment + shell).c_str()), 0);
  EXPECT_EQ(m_Command.NamesIn("Queue/rip/CFM"), Names({"job.cfm"}));
  EXPECT_EQ(m_Command.NamesIn("jobs"), Names());
}

TEST_F(CommandTest, a_ticket_holds_and_is_released_and_prints_from_its_pages_alone) {
  ASSERT_EQ(m_Command.Run({"print", "job.ps", "--spool", "--save-ticket", "t"}).status, 0);
  fs::remove(m_Command.Place().Path("job.ps"));
  EXPECT_EQ(m_Command.Run({"ticket", "hold", "t"}).status, 0);
  EXPECT_EQ(m_Command.Run({"reprint", "t"}).status, 1);
  EXPECT_EQ(m_Command.Run({"ticket", "release", "t"}).status, 0);
  m_Command.WriteRip("exit 3\n");
  const CommandResult result =
      m_Command.Run({"reprint", "t", "--copies", "2", "--printer", "PNG files", "--json"});
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_NE(result.output.find("printer is PNG files"), std::string::npos);
  const auto last = nlohmann::json::parse(result.LastLine());
  EXPECT_EQ(last["paths"].size(), 4U);
  EXPECT_EQ(m_Command.Run({"spool", "remove", "job"}).status, 0);
  EXPECT_EQ(m_Command.Run({"reprint", "t"}).status, 3);
}

TEST_F(CommandTest, a_ticket_shows_its_spooled_pages) {
  ASSERT_EQ(m_Command.Run({"print", "job.ps", "--spool", "--save-ticket", "t"}).status, 0);
  const std::string spool = m_Command.Root() + "/Queue/rip/CFM/job.cfm/";
  const CommandResult shown = m_Command.Run({"ticket", "show", "t"});
  EXPECT_NE(shown.output.find(spool + "p0001\n"), std::string::npos) << shown.output;
  EXPECT_NE(shown.output.find(spool + "p0002\n"), std::string::npos) << shown.output;
  const auto json = nlohmann::json::parse(m_Command.Run({"ticket", "show", "t", "--json"}).output);
  EXPECT_EQ(json["paths"], nlohmann::json({spool + "p0001", spool + "p0002"}));
}

TEST_F(CommandTest, a_ticket_without_pages_says_why_it_can_not_be_reprinted) {
  ASSERT_EQ(m_Command.Run({"print", "job.ps", "--save-ticket", "t"}).status, 0);
  const CommandResult result = m_Command.Run({"reprint", "t"});
  EXPECT_EQ(result.status, 3);
  EXPECT_NE(result.error.find("--spool"), std::string::npos) << result.error;
}

TEST_F(CommandTest, a_ticket_that_is_cut_at_any_byte_is_refused) {
  ASSERT_EQ(m_Command.Run({"print", "job.ps", "--spool", "--save-ticket", "t"}).status, 0);
  const std::string whole = m_Command.Place().Read("t");
  for (std::size_t length = 0; length < whole.size(); length += 7) {
    m_Command.Place().Write("cut", whole.substr(0, length));
    EXPECT_EQ(m_Command.Run({"ticket", "show", "cut"}).status, 3) << length;
  }
  m_Command.Place().Write("cut", whole + "x");
  EXPECT_EQ(m_Command.Run({"ticket", "show", "cut"}).status, 3);
}

TEST_F(CommandTest, a_ticket_that_can_not_be_saved_is_reported_after_the_files) {
  const CommandResult result =
      m_Command.Run({"print", "job.ps", "--save-ticket", "/proc/nowhere/t"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.Lines().size(), 2U);
  EXPECT_NE(result.error.find("/proc/nowhere"), std::string::npos) << result.error;
}

TEST_F(CommandTest, prints_of_one_name_at_once_get_a_spool_entry_each) {
  ASSERT_EQ(m_Command.Run({"modes"}).status, 0);  // lays the root out
  std::string script = "cd '" + m_Command.Place().Path() + "' || exit 1\n";
  for (int count = 0; count < 6; ++count)
    script += std::string("RASTREL_HOME='") + m_Command.Root() + "' RASTREL_RESOURCES=/nowhere '" +
              RASTREL_COMMAND + "' print job.ps --spool >/dev/null 2>&1 &\n";
  m_Command.Place().Write("go.sh", script + "wait\n");
  ASSERT_EQ(std::system(("sh '" + m_Command.Place().Path("go.sh") + "'").c_str()), 0);
  EXPECT_EQ(m_Command.NamesIn("Queue/rip/CFM"),
            Names({"job-2.cfm", "job-3.cfm", "job-4.cfm", "job-5.cfm", "job-6.cfm", "job.cfm"}));
  for (const std::string& name : m_Command.NamesIn("Queue/rip/CFM"))
    EXPECT_EQ(m_Command.NamesIn("Queue/rip/CFM/" + name), Names({".kept", "p0001", "p0002"}))
        << name;
}

TEST_F(CommandTest, several_files_print_one_after_the_other_and_a_failure_is_reported_at_the_end) {
  m_Command.Place().Write("bad.ps", "%!PS\n");
  m_Command.WriteRip("case \"$*\" in *bad*) echo 'ERROR: no' >&2; exit 1;; esac\n" +
                     std::string("mkdir -p System/c-out/r/p0001\n") +
                     "printf 'begin := once\\n id := x\\n dir := %s/System/c-out/r/\\n"
                     " title := p0001\\nend\\n' \"$PWD\"\n");
  const auto result = m_Command.Run({"print", "bad.ps", "job.ps", "job.ps", "--output", "out"});
  EXPECT_EQ(result.status, 1) << result.error;
  EXPECT_EQ(result.Lines().size(), 2U) << result.output;
  EXPECT_NE(result.error.find("printing: bad.ps"), std::string::npos) << result.error;
}

TEST_F(CommandTest, a_missing_file_among_several_is_reported_before_any_prints) {
  const auto result = m_Command.Run({"print", "job.ps", "missing.ps"});
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.output, "");
  EXPECT_NE(result.error.find("missing.ps"), std::string::npos) << result.error;
}

TEST_F(CommandTest, one_ticket_for_several_files_is_wrong_use) {
  EXPECT_EQ(m_Command.Run({"print", "job.ps", "job.ps", "--save-ticket", "t"}).status, 2);
}

}  // namespace
}  // namespace rastrel::test
