#include "cfplane/reader.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "rastrel/platform/os/system_calls.h"
#include "rastrel/platform/os/text.h"
#include "tests/support/forked_child.h"
#include "tests/support/page_files.h"

using namespace rastrel::planes;
namespace test = rastrel::test;
namespace os = rastrel::os;
using rastrel::test::ScratchDirectory;

namespace {

class PlaneReader : public ::testing::Test {
 protected:
  [[nodiscard]] int Open(const std::string& directory) {
    return m_Reader.Open(m_Root.Wide(directory + "/.info").c_str());
  }
  [[nodiscard]] std::string WhyNot() { return os::Utf8FromWide(m_Reader.GetFailure()); }
  // The pixels, given back at once; empty if there are none.
  std::string Pixels() {
    const BITMAPINFOHEADER* header = nullptr;
    std::span<const std::byte> pixels;
    if (m_Reader.GetPixels(header, pixels) == 0) return {};
    m_Header = *header;
    std::string text(reinterpret_cast<const char*>(pixels.data()), pixels.size());
    m_Reader.ReleasePixels(header, pixels);
    return text;
  }

  const ScratchDirectory m_Root;
  PageReader m_Reader;
  BITMAPINFOHEADER m_Header;
};

TEST_F(PlaneReader, gives_an_rgb_page_as_a_bitmap_of_24_bits) {
  test::WriteRgbPage(m_Root, "p", 2, 2, "rgbRGBsuvSUV");
  ASSERT_EQ(Open("p"), 1);
  std::int32_t width = 0;
  std::int32_t height = 0;
  ASSERT_EQ(m_Reader.GetDimensions(width, height), 1);
  EXPECT_EQ(width, 2);
  EXPECT_EQ(height, 2);
  EXPECT_EQ(Pixels(), std::string("bgrBGR\0\0vusVUS\0\0", 16));
  EXPECT_EQ(m_Header.biSize, 40U);
  EXPECT_EQ(m_Header.biWidth, 2);
  EXPECT_EQ(m_Header.biHeight, 2) << "the conversion turns the sign";
  EXPECT_EQ(m_Header.biPlanes, 1);
  EXPECT_EQ(m_Header.biBitCount, 24);
  EXPECT_EQ(m_Header.biCompression, 0U);
  EXPECT_EQ(m_Header.biSizeImage, 16U);
  EXPECT_EQ(m_Header.biXPelsPerMeter, 11811) << "300 pixels per inch";
  EXPECT_EQ(m_Header.biYPelsPerMeter, 5906) << "150 pixels per inch";
  EXPECT_EQ(m_Header.biClrUsed, 0U);
}

TEST_F(PlaneReader, gives_a_gray_page_as_a_bitmap_of_8_bits) {
  test::WriteGrayPage(m_Root, "p", 3, 1, "abc");
  ASSERT_EQ(Open("p"), 1);
  EXPECT_EQ(Pixels(), std::string("abc\0", 4));
  EXPECT_EQ(m_Header.biBitCount, 8);
}

TEST_F(PlaneReader, takes_either_separator_and_a_file_in_the_present_directory) {
  test::WriteGrayPage(m_Root, "p", 1, 1, "a");
  EXPECT_EQ(m_Reader.Open((m_Root.Wide("p") + L"\\.info").c_str()), 1);
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(m_Root.Path("p"));
  EXPECT_EQ(m_Reader.Open(L".info"), 1);
  EXPECT_EQ(Pixels(), std::string("a\0\0\0", 4));
  std::filesystem::current_path(before);
}

TEST_F(PlaneReader, opens_no_file_of_another_name_and_no_damaged_description) {
  test::WriteGrayPage(m_Root, "p", 1, 1, "a");
  EXPECT_EQ(m_Reader.Open(m_Root.Wide("p/page.pgm").c_str()), 0);
  EXPECT_EQ(WhyNot(), "open a plane '" + m_Root.Path("p/page.pgm") + "': is not named .info");
  EXPECT_EQ(m_Reader.Open(nullptr), 0);
  EXPECT_EQ(m_Reader.Open(L""), 0);
  EXPECT_EQ(Open("missing"), 0);
  EXPECT_EQ(WhyNot(), "open '" + m_Root.Path("missing/.info") + "': No such file or directory (2)");
  m_Root.Write("p/.info", "Rastrel page 1\njob: x\nno");
  EXPECT_EQ(Open("p"), 0);
  EXPECT_EQ(WhyNot(), "read page info '" + m_Root.Path("p/.info:3") + "': no line feed at the end");
}

TEST_F(PlaneReader, has_nothing_before_a_page_is_open_or_after_another_failed_to_open) {
  std::int32_t side = 7;
  PlaneDescription description;
  const auto expectNothing = [&] {
    EXPECT_EQ(m_Reader.GetDimensions(side, side), 0);
    EXPECT_EQ(side, 7);
    EXPECT_EQ(Pixels(), "");
    EXPECT_EQ(m_Reader.GetNumberofLayers(), 0);
    EXPECT_EQ(m_Reader.GetNumberofPlanes(0), 0);
    EXPECT_EQ(m_Reader.SelectPlane(0, 0), 0);
    EXPECT_EQ(m_Reader.GetPlane(0, 0, description), 0);
    EXPECT_EQ(WhyNot(), "no plane is open");
  };
  expectNothing();
  test::WriteGrayPage(m_Root, "p", 1, 1, "a");
  ASSERT_EQ(Open("p"), 1);
  EXPECT_EQ(Open("missing"), 0);
  expectNothing();
}

TEST_F(PlaneReader, keeps_the_host_s_directory_and_language) {
  EXPECT_EQ(m_Reader.SetBaseDirectory(L"/programs"), 1);
  EXPECT_EQ(m_Reader.SetLanguageKey(L"DEU"), 1);
  EXPECT_EQ(m_Reader.GetBaseDirectory(), L"/programs");
  EXPECT_EQ(m_Reader.GetLanguageKey(), L"DEU");
  EXPECT_EQ(m_Reader.SetLanguageKey(nullptr), 1);
  EXPECT_EQ(m_Reader.GetLanguageKey(), L"");
}

TEST_F(PlaneReader, gives_each_block_once_and_takes_it_back_by_its_header) {
  test::WriteGrayPage(m_Root, "p", 4, 1, "abcd");
  ASSERT_EQ(Open("p"), 1);
  const BITMAPINFOHEADER* one = nullptr;
  const BITMAPINFOHEADER* other = nullptr;
  std::span<const std::byte> onePixels;
  std::span<const std::byte> otherPixels;
  ASSERT_EQ(m_Reader.GetPixels(one, onePixels), 1);
  ASSERT_EQ(m_Reader.GetPixels(other, otherPixels), 1);
  EXPECT_NE(onePixels.data(), otherPixels.data());
  m_Reader.ReleasePixels(one, onePixels);
  m_Reader.ReleasePixels(nullptr, {});
  EXPECT_EQ(Open("missing"), 0);
  EXPECT_EQ(otherPixels[3], std::byte{'d'}) << "stays until it is given back";
  m_Reader.ReleasePixels(other, otherPixels);
}

TEST_F(PlaneReader, shows_a_separated_page_plane_by_plane) {
  test::WriteSeparatedPage(m_Root, "p", 4, 3);
  ASSERT_EQ(Open("p"), 1);
  EXPECT_EQ(Pixels(), "");
  EXPECT_EQ(WhyNot(), m_Root.Path("p") + ": the page is separated, and is no picture");
  EXPECT_EQ(m_Reader.GetNumberofLayers(), 1);
  ASSERT_EQ(m_Reader.GetNumberofPlanes(0), 5);
  for (int plane = 0; plane < 5; ++plane) {
    ASSERT_EQ(m_Reader.SelectPlane(0, plane), 1);
    EXPECT_EQ(Pixels(), std::string(12, static_cast<char>(1 + plane)));
    EXPECT_EQ(m_Header.biBitCount, 8);
  }
}

TEST_F(PlaneReader, describes_planes_with_their_names_and_the_inks_that_it_knows) {
  test::WriteSeparatedPage(m_Root, "p", 4, 3);
  ASSERT_EQ(Open("p"), 1);
  PlaneDescription magenta;
  ASSERT_EQ(m_Reader.GetPlane(0, 1, magenta), 1);
  EXPECT_EQ(magenta.name, L"Magenta");
  EXPECT_EQ(magenta.page, 1U);
  EXPECT_EQ(magenta.width, 4);
  EXPECT_EQ(magenta.height, 3);
  EXPECT_EQ(magenta.xResolution, 300);
  EXPECT_EQ(magenta.yResolution, 150);
  EXPECT_TRUE(magenta.isInk);
  EXPECT_TRUE(magenta.isColorKnown);
  EXPECT_EQ(magenta.magenta, 1);
  EXPECT_EQ(magenta.cyan + magenta.yellow + magenta.black, 0);
  PlaneDescription gold;
  ASSERT_EQ(m_Reader.GetPlane(0, 4, gold), 1);
  EXPECT_EQ(gold.name, L"Gold \u00E4");
  EXPECT_TRUE(gold.isInk);
  EXPECT_FALSE(gold.isColorKnown);
  EXPECT_EQ(m_Reader.GetPlane(0, 5, gold), 0);
  EXPECT_EQ(gold.name, L"Gold \u00E4") << "as it was";
}

TEST_F(PlaneReader, describes_a_spot_color_by_the_look_that_its_page_has) {
  rastrel::pages::PageInfo info = test::WriteSeparatedPage(m_Root, "p", 4, 3);
  info.planes[4].ink = {{0.2, 0.3, 0.9, 0.1}};
  info.planes[1].ink = {{0.5, 0.5, 0.5, 0.5}};
  m_Root.Write("p/.info", rastrel::pages::FormatPageInfo(info));
  ASSERT_EQ(Open("p"), 1);
  PlaneDescription gold;
  ASSERT_EQ(m_Reader.GetPlane(0, 4, gold), 1);
  EXPECT_TRUE(gold.isColorKnown);
  EXPECT_EQ(gold.cyan, 0.2);
  EXPECT_EQ(gold.magenta, 0.3);
  EXPECT_EQ(gold.yellow, 0.9);
  EXPECT_EQ(gold.black, 0.1);
  PlaneDescription magenta;
  ASSERT_EQ(m_Reader.GetPlane(0, 1, magenta), 1);
  EXPECT_EQ(magenta.magenta, 1) << "whatever the page says of it";
  EXPECT_EQ(magenta.cyan + magenta.yellow + magenta.black, 0);
}

TEST_F(PlaneReader, takes_samples_of_a_picture_as_light) {
  test::WriteRgbPage(m_Root, "p", 1, 1, "abc");
  ASSERT_EQ(Open("p"), 1);
  ASSERT_EQ(m_Reader.GetNumberofPlanes(0), 3);
  PlaneDescription green;
  ASSERT_EQ(m_Reader.GetPlane(0, 1, green), 1);
  EXPECT_EQ(green.name, L"Green");
  EXPECT_FALSE(green.isInk);
  EXPECT_FALSE(green.isColorKnown);
  ASSERT_EQ(m_Reader.SelectPlane(0, 1), 1);
  EXPECT_EQ(Pixels(), std::string("b\0\0\0", 4));
}

TEST_F(PlaneReader, counts_further_pages_as_layers_up_to_the_first_that_is_missing) {
  test::WriteSeparatedPage(m_Root, "job.cfm", 1, 1);
  test::WriteSeparatedPage(m_Root, "job.cfm/p0002", 2, 1);
  test::WriteGrayPage(m_Root, "job.cfm/p0003", 3, 1, "xyz");
  test::WriteGrayPage(m_Root, "job.cfm/p0005", 5, 1, "vwxyz");
  ASSERT_EQ(Open("job.cfm"), 1);
  EXPECT_EQ(m_Reader.GetNumberofLayers(), 3);
  EXPECT_EQ(m_Reader.GetNumberofPlanes(0), 5);
  EXPECT_EQ(m_Reader.GetNumberofPlanes(2), 1);
  EXPECT_EQ(m_Reader.GetNumberofPlanes(3), 0);
  EXPECT_EQ(m_Reader.GetNumberofPlanes(-1), 0);
  EXPECT_EQ(m_Reader.GetNumberofPlanes(0x7FFFFFFF), 0);
  ASSERT_EQ(m_Reader.SelectPlane(2, 0), 1);
  EXPECT_EQ(Pixels(), std::string("xyz\0", 4));
  EXPECT_EQ(m_Reader.GetNumberofPlanes(1), 5) << "looking at another layer";
  EXPECT_EQ(Pixels(), std::string("xyz\0", 4)) << "changes no choice";
  EXPECT_EQ(m_Reader.SelectPlane(2, 1), 0);
  EXPECT_EQ(m_Reader.SelectPlane(2, -1), 0);
  EXPECT_EQ(m_Reader.SelectPlane(3, 0), 0);
  EXPECT_EQ(Pixels(), std::string("xyz\0", 4)) << "nor does a choice that failed";
  std::int32_t width = 0;
  std::int32_t height = 0;
  EXPECT_EQ(m_Reader.GetDimensions(width, height), 1);
  EXPECT_EQ(width, 3);
}

TEST_F(PlaneReader, refuses_a_damaged_later_page_alone) {
  test::WriteSeparatedPage(m_Root, "job.cfm", 1, 1);
  m_Root.Write("job.cfm/p0002/.info", "nothing of the kind\n");
  ASSERT_EQ(Open("job.cfm"), 1);
  EXPECT_EQ(m_Reader.GetNumberofLayers(), 2);
  EXPECT_EQ(m_Reader.GetNumberofPlanes(1), 0);
  EXPECT_EQ(WhyNot(), "read page info '" + m_Root.Path("job.cfm/p0002/.info:1") +
                          "': not a page info of this version");
  EXPECT_EQ(m_Reader.GetNumberofPlanes(0), 5);
}

TEST_F(PlaneReader, refuses_a_file_that_changed_its_size_after_the_page_was_opened) {
  test::WriteGrayPage(m_Root, "p", 4, 1, "abcd");
  ASSERT_EQ(Open("p"), 1);
  std::filesystem::resize_file(m_Root.Path("p/page.pgm"), 14);
  EXPECT_EQ(Pixels(), "");
  EXPECT_EQ(WhyNot(), "read pixels '" + m_Root.Path("p/page.pgm") +
                          "': has 14 bytes, and 15 by the page's description");
}

TEST_F(PlaneReader, fails_where_the_file_shrinks_while_it_is_read) {
  test::WriteRgbPage(m_Root, "p", 1000, 1000, test::CountingBytes(3'000'000));
  ASSERT_EQ(Open("p"), 1);
  const os::SystemCallsGuard guard;
  static std::string path;
  static int reads;
  path = m_Root.Path("p/page.ppm");
  reads = 0;
  os::Calls().read = [](int descriptor, void* bytes, size_t count) {
    if (++reads == 5) std::filesystem::resize_file(path, 1'000'000);
    return ::read(descriptor, bytes, count);
  };
  EXPECT_EQ(Pixels(), "");
  EXPECT_EQ(WhyNot(), "read pixels '" + path + "': was cut short meanwhile");
}

TEST_F(PlaneReader, reports_a_read_that_fails) {
  test::WriteGrayPage(m_Root, "p", 4, 1, "abcd");
  ASSERT_EQ(Open("p"), 1);
  const os::SystemCallsGuard guard;
  os::Calls().read = [](int, void*, size_t) -> ssize_t {
    errno = EIO;
    return -1;
  };
  EXPECT_EQ(Pixels(), "");
  EXPECT_EQ(WhyNot(), "read '" + m_Root.Path("p/page.pgm") + "': Input/output error (5)");
}

// The most memory that this process had at once.
long PeakKilobytes() {
  const std::string label = "VmHWM:";
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);)
    if (line.starts_with(label)) return std::atol(line.c_str() + label.size());
  return 0;
}

TEST(PlaneReaderMemory, of_a_set_of_planes_is_that_of_one_plane) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "a sanitizer keeps memory that was given back, and shadows of it";
#endif
  // Each plane has 8 MiB, and there are five.
  const ScratchDirectory root;
  test::WriteSeparatedPage(root, "p", 4096, 2048);
  test::ForkedChild child([&](test::ForkedChild::Side&) {
    PageReader reader;
    if (reader.Open(root.Wide("p/.info").c_str()) == 0) return 255;
    std::ofstream("/proc/self/clear_refs") << "5";  // the peak begins anew
    const long before = PeakKilobytes();
    for (int plane = 0; plane < reader.GetNumberofPlanes(0); ++plane) {
      const BITMAPINFOHEADER* header = nullptr;
      std::span<const std::byte> pixels;
      if (reader.SelectPlane(0, plane) == 0 || reader.GetPixels(header, pixels) == 0) return 254;
      reader.ReleasePixels(header, pixels);
    }
    return static_cast<int>((PeakKilobytes() - before) / 1024);
  });
  const int grown = child.Exit();
  EXPECT_GE(grown, 7) << "MiB";
  EXPECT_LE(grown, 12) << "MiB";
}

TEST(Reader, has_the_two_interfaces_and_no_other) {
  Reader reader;
  EXPECT_NE(reader.GetInterface(PlaneInterfaceId), nullptr);
  EXPECT_NE(reader.GetInterface(PlaneSetInterfaceId), nullptr);
  EXPECT_EQ(reader.GetInterface({}), nullptr);
  InterfaceId other = PlaneInterfaceId;
  other.rest[7] ^= 1;
  EXPECT_EQ(reader.GetInterface(other), nullptr);
}

}  // namespace
