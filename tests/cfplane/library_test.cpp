#include <dlfcn.h>
#include <gtest/gtest.h>

#include "cfplane/plane_set.h"
#include "rastrel/conversion/planes/cfm_dll_if_default.h"
#include "rastrel/platform/os/shared_library.h"
#include "tests/support/page_files.h"

namespace os = rastrel::os;
namespace test = rastrel::test;

namespace {

using Create = CFMDllIF*();
using Destroy = void(CFMDllIF*);

// The installed library under its bare name, as the loader finds it.
class PlaneLibrary : public ::testing::Test {
 protected:
  void SetUp() override {
    const auto library = os::SharedLibrary::Open("libcfplane.so");
    ASSERT_TRUE(library) << library.Error().why;
    ASSERT_TRUE(library->Bind(m_Create, CreateName.Around("CFMDllIF").c_str()));
    ASSERT_TRUE(library->Bind(m_Destroy, DestroyName.Around("CFMDllIF").c_str()));
  }

  Create* m_Create = nullptr;
  Destroy* m_Destroy = nullptr;
};

TEST_F(PlaneLibrary, is_found_by_its_bare_name_with_the_names_that_the_compiler_made) {
  CFMDllIF* const reader = m_Create();
  ASSERT_NE(reader, nullptr);
  EXPECT_NE(reader->GetInterface(PlaneInterfaceId), nullptr);
  EXPECT_NE(reader->GetInterface(PlaneSetInterfaceId), nullptr);
  EXPECT_EQ(reader->GetInterface({}), nullptr);
  m_Destroy(reader);
}

TEST_F(PlaneLibrary, reads_a_page_across_its_border) {
  const test::ScratchDirectory root;
  test::WriteRgbPage(root, "p", 1, 1, "rgb");
  CFMDllIF* const reader = m_Create();
  auto* const planes = static_cast<CFMPlaneSet*>(reader->GetInterface(PlaneSetInterfaceId));
  ASSERT_EQ(planes->Open(root.Wide("p/.info").c_str()), 1);
  const BITMAPINFOHEADER* header = nullptr;
  std::span<const std::byte> pixels;
  ASSERT_EQ(planes->GetPixels(header, pixels), 1);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(pixels.data()), pixels.size()),
            std::string("bgr\0", 4));
  planes->ReleasePixels(header, pixels);
  PlaneDescription description;
  ASSERT_EQ(planes->GetPlane(0, 2, description), 1);
  EXPECT_EQ(description.name, L"Blue");
  EXPECT_EQ(planes->Open(L"/nowhere/.info"), 0);
  EXPECT_STREQ(planes->GetFailure(), L"open '/nowhere/.info': No such file or directory (2)");
  m_Destroy(reader);
}

TEST_F(PlaneLibrary, gives_back_pixels_that_were_not_released_with_its_reader) {
  const test::ScratchDirectory root;
  test::WriteGrayPage(root, "p", 1, 1, "g");
  CFMDllIF* const reader = m_Create();
  CFMPlane* const plane = reader->GetInterface(PlaneInterfaceId);
  const BITMAPINFOHEADER* header = nullptr;
  std::span<const std::byte> pixels;
  ASSERT_EQ(plane->Open(root.Wide("p/.info").c_str()), 1);
  ASSERT_EQ(plane->GetPixels(header, pixels), 1);
  m_Destroy(reader);  // the sanitizers see a block that stays
}

}  // namespace
