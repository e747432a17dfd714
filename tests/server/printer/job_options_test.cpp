#include "server/printer/job_options.h"

#include <gtest/gtest.h>

#include <string>

namespace rastrel::server {
namespace {

std::vector<OfferedMode> Modes() {
  return {{"Gray/300.ps", "gray-300", 300, 300, false},
          {"RGB/300.ps", "rgb-300", 300, 300, true},
          {"RGB/600.ps", "rgb-600", 600, 600, true}};
}

TEST(JobOptionsTest, NoWishIsNoOption) { EXPECT_TRUE(OptionsOf({}, Modes()).empty()); }

TEST(JobOptionsTest, CopiesAndPagesAreThoseOfTheCommand) {
  SenderWishes wishes;
  wishes.copies = 3;
  wishes.pages = {{1, 2}, {4, 4}, {0, 3}, {5, 4}};
  EXPECT_EQ(OptionsOf(wishes, Modes()), (JobOptions{{"copies", "3"}, {"pages", "1-2,4"}}));
}

TEST(JobOptionsTest, AModeMayBeNamed) {
  SenderWishes wishes;
  wishes.mode = "rgb-600";
  wishes.horizontal = wishes.vertical = 300;
  EXPECT_EQ(OptionsOf(wishes, Modes()), (JobOptions{{"mode", "RGB/600.ps"}}));
  wishes.mode = "other";
  EXPECT_TRUE(OptionsOf(wishes, Modes()).empty());
}

TEST(JobOptionsTest, AResolutionAndGrayChooseAMode) {
  SenderWishes wishes;
  wishes.horizontal = wishes.vertical = 300;
  EXPECT_EQ(OptionsOf(wishes, Modes()), (JobOptions{{"mode", "RGB/300.ps"}}));
  wishes.gray = true;
  EXPECT_EQ(OptionsOf(wishes, Modes()), (JobOptions{{"mode", "Gray/300.ps"}}));
  wishes.horizontal = wishes.vertical = 0;
  EXPECT_EQ(OptionsOf(wishes, Modes()), (JobOptions{{"mode", "Gray/300.ps"}}));
  wishes.horizontal = wishes.vertical = 600;
  EXPECT_TRUE(OptionsOf(wishes, Modes()).empty());
}

TEST(JobOptionsTest, AFittedDocumentIsScaledToTheMedia) {
  SenderWishes wishes;
  wishes.fit = FitSize{21000, 29700};
  EXPECT_EQ(OptionsOf(wishes, Modes()), (JobOptions{{"scale", "21x29.7cm"}}));
  wishes.fit = FitSize{0, 29700};
  EXPECT_TRUE(OptionsOf(wishes, Modes()).empty());
}

TEST(JobOptionsTest, ForeignNamesBecomeOneCleanLine) {
  EXPECT_EQ(CleanName("a\nb\x1b[2J", "x"), "a\\x0ab\\x1b[2J");
  EXPECT_EQ(CleanName("  ", "x"), "x");
  EXPECT_EQ(CleanName("", "x"), "x");
  EXPECT_EQ(CleanName(std::string(255, 'a'), "x"), std::string(255, 'a'));
  EXPECT_EQ(CleanName(std::string(256, 'a'), "x"), std::string(255, 'a'));
  EXPECT_EQ(CleanName(std::string(254, 'a') + "\xC3\xA4", "x"), std::string(254, 'a'));
}

TEST(JobOptionsTest, ADeviceHasAnAddressOfPlainCharacters) {
  EXPECT_EQ(PrinterNameOf("PNG files"), "PNG-files");
  EXPECT_EQ(PrinterNameOf("/../a?b"), "a-b");
  EXPECT_EQ(PrinterNameOf("\xC3\xA4"), "printer");
  EXPECT_EQ(PrinterNameOf(std::string(61, 'a')), std::string(60, 'a'));
}

}  // namespace
}  // namespace rastrel::server
