// Effects of the cutter's section on a page: paths of its color leave the picture and are kept.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "rastrel/platform/os/text.h"
#include "rastrel/prefix/cutter.h"
#include "rastrel/prefix/preview_sections.h"
#include "tests/children/rip_effects.h"

namespace rastrel::corerast::testing {
namespace {

TEST(CutterEffect, of_each_model_takes_the_outline_out_of_the_picture) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const CJobData spot = NamedCut(L"CutContour");
  const std::vector<std::pair<std::wstring, std::string>> cases{
      {prefix::CutterSection(RedCut()), "1 0 0 setrgbcolor"},
      {prefix::CutterSection(CutColor(prefix::CutterCmyk, {0, 128, 255, 0})),
       "0 0.502 1 0 setcmykcolor"},
      {prefix::CutDataSection(RedCut()), "1 0 0 setrgbcolor"},
      {prefix::CutDataSection(CutColor(prefix::CutterCmyk, {0, 500, 1000, 0})),
       "0 0.5 1 0 setcmykcolor"},
      {prefix::CutDataSection(spot), Spot},
      {prefix::CutDataSection(spot),
       "[/DeviceN [/CutContour] /DeviceCMYK {0 exch dup 0}] setcolorspace 1 setcolor"},
      {prefix::CutterSection(CutColor(prefix::CutterRgb, {51, 51, 51, 0})), "0.2 setgray"},
      {prefix::CutterSection(CutColor(prefix::CutterCmyk, {0, 0, 0, 204})), "0.2 setgray"}};
  for (const auto& [section, color] : cases) {
    SCOPED_TRACE(os::Utf8FromWide(section) + color);
    ExpectOutlineCut(OnlyPage(bench, PrefixOf(bench, section), Outline(color)));
  }
}

TEST(CutterEffect, leaves_other_colors_in_the_picture) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  for (const std::string& color :
       Names{"0.99 0 0 setrgbcolor", "0 1 1 0 setcmykcolor", Spot,
             "[/Separation /Other /DeviceRGB {0 0}] setcolorspace 1 setcolor"}) {
    SCOPED_TRACE(color);
    const std::string page =
        OnlyPage(bench, PrefixOf(bench, prefix::CutterSection(RedCut())), Outline(color));
    EXPECT_TRUE(CutPathsOf(page).empty());
    EXPECT_TRUE(HasRed(ReadPixels(page + "/page.tif")));
  }
}

// Both sides of each pair: a prefix is UTF-8, and a job has the name in UTF-8 or in Windows-1252.
TEST(CutterEffect, finds_a_name_beyond_ascii_in_either_spelling) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::vector<std::pair<std::wstring, Names>> cases{
      {L"Schnitt\u00E4", {"Schnitt\\344", "Schnitt\\303\\244"}},
      {L"\u20AC \u0178", {"\\200 \\237", "\\342\\202\\254 \\305\\270"}},
      {L"\u03A9", {"\\316\\251"}}};
  for (const auto& [name, spellings] : cases) {
    const std::string prefix = PrefixOf(bench, prefix::CutDataSection(NamedCut(name)));
    for (const std::string& spelling : spellings) {
      SCOPED_TRACE(spelling);
      const ProgramRun run =
          bench.Run({prefix, bench.File("job.ps", Outline("[/Separation (" + spelling +
                                                          ") cvn /DeviceCMYK {0 exch dup 0}] "
                                                          "setcolorspace 1 setcolor"))});
      ExpectOutlineCut(Pages(run, 1).front());
      EXPECT_EQ(run.reports.find("WARNING"), std::string::npos) << run.reports;
    }
  }
}

TEST(CutterEffect, leaves_no_plane_of_a_name_beyond_ascii) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string prefix =
      PrefixOf(bench, prefix::CutDataSection(NamedCut(L"Schnitt\u00E4")), "4Color");
  for (const std::string spelling : {"Schnitt\\344", "Schnitt\\303\\244"}) {
    const std::string page =
        OnlyPage(bench, prefix,
                 Outline("[/Separation (" + spelling +
                         ") cvn /DeviceCMYK {0 exch dup 0}] setcolorspace 1 setcolor"));
    EXPECT_EQ(CheckedInfo(page).planes.size(), 4U) << spelling;
    EXPECT_EQ(CutPathsOf(page).size(), 1U) << spelling;
  }
}

// An interpreter's name may be longer than any that a cutter could have.
TEST(CutterEffect, leaves_separations_of_long_names_in_the_picture) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string page = OnlyPage(
      bench, PrefixOf(bench, prefix::CutDataSection(NamedCut(L"CutContour"))),
      Outline("[/Separation (" + std::string(100, 'x') +
              ") cvn /DeviceRGB {dup 0 gt {pop 1 0 0} {1 1 1} ifelse}] setcolorspace 1 setcolor"));
  EXPECT_TRUE(CutPathsOf(page).empty());
  EXPECT_EQ(ReadPixels(page + "/page.tif").At(70, 124), "255,0,0");
}

TEST(CutterEffect, warns_of_a_color_that_nothing_is_painted_in) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string start = "WARNING: No path and no text is painted in the cut colour ";
  const std::string job = Outline("0 1 0 setrgbcolor");
  const auto reports = [&](const std::wstring& section) {
    const ProgramRun run = bench.Run({PrefixOf(bench, section), bench.File("job.ps", job)});
    EXPECT_EQ(run.status, 0);
    return run;
  };
  EXPECT_TRUE(reports(prefix::CutDataSection(NamedCut(L"Schnitt\u00E4")))
                  .Says(start + "separation Schnitt\xC3\xA4; nothing is cut in it."));
  EXPECT_TRUE(reports(prefix::CutterSection(RedCut()))
                  .Says(start + "rgb 1.0 0.0 0.0; nothing is cut in it."));
  for (const std::wstring& section :
       {prefix::CutterSection(CJobData()),
        prefix::CutterSection(CutColor(prefix::CutterRgb, {0, 255, 0, 0}))}) {
    EXPECT_EQ(reports(section).reports.find("WARNING"), std::string::npos);
  }
}

// The second page has the color; a page without it is no reason for a warning.
TEST(CutterEffect, warns_of_a_color_of_the_whole_job) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const ProgramRun run = bench.Run({PrefixOf(bench, prefix::CutterSection(RedCut())),
                                    bench.File("job.ps",
                                               "%!PS\n0 0 9 9 rectfill showpage\n"
                                               "1 0 0 setrgbcolor 0 0 9 9 rectfill showpage\n")});
  static_cast<void>(Pages(run, 2));
  EXPECT_EQ(run.reports.find("WARNING"), std::string::npos) << run.reports;
}

TEST(CutterEffect, of_none_keeps_the_outline_and_makes_no_file) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string page = OnlyPage(bench, PrefixOf(bench, prefix::CutterSection(CJobData())),
                                    Outline("1 0 0 setrgbcolor"));
  EXPECT_FALSE(std::filesystem::exists(page + "/cut-paths"));
  EXPECT_EQ(ReadPixels(page + "/page.tif").At(70, 124), "255,0,0");
}

// Every operator that paints; each is said to have drawn a number of paths.
TEST(CutterEffect, covers_every_painting_operator) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
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
  const Names pages = Pages(
      bench.Run({PrefixOf(bench, prefix::CutterSection(RedCut())), bench.File("job.ps", job)}),
      cases.size());
  for (std::size_t i = 0; i < cases.size(); ++i) {
    SCOPED_TRACE(cases[i].first);
    Names kinds;
    for (const CutPath& path : CutPathsOf(pages[i])) kinds.push_back(path.kind);
    EXPECT_EQ(kinds, cases[i].second);
    EXPECT_FALSE(HasRed(ReadPixels(pages[i] + "/page.tif")));
  }
}

// A mark after a text is in the same place as without a cutter.
TEST(CutterEffect, leaves_the_point_where_text_operators_leave_it) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  std::string job = "%!PS\n/Helvetica findfont 10 scalefont setfont 1 0 0 setrgbcolor\n";
  for (const std::string show :
       {"(AB) show", "5 1 (AB) ashow", "5 1 65 (AB) widthshow", "5 1 65 7 2 (AB) awidthshow",
        "(AB) [20 30] xshow", "(AB) [20 30] yshow", "(AB) [20 1 30 2] xyshow",
        "{pop pop 3 3 rmoveto} (AB) kshow", "/A glyphshow"}) {
    job += "9 9 moveto " + show + " currentpoint exch == ==\n";
  }
  const std::string path = bench.File("job.ps", job + "showpage\n");
  const auto printed = [&](const CJobData& settings) {
    const ProgramRun outcome = bench.Run({PrefixOf(bench, prefix::CutterSection(settings)), path});
    std::istringstream lines(outcome.reports);
    std::vector<double> numbers;
    for (std::string line; std::getline(lines, line);) {
      if (line.starts_with("gs: ")) numbers.push_back(std::stod(line.substr(4)));
    }
    return numbers;
  };
  const std::vector<double> with = printed(RedCut());
  const std::vector<double> without = printed(CJobData());
  ASSERT_EQ(without.size(), 18U);
  ASSERT_EQ(with.size(), without.size());
  for (std::size_t i = 0; i < with.size(); ++i) EXPECT_NEAR(with[i], without[i], 0.01) << i;
}

TEST(CutterEffect, keeps_curves_as_curves) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string page =
      OnlyPage(bench, PrefixOf(bench, prefix::CutterSection(RedCut()), Mode100),
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
  const RipFixture bench;
  std::string job = "%!PS\n<< /PageSize [72 72] >> setpagedevice\n";
  for (int page = 1; page <= 40; ++page) {
    job += "1 0 0 setrgbcolor ";
    for (int i = 0; i < page; ++i) job += std::to_string(page) + " 0 moveto 0 9 rlineto stroke ";
    job += "showpage\n";
  }
  const Names pages = Pages(
      bench.Run({PrefixOf(bench, prefix::CutterSection(RedCut())), bench.File("job.ps", job)}), 40);
  for (unsigned page = 1; page <= pages.size(); ++page) {
    const std::vector<CutPath> paths = CutPathsOf(pages[page - 1]);
    ASSERT_EQ(paths.size(), page);
    for (const CutPath& path : paths) EXPECT_TRUE(path.Passes(page, 9, 0.5));
  }
}

TEST(CutterEffect, can_not_be_undone_by_a_job) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string red = "1 0 0 setrgbcolor";
  for (const std::wstring& section :
       {prefix::CutterSection(RedCut()), prefix::CutDataSection(RedCut())}) {
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

// A job can paint in the cut color, and so make cut paths; it can't write them as reports.
TEST(CutterEffect, can_not_be_forged_in_reports) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string lines =
      "(%stderr) (w) file dup (CUT 53\nSEG 6d2031\nENDCUT \nCUTTER 61\n\\n SEG 6d\nCUT =S 0 0 m 1 "
      "1 l 2 2 \n) "
      "writestring flushfile\n";
  ExpectOutlineCut(OnlyPage(bench, PrefixOf(bench, prefix::CutterSection(RedCut())),
                            "%!PS\n" + lines + Outline("1 0 0 setrgbcolor").substr(5)));
}

TEST(CutterEffect, leaves_no_plane_of_the_cut_color_in_separations) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const CJobData spot = NamedCut(L"CutContour");
  const std::string gold =
      " gsave [/Separation /Gold /DeviceCMYK {0 exch dup 0}] setcolorspace 1 setcolor "
      "0 0 9 9 rectfill grestore";
  // Cut data that is kept apart asks for separations, so that no print mode needs to.
  for (const std::string mode : {"4Color", ""}) {
    const std::string page =
        OnlyPage(bench, PrefixOf(bench, prefix::CutDataSection(spot), mode), Outline(Spot + gold));
    Names planes;
    for (const pages::PagePlane& plane : CheckedInfo(page).planes) planes.push_back(plane.name);
    EXPECT_EQ(planes, (Names{"Cyan", "Magenta", "Yellow", "Black", "Gold"}));
    EXPECT_EQ(CutPathsOf(page).size(), 1U);
  }
}

TEST(DeviceSelect, of_frameless_leaves_the_picture_blank_and_keeps_the_cut_paths) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string job =
      "%!PS\n(Other) DeviceSelect InitRIP\n" + Outline("1 0 0 setrgbcolor").substr(5);
  for (const std::wstring& start :
       std::vector<std::wstring>{L"", L"(Frameless) DeviceSelect \nInitRIP \n\n"}) {
    const std::string page =
        OnlyPage(bench, PrefixOf(bench, prefix::CutDataSection(RedCut()) + start), job);
    const Pixels pixels = ReadPixels(page + "/page.tif");
    EXPECT_EQ(pixels.width, 144U);
    const bool white = std::ranges::all_of(pixels.samples, [](char c) { return c == '\xFF'; });
    EXPECT_EQ(white, !start.empty());
    EXPECT_EQ(CutPathsOf(page).size(), 1U);
  }
}

// The same numbers as the cut color's, in every other kind of color space: nothing is taken, and
// nothing fails. Two of the colors match, one for each of two cut colors.
TEST(CutterEffect, looks_at_the_space_and_not_only_at_the_numbers) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string uncolored =
      "/pt << /PatternType 1 /PaintType 2 /TilingType 1 /BBox [0 0 20 20] /XStep 20 /YStep 20 "
      "/PaintProc { pop 5 5 10 10 rectfill } >> matrix makepattern def\n";
  std::string drawing;
  for (const std::string& color :
       Names{"[/Pattern /DeviceRGB] setcolorspace 1 0 0 pt setcolor",
             "[/Pattern /DeviceCMYK] setcolorspace 0 1 1 0 pt setcolor",
             "[/Pattern /DeviceGray] setcolorspace 0 pt setcolor",
             "[/Pattern [/DeviceN [/A /B] /DeviceCMYK {0 0}]] setcolorspace 1 0 pt setcolor",
             "[/Pattern [/DeviceN [/A /B /C] /DeviceCMYK {0}]] setcolorspace 0 1 1 pt setcolor",
             "/Pattern setcolorspace",
             "[/Indexed /DeviceRGB 1 <ff0000 00ff00>] setcolorspace 0 setcolor",
             "[/DeviceN [/A /B /C] /DeviceCMYK {0}] setcolorspace 1 0 0 setcolor",
             "[/DeviceN [/A /B /C /D] /DeviceCMYK {}] setcolorspace 0 1 1 0 setcolor",
             "[/CIEBasedABC << /WhitePoint [0.95 1 1.09] >>] setcolorspace 1 0 0 setcolor",
             "[/CIEBasedA << /WhitePoint [0.95 1 1.09] >>] setcolorspace 0 setcolor", "1 setgray",
             "0 setgray", "[/Separation /All /DeviceCMYK {dup dup dup}] setcolorspace 1 setcolor",
             "1 0 0 setrgbcolor", "0 1 1 0 setcmykcolor"}) {
    drawing += color + " 10 10 20 20 rectfill 10 10 moveto 9 9 lineto stroke\n";
  }
  const std::string job =
      bench.File("job.ps", Page(144, 144, uncolored + drawing + "count 0 ne { fehler } if"));
  const auto colorsUnder = [&](const std::wstring& section) {
    Names colors;
    const std::string page = Pages(bench.Run({PrefixOf(bench, section), job}), 1).front();
    for (const CutPath& path : CutPathsOf(page)) colors.push_back(path.color);
    return colors;
  };
  const std::string rgb = "rgb 1.0 0.0 0.0";
  const std::string cmyk = "cmyk 0.0 1.0 1.0 0.0";
  std::wstring both = prefix::CutterSection(RedCut());
  const std::wstring line = L"/DeviceRGB $setcutter\n";
  ASSERT_NE(both.find(line), both.npos);
  both.insert(both.find(line) + line.size(),
              L"false 0.0000 1.0000 1.0000 0.0000 /DeviceCMYK $stripcontour\n");
  EXPECT_EQ(colorsUnder(prefix::CutterSection(RedCut())), (Names{rgb, rgb}));
  EXPECT_EQ(colorsUnder(prefix::CutterSection(CutColor(prefix::CutterCmyk, {0, 255, 255, 0}))),
            (Names{cmyk, cmyk}));
  EXPECT_EQ(colorsUnder(prefix::CutDataSection(NamedCut(L"CutContour"))), Names{});
  EXPECT_EQ(colorsUnder(both), (Names{rgb, rgb, cmyk, cmyk}));
}

// A restore undoes the interpreter's state since the save, but paths that were cut stay cut.
TEST(CutterEffect, keeps_paths_that_a_restore_stands_behind) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string start = "%!PS\n<< /PageSize [144 144] >> setpagedevice\n";
  const std::string square = " 1 0 0 setrgbcolor 40 40 20 20 rectstroke ";
  const std::string small = " gsave 0 0 10 10 rectclip" + square + "grestore ";
  // On each page, its paths: whether they lie inside of the clip.
  const std::vector<std::pair<std::string, std::vector<Names>>> cases{
      {"save" + square + "restore showpage", {{"inside"}}},
      {"save" + square + "restore" + square + "save" + square + "restore showpage",
       {{"inside", "inside", "inside"}}},
      {"save save" + square + "restore" + square + "restore showpage", {{"inside", "inside"}}},
      {"save" + square + "showpage" + square + "restore showpage", {{"inside"}, {"inside"}}},
      {"save" + small + "restore" + square + "showpage", {{"outside", "inside"}}},
      {square + "save" + small + "restore" + square + "showpage",
       {{"inside", "outside", "inside"}}},
      {"save" + square + "restore showpage \x04" + start + square + "showpage",
       {{"inside"}, {"inside"}}},
      // Painted after the last page of a job, and so on none.
      {square + "showpage" + square + "\x04" + start + square + "showpage",
       {{"inside"}, {"inside"}}}};
  for (const auto& [drawing, expected] : cases) {
    SCOPED_TRACE(drawing);
    const std::string job = bench.File("job.ps", start + drawing + "\n");
    const Names pages =
        Pages(bench.Run({PrefixOf(bench, prefix::CutterSection(RedCut())), job}), expected.size());
    for (std::size_t page = 0; page < pages.size(); ++page) {
      Names clips;
      for (const CutPath& path : CutPathsOf(pages[page])) clips.push_back(path.clip);
      EXPECT_EQ(clips, expected[page]);
    }
  }
}

// Fonts whose glyphs are programs: one with a shape in the text's color, one that paints blue.
TEST(CutterEffect, of_a_font_of_programs_keeps_their_marks_in_the_cut_color) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const auto font = [](const std::string& name, const std::string& glyph) {
    return "8 dict begin /FontType 3 def /FontMatrix [.001 0 0 .001 0 0] def "
           "/FontBBox [0 0 1000 1000] def /Encoding StandardEncoding def "
           "/BuildGlyph { pop pop " +
           glyph +
           " } def /BuildChar { 1 index /Encoding get exch get 1 index /BuildGlyph get exec } def "
           "currentdict end /" +
           name + " exch definefont pop\n";
  };
  const std::string job =
      Page(144, 144,
           font("Plain", "1000 0 0 0 750 750 setcachedevice 0 0 750 750 rectfill") +
               font("Blue", "1000 0 setcharwidth 0 0 1 setrgbcolor 0 0 750 750 rectfill") +
               "1 0 0 setrgbcolor /Plain findfont 20 scalefont setfont 20 100 moveto (aa) show "
               "/Blue findfont 20 scalefont setfont (a) show");
  const std::string page = OnlyPage(bench, PrefixOf(bench, prefix::CutterSection(RedCut())), job);
  const std::vector<CutPath> paths = CutPathsOf(page);
  ASSERT_EQ(paths.size(), 2U);
  EXPECT_TRUE(paths[0].Passes(20, 100, 0.5));
  EXPECT_TRUE(paths[0].Passes(35, 115, 0.5));
  EXPECT_TRUE(paths[1].Passes(40, 100, 0.5));
  const Pixels pixels = ReadPixels(page + "/page.tif");
  EXPECT_FALSE(HasRed(pixels));
  EXPECT_EQ(pixels.At(67, 36), "0,0,255");
}

// A pattern's cell is painted once and laid down in many places, so it has no path on the page.
TEST(CutterEffect, leaves_patterns_in_the_picture) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string job =
      Page(144, 144,
           "<< /PatternType 1 /PaintType 1 /TilingType 1 /BBox [0 0 20 20] /XStep 20 /YStep 20 "
           "/PaintProc { pop 1 0 0 setrgbcolor 5 5 10 10 rectfill } >> matrix makepattern "
           "/Pattern setcolorspace setcolor 20 20 100 100 rectfill\n"
           "/DeviceRGB setcolorspace 1 0 0 setcolor 1 1 10 10 rectfill");
  const auto picture = [&](const CJobData& settings) {
    const std::string page = OnlyPage(bench, PrefixOf(bench, prefix::CutterSection(settings)), job);
    if (settings.CutterEnabled) {
      EXPECT_EQ(CutPathsOf(page).size(), 1U);
    }
    return ReadPixels(page + "/page.tif");
  };
  const Pixels with = picture(RedCut());
  const Pixels without = picture(CJobData());
  for (unsigned y = 20; y < 124; ++y) {
    for (unsigned x = 20; x < 124; ++x) ASSERT_EQ(with.At(x, y), without.At(x, y));
  }
  EXPECT_TRUE(HasRed(with));
  EXPECT_EQ(with.At(5, 138), "255,255,255");
}

TEST(CutterEffect, says_how_a_path_lies_to_the_clip) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string square =
      " 40 40 moveto 20 0 rlineto 0 20 rlineto -20 0 rlineto closepath stroke\n";
  const std::vector<std::pair<std::string, std::string>> cases{
      {"", "inside"},
      {"30 30 50 50 rectclip", "inside"},
      {"30 30 20 20 rectclip", "crosses 1"},
      {"100 100 20 20 rectclip", "outside"},
      {"50 0 moveto 100 50 lineto 50 100 lineto 0 50 lineto clip newpath", "inside"},
      {"newpath 50 50 40 0 360 arc clip newpath", "crosses 2"},
      {"0 0 144 144 rectclip 30 30 50 50 rectclip 0 0 100 100 rectclip", "inside"},
      {"30 30 20 20 rectclip", "crosses 1"}};
  std::string drawing;
  for (const auto& [clip, word] : cases) {
    drawing += "gsave " + clip + " 1 0 0 setrgbcolor" + square + "grestore\n";
  }
  const std::string page =
      OnlyPage(bench, PrefixOf(bench, prefix::CutterSection(RedCut())), Page(144, 144, drawing));
  const std::vector<CutPath> paths = CutPathsOf(page);
  ASSERT_EQ(paths.size(), cases.size());
  for (std::size_t i = 0; i < cases.size(); ++i) {
    SCOPED_TRACE(cases[i].first);
    EXPECT_EQ(paths[i].clip, cases[i].second);
    // Whole all the same.
    for (const auto& [x, y] : {std::pair(40, 40), {60, 40}, {60, 60}, {40, 60}}) {
      EXPECT_TRUE(paths[i].Passes(x, y, 0.5));
    }
  }
}

// The clip's text is only sent when it changes; a path between two of one clip must not hide that.
TEST(CutterEffect, distinguishes_two_clips_however_often_they_take_turns) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  std::string drawing = "1 0 0 setrgbcolor\n";
  for (int i = 0; i < 300; ++i) {
    drawing += i % 3 == 2 ? "gsave 0 0 10 10 rectclip 40 40 20 20 rectstroke grestore\n"
                          : "40 40 20 20 rectstroke\n";
  }
  const std::string page =
      OnlyPage(bench, PrefixOf(bench, prefix::CutterSection(RedCut())), Page(144, 144, drawing));
  const std::vector<CutPath> paths = CutPathsOf(page);
  ASSERT_EQ(paths.size(), 300U);
  for (std::size_t i = 0; i < paths.size(); ++i) {
    EXPECT_EQ(paths[i].clip, i % 3 == 2 ? "outside" : "inside") << i;
    EXPECT_EQ(paths[i].letters, "mlllh") << i;
  }
}

}  // namespace
}  // namespace rastrel::corerast::testing
