// What the prefix's sections do to a page, measured in pixels and in cut paths. The sections are
// the library's own.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "rastrel/platform/os/text.h"
#include "rastrel/prefix/cutter.h"
#include "rastrel/prefix/levels.h"
#include "rastrel/prefix/preview_sections.h"
#include "rastrel/prefix/scaling.h"
#include "tests/children/rip_bench.h"

namespace rastrel::corerast::testing {
namespace {

using Names = std::vector<std::string>;

// A prefix with these sections, for a print mode of that text; none if it is empty.
std::string PrefixOf(const RipBench& bench, const std::wstring& sections,
                     const std::string& mode = "3Color 72 72 SetXYResolution") {
  bench.File("root/Queue/rip/System/pmodes/Own/mode.ps", "%!PS\n" + mode + "\n");
  const std::string selection = "(%Lumiscript%pmodes/Own/mode.ps) SelectPrintMode\n";
  return bench.File("job.psp", "\nserverdict begin 0 exitserver\n\n" +
                                   (mode.empty() ? "" : selection) +
                                   "/SelectPrintMode load /$SelectPrintMode$ exch def\n"
                                   "/SelectPrintMode {pop} def\n" +
                                   os::Utf8FromWide(sections) + "\x04");
}

// A page with sides in points.
std::string Page(unsigned width, unsigned height, const std::string& drawing) {
  return "%!PS\n<< /PageSize [" + std::to_string(width) + " " + std::to_string(height) +
         "] >> setpagedevice\n" + drawing + "\nshowpage\n";
}

Names Pages(const Outcome& outcome, std::size_t count) {
  EXPECT_EQ(outcome.status, 0) << outcome.reports;
  Names pages = RipBench::PagesOf(outcome.output);
  EXPECT_EQ(pages.size(), count) << outcome.reports;
  pages.resize(count);
  for (const std::string& page : pages) static_cast<void>(CheckedInfo(page));
  return pages;
}

std::string OnlyPage(const RipBench& bench, const std::string& prefix, const std::string& job) {
  return Pages(bench.Run({prefix, bench.File("job.ps", job)}), 1).front();
}

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
  const RipBench bench;
  const std::string page = OnlyPage(bench, PrefixOf(bench, prefix::LevelsSection(settings)),
                                    Page(72, 72, "0.5 setgray 0 0 72 72 rectfill"));
  std::istringstream text(ReadNetpbm(page + "/page.ppm").At(36, 36));
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
TEST(LevelsEffect, of_a_gamma_is_what_the_tables_bytes_say) {
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

// ---- Scaling ----

CJobData CustomSize(double widthCm, double heightCm) {
  CJobData settings;
  settings.ScaleMode = prefix::ScaleCustom;
  settings.ScaleWidthCm = widthCm;
  settings.ScaleHeightCm = heightCm;
  return settings;
}

constexpr const char* Mode100 = "3Color 100 100 SetXYResolution";

TEST(ScalingEffect, of_a_custom_size_is_its_pixels_with_the_drawing_inside) {
  REQUIRE_GHOSTSCRIPT();
  const RipBench bench;
  // A square: it fills the height, 500 pixels, and stands in the middle.
  const std::string page =
      OnlyPage(bench, PrefixOf(bench, prefix::ScalingSection(CustomSize(25.4, 12.7)), Mode100),
               Page(300, 300, "1 0 0 setrgbcolor 0 0 300 300 rectfill"));
  const Pixels pixels = ReadNetpbm(page + "/page.ppm");
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

bool RedAtTheCorners(const RipBench& bench, const std::wstring& section, const std::string& name,
                     const std::string& job) {
  const std::string page =
      Pages(bench.Run({PrefixOf(bench, section, Mode100), bench.File(name, job)}), 1).front();
  const Pixels pixels = ReadNetpbm(page + "/page.ppm");
  EXPECT_EQ(pixels.width, 1000U);
  EXPECT_EQ(pixels.height, 500U);
  EXPECT_EQ(pixels.At(500, 250), "255,0,0");
  return pixels.At(1, 1) == "255,0,0" && pixels.At(998, 1) == "255,0,0" &&
         pixels.At(1, 498) == "255,0,0" && pixels.At(998, 498) == "255,0,0";
}

TEST(AspectPolicy, of_true_leaves_room_and_of_false_fills_the_size) {
  REQUIRE_GHOSTSCRIPT();
  const RipBench bench;
  const std::wstring keeping = prefix::ScalingSection(CustomSize(25.4, 12.7));
  std::wstring filling = keeping;
  filling.replace(filling.find(L"true SetAspectPolicy"), 4, L"false");
  for (const auto& [name, job] : RedSheets) {
    SCOPED_TRACE(job);
    EXPECT_FALSE(RedAtTheCorners(bench, keeping, name, job));
    EXPECT_TRUE(RedAtTheCorners(bench, filling, name, job));
  }
}

// ---- Cutter ----

CJobData CutColour(int model, std::array<std::int32_t, 4> colour) {
  CJobData settings;
  settings.CutterEnabled = true;
  settings.CutterColorModel = model;
  settings.CutterColor = colour;
  return settings;
}
const CJobData RedCut = CutColour(prefix::CutterRgb, {255, 0, 0, 0});

std::string FileText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

struct CutPath {
  std::string kind;
  std::string colour;
  double width = 0;
  std::string clip;
  std::string closed;
  std::string letters;         // "mlllh"
  std::vector<double> points;  // x y x y ...

  // Whether one of the points is near that place, in points.
  [[nodiscard]] bool Passes(double x, double y, double distance) const {
    for (std::size_t i = 0; i + 1 < points.size(); i += 2) {
      if (std::abs(points[i] - x) <= distance && std::abs(points[i + 1] - y) <= distance) {
        return true;
      }
    }
    return false;
  }
};

std::vector<CutPath> CutPathsOf(const std::string& page) {
  std::istringstream file(FileText(page + "/cut-paths"));
  std::vector<CutPath> paths;
  std::string line;
  std::getline(file, line);
  EXPECT_EQ(line, "Rastrel cut paths 1");
  while (std::getline(file, line) && line != "end") {
    std::istringstream words(line);
    std::string key;
    words >> key;
    const std::string value = line.size() > key.size() ? line.substr(key.size() + 1) : "";
    if (key == "path") {
      paths.emplace_back();
    } else if (key == "kind:") {
      paths.back().kind = value;
    } else if (key == "colour:") {
      paths.back().colour = value;
    } else if (key == "line-width:") {
      paths.back().width = std::stod(value);
    } else if (key == "clip:") {
      paths.back().clip = value;
    } else if (key == "closed:") {
      paths.back().closed = value;
    } else if (key.size() == 1 && !paths.empty()) {
      paths.back().letters += key;
      for (double number = 0; words >> number;) paths.back().points.push_back(number);
    }
  }
  EXPECT_EQ(line, "end");
  return paths;
}

// Whether any pixel is redder than it is green: neither white, black nor blue is.
bool HasRed(const Pixels& pixels) {
  for (std::size_t i = 0; i + 2 < pixels.samples.size(); i += 3) {
    if (static_cast<unsigned char>(pixels.samples[i]) >
        static_cast<unsigned char>(pixels.samples[i + 1])) {
      return true;
    }
  }
  return false;
}

// The outline of a rectangle of 100 by 50 points at 20, 20, beside a blue square that stays.
std::string Outline(const std::string& colour) {
  return Page(144, 144,
              "0 0 1 setrgbcolor 30 90 20 20 rectfill\n" + colour +
                  " 2 setlinewidth 20 20 moveto 100 0 rlineto 0 50 rlineto -100 0 rlineto "
                  "closepath stroke");
}

constexpr const char* Spot =
    "[/Separation /CutContour /DeviceCMYK {0 exch dup 0}] setcolorspace 1 setcolor";

void ExpectOutlineCut(const std::string& page) {
  const std::vector<CutPath> paths = CutPathsOf(page);
  ASSERT_EQ(paths.size(), 1U);
  EXPECT_EQ(paths[0].kind, "stroke");
  EXPECT_EQ(paths[0].closed, "1");
  const double half = 0.5;  // of a pixel, which is a point here
  EXPECT_NEAR(paths[0].width, 2, half);
  for (const auto& [x, y] : {std::pair(20, 20), {120, 20}, {120, 70}, {20, 70}}) {
    EXPECT_TRUE(paths[0].Passes(x, y, half)) << x << " " << y;
  }
  const Pixels pixels = ReadNetpbm(page + "/page.ppm");
  EXPECT_FALSE(HasRed(pixels));
  EXPECT_EQ(pixels.At(70, 124), "255,255,255");
  EXPECT_EQ(pixels.At(40, 44), "0,0,255");
}

TEST(CutterEffect, of_each_model_takes_the_outline_out_of_the_picture) {
  REQUIRE_GHOSTSCRIPT();
  const RipBench bench;
  CJobData spot = CutColour(prefix::CutterNamed, {});
  spot.CutterSeparation = L"CutContour";
  const std::vector<std::pair<std::wstring, std::string>> cases{
      {prefix::CutterSection(RedCut), "1 0 0 setrgbcolor"},
      {prefix::CutterSection(CutColour(prefix::CutterCmyk, {0, 128, 255, 0})),
       "0 0.502 1 0 setcmykcolor"},
      {prefix::CutDataSection(RedCut), "1 0 0 setrgbcolor"},
      {prefix::CutDataSection(CutColour(prefix::CutterCmyk, {0, 500, 1000, 0})),
       "0 0.5 1 0 setcmykcolor"},
      {prefix::CutDataSection(spot), Spot},
      {prefix::CutDataSection(spot),
       "[/DeviceN [/CutContour] /DeviceCMYK {0 exch dup 0}] setcolorspace 1 setcolor"},
      {prefix::CutterSection(CutColour(prefix::CutterRgb, {51, 51, 51, 0})), "0.2 setgray"},
      {prefix::CutterSection(CutColour(prefix::CutterCmyk, {0, 0, 0, 204})), "0.2 setgray"}};
  for (const auto& [section, colour] : cases) {
    SCOPED_TRACE(os::Utf8FromWide(section) + colour);
    ExpectOutlineCut(OnlyPage(bench, PrefixOf(bench, section), Outline(colour)));
  }
}

TEST(CutterEffect, leaves_other_colours_in_the_picture) {
  REQUIRE_GHOSTSCRIPT();
  const RipBench bench;
  for (const std::string& colour :
       Names{"0.99 0 0 setrgbcolor", "0 1 1 0 setcmykcolor", Spot,
             "[/Separation /Other /DeviceRGB {0 0}] setcolorspace 1 setcolor"}) {
    SCOPED_TRACE(colour);
    const std::string page =
        OnlyPage(bench, PrefixOf(bench, prefix::CutterSection(RedCut)), Outline(colour));
    EXPECT_TRUE(CutPathsOf(page).empty());
    EXPECT_TRUE(HasRed(ReadNetpbm(page + "/page.ppm")));
  }
}

TEST(CutterEffect, of_none_keeps_the_outline_and_makes_no_file) {
  REQUIRE_GHOSTSCRIPT();
  const RipBench bench;
  const std::string page = OnlyPage(bench, PrefixOf(bench, prefix::CutterSection(CJobData())),
                                    Outline("1 0 0 setrgbcolor"));
  EXPECT_FALSE(std::filesystem::exists(page + "/cut-paths"));
  EXPECT_EQ(ReadNetpbm(page + "/page.ppm").At(70, 124), "255,0,0");
}

// Every operator that paints; each is said to have drawn a number of paths.
TEST(CutterEffect, covers_every_painting_operator) {
  REQUIRE_GHOSTSCRIPT();
  const RipBench bench;
  const std::string triangle = "{0 0 20 20 setbbox 0 0 moveto 20 20 lineto 20 0 lineto closepath} ";
  const std::string text = "/Helvetica findfont 10 scalefont setfont 20 100 moveto ";
  const std::vector<std::pair<std::string, Names>> cases{
      {"9 9 20 20 rectfill", {"fill"}},
      {"[9 9 20 20 50 50 5 5] rectfill", {"fill"}},
      {"<95200004 000A 000A 0014 0014> rectfill", {"fill"}},
      {"9 9 20 20 rectstroke", {"stroke"}},
      {"9 9 20 20 [2 0 0 2 0 0] rectstroke", {"stroke"}},
      {"[9 9 20 20] [2 0 0 2 0 0] rectstroke", {"stroke"}},
      {"0 0 moveto 9 9 lineto 9 0 lineto fill", {"fill"}},
      {"0 0 moveto 9 9 lineto 9 0 lineto eofill", {"eofill"}},
      {"0 0 moveto 9 9 lineto stroke", {"stroke"}},
      {triangle + "ufill", {"fill"}},
      {triangle + "ueofill", {"eofill"}},
      {triangle + "ustroke", {"stroke"}},
      {triangle + "[2 0 0 2 0 0] ustroke", {"stroke"}},
      {text + "(AB) show", {"text"}},
      {text + "5 0 (AB) ashow", {"text", "text"}},
      {text + "5 0 65 (AB) widthshow", {"text", "text"}},
      {text + "5 0 65 7 0 (AB) awidthshow", {"text", "text"}},
      {text + "(AB) [20 30] xshow", {"text", "text"}},
      {text + "(AB) [20 30] yshow", {"text", "text"}},
      {text + "(AB) [20 1 30 2] xyshow", {"text", "text"}},
      {text + "{pop pop} (AB) kshow", {"text", "text"}},
      {text + "{pop pop 1 string dup 0 4 -1 roll put show} (AB) cshow", {"text", "text"}},
      {text + "/A glyphshow", {"text"}}};
  std::string job = "%!PS\n<< /PageSize [144 144] >> setpagedevice\n";
  for (const auto& [drawing, kinds] : cases) {
    job += "gsave 1 0 0 setrgbcolor " + drawing + " grestore count 0 ne { fehler } if showpage\n";
  }
  const Names pages =
      Pages(bench.Run({PrefixOf(bench, prefix::CutterSection(RedCut)), bench.File("job.ps", job)}),
            cases.size());
  for (std::size_t i = 0; i < cases.size(); ++i) {
    SCOPED_TRACE(cases[i].first);
    Names kinds;
    for (const CutPath& path : CutPathsOf(pages[i])) kinds.push_back(path.kind);
    EXPECT_EQ(kinds, cases[i].second);
    EXPECT_FALSE(HasRed(ReadNetpbm(pages[i] + "/page.ppm")));
  }
}

// What follows a text stands where it would stand without a cutter.
TEST(CutterEffect, leaves_the_point_where_text_operators_leave_it) {
  REQUIRE_GHOSTSCRIPT();
  const RipBench bench;
  std::string job = "%!PS\n/Helvetica findfont 10 scalefont setfont 1 0 0 setrgbcolor\n";
  for (const std::string show :
       {"(AB) show", "5 1 (AB) ashow", "5 1 65 (AB) widthshow", "5 1 65 7 2 (AB) awidthshow",
        "(AB) [20 30] xshow", "(AB) [20 30] yshow", "(AB) [20 1 30 2] xyshow",
        "{pop pop 3 3 rmoveto} (AB) kshow", "/A glyphshow"}) {
    job += "9 9 moveto " + show + " currentpoint exch == ==\n";
  }
  const std::string path = bench.File("job.ps", job + "showpage\n");
  const auto printed = [&](const CJobData& settings) {
    const Outcome outcome = bench.Run({PrefixOf(bench, prefix::CutterSection(settings)), path});
    std::istringstream lines(outcome.reports);
    std::vector<double> numbers;
    for (std::string line; std::getline(lines, line);) {
      if (line.starts_with("gs: ")) numbers.push_back(std::stod(line.substr(4)));
    }
    return numbers;
  };
  const std::vector<double> with = printed(RedCut);
  const std::vector<double> without = printed(CJobData());
  ASSERT_EQ(without.size(), 18U);
  ASSERT_EQ(with.size(), without.size());
  for (std::size_t i = 0; i < with.size(); ++i) EXPECT_NEAR(with[i], without[i], 0.01) << i;
}

TEST(CutterEffect, keeps_curves_as_curves) {
  REQUIRE_GHOSTSCRIPT();
  const RipBench bench;
  const std::string page =
      OnlyPage(bench, PrefixOf(bench, prefix::CutterSection(RedCut), Mode100),
               Page(144, 144, "1 0 0 setrgbcolor 72 72 30 0 360 arc closepath stroke"));
  const std::vector<CutPath> paths = CutPathsOf(page);
  ASSERT_EQ(paths.size(), 1U);
  EXPECT_EQ(std::ranges::count(paths[0].letters, 'c'), 4);
  const double half = 0.5 * 72 / 100;
  EXPECT_TRUE(paths[0].Passes(102, 72, half));
  EXPECT_TRUE(paths[0].Passes(72, 102, half));
  EXPECT_TRUE(paths[0].Passes(42, 72, half));
}

TEST(CutterEffect, keeps_each_pages_paths_with_that_page) {
  REQUIRE_GHOSTSCRIPT();
  const RipBench bench;
  std::string job = "%!PS\n<< /PageSize [72 72] >> setpagedevice\n";
  for (int page = 1; page <= 40; ++page) {
    job += "1 0 0 setrgbcolor ";
    for (int i = 0; i < page; ++i) job += std::to_string(page) + " 0 moveto 0 9 rlineto stroke ";
    job += "showpage\n";
  }
  const Names pages = Pages(
      bench.Run({PrefixOf(bench, prefix::CutterSection(RedCut)), bench.File("job.ps", job)}), 40);
  for (unsigned page = 1; page <= pages.size(); ++page) {
    const std::vector<CutPath> paths = CutPathsOf(pages[page - 1]);
    ASSERT_EQ(paths.size(), page);
    for (const CutPath& path : paths) EXPECT_TRUE(path.Passes(page, 9, 0.5));
  }
}

TEST(CutterEffect, can_not_be_undone_by_a_job) {
  REQUIRE_GHOSTSCRIPT();
  const RipBench bench;
  const std::string red = "1 0 0 setrgbcolor";
  for (const std::wstring& section :
       {prefix::CutterSection(RedCut), prefix::CutDataSection(RedCut)}) {
    const std::string prefix = PrefixOf(bench, section);
    for (const std::string attempt :
         {"mark false $setcutter clear", "mark false 0 1 0 /DeviceRGB $setcutter clear",
          "{ false $setcutter$ } stopped pop clear",
          "{ 0 1 0 /DeviceRGB $setcutter$ } stopped pop clear",
          "mark 0 0 1 /DeviceRGB $stripcontour clear",
          "userdict /stroke systemdict /stroke get put", "userdict /stroke undef",
          "userdict /$setcutter undef", "systemdict begin",
          "{ systemdict /stroke { } put } stopped pop clear",
          "/stroke { {//stroke exec} exec } def", "\x04%!PS\n",
          "{ 1 1 null setcolortransfer } stopped pop clear"}) {
      SCOPED_TRACE(attempt);
      ExpectOutlineCut(OnlyPage(bench, prefix, "%!PS\n" + attempt + "\n" + Outline(red).substr(5)));
    }
  }
}

TEST(CutterEffect, of_a_pdf_takes_strokes_and_fills_out) {
  REQUIRE_GHOSTSCRIPT();
  const RipBench bench;
  CJobData spot = CutColour(prefix::CutterNamed, {});
  spot.CutterSeparation = L"CutContour";
  for (const auto& [section, colour] :
       {std::pair(prefix::CutterSection(RedCut), std::string("1 0 0 setrgbcolor")),
        std::pair(prefix::CutDataSection(spot), std::string(Spot))}) {
    SCOPED_TRACE(colour);
    const std::string source = bench.File("source.ps", Outline(colour));
    const std::string pdf = bench.File("job.pdf", "");
    const std::string command = "gs -q -dBATCH -dNOPAUSE -dSAFER -sDEVICE=pdfwrite -o '" + pdf +
                                "' '" + source + "' </dev/null >/dev/null 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0);
    ExpectOutlineCut(Pages(bench.Run({PrefixOf(bench, section), pdf}), 1).front());
  }
}

// The outline's job as other programs write it out again. Programs that are not installed are left
// out; the interpreter's own writers always run.
TEST(CutterEffect, holds_for_files_of_other_programs) {
  REQUIRE_GHOSTSCRIPT();
  const RipBench bench;
  const std::string source = bench.File("source.ps", Outline("1 0 0 setrgbcolor"));
  const std::string job = bench.File("job.ps", "");
  const std::string pdf = bench.File("source.pdf", "");
  const std::string gs = "gs -q -dBATCH -dNOPAUSE -dSAFER ";
  const std::string quiet = " </dev/null >/dev/null 2>&1";
  ASSERT_EQ(
      std::system((gs + "-sDEVICE=pdfwrite -o '" + pdf + "' '" + source + "'" + quiet).c_str()), 0);
  const std::string both = "'" + pdf + "' '" + job + "'";
  for (const auto& [program, command] :
       {std::pair(std::string("gs"), gs + "-sDEVICE=ps2write -o '" + job + "' '" + source + "'"),
        std::pair(std::string("pdftops"), "pdftops -level3 " + both),
        std::pair(std::string("pdftocairo"), "pdftocairo -ps " + both)}) {
    SCOPED_TRACE(command);
    if (std::system(("command -v " + program + quiet).c_str()) != 0) continue;
    ASSERT_EQ(std::system((command + quiet).c_str()), 0);
    const std::string prefix = PrefixOf(bench, prefix::CutterSection(RedCut));
    ExpectOutlineCut(Pages(bench.Run({prefix, job}), 1).front());
  }
}

// A job can paint in the cut colour, and so make cut paths; it can't write them as reports.
TEST(CutterEffect, can_not_be_forged_in_reports) {
  REQUIRE_GHOSTSCRIPT();
  const RipBench bench;
  const std::string lines =
      "(%stderr) (w) file dup (CUT 53\nSEG 6d2031\nENDCUT \nCUTTER 61\n\\n SEG 6d\n) "
      "writestring flushfile\n";
  ExpectOutlineCut(OnlyPage(bench, PrefixOf(bench, prefix::CutterSection(RedCut)),
                            "%!PS\n" + lines + Outline("1 0 0 setrgbcolor").substr(5)));
}

TEST(CutterEffect, leaves_no_plane_of_the_cut_colour_in_separations) {
  REQUIRE_GHOSTSCRIPT();
  const RipBench bench;
  CJobData spot = CutColour(prefix::CutterNamed, {});
  spot.CutterSeparation = L"CutContour";
  const std::string gold =
      " gsave [/Separation /Gold /DeviceCMYK {0 exch dup 0}] setcolorspace 1 setcolor "
      "0 0 9 9 rectfill grestore";
  // Cut data that is kept apart asks for separations, so that no print mode needs to.
  for (const std::string mode : {"4Color", ""}) {
    const std::string page =
        OnlyPage(bench, PrefixOf(bench, prefix::CutDataSection(spot), mode), Outline(Spot + gold));
    Names planes;
    for (const children::PagePlane& plane : CheckedInfo(page).planes) planes.push_back(plane.name);
    EXPECT_EQ(planes, (Names{"Cyan", "Magenta", "Yellow", "Black", "Gold"}));
    EXPECT_EQ(CutPathsOf(page).size(), 1U);
  }
}

TEST(DeviceSelect, of_frameless_leaves_the_picture_blank_and_keeps_the_cut_paths) {
  REQUIRE_GHOSTSCRIPT();
  const RipBench bench;
  const std::string job =
      "%!PS\n(Other) DeviceSelect InitRIP\n" + Outline("1 0 0 setrgbcolor").substr(5);
  for (const std::wstring& start :
       std::vector<std::wstring>{L"", L"(Frameless) DeviceSelect \nInitRIP \n\n"}) {
    const std::string page =
        OnlyPage(bench, PrefixOf(bench, prefix::CutDataSection(RedCut) + start), job);
    const Pixels pixels = ReadNetpbm(page + "/page.ppm");
    EXPECT_EQ(pixels.width, 144U);
    const bool white = std::ranges::all_of(pixels.samples, [](char c) { return c == '\xFF'; });
    EXPECT_EQ(white, !start.empty());
    EXPECT_EQ(CutPathsOf(page).size(), 1U);
  }
}

}  // namespace
}  // namespace rastrel::corerast::testing
