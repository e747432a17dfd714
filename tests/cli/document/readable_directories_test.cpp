#include "cli/document/readable_directories.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/environment_guard.h"
#include "tests/support/present_directory.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::cli {
namespace {

class Readable : public ::testing::Test {
 protected:
  Readable() {
    m_Place.Write("templates/Art/Logo.svg", "x");
    m_Place.Write("templates-of-others/logo.svg", "x");
    m_Place.Write("secret.txt", "x");
    m_Directories.Add(m_Place.Path("templates"));
  }
  bool MayRead(const std::string& name) const {
    return static_cast<bool>(m_Directories.Check(m_Place.Wide(name)));
  }

  test::ScratchDirectory m_Place;
  ReadableDirectories m_Directories;
};

TEST_F(Readable, files_in_the_directory_and_below_it_are_read) {
  EXPECT_TRUE(MayRead("templates/Art/Logo.svg"));
  EXPECT_TRUE(MayRead("templates/art\\LOGO.svg"));
  EXPECT_TRUE(MayRead("templates/Art/../Art/Logo.svg"));
}

TEST_F(Readable, a_name_that_leaves_the_directory_is_refused_with_the_place_it_leads_to) {
  const auto refused = m_Directories.Check(m_Place.Wide("templates/../secret.txt"));
  ASSERT_FALSE(refused);
  const std::string place = std::filesystem::canonical(m_Place.Path("secret.txt"));
  EXPECT_EQ(Describe(refused.Error()), "it leads to " + place +
                                           ", outside the template's directory; --allow-outside "
                                           "reads it");
}

TEST_F(Readable, a_directory_whose_name_only_begins_the_same_is_outside) {
  EXPECT_FALSE(MayRead("templates-of-others/logo.svg"));
}

TEST_F(Readable, a_link_that_leads_out_is_outside_and_one_that_stays_is_inside) {
  std::filesystem::create_symlink("../secret.txt", m_Place.Path("templates/out.svg"));
  std::filesystem::create_symlink("Art/Logo.svg", m_Place.Path("templates/in.svg"));
  std::filesystem::create_directory_symlink("..", m_Place.Path("templates/up"));
  EXPECT_FALSE(MayRead("templates/out.svg"));
  EXPECT_TRUE(MayRead("templates/in.svg"));
  EXPECT_FALSE(MayRead("templates/up/secret.txt"));
  EXPECT_TRUE(MayRead("templates/up/templates/Art/Logo.svg"));
}

TEST_F(Readable, a_name_of_nothing_is_left_to_whoever_opens_it) {
  EXPECT_TRUE(MayRead("none.svg"));
  EXPECT_TRUE(m_Directories.Check(L""));
}

TEST_F(Readable, a_directory_that_does_not_exist_adds_nothing) {
  ReadableDirectories none;
  none.Add(m_Place.Path("nowhere"));
  none.Add("");
  EXPECT_FALSE(none.Check(m_Place.Wide("secret.txt")));
}

TEST_F(Readable, the_drives_of_the_data_root_are_inside_and_its_settings_are_not) {
  const test::EnvironmentGuard root("RASTREL_HOME", m_Place.Path("home").c_str());
  m_Place.Write("home/drive_c/art/logo.svg", "x");
  m_Place.Write("home/settings.ini", "x");
  m_Directories.AddDrives();
  EXPECT_TRUE(m_Directories.Check(L"C:\\Art\\logo.svg"));
  EXPECT_FALSE(MayRead("home/settings.ini"));
  EXPECT_FALSE(m_Directories.Check(L"C:\\..\\settings.ini"));
}

}  // namespace
}  // namespace rastrel::cli
