// The cut color of print, preview and queue, with the children that ship with them.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/cli/command_runner.h"

namespace rastrel::test {
namespace {

using Texts = std::vector<std::string>;

class CutColorTest : public ::testing::Test {
 protected:
  void WriteJob(const std::string& name) const {
    m_Command.Place().Write("sign.eps",
                            "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 72 72\n%%EndComments\n"
                            "[/Separation (" +
                                name +
                                ") cvn /DeviceCMYK {0 exch dup 0}] setcolorspace 1 setcolor\n"
                                "9 9 50 50 rectstroke showpage\n");
  }
  [[nodiscard]] Texts Warnings(Texts arguments) {
    arguments.emplace_back("--json");
    const CommandResult result = m_Command.Run(arguments);
    EXPECT_EQ(result.status, 0) << result.output << result.error;
    Texts texts;
    for (const std::string& line : result.Lines()) {
      const auto object = nlohmann::json::parse(line);
      if (object["event"] == "warning") texts.push_back(object["text"]);
    }
    return texts;
  }
  [[nodiscard]] static std::string NothingIn(const std::string& color) {
    return "No path and no text is painted in the cut colour " + color + "; nothing is cut in it.";
  }

  CommandRunner m_Command{CommandRunner::Children::Real};
};

// In the job and on the command line: UTF-8 and Windows-1252.
TEST_F(CutColorTest, of_a_name_beyond_ascii_is_met_in_either_encoding) {
  for (const std::string job : {"Schnitt\\344", "Schnitt\\303\\244"}) {
    WriteJob(job);
    for (const std::string given : {"spot:Schnitt\xC3\xA4", "spot:Schnitt\xE4"}) {
      SCOPED_TRACE(job + " " + given);
      EXPECT_EQ(Warnings({"preview", "sign.eps", "-o", "a.png", "--cut-color", given}), Texts());
      EXPECT_EQ(Warnings({"queue", "sign.eps", "--force", "--cut-color", given}), Texts());
    }
  }
}

TEST_F(CutColorTest, in_which_nothing_is_painted_is_warned_of) {
  WriteJob("Schnitt\\344");
  const Texts other{NothingIn("separation schnitt\xC3\xA4")};
  const std::string given = "spot:schnitt\xC3\xA4";
  EXPECT_EQ(Warnings({"preview", "sign.eps", "-o", "a.png", "--cut-color", given}), other);
  EXPECT_EQ(Warnings({"preview", "sign.eps", "-o", "a.png", "--planar", "--cut-color", given}),
            other);
  EXPECT_EQ(Warnings({"queue", "sign.eps", "--force", "--cut-color", given}), other);
  EXPECT_EQ(Warnings({"print", "sign.eps", "--cut-color", "rgb:255,0,0"}),
            Texts{NothingIn("rgb 1.0 0.0 0.0")});
  EXPECT_EQ(Warnings({"print", "sign.eps"}), Texts());
  const CommandResult plain = m_Command.Run({"print", "sign.eps", "--cut-color", "rgb:255,0,0"});
  EXPECT_NE(plain.error.find("warning: " + NothingIn("rgb 1.0 0.0 0.0") + "\n"), std::string::npos)
      << plain.error;
}

TEST_F(CutColorTest, warns_of_each_of_two_that_are_not_met) {
  WriteJob("Cut");
  EXPECT_EQ(Warnings({"queue", "sign.eps", "--force", "--cut-color", "spot:Cut", "--half-cut-color",
                      "spot:Half"}),
            Texts{NothingIn("separation Half")});
}

}  // namespace
}  // namespace rastrel::test
