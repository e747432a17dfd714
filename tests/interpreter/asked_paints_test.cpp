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
    return PrintJob("%!PS\n<< /PageSize [72 72] >> setpagedevice\n" + body + "\nshowpage\n", wants,
                    asksWidth);
  }

  Expected<unsigned> PrintJob(const std::string& text, const WantsCut& wants,
                              bool asksWidth = false) {
    place.Write("job.ps", text);
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
      layers.push_back(paint.layer);
      asked.push_back(paint.kind + " " + std::to_string(static_cast<int>(paint.lineWidth)) + " " +
                      paint.color);
      return wants(paint);
    };
    request.asksLineWidth = asksWidth;
    auto pages = PrintPages(std::move(request), *made, ear, *guardian);
    if (!pages) return pages;
    const std::string page = made->Path() + "/" + pages::PageName(1);
    cuts = *os::ReadWholeFile(os::FromNative(page + "/" + pages::CutPathsName), 1 << 26);
    const auto found =
        os::ReadWholeFile(os::FromNative(page + "/" + pages::CutLayersName), 1 << 20);
    if (found) cutLayers = *found;
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
  std::vector<std::string> layers;
  std::string cutLayers;
  std::string cuts;
  std::string planes;
};

// A PDF of one page with three groups, of which the last is hidden, a membership and two forms.
std::string LayeredPdf(const std::string& content) {
  const std::string form = "5 5 m 9 9 l S /OC /cut BDC 6 6 m 9 9 l S";
  const std::string box = "<< /Type /XObject /Subtype /Form /BBox [0 0 72 72] ";
  const auto stream = [](const std::string& head, const std::string& data) {
    return head + "/Length " + std::to_string(data.size()) + " >>\nstream\n" + data + "\nendstream";
  };
  const std::vector<std::string> bodies{
      "<< /Type /Catalog /Pages 2 0 R /OCProperties << /OCGs [5 0 R 6 0 R 7 0 R] /D << /OFF [7 0 "
      "R] >> >> >>",
      "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
      "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 72 72] /Contents 4 0 R /Resources << "
      "/Properties "
      "<< /cut 5 0 R /fold 6 0 R /hidden 7 0 R /either 8 0 R >> /XObject << /Plain 9 0 R /Folded "
      "10 "
      "0 R >> >> >>",
      stream("<< ", content),
      "<< /Type /OCG /Name (Cut lines) >>",
      "<< /Type /OCG /Name <FEFF00460061006C007A20AC> >>",
      "<< /Type /OCG /Name (Hidden) >>",
      "<< /Type /OCMD /OCGs [5 0 R 7 0 R] /P /AnyOn >>",
      stream(box, form),
      stream(box + "/OC 6 0 R ", form)};
  std::string text = "%PDF-1.5\n";
  std::string table;
  for (std::size_t i = 0; i < bodies.size(); ++i) {
    std::string place = std::to_string(text.size());
    table += std::string(10 - place.size(), '0') + place + " 00000 n \n";
    text += std::to_string(i + 1) + " 0 obj\n" + bodies[i] + "\nendobj\n";
  }
  const std::string count = std::to_string(bodies.size() + 1);
  const std::string start = std::to_string(text.size());
  return text + "xref\n0 " + count + "\n0000000000 65535 f \n" + table + "trailer\n<< /Size " +
         count + " /Root 1 0 R >>\nstartxref\n" + start + "\n%%EOF\n";
}

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

TEST_F(AskedPaints, the_layers_of_a_pdf_are_asked_for_and_kept_beside_the_paths) {
  const auto pages = PrintJob(
      LayeredPdf(
          "1 1 m 2 2 l S /OC /cut BDC 1 1 m 2 2 l S /Span BMC 1 1 m 2 2 l S EMC /OC /fold BDC "
          "1 1 m 2 2 l S EMC 1 1 m 2 2 l S EMC 1 1 m 2 2 l S /OC /hidden BDC 1 1 m 2 2 l S "
          "EMC /OC /either BDC 1 1 m 2 2 l S EMC /OC /none BDC 1 1 m 2 2 l S EMC"),
      All);
  ASSERT_TRUE(pages) << Describe(pages.Error());
  EXPECT_EQ(layers, (Texts{"", "Cut lines", "Falz\u20AC"})) << "each is asked for once";
  EXPECT_EQ(cutLayers,
            "Rastrel cut layers 1\npaths: 8\n\nCut lines\nCut lines\nFalz\u20AC\nCut lines\n\n"
            "Cut lines\n\nend\n");
}

TEST_F(AskedPaints, a_form_is_in_the_layer_that_it_belongs_to_or_is_painted_in) {
  const auto pages = PrintJob(
      LayeredPdf("/OC /cut BDC /Folded Do 1 1 m 2 2 l S EMC /Plain Do 1 1 m 2 2 l S"), All);
  ASSERT_TRUE(pages) << Describe(pages.Error());
  // The content that a form leaves open ends with it.
  EXPECT_EQ(cutLayers,
            "Rastrel cut layers 1\npaths: 6\nFalz\u20AC\nCut lines\nCut lines\n\nCut lines\n\n"
            "end\n");
}

TEST_F(AskedPaints, a_layer_alone_decides_where_the_paint_is_the_same) {
  const auto pages =
      PrintJob(LayeredPdf("1 1 m 2 2 l S /OC /cut BDC 1 1 m 2 2 l S EMC 1 1 m 2 2 l S "
                          "/OC /fold BDC 1 1 m 2 2 l S EMC"),
               [](const AskedPaint& paint) { return paint.layer == "Cut lines"; });
  ASSERT_TRUE(pages) << Describe(pages.Error());
  EXPECT_EQ(Colors().size(), 1U);
}

TEST_F(AskedPaints, content_that_ends_more_often_than_it_begins_does_no_harm) {
  const auto pages = PrintJob(
      LayeredPdf("EMC EMC 1 1 m 2 2 l S /OC /cut BDC 1 1 m 2 2 l S EMC EMC 1 1 m 2 2 l S"), All);
  ASSERT_TRUE(pages) << Describe(pages.Error());
  EXPECT_EQ(cutLayers, "Rastrel cut layers 1\npaths: 3\n\nCut lines\n\nend\n");
}

TEST_F(AskedPaints, without_layers_there_is_no_file_of_them) {
  ASSERT_TRUE(PrintJob(LayeredPdf("1 1 m 2 2 l S"), All));
  EXPECT_EQ(Colors().size(), 1U);
  EXPECT_TRUE(cutLayers.empty());
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
