// Scale, levels and cut color of a printed job, as its kept prefix has them.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/cli/command_runner.h"

namespace rastrel::test {
namespace {

namespace fs = std::filesystem;

class PrintSettings : public ::testing::Test {
 protected:
  PrintSettings() {
    m_Command.WriteUsualChildren();
    m_Command.Place().Write("job.ps", "%!PS\nshowpage\n");
  }
  // The prefix of a print with these options.
  [[nodiscard]] std::string PrefixOf(std::vector<std::string> options) {
    options.insert(options.begin(), {"print", "job.ps", "--keep-ps"});
    const CommandResult result = m_Command.Run(options);
    EXPECT_EQ(result.status, 0) << result.error;
    for (const fs::directory_entry& kept : fs::directory_iterator(m_Command.Root() + "/jobs")) {
      std::ifstream file(kept.path() / "job.psp", std::ios::binary);
      std::string text{std::istreambuf_iterator<char>(file), {}};
      fs::remove_all(kept.path());
      return text;
    }
    ADD_FAILURE() << "nothing was kept";
    return {};
  }
  CommandRunner m_Command{CommandRunner::Children::None};
};

TEST_F(PrintSettings, a_job_without_options_has_none) {
  const std::string plain = PrefixOf({});
  EXPECT_NE(plain.find("\n  null SetScaleTarget\n"), std::string::npos);
  EXPECT_NE(plain.find("\nfalse $setcutter\n"), std::string::npos);
  EXPECT_EQ(plain.find("Levels"), std::string::npos);
  EXPECT_EQ(plain, PrefixOf({"--scale", "none"}));
}

TEST_F(PrintSettings, reach_the_prefix) {
  const std::string text = PrefixOf({"--scale", "10x5in", "--levels", "0,1,128", "--levels-gray",
                                     "10,1,255", "--cut-color", "cmyk:0,128,0%,100%"});
  EXPECT_NE(text.find("/BBoxInches [ 0.0 5.000 10.000 0.0 ] def"), std::string::npos);
  EXPECT_NE(text.find("\nfalse 0.0000 0.5020 0.0000 1.0000 /DeviceCMYK $setcutter\n"),
            std::string::npos);
  EXPECT_NE(text.find("/redextratransfertable <\n0000"), std::string::npos);
  EXPECT_NE(text.find("/grayextratransfertable <\na00a00"), std::string::npos);
  EXPECT_NE(PrefixOf({"--scale", "A4"}).find("\n  /ConcinnaA4 SetScaleTarget\n"),
            std::string::npos);
}

TEST_F(PrintSettings, that_are_wrong_are_wrong_use_and_print_nothing) {
  for (const std::vector<std::string>& options : std::vector<std::vector<std::string>>{
           {"--scale", "10x5"}, {"--levels", "1,2"}, {"--cut-color", "spot:CutContour"}}) {
    std::vector<std::string> words{"print", "job.ps"};
    words.insert(words.end(), options.begin(), options.end());
    const CommandResult result = m_Command.Run(words);
    EXPECT_EQ(result.status, 2) << result.error;
    EXPECT_NE(result.error.find(options.front()), std::string::npos) << result.error;
    EXPECT_TRUE(result.output.empty());
  }
}

}  // namespace
}  // namespace rastrel::test
