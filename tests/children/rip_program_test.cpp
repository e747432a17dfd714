// The RIP as the library runs it, on jobs that go well.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "tests/children/rip_fixture.h"

namespace rastrel::corerast::testing {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

// A page of 2 by 1 inches, red on its left half, and one of 1 by 1 inch, all blue.
const std::string TwoPages =
    "%!PS-Adobe-3.0\n%%Pages: 2\n%%EndComments\n"
    "<< /PageSize [144 72] >> setpagedevice 1 0 0 setrgbcolor 0 0 72 72 rectfill showpage\n"
    "<< /PageSize [72 72] >> setpagedevice 0 0 1 setrgbcolor 0 0 72 72 rectfill showpage\n";

// A page of one inch with one color on it.
std::string OnePage(const std::string& paint) {
  return "%!PS\n<< /PageSize [72 72] >> setpagedevice\n" + paint +
         "\n0 0 72 72 rectfill showpage\n";
}

Names NamesIn(const std::string& directory) {
  Names names;
  for (const auto& entry : fs::directory_iterator(directory)) {
    names.push_back(entry.path().filename().string());
  }
  std::ranges::sort(names);
  return names;
}

Names PlaneNames(const pages::PageInfo& info) {
  Names names;
  for (const pages::PagePlane& plane : info.planes) names.push_back(plane.name);
  return names;
}

// The only page of a run that went well; an empty text if it did not.
std::string OnlyPage(const ProgramRun& outcome) {
  EXPECT_EQ(outcome.status, 0) << outcome.reports;
  const Names pages = RipFixture::PagesOf(outcome);
  EXPECT_EQ(pages.size(), 1U) << outcome.output;
  return pages.size() == 1 ? pages.front() : "";
}
TEST(Rip, makes_one_directory_a_page) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const ProgramRun outcome = bench.Run({bench.Prefix(), bench.File("job.ps", TwoPages)});
  ASSERT_EQ(outcome.status, 0) << outcome.reports;
  const Names pages = RipFixture::PagesOf(outcome);
  ASSERT_EQ(pages.size(), 2U) << outcome.output;
  EXPECT_EQ(fs::path(pages[0]).filename(), "p0001");
  EXPECT_EQ(fs::path(pages[1]).filename(), "p0002");
  EXPECT_EQ(fs::path(pages[0]).parent_path(), fs::path(pages[1]).parent_path());
  EXPECT_EQ(NamesIn(pages[0]), (Names{".info", "page.tif", "preview.png"}));
  const Pixels first = ReadPixels(pages[0] + "/page.tif");
  EXPECT_EQ(first.width, 144U);
  EXPECT_EQ(first.height, 72U);
  EXPECT_EQ(first.At(10, 10), "255,0,0");
  EXPECT_EQ(first.At(100, 10), "255,255,255");
  EXPECT_EQ(ReadPixels(pages[1] + "/page.tif").At(71, 71), "0,0,255");
}

TEST(Rip, describes_its_files_in_the_info) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const ProgramRun outcome =
      bench.Run({bench.Prefix("RGB/300 dpi.ps", "Shop (window)"), bench.File("job.ps", TwoPages)});
  const Names pages = RipFixture::PagesOf(outcome);
  ASSERT_EQ(pages.size(), 2U) << outcome.reports;
  const pages::PageInfo info = CheckedInfo(pages[1]);
  EXPECT_EQ(info.job, "job12");
  EXPECT_EQ(info.printer, "Shop (window)");
  EXPECT_EQ(info.mode, "RGB/300 dpi.ps");
  EXPECT_EQ(info.page, 2U);
  EXPECT_EQ(info.width, 300U);
  EXPECT_EQ(info.height, 300U);
  EXPECT_EQ(info.xResolution, 300);
  EXPECT_EQ(info.yResolution, 300);
  EXPECT_EQ(info.bits, 8U);
  EXPECT_EQ(info.color, pages::PageColor::Rgb);
  EXPECT_EQ(PlaneNames(info), (Names{"Red", "Green", "Blue"}));
}

TEST(Rip, reports_its_stages_in_order) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const ProgramRun outcome = bench.Run({bench.Prefix(), bench.File("job.ps", TwoPages)});
  std::size_t at = 0;
  for (const std::string line :
       {"INFO: INITIALISING\n", "INFO: READY\n", "INFO: INTERPRETING\n", "INFO: CONVERTING\n",
        "PAGE: 1\n", "PAGE: 2\n", "INFO: SPOOLING\n"}) {
    const std::size_t next = outcome.reports.find(line, at);
    ASSERT_NE(next, std::string::npos) << line << outcome.reports;
    at = next;
  }
  EXPECT_EQ(outcome.reports.find("ERROR:"), std::string::npos);
  EXPECT_EQ(outcome.reports.find("WARNING:"), std::string::npos);
}

// The percentages that a run reported.
std::vector<int> Percentages(const std::string& reports) {
  std::vector<int> found;
  const std::string tag = "PROGRESS: ";
  for (std::size_t at = reports.find(tag); at != std::string::npos;
       at = reports.find(tag, at + 1)) {
    found.push_back(std::stoi(reports.substr(at + tag.size())));
  }
  return found;
}

TEST(Rip, reports_how_far_a_long_job_without_a_page_count_has_come) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  std::string job = "%!PS\n<< /PageSize [72 72] >> setpagedevice\n";
  for (int i = 0; i < 200000; ++i) job += "0 0 72 72 rectfill 0 0 72 72 rectfill\n";
  const ProgramRun outcome = bench.Run({bench.Prefix(), bench.File("job.ps", job + "showpage\n")});
  EXPECT_EQ(outcome.status, 0) << outcome.reports;
  const std::vector<int> percentages = Percentages(outcome.reports);
  EXPECT_GE(percentages.size(), 2U) << outcome.reports;
  EXPECT_TRUE(std::ranges::is_sorted(percentages, std::less_equal<>())) << outcome.reports;
  for (const int percent : percentages) EXPECT_TRUE(percent > 0 && percent <= 100);
}

TEST(Rip, takes_the_resolution_from_the_print_mode) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::vector<std::pair<std::string, unsigned>> modes{{"TIFF/tiff default.ps", 72},
                                                            {"Screen/preview.ps", 96},
                                                            {"RGB/300 dpi.ps", 300},
                                                            {"RGB/600 dpi.ps", 600}};
  const std::string job = bench.File("job.ps", OnePage("1 0 0 setrgbcolor"));
  for (const auto& [mode, resolution] : modes) {
    const std::string page = OnlyPage(bench.Run({bench.Prefix(mode), job}));
    EXPECT_EQ(ReadPixels(page + "/page.tif").width, resolution) << mode;
    EXPECT_EQ(CheckedInfo(page).xResolution, resolution) << mode;
  }
}

TEST(Rip, makes_a_plane_a_color_in_the_cmyk_mode) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string page = OnlyPage(bench.Run(
      {bench.Prefix("CMYK/300 dpi.ps"), bench.File("job.ps", OnePage("1 0 0 0.2 setcmykcolor"))}));
  const pages::PageInfo info = CheckedInfo(page);
  EXPECT_EQ(info.color, pages::PageColor::Cmyk);
  EXPECT_EQ(PlaneNames(info), (Names{"Cyan", "Magenta", "Yellow", "Black"}));
  EXPECT_EQ(NamesIn(page),
            (Names{".info", "black.tif", "cyan.tif", "magenta.tif", "preview.png", "yellow.tif"}));
  EXPECT_EQ(info.width, 300U);
  EXPECT_EQ(PlaneSample(page + "/cyan.tif", 150, 150), 0);
  EXPECT_EQ(PlaneSample(page + "/magenta.tif", 150, 150), 255);
  EXPECT_EQ(PlaneSample(page + "/black.tif", 150, 150), 204);
}

TEST(Rip, keeps_a_plane_for_each_spot_color) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string paint =
      "[/Separation (Cut Contour) /DeviceCMYK {0 exch dup 0 exch 0}] setcolorspace 1 setcolor";
  const std::string page =
      OnlyPage(bench.Run({bench.Prefix("CMYK/300 dpi.ps"), bench.File("job.ps", OnePage(paint))}));
  const pages::PageInfo info = CheckedInfo(page);
  EXPECT_EQ(info.color, pages::PageColor::Separations);
  EXPECT_EQ(PlaneNames(info), (Names{"Cyan", "Magenta", "Yellow", "Black", "Cut Contour"}));
  EXPECT_EQ(PlaneSample(page + "/spot-1.tif", 150, 150), 0);
  EXPECT_EQ(PlaneSample(page + "/cyan.tif", 150, 150), 255);
}

// A box that does not begin at the origin, with the spot in its upper half. It is 72 points wide
// and high.
std::string EpsWithCustomColor() {
  return "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 100 200 172 272\n"
         "%%DocumentCustomColors: (Cut Contour)\n%%+ (Never Painted)\n%%EndComments\n"
         "[/Separation (Cut Contour) /DeviceCMYK {0 exch dup 0}] setcolorspace\n"
         "1 setcolor 100 236 72 36 rectfill\nshowpage\n%%EOF\n";
}

TEST(Rip, prints_eps_that_declares_custom_colors_in_its_place_in_every_kind_of_mode) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  bench.File("root/Queue/rip/System/pmodes/Own/gray.ps", "%!PS\n1Color 72 72 SetXYResolution\n");
  const std::string eps = bench.File("job.eps", EpsWithCustomColor());
  const Pixels gray =
      ReadPixels(OnlyPage(bench.Run({bench.Prefix("Own/gray.ps"), eps})) + "/page.tif");
  EXPECT_EQ(gray.width, 72U);
  EXPECT_NE(gray.At(36, 18), "255");
  EXPECT_EQ(gray.At(36, 54), "255");
  const Pixels rgb =
      ReadPixels(OnlyPage(bench.Run({bench.Prefix("TIFF/tiff default.ps"), eps})) + "/page.tif");
  EXPECT_NE(rgb.At(36, 18), "255,255,255");
  EXPECT_EQ(rgb.At(36, 54), "255,255,255");
  const std::string page = OnlyPage(bench.Run({bench.Prefix("CMYK/300 dpi.ps"), eps}));
  EXPECT_EQ(PlaneNames(CheckedInfo(page)),
            (Names{"Cyan", "Magenta", "Yellow", "Black", "Cut Contour"}));
  EXPECT_EQ(PlaneSample(page + "/spot-1.tif", 150, 75), 0);
  EXPECT_EQ(PlaneSample(page + "/spot-1.tif", 150, 225), 255);
}

TEST(Rip, keeps_the_planes_of_its_mode_where_eps_declares_custom_colors) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string page = OnlyPage(bench.Run(
      {bench.Prefix("Hexachrome/300 dpi.ps"), bench.File("job.eps", EpsWithCustomColor())}));
  EXPECT_EQ(PlaneNames(CheckedInfo(page)),
            (Names{"Cyan", "Magenta", "Yellow", "Black", "Cut Contour", "Hexachrome Green",
                   "Hexachrome Orange"}));
}

TEST(Rip, makes_gray_pages_for_one_color) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  bench.File("root/Queue/rip/System/pmodes/Own/gray.ps", "%!PS\n1Color 40 40 SetXYResolution\n");
  const std::string page = OnlyPage(
      bench.Run({bench.Prefix("Own/gray.ps"), bench.File("job.ps", OnePage("0.2 setgray"))}));
  const Pixels pixels = ReadPixels(page + "/page.tif");
  EXPECT_EQ(pixels.width, 40U);
  EXPECT_EQ(pixels.At(20, 20), "51");
  EXPECT_EQ(CheckedInfo(page).color, pages::PageColor::Gray);
}

TEST(Rip, crops_eps_to_its_bounding_box) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string eps =
      "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 100 200 150 230\n%%EndComments\n"
      "0 1 0 setrgbcolor 100 200 25 30 rectfill\n%%EOF\n";
  const Pixels pixels =
      ReadPixels(OnlyPage(bench.Run({bench.Prefix(), bench.File("job.eps", eps)})) + "/page.tif");
  EXPECT_EQ(pixels.width, 50U);
  EXPECT_EQ(pixels.height, 30U);
  EXPECT_EQ(pixels.At(10, 15), "0,255,0");
  EXPECT_EQ(pixels.At(40, 15), "255,255,255");
}

TEST(Rip, crops_eps_behind_lines_of_a_host) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string eps =
      "%%Title: from a host\n%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 100 200 150 230\n"
      "%%EndComments\n0 1 0 setrgbcolor 100 200 25 30 rectfill showpage\n";
  const Pixels pixels =
      ReadPixels(OnlyPage(bench.Run({bench.Prefix(), bench.File("job.eps", eps)})) + "/page.tif");
  EXPECT_EQ(pixels.width, 50U);
  EXPECT_EQ(pixels.height, 30U);
}

TEST(Rip, takes_the_postscript_section_of_binary_eps) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string eps =
      "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 40 20\n%%EndComments\n"
      "0 0 1 setrgbcolor 0 0 40 20 rectfill showpage\n";
  std::string file = "\xC5\xD0\xD3\xC6" + std::string("\x1E\0\0\0", 4);
  file += static_cast<char>(eps.size());
  file +=
      std::string(3, '\0') + std::string(16, '\0') + "\xFF\xFF" + eps + std::string(100, '\xAA');
  const Pixels pixels =
      ReadPixels(OnlyPage(bench.Run({bench.Prefix(), bench.File("job.eps", file)})) + "/page.tif");
  EXPECT_EQ(pixels.width, 40U);
  EXPECT_EQ(pixels.At(20, 10), "0,0,255");
}

TEST(Rip, prints_pdf_behind_the_prefix) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string source = bench.File("source.ps", TwoPages);
  const std::string pdf = bench.File("job.pdf", "");
  const std::string command = "gs -q -dBATCH -dNOPAUSE -dSAFER -sDEVICE=pdfwrite -o '" + pdf +
                              "' '" + source + "' </dev/null >/dev/null 2>&1";
  ASSERT_EQ(std::system(command.c_str()), 0);
  const ProgramRun outcome = bench.Run({bench.Prefix("RGB/300 dpi.ps"), pdf});
  const Names pages = RipFixture::PagesOf(outcome);
  ASSERT_EQ(pages.size(), 2U) << outcome.reports;
  const Pixels first = ReadPixels(pages[0] + "/page.tif");
  EXPECT_EQ(first.width, 600U);
  EXPECT_EQ(first.height, 300U);
  EXPECT_EQ(first.At(50, 150), "255,0,0");
  EXPECT_EQ(ReadPixels(pages[1] + "/page.tif").At(150, 150), "0,0,255");
  EXPECT_EQ(CheckedInfo(pages[0]).printer, "KVI Tiff Screen Preview");
}

TEST(Rip, prints_without_a_prefix) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string page =
      OnlyPage(bench.Run({bench.File("leaflet.ps", OnePage("1 0 0 setrgbcolor"))}));
  const pages::PageInfo info = CheckedInfo(page);
  EXPECT_EQ(info.job, "leaflet");
  EXPECT_EQ(info.printer, "");
  EXPECT_EQ(info.mode, "");
  EXPECT_EQ(info.xResolution, 72);
}

TEST(Rip, lets_a_job_select_settings_that_no_prefix_fixed) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string job =
      "%!PS\n(Own:) SelectPrinter (%Lumiscript%pmodes/Screen/preview.ps) SelectPrintMode\n" +
      OnePage("1 0 0 setrgbcolor").substr(5);
  const pages::PageInfo info = CheckedInfo(OnlyPage(bench.Run({bench.File("job.ps", job)})));
  EXPECT_EQ(info.printer, "Own");
  EXPECT_EQ(info.mode, "Screen/preview.ps");
  EXPECT_EQ(info.width, 96U);
}

TEST(Rip, finds_a_print_mode_whose_case_differs) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const ProgramRun outcome =
      bench.Run({bench.Prefix("rgb/300 DPI.PS"), bench.File("job.ps", OnePage("0 setgray"))});
  const pages::PageInfo info = CheckedInfo(OnlyPage(outcome));
  EXPECT_EQ(info.mode, "RGB/300 dpi.ps");
  EXPECT_EQ(info.xResolution, 300);
}

TEST(Rip, does_not_crop_eps_to_an_empty_box) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string eps =
      "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 0 0\n%%EndComments\n"
      "<< /PageSize [40 30] >> setpagedevice 0 1 0 setrgbcolor 0 0 40 30 rectfill showpage\n";
  const std::string page = OnlyPage(bench.Run({bench.Prefix(), bench.File("job.eps", eps)}));
  EXPECT_EQ(CheckedInfo(page).width, 40U);
}

TEST(Rip, warns_of_a_print_mode_that_is_not_there) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const ProgramRun outcome =
      bench.Run({bench.Prefix("RGB/1200 dpi.ps"), bench.File("job.ps", OnePage("0 setgray"))});
  EXPECT_TRUE(outcome.Says(
      "WARNING: The print mode RGB/1200 dpi.ps is not installed; the page is made without it."))
      << outcome.reports;
  EXPECT_EQ(CheckedInfo(OnlyPage(outcome)).mode, "");
}

TEST(Rip, fits_pages_into_a_custom_size) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  bench.File("root/Queue/rip/System/pmodes/Own/100.ps", "%!PS\n3Color 100 100 SetXYResolution\n");
  // 10 inches wide and 5 high: the prefix writes the height first.
  const std::string section =
      "\n% -- Scaling Override --\nuserdict /SetScaleTarget known {\n\n% Custom Scaling Prefix\n"
      "% User Selections >> Width: 10.000  Height: 5.000 inches\n\nuserdict begin\n"
      "/ConcinnaScaleCustom\n{\n  0 /ConcinnaScaleCustom CncLog\n  statusdict begin\n"
      "    printer_desc begin\n      /BBoxInches [ 0.0 5.000 10.000 0.0 ] def\n"
      "      /landscape 0 def\n      /ConcinnaPaper (ScaleCustom) def\n    end\n  end\n"
      "  /CustomConcinnaScaleCustom where { pop CustomConcinnaScaleCustom } if\n  InitRIP\n} def\n"
      "end\n\n/ConcinnaScaleCustom SetScaleTarget\ntrue SetAspectPolicy\n} if\n\n";
  const std::string job =
      "%!PS\n<< /PageSize [200 100] >> setpagedevice 1 0 0 setrgbcolor 0 0 100 100 rectfill "
      "showpage\n";
  const Pixels pixels = ReadPixels(
      OnlyPage(bench.Run({bench.Prefix("Own/100.ps", "KVI", section), bench.File("job.ps", job)})) +
      "/page.tif");
  EXPECT_EQ(pixels.width, 1000U);
  EXPECT_EQ(pixels.height, 500U);
  EXPECT_EQ(pixels.At(480, 250), "255,0,0");
  EXPECT_EQ(pixels.At(520, 250), "255,255,255");
}

TEST(Rip, applies_the_tables_of_a_levels_section) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  // Red halved, the others as they are; the section's own way of hooking them in.
  const std::string section =
      "userdict begin\n"
      "/redextratransfertable 256 string 0 1 255 { 1 index exch dup 2 idiv put } for def\n"
      "/same 256 string 0 1 255 { 1 index exch dup put } for def\n"
      "/greenextratransfertable same def /blueextratransfertable same def\n"
      "/grayextratransfertable same def end\n"
      "statusdict begin /_printerinit {\n"
      "  printer_desc begin planes 0 get end /Hexachrome eq { } {\n"
      "  printer_desc begin NColor begin /TProcs [\n"
      "  {255 mul round cvi redtransfertable exch get 255 div 255 mul round cvi "
      "redextratransfertable "
      "exch get 255 div}\n"
      "  {255 mul round cvi greentransfertable exch get 255 div 255 mul round cvi "
      "greenextratransfertable exch get 255 div}\n"
      "  {255 mul round cvi bluetransfertable exch get 255 div 255 mul round cvi "
      "blueextratransfertable exch get 255 div}\n"
      "  {255 mul round cvi graytransfertable exch get 255 div 255 mul round cvi "
      "grayextratransfertable exch get 255 div}\n"
      "  ] def end end } ifelse\n"
      "  systemdict /_printerinit get exec\n } def end\n";
  const std::string page = OnlyPage(bench.Run({bench.Prefix("TIFF/tiff default.ps", "KVI", section),
                                               bench.File("job.ps", OnePage("0.5 setgray"))}));
  // 0.5 is 128 of 255 in the tables; half of it is 64. A device may be one off.
  const Pixels pixels = ReadPixels(page + "/page.tif");
  EXPECT_TRUE(pixels.At(36, 36) == "63,127,127" || pixels.At(36, 36) == "64,128,128")
      << pixels.At(36, 36);
}

TEST(Rip, takes_the_cutters_color_in_every_form) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  for (const std::string color :
       {"false 1.000 0.000 0.000 /DeviceRGB", "false 0.0000 0.5020 0.0000 0.0000 /DeviceCMYK",
        "mark false", "mark 1.000 0.000 0.000 [1 0 0 1 0 0] /DeviceRGB",
        "mark 0.0 0.5 0.0 0.0 [1 0 0 1 0 0] /DeviceCMYK",
        "mark [1 0 0 1 0 0] (CutContour) /Separation"}) {
    const std::string section = color + " $setcutter count 0 ne { fehler } if\n";
    const std::string page =
        OnlyPage(bench.Run({bench.Prefix("TIFF/tiff default.ps", "KVI", section),
                            bench.File("job.ps", OnePage("1 0 0 setrgbcolor"))}));
    EXPECT_EQ(CheckedInfo(page).width, 72U) << color;
  }
}

TEST(Rip, ends_an_install_job_that_went_well_with_1) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const ProgramRun outcome = bench.Run({"-s", bench.File("job.ps", OnePage("0 setgray"))});
  EXPECT_EQ(outcome.status, 1) << outcome.reports;
  EXPECT_EQ(outcome.output, "");
  EXPECT_EQ(bench.Remains(), Names{});
}

TEST(Rip, lists_pages_that_survive_any_data_root) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench("weekend > begin");
  const test::ScratchDirectory other;
  setenv("RASTREL_HOME", bench.Root().c_str(), 1);  // the library's reader asks for it
  const ProgramRun outcome =
      bench.Run({bench.Prefix(), bench.File("end > begin.ps", OnePage("1 0 0 setrgbcolor"))});
  const std::string page = OnlyPage(outcome);
  EXPECT_EQ(CheckedInfo(page).width, 72U);
  EXPECT_NE(outcome.output.find("\tdir := R:\\"), std::string::npos) << outcome.output;
  unsetenv("RASTREL_HOME");
}

TEST(Rip, takes_the_next_letter_when_one_is_taken) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench("the end");
  fs::create_directories(bench.Root() + "/drive_r");
  const std::string job = bench.File("job.ps", OnePage("1 0 0 setrgbcolor"));
  for (int run = 0; run < 2; ++run) {
    const ProgramRun outcome = bench.Run({bench.Prefix(), job});
    EXPECT_NE(outcome.output.find("\tdir := S:\\"), std::string::npos) << outcome.reports;
  }
}

TEST(Rip, keeps_the_pages_of_two_runs_apart) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string job = bench.File("job.ps", OnePage("1 0 0 setrgbcolor"));
  const std::string first = OnlyPage(bench.Run({bench.Prefix(), job}));
  const std::string second = OnlyPage(bench.Run({bench.Prefix(), job}));
  EXPECT_NE(fs::path(first).parent_path(), fs::path(second).parent_path());
  fs::remove_all(first);
  EXPECT_EQ(CheckedInfo(second).width, 72U);
}

TEST(Rip, whose_reader_is_gone_fails_and_leaves_nothing) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string job = bench.File("job.ps", OnePage("1 0 0 setrgbcolor"));
  const std::string script = "{ RASTREL_HOME='" + bench.Root() + "' '" + bench.RipDirectory() +
                             "/corerast.exe' '" + job + "' 2>/dev/null; echo $? > '" +
                             bench.Root() + "/status'; } | true";
  ASSERT_EQ(std::system(script.c_str()), 0);
  std::ifstream status(bench.Root() + "/status");
  int number = -1;
  status >> number;
  EXPECT_EQ(number, 3);
  EXPECT_EQ(bench.Remains(), Names{});
}

TEST(Rip, clears_away_the_directory_of_a_run_whose_pages_are_gone) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string job = bench.File("job.ps", OnePage("1 0 0 setrgbcolor"));
  const fs::path old = fs::path(OnlyPage(bench.Run({bench.Prefix(), job}))).parent_path();
  const fs::path fresh = fs::path(OnlyPage(bench.Run({bench.Prefix(), job}))).parent_path();
  fs::remove_all(old / "p0001");
  fs::last_write_time(old, fs::file_time_type::clock::now() - std::chrono::hours(1));
  fs::last_write_time(fresh, fs::file_time_type::clock::now() - std::chrono::hours(1));
  EXPECT_EQ(bench.Run({bench.Prefix(), job}).status, 0);
  EXPECT_FALSE(fs::exists(old));
  EXPECT_TRUE(fs::exists(fresh));
}

}  // namespace
}  // namespace rastrel::corerast::testing
