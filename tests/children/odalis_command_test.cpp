#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>

#include "tests/children/odalis_fixture.h"
#include "tests/support/wait_until.h"

// Devices of the kind "command", through the program.
namespace rastrel::odalis {
namespace {

using namespace testing;
using Names = std::vector<std::string>;

class CommandDevice : public ::testing::Test {
 protected:
  CommandDevice() { WriteRgbPage(Root() + "/pages/p1", "A 'Sign' $HOME", 3, "Cmd"); }

  const std::string& Root() const { return m_Directory.Path(); }
  std::string Scratch() const { return Root() + "/tmp"; }

  /// A run with this command; files for commands are made in Scratch().
  std::unique_ptr<EngineRun> Start(const std::string& command, const std::string& more = "",
                                   bool planar = false) const {
    WriteFile(Root() + "/devices.txt",
              "[Cmd]\nkind = command\nformat = pdf\ncommand = " + command + "\n" + more);
    WriteFile(Scratch() + "/keep", "");
    unlink((Scratch() + "/keep").c_str());
    return std::make_unique<EngineRun>(Root(), Cfm2(Root() + "/pages/", {{"p1", "once"}}),
                                       Names{"TMPDIR=" + Scratch()}, planar);
  }
  std::unique_ptr<EngineRun> Run(const std::string& command, const std::string& more = "",
                                 bool planar = false) const {
    auto run = Start(command, more, planar);
    run->Finish();
    return run;
  }
  std::string ScriptPath() const { return Root() + "/script"; }
  /// The word of a command that runs this text.
  std::string Script(const std::string& body) const {
    WriteFile(ScriptPath(), "#!/bin/sh\n" + body);
    chmod(ScriptPath().c_str(), 0755);
    return "'" + ScriptPath() + "'";
  }
  bool PageIsThere() const { return !NamesIn(Root() + "/pages/p1").empty(); }

 private:
  TemporaryDirectory m_Directory;
};

TEST_F(CommandDevice, gets_the_file_by_its_path_and_on_its_input) {
  const auto run = Run(Script("cat > '" + Root() + "/input'\ncp \"$1\" '" + Root() +
                              "/copy'\nprintf '%s|' \"$@\" > '" + Root() + "/words'\n") +
                       " {file} \"{job} x\" {page} {copy} {printer} ';rm -rf /'");
  EXPECT_EQ(run->Status(), 0) << run->Report();
  EXPECT_TRUE(ReadFile(Root() + "/input").starts_with("%PDF-1.4"));
  EXPECT_EQ(ReadFile(Root() + "/input"), ReadFile(Root() + "/copy"));
  const std::string words = ReadFile(Root() + "/words");
  const std::string file = words.substr(0, words.find('|'));
  EXPECT_TRUE(file.starts_with(Scratch() + "/")) << file;
  EXPECT_TRUE(file.ends_with("/A 'Sign' $HOME-3.pdf")) << file;
  EXPECT_EQ(words.substr(words.find('|')), "|A 'Sign' $HOME x|3|1|Cmd|;rm -rf /|");
  EXPECT_EQ(run->Lines("PAGE: "), (Names{"3"}));
  EXPECT_TRUE(run->Lines("OUTPUT: ").empty());
  EXPECT_EQ(NamesIn(Scratch()), Names{});
  EXPECT_FALSE(PageIsThere());  // once
}

TEST_F(CommandDevice, is_not_found_in_a_relative_directory_of_the_path) {
  const std::string bin = Root() + "/bin";
  WriteFile(bin + "/deliver-here", "#!/bin/sh\ntouch '" + Root() + "/ran'\n");
  chmod((bin + "/deliver-here").c_str(), 0755);
  const std::string relative = std::filesystem::relative(bin).string();
  WriteFile(Root() + "/devices.txt",
            "[Cmd]\nkind = command\nformat = pdf\ncommand = deliver-here\n");
  const auto run = [&](const std::string& path) {
    EngineRun engine(Root(), Cfm2(Root() + "/pages/", {{"p1"}}), Names{"PATH=" + path});
    engine.Finish();
    return engine.Status();
  };
  EXPECT_NE(run(relative + "::."), 0);
  EXPECT_FALSE(std::filesystem::exists(Root() + "/ran"));
  EXPECT_EQ(run(relative + ":" + bin), 0);
  EXPECT_TRUE(std::filesystem::exists(Root() + "/ran"));
}

TEST_F(CommandDevice, that_others_may_change_is_not_run) {
  const std::string script = Script("touch '" + Root() + "/ran'\n");
  chmod(ScriptPath().c_str(), 0757);
  EXPECT_EQ(ReadFile(Root() + "/ran"), "");
  const auto run = Start(script);
  run->Finish();
  EXPECT_NE(run->Status(), 0);
  EXPECT_NE(run->Report().find("trust '" + ScriptPath() + "': every user may write to it"),
            std::string::npos)
      << run->Report();
  EXPECT_FALSE(std::filesystem::exists(Root() + "/ran"));
}

TEST_F(CommandDevice, is_run_for_each_plane) {
  const auto run =
      Run(Script("echo \"$1\" \"${2##*/}\" >> '" + Root() + "/planes'\n") + " {plane} {file}", "",
          true);
  EXPECT_EQ(run->Status(), 0) << run->Report();
  EXPECT_EQ(ReadFile(Root() + "/planes"),
            "Red A 'Sign' $HOME-3-Red.pdf\nGreen A 'Sign' $HOME-3-Green.pdf\n"
            "Blue A 'Sign' $HOME-3-Blue.pdf\n");
}

TEST_F(CommandDevice, a_failing_command_is_reported_with_status_and_last_line) {
  const std::string script = Script("echo first\necho 'out of paper' >&2\necho\nexit 3\n");
  const auto run = Run(script);
  EXPECT_EQ(run->Status(), 1);
  EXPECT_EQ(run->Lines("ERROR: "), (Names{"page 'p1': the command '" + ScriptPath() +
                                          "' ended with status 3: out of paper"}));
  EXPECT_EQ(NamesIn(Scratch()), Names{});
  EXPECT_TRUE(PageIsThere());
}

TEST_F(CommandDevice, a_command_that_dies_of_a_signal_is_reported) {
  const std::string script = Script("kill -11 $$\n");
  EXPECT_EQ(Run(script)->Lines("ERROR: "),
            (Names{"page 'p1': the command '" + ScriptPath() + "' was ended by signal 11"}));
}

TEST_F(CommandDevice, a_page_is_unsure_if_its_command_was_ended_before_it_could_say_how_it_went) {
  const Names page{"3"};
  EXPECT_EQ(Run(Script("kill -9 $$\n"))->Lines("UNSURE: "), page);
  EXPECT_EQ(Run(Script("sleep 600\n"), "timeout = 1\n")->Lines("UNSURE: "), page);
  EXPECT_EQ(Run(Script("sh -c 'kill -9 $$'\nexit $?\n"))->Lines("UNSURE: "), page);
  EXPECT_EQ(Run(Script("exit 128\n"))->Lines("UNSURE: "), Names{});
  EXPECT_EQ(Run(Script("exit 1\n"))->Lines("UNSURE: "), Names{});
  EXPECT_EQ(Run("/no/such/program")->Lines("UNSURE: "), Names{});
}

TEST_F(CommandDevice, a_page_is_unsure_if_the_command_failed_after_an_earlier_plane) {
  const std::string second = Script("test $1 = Red\n") + " {plane}";
  EXPECT_EQ(Run(second, "", true)->Lines("UNSURE: "), Names{"3"});
  const std::string first = Script("test $1 != Red\n") + " {plane}";
  EXPECT_EQ(Run(first, "", true)->Lines("UNSURE: "), Names{});
}

TEST_F(CommandDevice, a_command_that_cannot_be_started_is_reported) {
  const auto missing = Run("/no/such/program {file}");
  EXPECT_EQ(missing->Status(), 1);
  EXPECT_EQ(
      missing->Lines("ERROR: "),
      (Names{"page 'p1': start the command '/no/such/program': No such file or directory (2)"}));
  EXPECT_NE(Run("'" + Root() + "/devices.txt'")->Report().find("Permission denied"),
            std::string::npos);
}

TEST_F(CommandDevice, a_name_without_a_path_is_looked_for) {
  EXPECT_EQ(Run("true")->Status(), 0);
  EXPECT_EQ(Run("false")->Status(), 2);  // the page was printed once, and is gone
}

TEST_F(CommandDevice, a_command_that_takes_too_long_is_ended_with_its_children) {
  const std::string script = Script("sleep 600 &\necho $! > '" + Root() + "/id'\nsleep 600\n");
  const auto run = Run(script, "timeout = 1\n");
  EXPECT_EQ(run->Status(), 1);
  EXPECT_EQ(run->Lines("ERROR: "),
            (Names{"page 'p1': the command '" + ScriptPath() + "' was ended after 1 seconds"}));
  const pid_t child = std::stoi(ReadFile(Root() + "/id"));
  EXPECT_TRUE(test::WaitUntil([child] { return kill(child, 0) != 0; }));
  EXPECT_EQ(NamesIn(Scratch()), Names{});
}

TEST_F(CommandDevice, a_flood_of_words_neither_blocks_nor_fills_memory) {
  const std::string script =
      Script("head -c 50000000 /dev/zero | tr '\\0' x\necho\necho end\nexit 9\n");
  EXPECT_EQ(Run(script)->Lines("ERROR: "),
            (Names{"page 'p1': the command '" + ScriptPath() + "' ended with status 9: end"}));
}

TEST_F(CommandDevice, a_grandchild_that_keeps_the_output_open_does_not_hold_the_engine) {
  const auto run = Run(Script("sleep 600 &\necho $! > '" + Root() + "/id'\nexit 0\n"));
  EXPECT_EQ(run->Status(), 0) << run->Report();
  const pid_t grandchild = std::stoi(ReadFile(Root() + "/id"));
  EXPECT_EQ(kill(grandchild, 0), 0) << "the engine has waited for its end";
  kill(grandchild, SIGKILL);
}

TEST_F(CommandDevice, dies_with_the_engine_and_leaves_no_file) {
  const auto run = Start(Script("echo $$ > '" + Root() + "/id.new'\nmv '" + Root() + "/id.new' '" +
                                Root() + "/id'\nsleep 600\n"));
  ASSERT_TRUE(test::WaitUntil([&] { return !ReadFile(Root() + "/id").empty(); }));
  const pid_t command = std::stoi(ReadFile(Root() + "/id"));
  ASSERT_EQ(kill(command, 0), 0);
  EXPECT_EQ(NamesIn(Scratch()).size(), 1u);
  run->Kill();
  run->Finish();  // the end of its report comes when all is cleared away
  EXPECT_EQ(run->Status(), -SIGKILL);
  EXPECT_EQ(NamesIn(Scratch()), Names{});
  EXPECT_TRUE(test::WaitUntil([command] { return kill(command, 0) != 0; }));
  EXPECT_TRUE(PageIsThere());
}

}  // namespace
}  // namespace rastrel::odalis
