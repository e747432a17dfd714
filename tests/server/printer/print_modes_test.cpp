#include "server/printer/print_modes.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "rastrel/platform/os/private_directory.h"

namespace rastrel::server {
namespace {

TEST(PrintModesTest, AKeywordHasLettersDigitsAndDashes) {
  EXPECT_EQ(KeywordOfMode("RGB/300 dpi.ps"), "rgb-300-dpi");
  EXPECT_EQ(KeywordOfMode("A//B__C.ps"), "a-b-c");
  EXPECT_EQ(KeywordOfMode("\xC3\xA4.ps"), "mode");
  EXPECT_EQ(KeywordOfMode(std::string(63, 'a')), std::string(63, 'a'));
  EXPECT_EQ(KeywordOfMode(std::string(64, 'a')), std::string(64, 'a'));
  EXPECT_EQ(KeywordOfMode(std::string(65, 'a')), std::string(64, 'a'));
}

TEST(PrintModesTest, AModesTextSaysItsResolutionAndColor) {
  const OfferedMode color = ModeOfText("X/a.ps", "%!PS\n3Color\n600 300 SetXYResolution\n");
  EXPECT_EQ(color.horizontal, 600);
  EXPECT_EQ(color.vertical, 300);
  EXPECT_TRUE(color.isColor);
  EXPECT_FALSE(ModeOfText("X/a.ps", "1Color").isColor);
}

TEST(PrintModesTest, OtherTextSaysNoResolution) {
  EXPECT_EQ(ModeOfText("a", "% 600 600 SetXYResolution").horizontal, 0);
  EXPECT_EQ(ModeOfText("a", "SetXYResolution").horizontal, 0);
  EXPECT_EQ(ModeOfText("a", "600 SetXYResolution").horizontal, 0);
  EXPECT_EQ(ModeOfText("a", "0 600 SetXYResolution").vertical, 0);
  EXPECT_EQ(ModeOfText("a", "x 600 SetXYResolution").vertical, 0);
  EXPECT_EQ(ModeOfText("a", "10000 10000 SetXYResolution").horizontal, 10000);
  EXPECT_EQ(ModeOfText("a", "10001 10001 SetXYResolution").horizontal, 0);
}

TEST(PrintModesTest, ThoseOfADataRootHaveDifferentKeywordsAndNoPreviews) {
  const auto place = *os::PrivateDirectory::Make("rastrel-modes-");
  const std::string modes = place.Path() + "/rip/System/pmodes";
  for (const char* folder : {"/A b", "/A-b", "/Screen"}) {
    std::filesystem::create_directories(modes + folder);
    std::ofstream(modes + folder + "/c.ps") << "300 300 SetXYResolution";
    std::ofstream(modes + folder + "/notes.txt") << "no mode";
  }
  const auto offered = OfferedModes(place.Path());
  ASSERT_EQ(offered.size(), 2u);
  EXPECT_EQ(offered[0].name, "A b/c.ps");
  EXPECT_EQ(offered[0].keyword, "a-b-c");
  EXPECT_EQ(offered[1].name, "A-b/c.ps");
  EXPECT_EQ(offered[1].keyword, "a-b-c-2");
  EXPECT_TRUE(OfferedModes(place.Path() + "/none").empty());
}

}  // namespace
}  // namespace rastrel::server
