// The lists of printers and print modes, and the defaults where none is named.

#include <gtest/gtest.h>

#include <algorithm>

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

}  // namespace
}  // namespace rastrel::test
