#include <gtest/gtest.h>

#include "children/corerast/taken_tiff.h"
#include "tests/support/environment_guard.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::corerast {
namespace {

class PrintersThatTakeTiffTest : public ::testing::Test {
 protected:
  PrintersThatTakeTiffTest() : m_Home("RASTREL_HOME", m_Root.Path()) {}

  // Whether the pages of the printer "Plotter" go to the disk as they are, by one section.
  bool IsTaken(const std::string& section) {
    m_Root.Write("devices.txt", section);
    const auto takes = PrintersThatTakeTiff();
    return takes && takes("Plotter");
  }

  test::ScratchDirectory m_Root;
  test::EnvironmentGuard m_Home;
};

const std::string Tiff = "kind = file\nformat = tiff\npattern = {output}/{page}.tif\n";

TEST_F(PrintersThatTakeTiffTest, are_those_of_files_in_tiff_without_compression) {
  EXPECT_TRUE(IsTaken("[Plotter]\ncompression = none\n" + Tiff));
  EXPECT_TRUE(IsTaken("[*]\ncompression = none\n" + Tiff)) << "that section takes every name";
}

TEST_F(PrintersThatTakeTiffTest, are_none_that_get_another_file) {
  EXPECT_FALSE(IsTaken("[Plotter]\n" + Tiff)) << "LZW, by default";
  EXPECT_FALSE(IsTaken(
      "[Plotter]\nkind = file\nformat = png\ncompression = none\npattern = {output}/p.png\n"));
  EXPECT_FALSE(
      IsTaken("[Plotter]\nkind = command\nformat = tiff\ncompression = none\n"
              "command = /bin/true\n"))
      << "a program gets a file that goes again";
  EXPECT_FALSE(IsTaken("[Other]\ncompression = none\n" + Tiff));
}

TEST_F(PrintersThatTakeTiffTest, are_none_where_the_file_can_not_be_read) {
  EXPECT_FALSE(IsTaken("[Plotter]\nno setting\n"));
  m_Root.Write("devices.txt", "");
  EXPECT_FALSE(PrintersThatTakeTiff()("Plotter"));
  const test::EnvironmentGuard nowhere("RASTREL_HOME", m_Root.Path("missing"));
  EXPECT_FALSE(PrintersThatTakeTiff());
}

}  // namespace
}  // namespace rastrel::corerast
