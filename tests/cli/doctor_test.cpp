#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "interpreter/interpreter.h"
#include "tests/cli/command_runner.h"

namespace rastrel::cli {
namespace {

namespace fs = std::filesystem;

// The walls that the machine's own answers say there are.
std::string WallsText() {
  const auto walls = interpreter::WallsOfThisMachine();
  std::string text = "guardian, limits";
  if (walls.filesVersion > 0)
    text += ", files (Landlock version " + std::to_string(walls.filesVersion) + ")";
  if (walls.calls) text += ", system calls (seccomp)";
  return text;
}

class Doctor : public testing::Test {
 protected:
  // Puts a shell script in the interpreter's place.
  void WriteInterpreter(const std::string& script) {
    m_Command.Place().Write("bin/gs", "#!/bin/sh\n" + script);
    fs::permissions(m_Command.Place().Path("bin/gs"), fs::perms::owner_all);
    m_Command.Set("PATH", m_Command.Place().Path("bin") + ":/usr/bin:/bin");
  }

  test::CommandRunner m_Command{test::CommandRunner::Children::Real};
};

TEST_F(Doctor, says_which_walls_there_are) {
  const std::string output = m_Command.Run({"doctor"}).output;
  EXPECT_NE(output.find("walls: " + WallsText()), std::string::npos) << output;
}

TEST_F(Doctor, says_which_walls_there_are_as_json) {
  bool found = false;
  for (const std::string& line : m_Command.Run({"doctor", "--json"}).Lines()) {
    const auto check = nlohmann::json::parse(line);
    if (check["name"] != "walls") continue;
    found = true;
    EXPECT_TRUE(check["text"].get<std::string>().starts_with(WallsText())) << line;
    const auto walls = interpreter::WallsOfThisMachine();
    EXPECT_EQ(check["state"], walls.filesVersion > 0 && walls.calls ? "good" : "warning");
  }
  EXPECT_TRUE(found);
}

TEST_F(Doctor, says_whether_small_jobs_may_have_an_interpreter_that_is_kept_ready) {
  m_Command.Set("RASTREL_WARM", "0");
  const std::string off = m_Command.Run({"doctor"}).output;
  EXPECT_NE(off.find("  ok     warm interpreter: switched off (RASTREL_WARM)"), std::string::npos)
      << off;
  m_Command.Set("RASTREL_WARM", "1");
  const std::string on = m_Command.Run({"doctor"}).output;
  EXPECT_NE(on.find("  ok     warm interpreter: small jobs may have one"), std::string::npos) << on;
  fs::permissions(m_Command.Root() + "/warm", fs::perms::others_read, fs::perm_options::add);
  const std::string open = m_Command.Run({"doctor"}).output;
  EXPECT_NE(open.find("warm interpreter: its directory is missing, or not this user's alone"),
            std::string::npos)
      << open;
  WriteInterpreter("exec /usr/bin/gs \"$@\"\n");
  const std::string script = m_Command.Run({"doctor"}).output;
  EXPECT_NE(script.find("warm interpreter: none: gs on the path is not the machine's own"),
            std::string::npos)
      << script;
}

TEST_F(Doctor, says_which_walls_stand_around_the_drawing_program) {
  const std::string output = m_Command.Run({"doctor"}).output;
  const std::string walls = WallsText().substr(std::string("guardian, ").size());
  EXPECT_NE(output.find("  ok     drawing: rastrel-draw, its walls: " + walls + " ("),
            std::string::npos)
      << output;
  m_Command.Set("RASTREL_RESOURCES", m_Command.Place().Path());
  EXPECT_NE(m_Command.Run({"doctor"}).output.find("  note   drawing: the program rastrel-draw, "),
            std::string::npos);
}

TEST_F(Doctor, says_which_plane_reader_conversions_get) {
  const std::string installed = m_Command.Run({"doctor"}).output;
  EXPECT_NE(installed.find("  ok     plane reader: libcfplane.so, installed ("), std::string::npos)
      << installed;
  m_Command.Set("RASTREL_RESOURCES", m_Command.Place().Path());
  EXPECT_NE(m_Command.Run({"doctor"})
                .output.find("  note   plane reader: the library libcfplane.so, which reads"),
            std::string::npos);
}

TEST_F(Doctor, names_a_plane_reader_on_the_search_path_and_one_that_others_may_change) {
  m_Command.Place().Write("bin/cfplane.dll", "");
  const std::string reader = m_Command.Place().Path("bin/cfplane.dll");
  fs::permissions(reader, fs::perms::owner_read);
  m_Command.Set("PATH", m_Command.Place().Path("bin") + ":/usr/bin:/bin");
  const std::string found = m_Command.Run({"doctor"}).output;
  EXPECT_NE(found.find("  ok     plane reader: another one, cfplane.dll"), std::string::npos)
      << found;
  EXPECT_NE(found.find(reader), std::string::npos) << found;
  fs::permissions(reader, fs::perms::owner_read | fs::perms::others_write);
  const std::string refused = m_Command.Run({"doctor"}).output;
  EXPECT_NE(refused.find("  note   plane reader: not loaded: "), std::string::npos) << refused;
}

TEST_F(Doctor, starts_the_interpreter_as_every_run_does) {
  WriteInterpreter(
      "[ \"$GS_OPTIONS$GS_LIB\" = '' ] && [ \"$4\" = -dSAFER ] || exit 4\necho 1.2.3\n");
  m_Command.Set("GS_OPTIONS", "-dNOSAFER");
  m_Command.Set("GS_LIB", "/somewhere");
  const std::string output = m_Command.Run({"doctor"}).output;
  EXPECT_NE(output.find("ghostscript: version 1.2.3 ("), std::string::npos) << output;
}

// The shell itself takes the advice, and removes that one directory.
TEST_F(Doctor, advises_a_removal_that_a_shell_carries_out_for_any_name) {
  const std::string left = "Queue/rip/System/c-out/it's $(touch oops) & `b`";
  m_Command.Set("RASTREL_HOME", m_Command.Place().Path("a root's"));
  ASSERT_EQ(m_Command.Run({"modes"}).status, 0);
  const auto path = fs::path(m_Command.Place().Path("a root's")) / left;
  fs::create_directories(path / "p0001");
  fs::last_write_time(path, fs::file_time_type::clock::now() - std::chrono::hours(2));
  const std::string output = m_Command.Run({"doctor"}).output;
  const std::string advice = "remove it: ";
  const std::size_t at = output.find(advice);
  ASSERT_NE(at, std::string::npos) << output;
  const std::size_t begin = at + advice.size();
  const std::string command = output.substr(begin, output.find('\n', begin) - begin);
  EXPECT_EQ(std::system(command.c_str()), 0) << command;
  EXPECT_FALSE(fs::exists(path));
  EXPECT_TRUE(fs::exists(path.parent_path()));
  EXPECT_FALSE(fs::exists("oops"));
}

TEST_F(Doctor, finds_an_interpreter_that_does_not_run) {
  WriteInterpreter("echo 'Error: no \033[31mresources' >&2\nexit 3\n");
  const auto result = m_Command.Run({"doctor"});
  EXPECT_EQ(result.status, 5);
  EXPECT_NE(result.output.find("gs does not run: Error: no \\x1b[31mresources"), std::string::npos)
      << result.output;
}

}  // namespace
}  // namespace rastrel::cli
