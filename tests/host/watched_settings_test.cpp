#include "host/watched_settings.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "host/document_host.h"
#include "rastrel/platform/host/settings.h"
#include "tests/support/environment_guard.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::document {
namespace {

using Refused = std::vector<std::pair<std::wstring, std::wstring>>;

// A host whose settings.ini can't be written until it is removed.
class WatchedSettingsTest : public testing::Test {
 protected:
  WatchedSettingsTest() {
    std::filesystem::create_directory(m_Root.Path("settings.ini"));
    host::SetHost(&m_Host);
  }
  ~WatchedSettingsTest() override { host::SetHost(nullptr); }

  static int Store(const wchar_t* key) {
    return WriteIntKorvane(L"Pages", key, 7, DS_USER, nullptr);
  }

  test::ScratchDirectory m_Root;
  test::EnvironmentGuard m_Home{"RASTREL_HOME", m_Root.Path()};
  DocumentHost m_Host;
};

TEST_F(WatchedSettingsTest, a_setting_that_can_not_be_stored_is_remembered_once) {
  EXPECT_EQ(Store(L"First"), 0);
  EXPECT_EQ(Store(L"Second"), 0);
  EXPECT_EQ(Store(L"First"), 0);
  EXPECT_EQ(m_Host.RefusedSettings(), (Refused{{L"Pages", L"First"}, {L"Pages", L"Second"}}));
}

TEST_F(WatchedSettingsTest, a_setting_that_is_stored_is_read_again_and_is_not_remembered) {
  std::filesystem::remove(m_Root.Path("settings.ini"));
  EXPECT_NE(Store(L"First"), 0);
  EXPECT_EQ(GetIntKorvane(L"Pages", L"First", 1, DS_USER, nullptr), 7);
  EXPECT_EQ(m_Host.RefusedSettings(), Refused());
}

}  // namespace
}  // namespace rastrel::document
