// Which paints are cut paths, asked for while the job is interpreted.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "interpreter/guardian.h"
#include "interpreter/interpreter.h"
#include "pages/page_info.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::interpreter {
namespace {

class Ear final : public RunListener {
 public:
  void StateReached(RunState) override {}
  void Progressed(unsigned) override {}
  void PageMade(unsigned) override {}
  void Warned(const std::string& sentence) override { warnings.push_back(sentence); }
  void Noted(const std::string&) override {}
  void Printed(const std::string&) override {}
  std::vector<std::string> warnings;
};

class AskedPaints : public testing::Test {
 protected:
  void SetUp() override {
    if (FindGhostscript().empty()) GTEST_SKIP() << "no gs on PATH";
  }

  // A page of 72 by 72 points at 72 pixels per inch in RGB.
  Expected<unsigned> Print(const std::string& body, const WantsCut& wants, bool asksWidth = false) {
    place.Write("job.ps", "%!PS\n<< /PageSize [72 72] >> setpagedevice\n" + body + "\nshowpage\n");
    place.Write("job.psp",
                "serverdict begin 0 exitserver\n3Color 72 dup SetXYResolution InitRIP\n\x04");
    auto guardian = Guardian::Start(HeldStreams::Error);
    if (!guardian) return guardian.Error();
    auto made = RunDirectory::MakeIn(place.Path(), *guardian);
    if (!made) return made.Error();
    RunRequest request;
    request.ripDirectory = RASTREL_BINARY_DIR "/share/rastrel/rip";
    auto job = OpenJob(place.Path("job.ps"));
    if (!job) return job.Error();
    request.job = *std::move(job);
    auto prefix = OpenPrefix(place.Path("job.psp"));
    if (!prefix) return prefix.Error();
    request.prefix = std::move(prefix->file);
    request.settings.timeSeconds = 60;
    request.wantsCut = [&, wants](const AskedPaint& paint) {
      asked.push_back(paint.kind + " " + std::to_string(static_cast<int>(paint.lineWidth)) + " " +
                      paint.color);
      return wants(paint);
    };
    request.asksLineWidth = asksWidth;
    auto pages = PrintPages(std::move(request), *made, ear, *guardian);
    if (!pages) return pages;
    const std::string page = made->Path() + "/" + pages::PageName(1);
    cuts = *os::ReadWholeFile(os::FromNative(page + "/" + pages::CutPathsName), 1 << 26);
    for (const auto& file : std::filesystem::directory_iterator(page)) {
      const std::string name = file.path().filename().string();
      if (name != pages::CutPathsName && name != ".info")
        planes += *os::ReadWholeFile(os::FromNative(file.path().string()), 1 << 26);
    }
    return pages;
  }

  [[nodiscard]] std::vector<std::string> Colors() const {
    std::vector<std::string> colors;
    for (std::size_t at = 0; (at = cuts.find("\ncolour: ", at)) != cuts.npos;) {
      at += 9;
      colors.push_back(cuts.substr(at, cuts.find('\n', at) - at));
    }
    return colors;
  }

  test::ScratchDirectory place;
  Ear ear;
  std::vector<std::string> asked;
  std::string cuts;
  std::string planes;
};

bool All(const AskedPaint&) { return true; }
bool None(const AskedPaint&) { return false; }

using Texts = std::vector<std::string>;

TEST_F(AskedPaints, a_paint_is_asked_for_once) {
  const auto pages = Print("1 0 0 setrgbcolor 100 { 1 1 moveto 2 2 lineto stroke } repeat", All);
  ASSERT_TRUE(pages) << Describe(pages.Error());
  EXPECT_EQ(asked, (Texts{"stroke 0 rgb 1.0 0.0 0.0"}));
  EXPECT_NE(cuts.find("paths: 100\n"), std::string::npos);
}

TEST_F(AskedPaints, kinds_and_spaces_have_their_own_questions) {
  const auto pages = Print(
      "0 0 1 0 setcmykcolor 1 1 5 5 rectfill 1 1 5 5 rectstroke 0.5 setgray 1 1 moveto 9 9 lineto "
      "9 1 lineto eofill [/Separation (Kiss cut) /DeviceGray {}] setcolorspace 1 setcolor "
      "1 1 5 5 rectfill /Helvetica findfont 9 scalefont setfont 5 5 moveto (i) show",
      All);
  ASSERT_TRUE(pages) << Describe(pages.Error());
  EXPECT_EQ(asked, (Texts{"fill 0 cmyk 0.0 0.0 1.0 0.0", "stroke 0 cmyk 0.0 0.0 1.0 0.0",
                          "eofill 0 gray 0.5", "fill 0 separation Kiss cut",
                          "text 0 separation Kiss cut"}));
  EXPECT_EQ(Colors(), (Texts{"cmyk 0.0 0.0 1.0 0.0", "cmyk 0.0 0.0 1.0 0.0", "gray 0.5",
                             "separation Kiss cut", "separation Kiss cut"}));
}

TEST_F(AskedPaints, an_unwanted_paint_stays_in_the_picture_and_a_wanted_one_leaves_it) {
  const std::string body = "0 0 1 setrgbcolor 9 9 20 20 rectfill";
  ASSERT_TRUE(Print(body, None));
  const std::string painted = std::exchange(planes, {});
  EXPECT_TRUE(Colors().empty());
  ASSERT_TRUE(Print(body, All));
  const std::string taken = std::exchange(planes, {});
  EXPECT_EQ(Colors().size(), 1U);
  ASSERT_TRUE(Print("", None));
  EXPECT_NE(painted, taken);
  EXPECT_EQ(taken, planes);
}

TEST_F(AskedPaints, paints_that_change_by_turns_get_their_own_answers) {
  const auto pages = Print(
      "50 { 1 0 0 setrgbcolor 1 1 moveto 2 2 lineto stroke 0 1 0 setrgbcolor 3 3 moveto 4 4 lineto "
      "stroke [/Separation /A /DeviceRGB {dup dup}] setcolorspace 1 setcolor 5 5 moveto 6 6 lineto "
      "stroke } repeat",
      [](const AskedPaint& paint) { return paint.color != "rgb 0.0 1.0 0.0"; });
  ASSERT_TRUE(pages) << Describe(pages.Error());
  EXPECT_EQ(asked.size(), 3U);
  const Texts colors = Colors();
  ASSERT_EQ(colors.size(), 100U);
  EXPECT_EQ(colors[0], "rgb 1.0 0.0 0.0");
  EXPECT_EQ(colors[1], "separation A");
  EXPECT_EQ(colors[99], "separation A");
}

TEST_F(AskedPaints, a_line_width_is_asked_for_where_rules_look_at_it) {
  const auto pages = Print(
      "2 setlinewidth 1 1 moveto 2 2 lineto stroke gsave 2 2 scale 1 1 moveto 2 2 lineto stroke "
      "grestore 1 1 moveto 2 2 lineto stroke",
      [](const AskedPaint& paint) { return paint.lineWidth > 3; }, true);
  ASSERT_TRUE(pages) << Describe(pages.Error());
  EXPECT_EQ(asked, (Texts{"stroke 2 gray 0.0", "stroke 4 gray 0.0"}));
  EXPECT_NE(cuts.find("paths: 1\n"), std::string::npos);
  EXPECT_NE(cuts.find("line-width: 4\n"), std::string::npos);
}

TEST_F(AskedPaints, answers_hold_after_a_restore) {
  const auto pages = Print(
      "1 0 0 setrgbcolor 1 1 moveto 2 2 lineto stroke save 0 0 1 setrgbcolor 1 1 moveto 2 2 lineto "
      "stroke 0 1 0 setrgbcolor 1 1 moveto 2 2 lineto stroke restore 0 1 0 setrgbcolor 1 1 moveto "
      "2 "
      "2 lineto stroke",
      All);
  ASSERT_TRUE(pages) << Describe(pages.Error());
  EXPECT_EQ(Colors(),
            (Texts{"rgb 1.0 0.0 0.0", "rgb 0.0 0.0 1.0", "rgb 0.0 1.0 0.0", "rgb 0.0 1.0 0.0"}));
}

TEST_F(AskedPaints, patterns_indexed_colors_and_tints_of_nothing_are_not_asked_for) {
  const auto pages = Print(
      "[/Indexed /DeviceRGB 1 <ff000000ff00>] setcolorspace 1 setcolor 1 1 5 5 rectfill "
      "[/Separation (A) /DeviceGray {}] setcolorspace 0 setcolor 1 1 5 5 rectfill "
      "[/DeviceN [/A /B] /DeviceGray {pop}] setcolorspace 1 1 setcolor 1 1 5 5 rectfill "
      "[/Separation /None /DeviceGray {}] setcolorspace 1 setcolor 1 1 5 5 rectfill",
      All);
  ASSERT_TRUE(pages) << Describe(pages.Error());
  EXPECT_TRUE(asked.empty());
}

TEST_F(AskedPaints, a_page_without_wanted_paths_has_an_empty_file_and_no_warning) {
  ASSERT_TRUE(Print("1 1 5 5 rectfill", None));
  EXPECT_NE(cuts.find("paths: 0\nend\n"), std::string::npos);
  EXPECT_TRUE(ear.warnings.empty());
}

TEST_F(AskedPaints, a_prefix_and_a_job_set_no_cut_color) {
  ASSERT_TRUE(
      Print("mark false 1 0 0 [1 0 0 1 0 0] /DeviceRGB $setcutter 1 0 0 setrgbcolor 1 1 5 5 "
            "rectfill",
            None));
  EXPECT_NE(cuts.find("paths: 0\nend\n"), std::string::npos);
}

TEST_F(AskedPaints, a_job_that_reads_the_standard_input_fails_and_waits_for_nothing) {
  const auto pages = Print("(%stdin) (r) file read pop pop", All);
  ASSERT_FALSE(pages);
  EXPECT_NE(Describe(pages.Error()).find("invalidfileaccess"), std::string::npos)
      << Describe(pages.Error());
}

TEST_F(AskedPaints, thousands_of_colors_have_their_answers) {
  const auto pages =
      Print("0 1 20999 { 21000 div 0 0 setrgbcolor 1 1 moveto 2 2 lineto stroke } for", All);
  ASSERT_TRUE(pages) << Describe(pages.Error());
  EXPECT_NE(cuts.find("paths: 21000\n"), std::string::npos);
}

}  // namespace
}  // namespace rastrel::interpreter
