#include "children/coreodalis/page_source.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <tiffio.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <string>

#include "tests/children/odalis_fixture.h"

namespace rastrel::odalis {
namespace {

using namespace testing;
using pages::PageColor;
using pages::PageInfo;

/// All samples of a page, or the failure as a line.
std::string ReadAll(const std::string& directory, const PageInfo& info,
                    std::vector<std::uint8_t>& pixels) {
  auto source = PageSource::Open(directory, info);
  if (!source) return Describe(source.Error());
  for (const ContentCheck& check : source->Checks()) {
    if (auto checked = check.Run(); !checked) return Describe(checked.Error());
  }
  // Two rows at a time, and the last one alone if their number is odd.
  const std::size_t rowBytes = source->Shape().RowBytes();
  std::vector<std::uint8_t> rows;
  pixels.clear();
  for (unsigned y = 0; y < source->Shape().height; y += 2) {
    rows.resize(rowBytes * std::min(2u, source->Shape().height - y));
    if (auto read = source->ReadRows(rows); !read) return Describe(read.Error());
    pixels.insert(pixels.end(), rows.begin(), rows.end());
  }
  return "";
}

void ExpectTestPicture(const PageInfo& info, const std::vector<std::uint8_t>& pixels) {
  const auto planes = static_cast<unsigned>(info.planes.size());
  ASSERT_EQ(pixels.size(), std::size_t{info.width} * info.height * planes);
  std::size_t at = 0;
  for (unsigned y = 0; y < info.height; ++y) {
    for (unsigned x = 0; x < info.width; ++x) {
      for (unsigned plane = 0; plane < planes; ++plane) {
        ASSERT_EQ(pixels[at++], SampleAt(x, y, plane)) << x << " " << y << " " << plane;
      }
    }
  }
}

struct Form {
  PageColor color;
  std::vector<std::string> planes;
  ColorModel model;
};

TEST(PageSource, rows_hold_all_planes_wherever_they_lie) {
  const Form forms[] = {
      {PageColor::Gray, {"Gray"}, ColorModel::Gray},
      {PageColor::Rgb, {"Red", "Green", "Blue"}, ColorModel::Rgb},
      {PageColor::Cmyk, {"Cyan", "Magenta", "Yellow", "Black"}, ColorModel::Cmyk},
      {PageColor::Separations, {"Cyan", "Magenta", "Yellow", "Black"}, ColorModel::Cmyk},
      {PageColor::Separations, {"Cyan", "Gold", "Varnish"}, ColorModel::Inks},
      {PageColor::Separations, {"Gold"}, ColorModel::Inks},
  };
  for (const Form& form : forms) {
    const TemporaryDirectory directory;
    PageInfo info = PageOf(form.color, form.planes, 37, 23);
    WritePage(directory.Path(), info);
    std::vector<std::uint8_t> pixels;
    EXPECT_EQ(ReadAll(directory.Path(), info, pixels), "");
    ExpectTestPicture(info, pixels);
    EXPECT_EQ(PageSource::Open(directory.Path(), info)->Shape().model, form.model);
  }
}

TEST(PageSource, planes_may_lie_in_another_order_than_their_channels) {
  const TemporaryDirectory directory;
  PageInfo info = PageOf(PageColor::Rgb, {"Red", "Green", "Blue"}, 5, 4);
  WritePage(directory.Path(), info);
  std::swap(info.planes[0].channel, info.planes[2].channel);
  std::vector<std::uint8_t> pixels;
  EXPECT_EQ(ReadAll(directory.Path(), info, pixels), "");
  EXPECT_EQ(pixels[0], SampleAt(0, 0, 2));
  EXPECT_EQ(pixels[2], SampleAt(0, 0, 0));
}

/// A page that is made well, then spoilt, and the message about it.
struct Spoilt {
  const char* words;
  std::function<void(const std::string& directory, PageInfo& info)> spoil;
};

/// Puts another content in the place of the page's one file, with size and sum that fit.
void Replace(const std::string& directory, PageInfo& info, const std::string& content) {
  WriteFile(directory + "/" + info.files.front().name, content);
  info.files.front() = DescribeFile(directory, info.files.front().name);
}

const Spoilt NetpbmFaults[] = {
    {"No such file", [](auto& d, auto&) { unlink((d + "/pixels.ppm").c_str()); }},
    {"bytes, and", [](auto& d, auto&) { WriteFile(d + "/pixels.ppm", "P6"); }},
    {"checksum", [](auto&, auto& i) { i.files[0].sum[0] ^= 1; }},
    {"symbolic links",
     [](auto& d, auto&) {
       std::filesystem::rename(d + "/pixels.ppm", d + "/real");
       std::filesystem::create_symlink(d + "/real", d + "/pixels.ppm");
     }},
    {"no regular file",
     [](auto& d, auto&) {
       unlink((d + "/pixels.ppm").c_str());
       mkfifo((d + "/pixels.ppm").c_str(), 0600);
     }},
    {"no name of a page's file",
     [](auto&, auto& i) {
       i.files[0].name = "../pixels.ppm";
       for (auto& plane : i.planes) plane.file = "../pixels.ppm";
     }},
    {"neither netpbm nor TIFF", [](auto& d, auto& i) { Replace(d, i, "P4\n"); }},
    {"neither netpbm nor TIFF", [](auto& d, auto& i) { Replace(d, i, ""); }},
    {"no whole header", [](auto& d, auto& i) { Replace(d, i, "P6"); }},
    {"no whole header", [](auto& d, auto& i) { Replace(d, i, "P6\n5 "); }},
    {"no whole header", [](auto& d, auto& i) { Replace(d, i, "P6\n5 4\n255"); }},
    {"no whole header", [](auto& d, auto& i) { Replace(d, i, "P6\n0 4\n255\n"); }},
    {"no whole header", [](auto& d, auto& i) { Replace(d, i, "P6\n-5 4\n255\n"); }},
    {"no whole header", [](auto& d, auto& i) { Replace(d, i, "P6\n99999999999 4\n255\n"); }},
    {"no whole header", [](auto& d, auto& i) { Replace(d, i, "P6\n#" + std::string(9999, 'x')); }},
    {"not 8 bits", [](auto& d, auto& i) { Replace(d, i, "P6\n5 4\n65535\n"); }},
    {"not the size", [](auto& d, auto& i) { Replace(d, i, "P6\n2000000 2000000\n255\nabc"); }},
    {"not the size",
     [](auto& d, auto& i) { Replace(d, i, "P6\n5 4\n255\n" + std::string(61, 'x')); }},
    {"not the page's width",
     [](auto& d, auto& i) { Replace(d, i, "P6\n4 5\n255\n" + std::string(60, 'x')); }},
    {"no channel 1 for the plane 'Green'",
     [](auto& d, auto& i) { Replace(d, i, "P5\n5 4\n255\n" + std::string(20, 'x')); }},
};

TEST(PageSource, a_spoilt_netpbm_page_is_refused_with_the_reason) {
  int row = 0;
  for (const Spoilt& fault : NetpbmFaults) {
    const TemporaryDirectory directory;
    PageInfo info = PageOf(PageColor::Rgb, {"Red", "Green", "Blue"}, 5, 4);
    WritePage(directory.Path(), info);
    fault.spoil(directory.Path(), info);
    std::vector<std::uint8_t> pixels;
    const std::string problem = ReadAll(directory.Path(), info, pixels);
    EXPECT_NE(problem.find(fault.words), std::string::npos)
        << "row " << row << ", " << fault.words << ": " << problem;
    ++row;
  }
}

const Spoilt DescriptionFaults[] = {
    {"16 bits", [](auto&, auto& i) { i.bits = 16; }},
    {"0 by 4", [](auto&, auto& i) { i.width = 0; }},
    {"5 by 4000000000", [](auto&, auto& i) { i.height = 4'000'000'000u; }},
    {"no usable resolution", [](auto&, auto& i) { i.xResolution = 0; }},
    {"no usable resolution", [](auto&, auto& i) { i.yResolution = 1e300; }},
    {"2 planes", [](auto&, auto& i) { i.planes.pop_back(); }},
    {"0 planes",
     [](auto&, auto& i) {
       i.color = PageColor::Separations;
       i.planes.clear();
     }},
    {"65 planes",
     [](auto&, auto& i) {
       i.color = PageColor::Separations;
       i.planes.resize(65, i.planes[0]);
     }},
    {"no file 'other' but a plane in it", [](auto&, auto& i) { i.planes[1].file = "other"; }},
    {"64 MiB",
     [](auto&, auto& i) {
       i.color = PageColor::Separations;
       i.planes.resize(64, i.planes[0]);
       i.width = 1'900'000;
     }},
};

TEST(PageSource, a_changed_file_with_a_head_that_cannot_be_is_a_changed_file) {
  for (const char* content : {"P6\n4 5\n255\n", "P6\n5 4\n999\n", "XX\n5 4\n255\n"}) {
    const TemporaryDirectory directory;
    PageInfo info = PageOf(PageColor::Rgb, {"Red", "Green", "Blue"}, 5, 4);
    WritePage(directory.Path(), info);
    Replace(directory.Path(), info, content + std::string(60, 'x'));
    info.files[0].sum[0] ^= 1;
    std::vector<std::uint8_t> pixels;
    EXPECT_EQ(
        ReadAll(directory.Path(), info, pixels),
        "'" + directory.Path() + "/pixels.ppm' has not the checksum of the page's description");
  }
}

TEST(PageSource, a_description_that_cannot_be_is_refused_with_the_reason) {
  const TemporaryDirectory directory;
  PageInfo good = PageOf(PageColor::Rgb, {"Red", "Green", "Blue"}, 5, 4);
  WritePage(directory.Path(), good);
  for (const Spoilt& fault : DescriptionFaults) {
    PageInfo info = good;
    fault.spoil(directory.Path(), info);
    const auto source = PageSource::Open(directory.Path(), info);
    ASSERT_FALSE(source) << fault.words;
    EXPECT_NE(Describe(source.Error()).find(fault.words), std::string::npos)
        << Describe(source.Error());
  }
}

/// Writes a TIFF file of 5 by 4 pixels with these tags.
std::string TiffWith(const std::string& path, int bits, int samples, int planar, int photometric,
                     int width = 5, int rowsPerStrip = 4) {
  TIFF* tiff = TIFFOpen(path.c_str(), "w");
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 4);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, bits);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, samples);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, planar);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, photometric);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, rowsPerStrip);
  const std::vector<std::uint8_t> row(4096);
  for (int plane = 0; plane < (planar == PLANARCONFIG_SEPARATE ? samples : 1); ++plane) {
    for (unsigned y = 0; y < 4; ++y) {
      TIFFWriteScanline(tiff, const_cast<std::uint8_t*>(row.data()), y,
                        static_cast<std::uint16_t>(plane));
    }
  }
  TIFFClose(tiff);
  return ReadFile(path);
}

TEST(PageSource, a_spoilt_tiff_plane_is_refused_with_the_reason) {
  const TemporaryDirectory directory;
  PageInfo info = PageOf(PageColor::Separations, {"Gold"}, 5, 4);
  WritePage(directory.Path(), info);
  const std::string good = ReadFile(directory.Path() + "/plane-0.tif");
  const std::string scratch = directory.Path() + "/scratch.tif";
  const std::pair<const char*, std::string> faults[] = {
      {"8 bits", TiffWith(scratch, 16, 1, PLANARCONFIG_CONTIG, PHOTOMETRIC_MINISBLACK)},
      {"apart", TiffWith(scratch, 8, 3, PLANARCONFIG_SEPARATE, PHOTOMETRIC_RGB)},
      {"neither gray", TiffWith(scratch, 8, 1, PLANARCONFIG_CONTIG, PHOTOMETRIC_MINISWHITE)},
      {"width", TiffWith(scratch, 8, 1, PLANARCONFIG_CONTIG, PHOTOMETRIC_MINISBLACK, 6)},
      {"'", good.substr(0, 9)},
      {"'", "II*\0\0\0\0\0"},
  };
  for (const auto& [words, content] : faults) {
    Replace(directory.Path(), info, content);
    const auto source = PageSource::Open(directory.Path(), info);
    ASSERT_FALSE(source) << words;
    EXPECT_NE(Describe(source.Error()).find(words), std::string::npos) << Describe(source.Error());
  }
}

TEST(PageSource, a_tiff_plane_cut_or_changed_at_any_byte_never_harms) {
  const TemporaryDirectory directory;
  PageInfo info = PageOf(PageColor::Separations, {"Gold"}, 5, 4);
  WritePage(directory.Path(), info);
  const std::string good = ReadFile(directory.Path() + "/plane-0.tif");
  std::vector<std::uint8_t> pixels;
  unsigned refused = 0;
  for (std::size_t at = 0; at < good.size(); ++at) {
    Replace(directory.Path(), info, good.substr(0, at));
    if (!ReadAll(directory.Path(), info, pixels).empty()) ++refused;
    std::string changed = good;
    changed[at] = static_cast<char>(changed[at] ^ 0xFF);
    Replace(directory.Path(), info, changed);
    static_cast<void>(ReadAll(directory.Path(), info, pixels));
  }
  EXPECT_GT(refused, good.size() / 2);  // the directory of tags is at the file's end
}

}  // namespace
}  // namespace rastrel::odalis
