#include "interpreter/separations.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "tests/support/scratch_directory.h"

namespace rastrel::interpreter {
namespace {

TEST(PlaneName, stands_between_the_first_parenthesis_and_the_end) {
  EXPECT_EQ(PlaneName("0001(Cyan).tif"), "Cyan");
  EXPECT_EQ(PlaneName("12345(PANTONE 485 C).tif"), "PANTONE 485 C");
  EXPECT_EQ(PlaneName("0001(a (b) ).c).tif"), "a (b) ).c");
}

TEST(PlaneName, has_its_escapes_resolved) {
  EXPECT_EQ(PlaneName("0001(50%25 Gold%2FSilver).tif"), "50% Gold/Silver");
  EXPECT_EQ(PlaneName("0001(5%).tif"), "5%");
  EXPECT_EQ(PlaneName("0001(5%zz).tif"), "5%zz");
}

TEST(PlaneName, is_utf8_whatever_the_bytes) {
  EXPECT_EQ(PlaneName("0001(Gr\xC3\xBCn).tif"), "Gr\xC3\xBCn");
  EXPECT_EQ(PlaneName("0001(Gr\xFCn).tif"), "Gr\xC3\xBCn");
  EXPECT_EQ(PlaneName("0001(Gr%FCn).tif"), "Gr\xC3\xBCn");
}

TEST(PlaneName, is_empty_for_another_file_name) {
  for (const char* const name : {"", "0001.tif", "0001(Cyan)", "0001(Cyan.tif", "0001().tif",
                                 ").tif", "(", "0001Cyan).tif"}) {
    EXPECT_EQ(PlaneName(name), "") << name;
  }
}

TEST(Separations, that_are_no_pictures_are_refused) {
  const test::ScratchDirectory directory;
  EXPECT_FALSE(HasSeparations(directory.Path(), 1));
  for (const char* const name : {"", "(Cyan)", "(Magenta)", "(Yellow)", "(Black)"}) {
    directory.Write("work/0001" + std::string(name) + ".tif", "II*\0garbage");
  }
  EXPECT_TRUE(HasSeparations(directory.Path("work"), 1));
  EXPECT_FALSE(HasSeparations(directory.Path("work"), 2));
  const auto made = MakeSeparationPage(directory.Path("work"), directory.Path(), 1, {}, 1000);
  ASSERT_FALSE(made);
  EXPECT_EQ(made.Error().error, EINVAL);
}

TEST(Separations, without_a_process_color_are_refused) {
  const test::ScratchDirectory directory;
  for (const char* const name : {"", "(Cyan)", "(Magenta)", "(Yellow)", "(Spot)"}) {
    directory.Write("work/0001" + std::string(name) + ".tif", "x");
  }
  EXPECT_FALSE(MakeSeparationPage(directory.Path("work"), directory.Path(), 1, {}, 1000));
  EXPECT_FALSE(directory.Has("p0001"));
}

}  // namespace
}  // namespace rastrel::interpreter
