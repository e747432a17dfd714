// The prefix by itself, for a look and as a file.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/cli/command_runner.h"

namespace rastrel::test {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

class PrefixCommandTest : public ::testing::Test {
 protected:
  PrefixCommandTest() { m_Command.Place().Write("sign.ps", "%!PS\nshowpage\n"); }
  // The command's output with these options.
  [[nodiscard]] std::string Shown(std::vector<std::string> options) {
    options.insert(options.begin(), {"prefix", "sign.ps"});
    const CommandResult result = m_Command.Run(options);
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(m_Command.NamesIn("jobs"), Names());
    return result.output;
  }
  CommandRunner m_Command{CommandRunner::Children::None};
};

TEST_F(PrefixCommandTest, is_shown_with_its_last_byte_in_letters) {
  const std::string text = Shown({});
  EXPECT_TRUE(text.starts_with("\nserverdict begin 0 exitserver\n\n\n%%Title: sign\n\n"));
  EXPECT_TRUE(text.ends_with("% -- End of $setcutter Override --\n\n<04>\n"));
  EXPECT_EQ(text.find('\x04'), std::string::npos);
  EXPECT_NE(text.find("(KVI Tiff Screen Preview:) SelectPrinter"), std::string::npos);
  EXPECT_NE(text.find("(%Lumiscript%pmodes/RGB/300 dpi.ps) SelectPrintMode"), std::string::npos);
}

TEST_F(PrefixCommandTest, is_written_as_it_is_and_as_a_print_has_it) {
  const std::string shown = Shown({"--scale", "A4", "--levels", "0,2,255", "-o", "out.psp"});
  EXPECT_EQ(shown, "");
  const std::string bytes = m_Command.Place().Read("out.psp");
  EXPECT_TRUE(bytes.ends_with("\n\n\x04"));
  EXPECT_NE(bytes.find("/ConcinnaA4 SetScaleTarget"), std::string::npos);
  m_Command.WriteUsualChildren();
  ASSERT_EQ(m_Command.Run({"print", "sign.ps", "--scale", "A4", "--levels", "0,2,255", "--keep-ps"})
                .status,
            0);
  const auto jobs = m_Command.NamesIn("jobs");
  ASSERT_EQ(jobs.size(), 1U);
  std::ifstream file(m_Command.Root() + "/jobs/" + jobs.front() + "/sign.psp", std::ios::binary);
  EXPECT_EQ(bytes, std::string(std::istreambuf_iterator<char>(file), {}));
}

// Written in place, the file would keep its link count, and a disk that is full would empty it.
TEST_F(PrefixCommandTest, takes_the_place_of_a_file_as_a_whole) {
  m_Command.Place().Write("out.psp", "old");
  fs::create_hard_link(m_Command.Place().Path("out.psp"), m_Command.Place().Path("twin"));
  EXPECT_EQ(Shown({"-o", "out.psp"}), "");
  EXPECT_TRUE(m_Command.Place().Read("out.psp").ends_with("\x04"));
  EXPECT_EQ(m_Command.Place().Read("twin"), "old");
}

TEST_F(PrefixCommandTest, of_a_preview_without_a_resolution_is_that_of_72_dpi) {
  const std::string shown = Shown({"--preview"});
  EXPECT_EQ(shown, Shown({"--preview", "--dpi", "72"}));
  EXPECT_NE(shown, Shown({"--preview", "--dpi", "73"}));
}

TEST_F(PrefixCommandTest, of_a_preview_has_its_own_sections) {
  const std::string text = Shown({"--preview", "--dpi", "150", "--cut-only", "--cut-color",
                                  "spot:CutContour", "--levels", "0,1,128"});
  EXPECT_NE(text.find("\nmark [1 0 0 1 0 0] (CutContour) /Separation $setcutter\n"),
            std::string::npos);
  EXPECT_NE(text.find("\n150 dup SetXYResolution \n(Frameless) DeviceSelect \nInitRIP \n\n<04>\n"),
            std::string::npos);
  EXPECT_NE(Shown({"--preview"}).find("\n72 dup SetXYResolution \nInitRIP \n"), std::string::npos);
  EXPECT_EQ(Shown({"--preview", "--planar"}).find("SetXYResolution"), std::string::npos);
  EXPECT_NE(Shown({"--preview", "--cut-color", "cmyk:50%,0,0,255"})
                .find("\nmark 0.5000 0.0000 0.0000 1.0000 [1 0 0 1 0 0] /DeviceCMYK"),
            std::string::npos);
}

TEST_F(PrefixCommandTest, wrong_use_is_reported_by_option) {
  for (const std::vector<std::string>& options :
       std::vector<std::vector<std::string>>{{"--dpi", "72"},
                                             {"--cut-only"},
                                             {"--planar"},
                                             {"--dpi", "0", "--preview"},
                                             {"--dpi", "x", "--preview"},
                                             {"--dpi", "4801", "--preview"},
                                             {"--cut-color", "spot:CutContour"},
                                             {"--scale", "x)"},
                                             {"--copies", "2"}}) {
    std::vector<std::string> words{"prefix", "sign.ps"};
    words.insert(words.end(), options.begin(), options.end());
    const CommandResult result = m_Command.Run(words);
    EXPECT_EQ(result.status, 2) << options.front();
    EXPECT_NE(result.error.find(options.front()), std::string::npos) << result.error;
    EXPECT_EQ(result.output, "");
  }
}

TEST_F(PrefixCommandTest, a_file_that_can_not_be_written_is_reported_and_a_missing_job_too) {
  const CommandResult result = m_Command.Run({"prefix", "sign.ps", "-o", "none/such/out.psp"});
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.error.find("none/such/out.psp"), std::string::npos) << result.error;
  EXPECT_EQ(m_Command.Run({"prefix", "sign.ps", "-o", "/dev/full"}).status, 1);
  EXPECT_EQ(m_Command.Run({"prefix", "missing.ps"}).status, 3);
}

}  // namespace
}  // namespace rastrel::test
