#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "children/corerast/command_line.h"

namespace rastrel::corerast {
namespace {

std::string ReadLine(std::vector<const char*> arguments) {
  const auto line = ReadCommandLine(arguments);
  if (!line) {
    EXPECT_EQ(line.Error().code, FailureCode::BadInput);
    return Describe(line.Error());
  }
  return std::string(line->install ? "install " : "") + line->prefix + "|" + line->job;
}

TEST(RipCommandLine, takes_the_librarys_arguments) {
  EXPECT_EQ(ReadLine({"-M", "-Q", "-m128", "/nowhere/a.psp", "/nowhere/a.ps"}),
            "/nowhere/a.psp|/nowhere/a.ps");
  EXPECT_EQ(ReadLine({"-M", "-Q", "-m128", "-s", "/nowhere/a.ps"}), "install |/nowhere/a.ps");
  EXPECT_EQ(ReadLine({"\\nowhere\\a b.ps"}), "|/nowhere/a b.ps");
}

TEST(RipCommandLine, refuses_the_rest_as_bad_input) {
  EXPECT_EQ(ReadLine({}), "No job was given");
  EXPECT_EQ(ReadLine({"-s"}), "No job was given");
  EXPECT_EQ(ReadLine({"-m12x", "a"}), "Unknown option -m12x");
  EXPECT_EQ(ReadLine({"a", "b", "c"}), "More than a prefix and a job were given");
}

}  // namespace
}  // namespace rastrel::corerast
