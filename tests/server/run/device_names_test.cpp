#include "server/run/device_names.h"

#include <gtest/gtest.h>

#include <fstream>

#include "rastrel/platform/os/private_directory.h"

namespace rastrel::server {
namespace {

class DeviceNamesTest : public testing::Test {
 protected:
  DeviceNamesTest() : m_Place(*os::PrivateDirectory::Make("rastrel-device-names-")) {
    m_Settings.devices.emplace_back().name = "Plotter";
  }
  [[nodiscard]] std::string File() const { return m_Place.Path() + "/devices.txt"; }
  void Write(const std::string& text) const { std::ofstream(File()) << text; }

  os::PrivateDirectory m_Place;
  ServerSettings m_Settings;
};

using Names = std::vector<std::string>;

TEST_F(DeviceNamesTest, those_of_the_settings_stand_first_and_no_name_twice) {
  Write(
      "[Wide]\nkind = file\nformat = tiff\npattern = {output}/w.tif\n"
      "[*]\nkind = file\nformat = tiff\npattern = {output}/a.tif\n"
      "[Plotter]\nkind = file\nformat = tiff\npattern = {output}/p.tif\n");
  const auto names = DeviceNames(File(), m_Settings);
  ASSERT_TRUE(names) << Describe(names.Error());
  EXPECT_EQ(*names, (Names{"Plotter", "Wide"}));
}

TEST_F(DeviceNamesTest, without_the_file_only_the_settings_have_some) {
  EXPECT_EQ(DeviceNames(File(), m_Settings).ValueOr({}), Names{"Plotter"});
}

TEST_F(DeviceNamesTest, a_fault_is_told_with_file_and_line) {
  Write("[Wide]\nno setting\n");
  const auto names = DeviceNames(File(), m_Settings);
  ASSERT_FALSE(names);
  EXPECT_NE(Describe(names.Error()).find(File()), std::string::npos) << Describe(names.Error());
  EXPECT_NE(Describe(names.Error()).find("line 2"), std::string::npos) << Describe(names.Error());
}

}  // namespace
}  // namespace rastrel::server
