// Effects of the prefix's sections on a page, measured in pixels. The sections are the library's
// own.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "rastrel/platform/os/text.h"
#include "rastrel/prefix/levels.h"
#include "rastrel/prefix/scaling.h"
#include "tests/children/rip_effects.h"

namespace rastrel::corerast::testing {
namespace {

// ---- Levels ----

CJobData WithLevels(double low, double gamma, double high) {
  CJobData settings;
  settings.LevelsEnabled = true;
  settings.LevelsLinked = true;
  settings.Levels[0].Low = low;
  settings.Levels[0].Gamma = gamma;
  settings.Levels[0].High = high;
  return settings;
}

std::vector<int> GrayUnder(const CJobData& settings) {
  const RipFixture bench;
  const std::string page = OnlyPage(bench, PrefixOf(bench, prefix::LevelsSection(settings)),
                                    Page(72, 72, "0.5 setgray 0 0 72 72 rectfill"));
  std::istringstream text(ReadPixels(page + "/page.tif").At(36, 36));
  std::vector<int> samples;
  for (std::string number; std::getline(text, number, ',');) samples.push_back(std::stoi(number));
  return samples;
}

// Half of 255 lies between two samples, so a device may put out either.
void ExpectNear(const std::vector<int>& samples, const std::vector<int>& expected, int distance) {
  ASSERT_EQ(samples.size(), expected.size());
  for (std::size_t i = 0; i < samples.size(); ++i) EXPECT_NEAR(samples[i], expected[i], distance);
}

TEST(LevelsEffect, of_the_identity_leaves_a_half_gray_as_it_is) {
  REQUIRE_GHOSTSCRIPT();
  EXPECT_EQ(GrayUnder(WithLevels(0, 1, 255)), (std::vector{127, 127, 127}));
}

TEST(LevelsEffect, of_one_channel_halves_that_channel_only) {
  REQUIRE_GHOSTSCRIPT();
  CJobData settings = WithLevels(0, 1, 255);
  settings.LevelsLinked = false;
  settings.Levels[1].High = 128;
  ExpectNear(GrayUnder(settings), {63, 127, 127}, 1);
}

// The table has entries of three digits here, and its string takes two digits a byte, whatever
// entry they come from. Half of 255 lies between two of these bytes, and the interpreter takes
// their mean.
TEST(LevelsEffect, of_a_gamma_is_that_of_the_tables_bytes) {
  REQUIRE_GHOSTSCRIPT();
  const CJobData settings = WithLevels(0, 2, 255);
  std::string digits = os::Utf8FromWide(prefix::LevelsTable(settings.Levels[0]));
  std::erase(digits, '\n');
  const int below = std::stoi(digits.substr(std::size_t{2} * 127, 2), nullptr, 16);
  const int above = std::stoi(digits.substr(std::size_t{2} * 128, 2), nullptr, 16);
  const int mean = (below + above) / 2;
  EXPECT_NEAR(mean, 99, 1);
  ExpectNear(GrayUnder(settings), {mean, mean, mean}, 2);
}

// A patch of half a color for each plane, side by side on a page of 120 by 20 points.
const std::string Patches = Page(
    120, 20,
    "0.5 0 0 0 setcmykcolor 0 0 20 20 rectfill 0 0.5 0 0 setcmykcolor 20 0 20 20 rectfill "
    "0 0 0.5 0 setcmykcolor 40 0 20 20 rectfill 0 0 0 0.5 setcmykcolor 60 0 20 20 rectfill "
    "[/Separation (Hexachrome Orange) cvn /DeviceCMYK {0 exch dup 0}] setcolorspace 0.5 setcolor "
    "80 0 20 20 rectfill [/Separation (Hexachrome Green) cvn /DeviceCMYK {0 exch 0}] setcolorspace "
    "0.5 setcolor "
    "100 0 20 20 rectfill");

// The sample of each plane in the middle of its own patch, by the plane's name.
std::map<std::string, int> PatchesUnder(const CJobData& settings, const std::string& mode) {
  const RipFixture bench;
  const std::string page =
      OnlyPage(bench, PrefixOf(bench, prefix::LevelsSection(settings), mode), Patches);
  std::map<std::string, int> samples;
  const pages::PageInfo info = CheckedInfo(page);
  for (const pages::PagePlane& plane : info.planes) {
    const Names order{"Cyan",  "Magenta",           "Yellow",
                      "Black", "Hexachrome Orange", "Hexachrome Green"};
    const auto place = std::ranges::find(order, plane.name) - order.begin();
    samples[plane.name] =
        PlaneSample(page + "/" + plane.file, static_cast<unsigned>(place) * 20 + 10, 10);
  }
  return samples;
}

// The prefix asks the device for its first name, and takes its other branch for six colors: the
// extra planes have the levels of red and green.
TEST(LevelsEffect, of_six_colors_gives_the_extra_planes_those_of_red_and_green) {
  REQUIRE_GHOSTSCRIPT();
  CJobData settings = WithLevels(0, 1, 255);
  settings.LevelsLinked = false;
  const auto plain = PatchesUnder(settings, "6Color");
  ASSERT_EQ(plain.size(), 6U);
  for (const auto& [name, sample] : plain) EXPECT_NEAR(sample, 127, 1) << name;
  // By High 128, red halves the light that its planes let through.
  settings.Levels[1].High = 128;
  const auto red = PatchesUnder(settings, "6Color");
  for (const auto& [name, sample] : red) {
    EXPECT_NEAR(sample, name == "Cyan" || name == "Hexachrome Orange" ? 63 : 127, 1) << name;
  }
  settings.Levels[1].High = 255;
  settings.Levels[2].High = 64;
  const auto green = PatchesUnder(settings, "6Color");
  for (const auto& [name, sample] : green) {
    EXPECT_NEAR(sample, name == "Magenta" || name == "Hexachrome Green" ? 31 : 127, 1) << name;
  }
  // The same separations beside four colors have no levels.
  const auto four = PatchesUnder(settings, "4Color");
  ASSERT_EQ(four.size(), 6U);
  for (const auto& [name, sample] : four) {
    EXPECT_NEAR(sample, name == "Magenta" ? 31 : 127, 1) << name;
  }
}

// Lines of several widths at places between pixels, upright, level, askew and curved; rectangles
// with and without area; text.
constexpr const char* ThinDrawing =
    "0 1 11 { dup 9.37 mul 5.13 add 3.7 moveto 0 60.21 rlineto 0.13 mul setlinewidth stroke } for\n"
    "0 1 11 { dup 5.19 mul 70.41 add 4.3 exch moveto 110.77 0 rlineto 0.11 mul setlinewidth stroke "
    "}"
    " for\n"
    "0 setlinewidth 3.3 3.9 moveto 120.7 66.1 lineto stroke\n"
    "0.4 setlinewidth 60.3 40.7 20.9 0 360 arc stroke\n"
    "0.3 setlinewidth 7.77 7.31 50.13 33.71 rectstroke 1 0 0 setrgbcolor\n"
    "64.44 7.31 0.21 40.5 rectfill 70.1 7.9 30.3 0.17 rectfill 75.3 12.7 9.41 8.87 rectfill\n"
    "/Helvetica findfont 6.3 scalefont setfont 0 setgray 12.1 135.3 moveto (Hinweis) show\n";

// The interpreter's own file, whose header holds a comment.
Pixels PlainPage(const RipFixture& bench, const std::string& resolution, const std::string& job) {
  const std::string file = bench.File("plain.ppm", "");
  EXPECT_TRUE(RunCommand("gs -q -dBATCH -dNOPAUSE -dSAFER -sDEVICE=ppmraw -r" + resolution +
                         " '-sOutputFile=" + file + "' '" + job + "'"));
  std::ifstream stream(file, std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(stream), {}};
  const std::size_t comment = text.find('#');
  text.erase(comment, text.find('\n', comment) + 1 - comment);
  return ReadPixels(bench.File("plain.ppm", text));
}

TEST(Strokes, have_the_pixels_of_an_interpreter_started_at_their_resolution) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string job = bench.File("job.ps", Page(130, 144, ThinDrawing));
  for (const std::string resolution : {"72", "149", "150", "300", "600", "300x100"}) {
    SCOPED_TRACE(resolution);
    const std::size_t by = resolution.find('x');
    const std::string x = resolution.substr(0, by);
    const std::string y = by == std::string::npos ? x : resolution.substr(by + 1);
    const std::string mode = "3Color " + x + " " + y + " SetXYResolution";
    const Pixels made =
        ReadPixels(Pages(bench.Run({PrefixOf(bench, L"", mode), job}), 1).front() + "/page.tif");
    const Pixels expected = PlainPage(bench, resolution, job);
    ASSERT_EQ(made.width, expected.width);
    ASSERT_EQ(made.height, expected.height);
    EXPECT_TRUE(made.samples == expected.samples);
  }
}

// The adjusting is the job's to choose, and its own choice lasts to its end.
TEST(Strokes, are_adjusted_as_the_job_says) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string prefix = PrefixOf(bench, L"", "3Color 300 300 SetXYResolution");
  const auto samples = [&](const std::string& start) {
    return ReadPixels(OnlyPage(bench, prefix, Page(130, 144, start + ThinDrawing)) + "/page.tif")
        .samples;
  };
  const std::string unadjusted = samples("false setstrokeadjust\n");
  EXPECT_TRUE(samples("") == unadjusted);
  EXPECT_FALSE(samples("true setstrokeadjust\n") == unadjusted);
}

TEST(SixColors, have_their_planes_on_every_page_and_further_spots_too) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string gold =
      "[/Separation /Gold /DeviceCMYK {0 exch dup 0}] setcolorspace 1 setcolor 0 0 9 9 rectfill";
  for (const auto& [job, names] :
       {std::pair(Page(72, 72, ""), Names{"Cyan", "Magenta", "Yellow", "Black", "Hexachrome Green",
                                          "Hexachrome Orange"}),
        std::pair(Page(72, 72, gold), Names{"Cyan", "Magenta", "Yellow", "Black", "Gold",
                                            "Hexachrome Green", "Hexachrome Orange"})}) {
    const std::string page = OnlyPage(bench, bench.Prefix("Hexachrome/300 dpi.ps"), job);
    const pages::PageInfo info = CheckedInfo(page);
    Names planes;
    for (const pages::PagePlane& plane : info.planes) planes.push_back(plane.name);
    EXPECT_EQ(planes, names);
    EXPECT_EQ(info.xResolution, 300);
    EXPECT_EQ(info.mode, "Hexachrome/300 dpi.ps");
  }
}

// ---- Scaling ----

CJobData CustomSize(double widthCm, double heightCm) {
  CJobData settings;
  settings.ScaleMode = prefix::ScaleCustom;
  settings.ScaleWidthCm = widthCm;
  settings.ScaleHeightCm = heightCm;
  return settings;
}

TEST(ScalingEffect, of_a_custom_size_is_its_pixels_with_the_drawing_inside) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  // A square: it fills the height, 500 pixels, and is in the middle.
  const std::string page =
      OnlyPage(bench, PrefixOf(bench, prefix::ScalingSection(CustomSize(25.4, 12.7)), Mode100),
               Page(300, 300, "1 0 0 setrgbcolor 0 0 300 300 rectfill"));
  const Pixels pixels = ReadPixels(page + "/page.tif");
  EXPECT_EQ(pixels.width, 1000U);
  EXPECT_EQ(pixels.height, 500U);
  EXPECT_EQ(pixels.At(245, 250), "255,255,255");
  EXPECT_EQ(pixels.At(255, 5), "255,0,0");
  EXPECT_EQ(pixels.At(744, 494), "255,0,0");
  EXPECT_EQ(pixels.At(755, 250), "255,255,255");
}

// Jobs whose page has another shape than the size: each sets its size in another way, and is red to
// its borders.
const std::vector<std::pair<std::string, std::string>> RedSheets{
    {"job.ps", Page(300, 300, "1 0 0 setrgbcolor 0 0 300 300 rectfill")},
    {"job.ps", Page(100, 300, "1 0 0 setrgbcolor 0 0 100 300 rectfill")},
    {"job.eps",
     "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 50 50 350 350\n%%EndComments\n"
     "1 0 0 setrgbcolor 50 50 300 300 rectfill showpage\n"}};

bool RedAtTheCorners(const RipFixture& bench, const std::wstring& section, const std::string& name,
                     const std::string& job) {
  const std::string page =
      Pages(bench.Run({PrefixOf(bench, section, Mode100), bench.File(name, job)}), 1).front();
  const Pixels pixels = ReadPixels(page + "/page.tif");
  EXPECT_EQ(pixels.width, 1000U);
  EXPECT_EQ(pixels.height, 500U);
  EXPECT_EQ(pixels.At(500, 250), "255,0,0");
  return pixels.At(1, 1) == "255,0,0" && pixels.At(998, 1) == "255,0,0" &&
         pixels.At(1, 498) == "255,0,0" && pixels.At(998, 498) == "255,0,0";
}

TEST(AspectPolicy, of_true_leaves_room_and_of_false_fills_the_size) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::wstring keeping = prefix::ScalingSection(CustomSize(25.4, 12.7));
  std::wstring filling = keeping;
  filling.replace(filling.find(L"true SetAspectPolicy"), 4, L"false");
  for (const auto& [name, job] : RedSheets) {
    SCOPED_TRACE(job);
    EXPECT_FALSE(RedAtTheCorners(bench, keeping, name, job));
    EXPECT_TRUE(RedAtTheCorners(bench, filling, name, job));
  }
}

}  // namespace
}  // namespace rastrel::corerast::testing
