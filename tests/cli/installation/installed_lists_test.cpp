// The lists of printers and print modes, and the defaults where none is named.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/cli/command_runner.h"

namespace rastrel::test {
namespace {

class InstalledLists : public ::testing::Test {
 protected:
  // The lines of a list that are marked as the default, up to their first tab.
  std::vector<std::string> Defaults(const char* command) {
    const CommandResult result = m_Command.Run({command});
    EXPECT_EQ(result.status, 0) << result.error;
    std::vector<std::string> names;
    for (const std::string& line : result.Lines())
      if (line.ends_with(" (default)")) names.push_back(line.substr(0, line.find('\t')));
    return names;
  }
  CommandRunner m_Command{CommandRunner::Children::None};
};

TEST_F(InstalledLists, have_one_printer_that_is_the_default) {
  EXPECT_EQ(Defaults("printers"), std::vector<std::string>{"KVI Tiff Screen Preview"});
}

TEST_F(InstalledLists, have_one_mode_that_is_the_default) {
  EXPECT_EQ(Defaults("modes"), std::vector<std::string>{"RGB/300 dpi.ps"});
}

TEST_F(InstalledLists, tell_of_a_folder_of_modes_that_can_not_be_read) {
  ASSERT_EQ(m_Command.Run({"modes"}).status, 0);  // lays the root out
  const std::string loop = (m_Command.Root() + "/Queue/rip/System/pmodes/Shop");
  ASSERT_EQ(symlink("Shop", loop.c_str()), 0);
  const CommandResult listed = m_Command.Run({"modes"});
  EXPECT_EQ(listed.status, 5);
  EXPECT_NE(listed.output.find("RGB/300 dpi.ps"), std::string::npos) << listed.output;
  EXPECT_NE(listed.error.find("pmodes/Shop"), std::string::npos) << listed.error;
  EXPECT_NE(listed.error.find("symbolic links"), std::string::npos) << listed.error;
  const CommandResult checked = m_Command.Run({"doctor"});
  EXPECT_NE(checked.output.find("not all can be read"), std::string::npos) << checked.output;
}

TEST_F(InstalledLists, of_modes_that_can_not_be_read_are_told_in_place_of_a_wrong_name) {
  ASSERT_EQ(m_Command.Run({"modes"}).status, 0);
  m_Command.Place().Write("sign.ps", "%!PS\nshowpage\n");
  EXPECT_EQ(m_Command.Run({"prefix", "sign.ps", "--mode", "Shop/wide"}).status, 2);
  ASSERT_EQ(symlink("Shop", (m_Command.Root() + "/Queue/rip/System/pmodes/Shop").c_str()), 0);
  const CommandResult wanted = m_Command.Run({"prefix", "sign.ps", "--mode", "Shop/wide"});
  EXPECT_EQ(wanted.status, 5);
  EXPECT_NE(wanted.error.find("pmodes/Shop"), std::string::npos) << wanted.error;
  // Those that can be read serve as before.
  EXPECT_EQ(m_Command.Run({"prefix", "sign.ps", "--mode", "RGB/300 dpi"}).status, 0);
}

}  // namespace
}  // namespace rastrel::test
