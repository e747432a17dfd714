#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <tiffio.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <random>
#include <string>

#include "children/coreodalis/image.h"
#include "children/coreodalis/tiff_form.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/system_calls.h"
#include "tests/children/odalis_fixture.h"
#include "tests/support/scratch_directory.h"

// The seek of this thread that fails, counted down: at 1 the next one. 0: none.
static thread_local int s_FailingSeek = 0;

// In place of the system's, for the TIFF library and the product alike.
extern "C" __attribute__((visibility("default"))) off64_t lseek64(int descriptor, off64_t offset,
                                                                  int whence) noexcept {
  if (s_FailingSeek > 0 && --s_FailingSeek == 0) {
    errno = EIO;
    return -1;
  }
  return ::syscall(SYS_lseek, descriptor, offset, whence);
}
extern "C" __attribute__((visibility("default"))) off_t lseek(int descriptor, off_t offset,
                                                              int whence) noexcept {
  return lseek64(descriptor, offset, whence);
}

namespace rastrel::odalis {
namespace {

using namespace testing;

ImageShape ShapeOf(ColorModel model, const std::vector<std::string>& planes, unsigned width = 31,
                   unsigned height = 17) {
  ImageShape shape;
  shape.width = width;
  shape.height = height;
  shape.xResolution = 150;
  shape.yResolution = 75;
  shape.model = model;
  shape.planes = planes;
  return shape;
}

std::vector<std::uint8_t> RowOf(const ImageShape& shape, unsigned y) {
  std::vector<std::uint8_t> row;
  for (unsigned x = 0; x < shape.width; ++x) {
    for (unsigned plane = 0; plane < shape.planes.size(); ++plane) {
      row.push_back(SampleAt(x, y, plane));
    }
  }
  return row;
}

/// A picture whose samples look random, so that no compression makes it smaller.
std::vector<std::uint8_t> NoiseOf(const ImageShape& shape, unsigned y) {
  std::minstd_rand random(y + 1);
  std::vector<std::uint8_t> row(shape.RowBytes());
  for (std::uint8_t& sample : row) sample = static_cast<std::uint8_t>(random() >> 8);
  return row;
}

/// A picture of one value and a few steps, as signs are.
std::vector<std::uint8_t> FlatOf(const ImageShape& shape, unsigned y) {
  return std::vector<std::uint8_t>(shape.RowBytes(), static_cast<std::uint8_t>(y / 100));
}

using RowMaker = std::vector<std::uint8_t> (*)(const ImageShape&, unsigned);

/// Writes a picture; the failure as a line, or empty.
std::string Write(devices::FileFormat format, const std::string& path, const ImageShape& shape,
                  devices::Compression compression, unsigned threads, RowMaker rowOf = RowOf) {
  const os::FileDescriptor file(
      open(path.c_str(), O_RDWR | O_CREAT | (path.starts_with("/dev") ? 0 : O_TRUNC), 0600));
  WorkerPool pool(threads);
  auto writer = MakeImageWriter({format, compression, file.Get(), path, 1}, shape, pool);
  if (!writer) return Describe(writer.Error());
  for (unsigned y = 0; y < shape.height; ++y) {
    if (auto written = (*writer)->WriteRow(rowOf(shape, y)); !written)
      return Describe(written.Error());
  }
  auto finished = (*writer)->Finish();
  return finished ? "" : Describe(finished.Error());
}
std::string Write(devices::FileFormat format, const std::string& path, const ImageShape& shape) {
  return Write(format, path, shape, devices::UsualCompression(format), 2);
}

void ExpectPicture(const Picture& picture, const ImageShape& shape, bool inverted) {
  ASSERT_EQ(picture.width, shape.width);
  ASSERT_EQ(picture.height, shape.height);
  ASSERT_EQ(picture.samples, shape.planes.size());
  std::vector<std::uint8_t> expected;
  for (unsigned y = 0; y < shape.height; ++y) {
    for (const std::uint8_t sample : RowOf(shape, y)) {
      expected.push_back(inverted ? static_cast<std::uint8_t>(255 - sample) : sample);
    }
  }
  EXPECT_EQ(picture.pixels, expected);
}

const std::vector<std::string> ProcessInks = {"Cyan", "Magenta", "Yellow", "Black"};

TEST(TiffWriter, each_color_model_can_be_read_back) {
  const TemporaryDirectory directory;
  const std::string path = directory.Path() + "/x.tif";
  const struct {
    ImageShape shape;
    unsigned photometric;
    bool inverted;
    unsigned inkSet;
    std::string inkNames;
  } rows[] = {
      {ShapeOf(ColorModel::Gray, {"Gray"}), PHOTOMETRIC_MINISBLACK, false, 0, ""},
      {ShapeOf(ColorModel::Rgb, {"Red", "Green", "Blue"}), PHOTOMETRIC_RGB, false, 0, ""},
      {ShapeOf(ColorModel::Cmyk, ProcessInks), PHOTOMETRIC_SEPARATED, true, INKSET_CMYK, ""},
      {ShapeOf(ColorModel::Inks, {"Cyan", "Gold"}), PHOTOMETRIC_SEPARATED, true, INKSET_MULTIINK,
       "Cyan|Gold|"},
      {ShapeOf(ColorModel::Inks, {"Gr\xC3\xBCn"}), PHOTOMETRIC_SEPARATED, true, INKSET_MULTIINK,
       "Gr\xC3\xBCn|"},
      {ShapeOf(ColorModel::Inks, {"1", "2", "3", "4", "5", "6", "7"}), PHOTOMETRIC_SEPARATED, true,
       INKSET_MULTIINK, "1|2|3|4|5|6|7|"},
  };
  for (const auto& row : rows) {
    ASSERT_EQ(Write(devices::FileFormat::Tiff, path, row.shape), "");
    const Picture picture = ReadTiff(path);
    ExpectPicture(picture, row.shape, row.inverted);
    EXPECT_EQ(picture.photometric, row.photometric);
    EXPECT_EQ(picture.inkSet, row.inkSet);
    EXPECT_EQ(picture.inkNames, row.inkNames);
    EXPECT_DOUBLE_EQ(picture.xResolution, 150);
    EXPECT_DOUBLE_EQ(picture.yResolution, 75);
  }
}

// By docs/formats/devices.md: readers of these files rely on it.
TEST(TiffWriter, is_lzw_with_differences_in_strips_of_about_64_kib) {
  const TemporaryDirectory directory;
  const std::string path = directory.Path() + "/x.tif";
  ASSERT_EQ(Write(devices::FileFormat::Tiff, path,
                  ShapeOf(ColorModel::Rgb, {"Red", "Green", "Blue"}, 1000, 100)),
            "");
  TIFF* const file = TIFFOpen(path.c_str(), "r");
  ASSERT_NE(file, nullptr);
  const auto value = [file](std::uint32_t tag) {
    std::uint16_t number = 0;
    TIFFGetField(file, tag, &number);
    return number;
  };
  EXPECT_EQ(value(TIFFTAG_COMPRESSION), COMPRESSION_LZW);
  EXPECT_EQ(value(TIFFTAG_PREDICTOR), PREDICTOR_HORIZONTAL);
  EXPECT_EQ(value(TIFFTAG_PLANARCONFIG), PLANARCONFIG_CONTIG);
  EXPECT_EQ(value(TIFFTAG_RESOLUTIONUNIT), RESUNIT_INCH);
  EXPECT_EQ(value(TIFFTAG_BITSPERSAMPLE), 8);
  std::uint32_t rows = 0;
  TIFFGetField(file, TIFFTAG_ROWSPERSTRIP, &rows);
  EXPECT_EQ(rows, 21U);  // of 3,000 bytes each: 65,536 hold that many whole ones
  TIFFClose(file);
}

TEST(TiffWriter, a_picture_that_may_pass_four_gigabytes_becomes_a_big_tiff) {
  const TemporaryDirectory directory;
  const std::string path = directory.Path() + "/x.tif";
  ImageShape shape = ShapeOf(ColorModel::Rgb, {"Red", "Green", "Blue"}, 100'000, 10'000);
  const os::FileDescriptor file(open(path.c_str(), O_RDWR | O_CREAT, 0600));
  WorkerPool pool(2);
  auto writer = MakeImageWriter(
      {devices::FileFormat::Tiff, devices::Compression::Lzw, file.Get(), path, 1}, shape, pool);
  ASSERT_TRUE(writer);
  char start[4] = {};
  ASSERT_EQ(pread(file.Get(), start, 4, 0), 4);
  EXPECT_EQ(start[2], 43);  // 42 is the plain form
}

TEST(PngWriter, gray_and_rgb_can_be_read_back) {
  const TemporaryDirectory directory;
  const std::string path = directory.Path() + "/x.png";
  for (const ImageShape& shape :
       {ShapeOf(ColorModel::Gray, {"Gray"}), ShapeOf(ColorModel::Rgb, {"Red", "Green", "Blue"})}) {
    ASSERT_EQ(Write(devices::FileFormat::Png, path, shape), "");
    ExpectPicture(ReadPng(path), shape, false);
  }
  // 150 pixels an inch are 5906 a metre, 75 are 2953: the pHYs chunk holds both and the unit 1.
  const std::string chunk("pHYs\0\0\x17\x12\0\0\x0B\x89\x01", 13);
  EXPECT_NE(ReadFile(path).find(chunk), std::string::npos);
}

TEST(PngWriter, cmyk_becomes_rgb_by_the_documented_formula) {
  const TemporaryDirectory directory;
  const std::string path = directory.Path() + "/x.png";
  const ImageShape shape = ShapeOf(ColorModel::Cmyk, ProcessInks);
  ASSERT_EQ(Write(devices::FileFormat::Png, path, shape), "");
  const Picture picture = ReadPng(path);
  ASSERT_EQ(picture.samples, 3u);
  for (unsigned y = 0; y < shape.height; ++y) {
    for (unsigned x = 0; x < shape.width; ++x) {
      for (unsigned light = 0; light < 3; ++light) {
        const double ink = 255 - SampleAt(x, y, light);
        const double black = 255 - SampleAt(x, y, 3);
        const double exact = (255 - ink) * (255 - black) / 255;
        ASSERT_NEAR(picture.pixels[(y * shape.width + x) * 3 + light], exact, 0.5);
      }
    }
  }
}

/// The bytes between two marks after a position.
std::string Between(const std::string& text, const std::string& from, const std::string& to,
                    std::size_t at = 0) {
  const std::size_t start = text.find(from, at) + from.size();
  return text.substr(start, text.find(to, start) - start);
}

std::vector<std::uint8_t> PdfPixels(const std::string& pdf, std::size_t size,
                                    devices::Compression compression) {
  const std::size_t picture = pdf.find("/Subtype /Image");
  const std::size_t start = pdf.find("stream\n", picture) + 7;
  const bool isDeflated = pdf.find("/Filter /FlateDecode", picture) < start;
  EXPECT_EQ(isDeflated, compression == devices::Compression::Deflate);
  if (!isDeflated)
    return {pdf.begin() + static_cast<std::ptrdiff_t>(start),
            pdf.begin() + static_cast<std::ptrdiff_t>(start + size)};
  std::vector<std::uint8_t> pixels(size + 1);
  uLongf length = pixels.size();
  if (uncompress(pixels.data(), &length, reinterpret_cast<const Bytef*>(pdf.data()) + start,
                 pdf.size() - start) != Z_OK) {
    return {};
  }
  pixels.resize(length);
  return pixels;
}

struct Case {
  devices::FileFormat format;
  devices::Compression compression;
};
constexpr Case AllCases[] = {
    {devices::FileFormat::Tiff, devices::Compression::Lzw},
    {devices::FileFormat::Tiff, devices::Compression::Deflate},
    {devices::FileFormat::Tiff, devices::Compression::None},
    {devices::FileFormat::Png, devices::Compression::Deflate},
    {devices::FileFormat::Png, devices::Compression::None},
    {devices::FileFormat::Pdf, devices::Compression::Deflate},
    {devices::FileFormat::Pdf, devices::Compression::None},
};

// Heights that are no multiple of a strip's rows or a band's, and rows of which none, one or many
// go into a strip.
TEST(MakeImageWriter, the_bytes_do_not_depend_on_the_number_of_threads) {
  const TemporaryDirectory directory;
  const std::string path = directory.Path() + "/x";
  const std::pair<ImageShape, RowMaker> pictures[] = {
      {ShapeOf(ColorModel::Rgb, {"R", "G", "B"}, 700, 1001), FlatOf},
      {ShapeOf(ColorModel::Rgb, {"R", "G", "B"}, 601, 1003), NoiseOf},
      {ShapeOf(ColorModel::Cmyk, ProcessInks, 300, 700), RowOf},
      {ShapeOf(ColorModel::Gray, {"G"}, 70'000, 37), NoiseOf},
      {ShapeOf(ColorModel::Gray, {"G"}, 1, 3), RowOf},
  };
  for (const auto& [format, compression] : AllCases) {
    for (const auto& [shape, rowOf] : pictures) {
      ASSERT_EQ(Write(format, path, shape, compression, 1, rowOf), "");
      const std::string alone = ReadFile(path);
      for (const unsigned threads : {2u, 3u, 7u}) {
        ASSERT_EQ(Write(format, path, shape, compression, threads, rowOf), "");
        EXPECT_TRUE(ReadFile(path) == alone)
            << "format " << static_cast<int>(format) << ", compression "
            << static_cast<int>(compression) << ", " << threads << " threads";
      }
    }
  }
}

TEST(MakeImageWriter, noise_that_no_compression_makes_smaller_can_be_read_back) {
  const TemporaryDirectory directory;
  const std::string path = directory.Path() + "/x";
  const ImageShape shape = ShapeOf(ColorModel::Rgb, {"R", "G", "B"}, 777, 901);
  std::vector<std::uint8_t> expected;
  for (unsigned y = 0; y < shape.height; ++y) {
    const auto row = NoiseOf(shape, y);
    expected.insert(expected.end(), row.begin(), row.end());
  }
  for (const auto& [format, compression] : AllCases) {
    ASSERT_EQ(Write(format, path, shape, compression, 3, NoiseOf), "");
    std::vector<std::uint8_t> pixels;
    if (format == devices::FileFormat::Tiff) pixels = ReadTiff(path).pixels;
    if (format == devices::FileFormat::Png) pixels = ReadPng(path).pixels;
    if (format == devices::FileFormat::Pdf)
      pixels = PdfPixels(ReadFile(path), expected.size(), compression);
    EXPECT_TRUE(pixels == expected)
        << static_cast<int>(format) << ", " << static_cast<int>(compression);
  }
}

// The TIFF library's own encoder is the measure. It also begins anew where it gains little, which
// ours leaves out: at most a twentieth.
TEST(TiffWriter, lzw_is_about_as_small_as_the_librarys_own) {
  const TemporaryDirectory directory;
  const std::string ours = directory.Path() + "/ours.tif";
  const std::string theirs = directory.Path() + "/theirs.tif";
  const ImageShape shape = ShapeOf(ColorModel::Rgb, {"R", "G", "B"}, 900, 1000);
  for (const RowMaker rowOf : {RowOf, FlatOf, NoiseOf}) {
    ASSERT_EQ(Write(devices::FileFormat::Tiff, ours, shape, devices::Compression::Lzw, 2, rowOf),
              "");
    TIFF* const file = TIFFOpen(theirs.c_str(), "w");
    ASSERT_NE(file, nullptr);
    SetStripForm(file, shape, devices::Compression::Lzw, shape.height);
    TIFFSetField(file, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
    for (unsigned y = 0; y < shape.height; ++y) {
      auto row = rowOf(shape, y);
      ASSERT_EQ(TIFFWriteScanline(file, row.data(), y, 0), 1);
    }
    TIFFClose(file);
    EXPECT_TRUE(ReadTiff(ours).pixels == ReadTiff(theirs).pixels);
    EXPECT_LT(static_cast<double>(ReadFile(ours).size()),
              1.05 * static_cast<double>(ReadFile(theirs).size()));
  }
}

TEST(TiffWriter, has_the_compression_that_is_asked_for) {
  const TemporaryDirectory directory;
  const std::string path = directory.Path() + "/x.tif";
  const std::pair<devices::Compression, unsigned> rows[] = {
      {devices::Compression::Lzw, COMPRESSION_LZW},
      {devices::Compression::Deflate, COMPRESSION_ADOBE_DEFLATE},
      {devices::Compression::None, COMPRESSION_NONE}};
  const ImageShape shape = ShapeOf(ColorModel::Cmyk, ProcessInks, 300, 100);
  for (const auto& [compression, expected] : rows) {
    ASSERT_EQ(Write(devices::FileFormat::Tiff, path, shape, compression, 2), "");
    ExpectPicture(ReadTiff(path), shape, true);
    TIFF* const file = TIFFOpen(path.c_str(), "r");
    ASSERT_NE(file, nullptr);
    std::uint16_t found = 0;
    TIFFGetField(file, TIFFTAG_COMPRESSION, &found);
    EXPECT_EQ(found, expected);
    std::uint16_t predictor = 0;
    const bool has = TIFFGetField(file, TIFFTAG_PREDICTOR, &predictor) == 1;
    EXPECT_EQ(has && predictor == PREDICTOR_HORIZONTAL, expected != COMPRESSION_NONE);
    TIFFClose(file);
  }
}

TEST(MakeImageWriter, a_full_disk_is_reported_whatever_the_number_of_threads) {
  const ImageShape shape = ShapeOf(ColorModel::Rgb, {"R", "G", "B"}, 3000, 400);
  for (const auto& [format, compression] : AllCases) {
    for (const unsigned threads : {1u, 3u}) {
      const std::string why = Write(format, "/dev/full", shape, compression, threads, NoiseOf);
      if (format == devices::FileFormat::Tiff) {
        EXPECT_NE(why, "");  // the TIFF library can't seek there; it only has to fail
      } else {
        EXPECT_EQ(why, "writing '/dev/full': No space left on device") << static_cast<int>(format);
      }
    }
  }
}

TEST(MakeImageWriter, without_a_thread_to_give_the_bytes_are_the_same) {
  const TemporaryDirectory directory;
  const ImageShape shape = ShapeOf(ColorModel::Rgb, {"R", "G", "B"}, 1000, 500);
  ASSERT_EQ(Write(devices::FileFormat::Tiff, directory.Path() + "/with", shape), "");
  const os::SystemCallsGuard guard;
  os::Calls().thread_create = [](pthread_t*, const pthread_attr_t*, void* (*)(void*), void*) {
    return EAGAIN;
  };
  ASSERT_EQ(Write(devices::FileFormat::Tiff, directory.Path() + "/without", shape), "");
  EXPECT_TRUE(ReadFile(directory.Path() + "/with") == ReadFile(directory.Path() + "/without"));
}

TEST(MakeImageWriter, spot_inks_are_refused_where_the_format_has_no_place_for_them) {
  const ImageShape shape = ShapeOf(ColorModel::Inks, {"Gold"});
  EXPECT_NE(Write(devices::FileFormat::Png, "/dev/null", shape).find("spot inks"),
            std::string::npos);
  const ImageShape many = ShapeOf(ColorModel::Inks, std::vector<std::string>(33, "Gold"));
  EXPECT_NE(Write(devices::FileFormat::Pdf, "/dev/null", many).find("32 inks"), std::string::npos);
}

// The library does not look at every seek's result, and then writes over its own pixels.
TEST(TiffWriter, a_seek_that_fails_is_a_failure_and_never_a_damaged_file) {
  const test::ScratchDirectory place;
  const ImageShape shape = ShapeOf(ColorModel::Rgb, {"R", "G", "B"}, 300, 400);
  ASSERT_EQ(Write(devices::FileFormat::Tiff, place.Path("whole.tif"), shape), "");
  int failed = 0;
  for (int seek = 1;; ++seek) {
    ASSERT_LT(seek, 10'000) << "the writer makes no end of seeks";
    s_FailingSeek = seek;
    const std::string why = Write(devices::FileFormat::Tiff, place.Path("torn.tif"), shape);
    const bool reached = s_FailingSeek == 0;
    s_FailingSeek = 0;
    if (!reached) break;
    ++failed;
    EXPECT_NE(why.find("Input/output error"), std::string::npos) << "seek " << seek << ": " << why;
  }
  EXPECT_GT(failed, 0);
}

TEST(PdfWriter, the_table_of_offsets_leads_to_each_object) {
  const TemporaryDirectory directory;
  const std::string path = directory.Path() + "/x.pdf";
  ASSERT_EQ(Write(devices::FileFormat::Pdf, path, ShapeOf(ColorModel::Rgb, {"R", "G", "B"})), "");
  const std::string pdf = ReadFile(path);
  EXPECT_TRUE(pdf.starts_with("%PDF-1.4\n"));
  EXPECT_TRUE(pdf.ends_with("%%EOF\n"));
  const std::size_t table = std::stoul(Between(pdf, "startxref\n", "\n"));
  ASSERT_EQ(pdf.substr(table, 9), "xref\n0 7\n");
  for (unsigned object = 1; object <= 6; ++object) {
    const std::string line = pdf.substr(table + 9 + object * 20, 20);
    EXPECT_EQ(line.substr(10), " 00000 n \n");
    const std::string beginning = std::to_string(object) + " 0 obj\n";
    EXPECT_EQ(pdf.substr(std::stoul(line.substr(0, 10)), beginning.size()), beginning);
  }
}

TEST(PdfWriter, each_color_model_is_there_with_its_pixels_and_size) {
  const TemporaryDirectory directory;
  const std::string path = directory.Path() + "/x.pdf";
  const struct {
    ImageShape shape;
    const char* space;
    bool inverted;
  } rows[] = {{ShapeOf(ColorModel::Gray, {"Gray"}), "/DeviceGray", false},
              {ShapeOf(ColorModel::Rgb, {"R", "G", "B"}), "/DeviceRGB", false},
              {ShapeOf(ColorModel::Cmyk, ProcessInks), "/DeviceCMYK", true}};
  for (const auto& row : rows) {
    ASSERT_EQ(Write(devices::FileFormat::Pdf, path, row.shape), "");
    const std::string pdf = ReadFile(path);
    EXPECT_NE(pdf.find(std::string("/ColorSpace ") + row.space), std::string::npos);
    // 31 pixels at 150 an inch, 17 at 75.
    EXPECT_EQ(Between(pdf, "/MediaBox [", "]"), "0 0 14.88 16.32");
    Picture picture;
    picture.width = row.shape.width;
    picture.height = row.shape.height;
    picture.samples = static_cast<unsigned>(row.shape.planes.size());
    picture.pixels =
        PdfPixels(pdf, row.shape.RowBytes() * row.shape.height, devices::Compression::Deflate);
    ExpectPicture(picture, row.shape, row.inverted);
    const std::string length = Between(pdf, "6 0 obj\n", "\nendobj");
    const std::size_t start = pdf.find("stream\n", pdf.find("/Subtype /Image")) + 7;
    EXPECT_EQ(pdf.substr(start + std::stoul(length), 11), "\nendstream\n");
  }
}

TEST(PdfWriter, a_page_longer_than_the_format_allows_gets_a_user_unit) {
  const TemporaryDirectory directory;
  const std::string path = directory.Path() + "/x.pdf";
  ImageShape shape = ShapeOf(ColorModel::Gray, {"Gray"}, 800, 2);
  shape.xResolution = 2;  // 28,800 points
  shape.yResolution = 2;
  ASSERT_EQ(Write(devices::FileFormat::Pdf, path, shape), "");
  const std::string pdf = ReadFile(path);
  EXPECT_TRUE(pdf.starts_with("%PDF-1.6\n"));
  EXPECT_NE(pdf.find("/MediaBox [0 0 14400 36] /UserUnit 2 "), std::string::npos);
}

TEST(PdfWriter, inks_have_names_of_their_own_whatever_they_are_called) {
  const TemporaryDirectory directory;
  const std::string path = directory.Path() + "/x.pdf";
  const ImageShape shape =
      ShapeOf(ColorModel::Inks, {"Cyan", "Gr\xC3\xBCn (1)/", "Cyan", "", "None", "All"});
  ASSERT_EQ(Write(devices::FileFormat::Pdf, path, shape), "");
  EXPECT_EQ(Between(ReadFile(path), "/DeviceN [", "]"),
            "/Cyan /Gr#C3#BCn#20#281#29#2F /Cyan#5F2 /#5F2 /None#5F2 /All#5F2");
}

TEST(PdfWriter, an_interpreter_separates_the_inks_again) {
  if (std::system("gs --version >/dev/null 2>&1") != 0) GTEST_SKIP() << "gs is not installed";
  const TemporaryDirectory directory;
  const std::string inks[] = {"Cyan", "Magenta", "Yellow", "Black", "CutContour"};
  ImageShape shape = ShapeOf(ColorModel::Inks, {std::begin(inks), std::end(inks)}, 72, 36);
  shape.xResolution = 72;
  shape.yResolution = 72;
  ASSERT_EQ(Write(devices::FileFormat::Pdf, directory.Path() + "/x.pdf", shape), "");
  const std::string command = "cd '" + directory.Path() +
                              "' && gs -q -dSAFER -dBATCH -dNOPAUSE -r72 -sDEVICE=tiffsep "
                              "-sOutputFile=page.tif x.pdf </dev/null";
  ASSERT_EQ(std::system(command.c_str()), 0);
  for (unsigned plane = 0; plane < std::size(inks); ++plane) {
    const Picture picture = ReadTiff(directory.Path() + "/page(" + inks[plane] + ").tif");
    ASSERT_EQ(picture.pixels.size(), 72u * 36u) << inks[plane];
    for (unsigned y = 0; y < 36; ++y) {
      for (unsigned x = 0; x < 72; ++x) {
        ASSERT_EQ(picture.pixels[y * 72 + x], SampleAt(x, y, plane)) << inks[plane];
      }
    }
  }
}

TEST(PdfWriter, an_interpreter_without_the_inks_shows_them_as_black) {
  if (std::system("gs --version >/dev/null 2>&1") != 0) GTEST_SKIP() << "gs is not installed";
  const TemporaryDirectory directory;
  // One pixel each: no ink, all of Gold, all of Cyan; 255 is no ink.
  const std::uint8_t row[] = {255, 255, 0, 255, 255, 0};
  ImageShape shape = ShapeOf(ColorModel::Inks, {"Gold", "Cyan"}, 3, 1);
  shape.xResolution = 72;
  shape.yResolution = 72;
  const std::string path = directory.Path() + "/x.pdf";
  {
    const os::FileDescriptor file(open(path.c_str(), O_RDWR | O_CREAT, 0600));
    WorkerPool pool(1);
    auto writer = MakeImageWriter(
        {devices::FileFormat::Pdf, devices::Compression::Deflate, file.Get(), path, 1}, shape,
        pool);
    ASSERT_TRUE(writer);
    ASSERT_TRUE((*writer)->WriteRow(row));
    ASSERT_TRUE((*writer)->Finish());
  }
  const std::string command =
      "cd '" + directory.Path() +
      "' && gs -q -dSAFER -dBATCH -dNOPAUSE -r72 -sDEVICE=bitcmyk "
      "-dGrayValues=256 -dRedValues=256 -sOutputFile=shown x.pdf </dev/null";
  ASSERT_EQ(std::system(command.c_str()), 0);
  const std::string expected(
      "\0\0\0\0"
      "\0\0\0\xFF"
      "\xFF\0\0\0",
      12);
  EXPECT_EQ(ReadFile(directory.Path() + "/shown"), expected);
}

TEST(PdfWriter, an_interpreter_shows_the_same_pixels) {
  if (std::system("gs --version >/dev/null 2>&1") != 0) GTEST_SKIP() << "gs is not installed";
  const TemporaryDirectory directory;
  ImageShape shape = ShapeOf(ColorModel::Rgb, {"R", "G", "B"}, 72, 36);
  shape.xResolution = 72;
  shape.yResolution = 72;
  ASSERT_EQ(Write(devices::FileFormat::Pdf, directory.Path() + "/x.pdf", shape), "");
  const std::string command = "cd '" + directory.Path() +
                              "' && gs -q -dSAFER -dBATCH -dNOPAUSE -r72 -sDEVICE=ppmraw "
                              "-sOutputFile=shown.ppm x.pdf </dev/null";
  ASSERT_EQ(std::system(command.c_str()), 0);
  const std::string shown = ReadFile(directory.Path() + "/shown.ppm");
  ASSERT_NE(shown.find("\n72 36\n255\n"), std::string::npos);
  std::size_t at = shown.size() - shape.RowBytes() * shape.height;
  for (unsigned y = 0; y < shape.height; ++y) {
    for (const std::uint8_t sample : RowOf(shape, y)) {
      ASSERT_EQ(static_cast<std::uint8_t>(shown.at(at)), sample) << at;
      ++at;
    }
  }
}

}  // namespace
}  // namespace rastrel::odalis
