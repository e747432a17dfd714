#include "host/plane_library.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "host/document/document.h"
#include "host/document/notices.h"
#include "host/document_host.h"
#include "rastrel/conversion/bitmap/load_cfm_bitmap.h"
#include "rastrel/conversion/planes/cfm_dll_if_default.h"
#include "rastrel/platform/os/text.h"
#include "tests/support/environment_guard.h"
#include "tests/support/page_files.h"

namespace rastrel::document {
namespace {

using Reader = DynamicLinkBase<CFMDllIFDefault>;

// {20D77C57-E591-4554-9341-193D5265AEAD}
constexpr InterfaceId PlaneInterface{
    0x20D77C57, 0xE591, 0x4554, {0x93, 0x41, 0x19, 0x3D, 0x52, 0x65, 0xAE, 0xAD}};

// A host that is installed, a data root of its own, and a page of 1 by 1 gray pixel.
class PlaneLibraryOfTheHost : public ::testing::Test {
 protected:
  PlaneLibraryOfTheHost() {
    host::SetHost(&m_Host);
    test::WriteGrayPage(m_Place, "job.cfm", 1, 1, "g");
    std::filesystem::create_directory(m_Place.Path("bin"));
  }
  ~PlaneLibraryOfTheHost() override { host::SetHost(nullptr); }

  // Puts a library on the search path as "cfplane.dll".
  void Install(const std::string& library) const {
    std::filesystem::copy_file(library, Installed());
    std::filesystem::permissions(Installed(), std::filesystem::perms::owner_read);
  }
  [[nodiscard]] std::string Installed() const { return m_Place.Path("bin/cfplane.dll"); }
  [[nodiscard]] static std::string StripedReader() {
    return std::string(RASTREL_BINARY_DIR) + "/tests/readers/striped_reader.so";
  }

  // The size of the page as the bound reader has it; "none" without a reader.
  [[nodiscard]] std::string SizeByReader() const {
    const Reader reader;
    if (!reader) return "none";
    CFMPlane* const plane = reader->GetInterface(PlaneInterface);
    std::int32_t width = 0;
    std::int32_t height = 0;
    if (plane == nullptr || plane->Open(m_Place.Wide("job.cfm/.info").c_str()) == 0 ||
        plane->GetDimensions(width, height) == 0)
      return "failed";
    return std::to_string(width) + " by " + std::to_string(height);
  }
  [[nodiscard]] std::string Loss() {
    const auto& losses = m_Host.GetNotices().Losses();
    return losses.empty() ? "" : os::Utf8FromWide(losses.back());
  }

  const test::ScratchDirectory m_Place;
  const test::EnvironmentGuard m_Home{"RASTREL_HOME", m_Place.Path("root")};
  const test::EnvironmentGuard m_Path{"PATH", m_Place.Path("bin")};
  DocumentHost m_Host;
};

TEST_F(PlaneLibraryOfTheHost, loads_the_installed_reader_where_the_search_path_has_none) {
  EXPECT_EQ(m_Host.GetPlaneReader()->SearchPath(L"cfplane.dll"), L"");
  EXPECT_EQ(SizeByReader(), "1 by 1");
  EXPECT_EQ(Loss(), "");
}

TEST_F(PlaneLibraryOfTheHost, loads_another_reader_of_that_name_from_the_search_path_first) {
  Install(StripedReader());
  EXPECT_EQ(m_Host.GetPlaneReader()->SearchPath(L"cfplane.dll"), os::FromNative(Installed()));
  EXPECT_EQ(SizeByReader(), "3 by 2");
}

TEST_F(PlaneLibraryOfTheHost, takes_no_library_from_a_directory_that_is_no_full_path) {
  Install(StripedReader());
  const test::EnvironmentGuard path("PATH", "bin:.:");
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(m_Place.Path("bin"));
  EXPECT_EQ(SizeByReader(), "1 by 1");
  std::filesystem::current_path(before);
}

TEST_F(PlaneLibraryOfTheHost, gives_a_conversion_the_pixels_of_the_reader_that_it_found) {
  PS2BmpParams params;
  params.hasBounds = 0;
  params.cut.resolution = 254;
  const auto bounds = [&] {
    host::ObjectHandle object = 0;
    EXPECT_TRUE(conversion::LoadCfmBitmap(m_Place.Wide("job.cfm"), params, object));
    return m_Host.GetDocument().Bounds(object);
  };
  EXPECT_NEAR(bounds().xmax, 0.01, 1e-9) << "one pixel of the installed reader";
  Install(StripedReader());
  const BOUNDS striped = bounds();
  EXPECT_NEAR(striped.xmax, 0.03, 1e-9) << "three pixels of the other";
  EXPECT_NEAR(striped.ymax, 0.02, 1e-9);
}

TEST_F(PlaneLibraryOfTheHost, refuses_a_library_that_others_may_change) {
  Install(StripedReader());
  ASSERT_EQ(::chmod(Installed().c_str(), 0666), 0);
  EXPECT_EQ(SizeByReader(), "none");
  EXPECT_NE(Loss().find(Installed()), std::string::npos) << Loss();
}

TEST_F(PlaneLibraryOfTheHost, refuses_a_library_that_others_may_replace) {
  Install(StripedReader());
  ASSERT_EQ(::chmod(m_Place.Path("bin").c_str(), 0777), 0);
  EXPECT_EQ(SizeByReader(), "none");
  EXPECT_NE(Loss().find(m_Place.Path("bin")), std::string::npos) << Loss();
}

TEST_F(PlaneLibraryOfTheHost, says_why_a_file_is_no_library) {
  m_Place.Write("bin/cfplane.dll", "no library at all");
  EXPECT_EQ(SizeByReader(), "none");
  EXPECT_TRUE(Loss().starts_with("load the plane reader '" + Installed() + "': ")) << Loss();
}

TEST_F(PlaneLibraryOfTheHost, takes_no_library_without_the_two_functions) {
  Install(std::string(RASTREL_BINARY_DIR) + "/lib/librastrel.so.0");
  EXPECT_EQ(SizeByReader(), "none");
}

TEST_F(PlaneLibraryOfTheHost, fails_for_a_bare_name_that_the_loader_does_not_know) {
  EXPECT_EQ(m_Host.GetPlaneReader()->LoadLibrary(L"nosuchplane.dll"), nullptr);
  EXPECT_TRUE(Loss().starts_with("load the plane reader 'libnosuchplane.so': ")) << Loss();
}

}  // namespace
}  // namespace rastrel::document
