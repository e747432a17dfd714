#include "rastrel/conversion/planes/cfm_dll_if_default.h"

#include <gtest/gtest.h>

#include <optional>

#include "rastrel/platform/os/shared_library.h"
#include "tests/support/recording_host.h"

using rastrel::test::RecordingHost;
using Reader = DynamicLinkBase<CFMDllIFDefault>;
using Lines = std::vector<std::string>;

namespace {

const std::string Search = R"(SearchPath("cfplane.dll") -> "/programs/cfplane.dll")";
const std::string Load = R"(LoadLibrary("/programs/cfplane.dll") -> library)";
const std::string FindCreate =
    "GetCreateFunction(library, _ZN13DynamicExportI8CFMDllIFE6CreateEv) -> Create";
const std::string FindDestroy =
    "GetDestroyFunction(library, _ZN13DynamicExportI8CFMDllIFE7DestroyEPS0_) -> Destroy";

class PlaneReaderBinding : public ::testing::Test {
 protected:
  ~PlaneReaderBinding() override { EXPECT_EQ(m_Host.LeftOpen(), Lines()); }

  // Whether a user got an instance; it has ended when this returns.
  static bool UseOnce() { return static_cast<bool>(Reader()); }

  RecordingHost m_Host;
};

TEST_F(PlaneReaderBinding, finds_loads_resolves_and_makes_an_instance_and_gives_all_back) {
  {
    const Reader reader;
    ASSERT_TRUE(reader);
    EXPECT_NE(reader->GetInterface({}), nullptr);
  }
  EXPECT_EQ(m_Host.m_Calls.All(),
            (Lines{Search, Load, FindCreate, FindDestroy, "Create() -> reader",
                   "GetInterface({00000000-0000-0000-0000-000000000000}) -> plane",
                   "Destroy(reader)", "FreeLibrary(library)"}));
}

TEST_F(PlaneReaderBinding, takes_the_bare_name_where_the_search_path_has_none) {
  m_Host.m_Planes.m_FoundPath.clear();
  EXPECT_TRUE(UseOnce());
  EXPECT_EQ(
      m_Host.m_Calls.Of({"SearchPath", "LoadLibrary"}),
      (Lines{R"(SearchPath("cfplane.dll") -> "")", R"(LoadLibrary("cfplane.dll") -> library)"}));
}

TEST_F(PlaneReaderBinding, takes_a_path_of_259_characters_and_for_longer_ones_the_bare_name) {
  for (const std::size_t length : {258U, 259U, 260U}) {
    const std::wstring path = L"/" + std::wstring(length - 1, L'p');
    m_Host.m_Planes.m_FoundPath = path;
    m_Host.m_Calls.Clear();
    EXPECT_TRUE(UseOnce());
    const std::wstring loaded = length < 260 ? path : L"cfplane.dll";
    EXPECT_EQ(m_Host.m_Calls.Of({"LoadLibrary"}),
              (Lines{"LoadLibrary(" + rastrel::test::TextOf(loaded) + ") -> library"}))
        << length;
  }
}

TEST_F(PlaneReaderBinding, is_empty_for_a_host_without_a_plane_reader) {
  m_Host.m_HasPlaneReader = false;
  EXPECT_FALSE(UseOnce());
  EXPECT_EQ(m_Host.m_Calls.All(), Lines());
}

TEST_F(PlaneReaderBinding, stays_empty_where_the_library_does_not_load) {
  m_Host.m_Calls.Next("LoadLibrary", {0});
  EXPECT_FALSE(UseOnce());
  EXPECT_EQ(m_Host.m_Calls.All(),
            (Lines{Search, R"(LoadLibrary("/programs/cfplane.dll") -> null)"}));
  EXPECT_TRUE(UseOnce()) << "the next user tries again";
}

TEST_F(PlaneReaderBinding, frees_a_library_that_lacks_either_function) {
  const std::string noCreate =
      "GetCreateFunction(library, _ZN13DynamicExportI8CFMDllIFE6CreateEv) -> null";
  const std::string noDestroy =
      "GetDestroyFunction(library, _ZN13DynamicExportI8CFMDllIFE7DestroyEPS0_) -> null";
  m_Host.m_Calls.Next("GetCreateFunction", {0});
  EXPECT_FALSE(UseOnce());
  EXPECT_EQ(m_Host.m_Calls.All(),
            (Lines{Search, Load, noCreate, FindDestroy, "FreeLibrary(library)"}));
  m_Host.m_Calls.Clear();
  m_Host.m_Calls.Next("GetDestroyFunction", {0});
  EXPECT_FALSE(UseOnce());
  EXPECT_EQ(m_Host.m_Calls.All(),
            (Lines{Search, Load, FindCreate, noDestroy, "FreeLibrary(library)"}));
  EXPECT_TRUE(UseOnce()) << "the next user tries again";
}

TEST_F(PlaneReaderBinding, without_an_instance_has_nothing_to_destroy_and_frees_the_library) {
  m_Host.m_Calls.Next("Create", {0});
  EXPECT_FALSE(UseOnce());
  EXPECT_EQ(m_Host.m_Calls.All(), (Lines{Search, Load, FindCreate, FindDestroy, "Create() -> null",
                                         "FreeLibrary(library)"}));
}

TEST_F(PlaneReaderBinding, is_shared_by_users_that_overlap_and_freed_after_the_last) {
  {
    std::optional<Reader> first(std::in_place);
    const Reader second;
    EXPECT_TRUE(second);
    first.reset();
    EXPECT_EQ(m_Host.m_Calls.Count("FreeLibrary"), 0U);
    const Reader third;
    EXPECT_TRUE(third);
  }
  EXPECT_EQ(m_Host.m_Calls.All(),
            (Lines{Search, Load, FindCreate, FindDestroy, "Create() -> reader",  //
                   Search, "Create() -> reader", "Destroy(reader)",              //
                   Search, "Create() -> reader", "Destroy(reader)",              //
                   "Destroy(reader)", "FreeLibrary(library)"}));
}

TEST_F(PlaneReaderBinding, is_loaded_anew_after_it_was_freed) {
  EXPECT_TRUE(UseOnce());
  EXPECT_TRUE(UseOnce());
  EXPECT_EQ(m_Host.m_Calls.Of({"LoadLibrary", "FreeLibrary"}),
            (Lines{Load, "FreeLibrary(library)", Load, "FreeLibrary(library)"}));
}

TEST_F(PlaneReaderBinding, counts_no_user_whose_binding_stayed_empty) {
  m_Host.m_Calls.Next("LoadLibrary", {0, 1});
  const Reader failed;
  EXPECT_FALSE(failed);
  {
    const Reader reader;
    EXPECT_TRUE(reader);
  }
  EXPECT_EQ(m_Host.m_Calls.Count("FreeLibrary"), 1U);
}

// In a process of its own, since the functions stay bound for good.
TEST(PlaneReaderBindingDeathTest, never_frees_the_module_that_it_lives_in_and_keeps_its_functions) {
  const auto run = [] {
    RecordingHost host;
    host.m_Planes.m_Library = rastrel::os::OwnModule();
    bool good = static_cast<bool>(Reader());
    good = static_cast<bool>(Reader()) && good;
    good = good && host.m_Calls.All() == Lines{Search,
                                               Load,
                                               FindCreate,
                                               FindDestroy,
                                               "Create() -> reader",
                                               "Destroy(reader)",
                                               Search,
                                               "Create() -> reader",
                                               "Destroy(reader)"};
    std::_Exit(good ? 0 : 1);
  };
  EXPECT_EXIT(run(), ::testing::ExitedWithCode(0), "");
}

}  // namespace
