#include "rastrel/conversion/bitmap/load_cfm_bitmap.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <optional>

#include "rastrel/platform/host/base_dir.h"
#include "rastrel/platform/os/text.h"
#include "tests/conversion/bitmap/bitmap_transcript.h"
#include "tests/support/checked_host.h"
#include "tests/support/library_fixture.h"

using rastrel::conversion::LoadCfmBitmap;
using rastrel::host::ObjectHandle;
using namespace rastrel::test;

namespace {

class LanguageHost : public CheckedHost {
 public:
  std::optional<std::wstring> GetLanguageKey() override { return m_Key; }
  rastrel::host::Application* GetApplication() override {
    return m_HasApplication ? CheckedHost::GetApplication() : nullptr;
  }
  std::optional<std::wstring> m_Key;
  bool m_HasApplication = true;
};

class CfmBitmap : public LibraryTest {
 protected:
  static constexpr ObjectHandle Untouched = 77;

  CfmBitmap() {
    std::filesystem::create_directories(m_Library.Directory().Path("Queue/rip"));
    m_Library.Directory().Write("vk.cfm/.info", "");
    m_Params.width = 21;
    m_Params.height = 29.7;
    m_Params.cut.resolution = 100;
    m_Mark = m_Library.LogMark();  // the log lies below the base directory of the data root
    m_Host.m_BaseDirectories[PATH_PROGRAMS] = L"/base";
    m_Host.m_Calls.Clear();
  }

  bool Load() { return LoadCfmBitmap(m_Library.Directory().Wide("vk.cfm"), m_Params, m_Object); }
  /// A failing load: false, no object, all given back, and these calls and log line.
  void ExpectFailure(const std::string& calls, const std::string& log) {
    EXPECT_FALSE(Load());
    EXPECT_EQ(m_Object, Untouched);
    EXPECT_EQ(m_Host.m_Calls.Text(), calls);
    EXPECT_EQ(m_Library.LogTextsBehind(m_Mark), "[CLQ] " + log + "\r\n");
    EXPECT_EQ(m_Host.LeftOpen(), std::vector<std::string>());
  }
  [[nodiscard]] std::string Info() const { return m_Library.Directory().Path() + "/vk.cfm\\.info"; }
  /// The calls of a load up to its opened plane.
  [[nodiscard]] std::string Opened() const {
    return BoundReader + FoundPlane + "SetBaseDirectory(\"/base\") -> 1\nOpen(" +
           QuotedPath(Info()) + ") -> 1\n";
  }
  HostCalls& Calls() { return m_Host.m_Calls; }

  LanguageHost m_Host;
  PS2BmpParams m_Params;
  ObjectHandle m_Object = Untouched;
  std::size_t m_Mark = 0;
};

TEST_F(CfmBitmap, becomes_an_object_of_the_size_that_was_asked_for) {
  EXPECT_TRUE(Load());
  EXPECT_EQ(Calls().Text(), LoadedBitmap(Info(), "21, 29.7", "#2"));
  EXPECT_EQ(m_Object, 2U);
  EXPECT_EQ(m_Library.LogTextsBehind(m_Mark), "");
}

TEST_F(CfmBitmap, takes_its_size_from_pixels_and_resolution_without_bounds) {
  m_Params.hasBounds = 0;
  m_Params.cut.resolution = 2;
  EXPECT_TRUE(Load());
  // 2 by 1 pixels at 2 dpi are 1 by 0.5 inches.
  EXPECT_EQ(Calls().Of({"DBInsertBitmap"}),
            (HostCalls::Lines{"DBInsertBitmap(2.54, 1.27) -> #2"}));
}

TEST_F(CfmBitmap, has_the_language_key_of_a_host_that_has_one) {
  m_Host.m_Key = L"de";
  EXPECT_TRUE(Load());
  EXPECT_EQ(Calls().Of({"SetBaseDirectory", "SetLanguageKey", "Open"}),
            (HostCalls::Lines{"SetBaseDirectory(\"/base\") -> 1", "SetLanguageKey(\"de\") -> 1",
                              "Open(" + QuotedPath(Info()) + ") -> 1"}));
}

TEST_F(CfmBitmap, goes_on_with_a_reader_that_refuses_directory_and_key) {
  m_Host.m_Key = L"de";
  Calls().Always("SetBaseDirectory", 0);
  Calls().Always("SetLanguageKey", 0);
  EXPECT_TRUE(Load());
}

TEST_F(CfmBitmap, has_its_first_row_on_top) {
  m_Host.m_Planes.m_Header.biHeight = 5;
  EXPECT_TRUE(Load());
  EXPECT_EQ(Calls().Of({"Create"}),
            (HostCalls::Lines{"Create() -> reader", "B1.Create(2, -5, 24, 8 bytes) -> 1"}));
  Calls().Clear();
  m_Host.m_Planes.m_Header.biHeight = -5;
  EXPECT_TRUE(Load());
  EXPECT_EQ(Calls().Of({"Create"}),
            (HostCalls::Lines{"Create() -> reader", "B2.Create(2, 5, 24, 8 bytes) -> 1"}));
  EXPECT_EQ(m_Host.m_Planes.m_Header.biHeight, -5) << "the reader's own header stays";
}

TEST_F(CfmBitmap, is_found_in_a_directory_below) {
  std::filesystem::remove(m_Library.Directory().Path("vk.cfm/.info"));
  m_Library.Directory().Write("vk.cfm/p0001/.info", "");
  EXPECT_TRUE(Load());
  const std::string info = m_Library.Directory().Path() + "/vk.cfm\\p0001\\.info";
  EXPECT_EQ(Calls().Of({"Open"}), (HostCalls::Lines{"Open(" + QuotedPath(info) + ") -> 1"}));
}

TEST_F(CfmBitmap, is_not_looked_for_by_a_reader_without_a_page) {
  std::filesystem::remove(m_Library.Directory().Path("vk.cfm/.info"));
  ExpectFailure("", "there is no page in: " + m_Library.Directory().Path("vk.cfm"));
}

TEST_F(CfmBitmap, needs_a_plane_reader) {
  m_Host.m_HasPlaneReader = false;
  ExpectFailure("", "there is no plane reader for: " + Info());
}

TEST_F(CfmBitmap, needs_a_library_that_can_be_loaded) {
  Calls().Always("LoadLibrary", 0);
  ExpectFailure(
      "SearchPath(\"cfplane.dll\") -> \"/programs/cfplane.dll\"\n"
      "LoadLibrary(\"/programs/cfplane.dll\") -> null\n",
      "there is no plane reader for: " + Info());
}

TEST_F(CfmBitmap, needs_the_interface_of_a_plane) {
  Calls().Always("GetInterface", 0);
  ExpectFailure(
      BoundReader + "GetInterface({20D77C57-E591-4554-9341-193D5265AEAD}) -> null\n" + FreedReader,
      "the plane reader is of another version for: " + Info());
}

TEST_F(CfmBitmap, needs_a_plane_that_opens) {
  Calls().Always("Open", 0);
  ExpectFailure(BoundReader + FoundPlane + "SetBaseDirectory(\"/base\") -> 1\nOpen(" +
                    QuotedPath(Info()) + ") -> 0\n" + FreedReader,
                "the plane reader can't open: " + Info());
}

TEST_F(CfmBitmap, needs_the_plane_s_dimensions) {
  Calls().Always("GetDimensions", 0);
  ExpectFailure(Opened() + "GetDimensions() -> 0\n" + FreedReader,
                "the plane reader has no dimensions of: " + Info());
}

TEST_F(CfmBitmap, needs_the_plane_s_pixels) {
  Calls().Always("GetPixels", 0);
  ExpectFailure(Opened() + "GetDimensions(2, 1) -> 1\nGetPixels() -> 0\n" + FreedReader,
                "the plane reader has no pixels of: " + Info());
}

TEST_F(CfmBitmap, gives_pixels_back_whose_height_has_no_negative) {
  m_Host.m_Planes.m_Header.biHeight = std::numeric_limits<std::int32_t>::min();
  ExpectFailure(Opened() +
                    "GetDimensions(2, 1) -> 1\nGetPixels() -> 1\nReleasePixels(header, pixels)\n" +
                    FreedReader,
                "the plane reader has no pixels of: " + Info());
}

TEST_F(CfmBitmap, gives_the_pixels_back_to_the_reader_of_a_host_without_bitmaps) {
  Calls().Always("NewVKBitmap", 0);
  ExpectFailure(Opened() +
                    "GetDimensions(2, 1) -> 1\nGetPixels() -> 1\nNewVKBitmap() -> null\n"
                    "ReleasePixels(header, pixels)\n" +
                    FreedReader,
                "the host can't make a bitmap of: " + Info());
}

TEST_F(CfmBitmap, deletes_a_bitmap_that_refuses_the_pixels) {
  Calls().Always("Create bitmap", 0);
  ExpectFailure(Opened() +
                    "GetDimensions(2, 1) -> 1\nGetPixels() -> 1\nNewVKBitmap() -> B1\n"
                    "B1.Create(2, -1, 24, 8 bytes) -> 0\nDeleteVKBitmap(B1)\n"
                    "ReleasePixels(header, pixels)\n" +
                    FreedReader,
                "the host can't make a bitmap of: " + Info());
}

TEST_F(CfmBitmap, deletes_a_bitmap_that_no_object_can_be_made_of) {
  Calls().Always("DBInsertBitmap", 0);
  ExpectFailure(Opened() +
                    "GetDimensions(2, 1) -> 1\nGetPixels() -> 1\nNewVKBitmap() -> B1\n"
                    "B1.Create(2, -1, 24, 8 bytes) -> 1\nDBInsertBitmap(21, 29.7) -> none\n"
                    "DeleteVKBitmap(B1)\nReleasePixels(header, pixels)\n" +
                    FreedReader,
                "the host can't make a bitmap of: " + Info());
}

TEST_F(CfmBitmap, destroys_an_object_that_the_document_does_not_take) {
  Calls().Always("DSAddObject", 0);
  ExpectFailure(Opened() +
                    "GetDimensions(2, 1) -> 1\nGetPixels() -> 1\nNewVKBitmap() -> B1\n"
                    "B1.Create(2, -1, 24, 8 bytes) -> 1\nDBInsertBitmap(21, 29.7) -> #2\n"
                    "DeleteVKBitmap(B1)\nDSAddObject(#2) -> 0\nDBDestroyObject(#2)\n"
                    "ReleasePixels(header, pixels)\n" +
                    FreedReader,
                "the document takes no bitmap of: " + Info());
}

TEST_F(CfmBitmap, needs_an_application) {
  m_Host.m_HasApplication = false;
  ExpectFailure(BoundReader + FoundPlane + "SetBaseDirectory(\"/base\") -> 1\n" + FreedReader,
                "the host has no document for: " + Info());
}

}  // namespace
