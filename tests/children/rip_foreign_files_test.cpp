// Cut paths from files that other programs made: EPS and PostScript, and PDF with its text.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "rastrel/prefix/cutter.h"
#include "rastrel/prefix/preview_sections.h"
#include "tests/children/queue_fixture.h"
#include "tests/children/rip_effects.h"

namespace rastrel::corerast::testing {
namespace {

constexpr double HalfPixel = 0.5 * 72 / 300;  // in points, at the tests' resolution
constexpr const char* Mode300 = "3Color 300 300 SetXYResolution";

std::string TextOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string Quoted(const std::string& path) { return "'" + path + "'"; }

const std::string Ghostscript = "gs -q -dBATCH -dNOPAUSE -dSAFER ";

// A PDF that the interpreter's own writer makes of a job.
std::string Pdf(const RipFixture& bench, const std::string& job) {
  const std::string source = bench.File("source.ps", job);
  std::string pdf = bench.File("source.pdf", "");
  EXPECT_TRUE(
      RunCommand(Ghostscript + "-sDEVICE=pdfwrite -o " + Quoted(pdf) + " " + Quoted(source)));
  return pdf;
}

TEST(ForeignFile, that_is_a_pdf_loses_its_outlines_to_the_cut_paths) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  for (const auto& [section, color] :
       {std::pair(prefix::CutterSection(RedCut()), std::string("1 0 0 setrgbcolor")),
        std::pair(prefix::CutDataSection(NamedCut(L"CutContour")), std::string(Spot))}) {
    SCOPED_TRACE(color);
    const std::string pdf = Pdf(bench, Outline(color));
    ExpectOutlineCut(Pages(bench.Run({PrefixOf(bench, section), pdf}), 1).front());
  }
}

// The outline's job as other programs write it out again. Programs that are not installed are left
// out; the interpreter's own writers always run.
TEST(ForeignFile, that_is_postscript_loses_its_outlines_to_the_cut_paths) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string outline = Outline("1 0 0 setrgbcolor");
  const std::string source = bench.File("outline.ps", outline);
  const std::string job = bench.File("job.ps", "");
  const std::string both = Quoted(Pdf(bench, outline)) + " " + Quoted(job);
  for (const auto& [program, command] :
       {std::pair(std::string("gs"),
                  Ghostscript + "-sDEVICE=ps2write -o " + Quoted(job) + " " + Quoted(source)),
        std::pair(std::string("pdftops"), "pdftops -level3 " + both),
        std::pair(std::string("pdftocairo"), "pdftocairo -ps " + both)}) {
    SCOPED_TRACE(command);
    if (!HaveProgram(program)) continue;
    ASSERT_TRUE(RunCommand(command));
    const std::string prefix = PrefixOf(bench, prefix::CutterSection(RedCut()));
    ExpectOutlineCut(Pages(bench.Run({prefix, job}), 1).front());
  }
}

// Inkscape is large, and not everybody who builds this has it: without it this is left out.
TEST(ForeignFile, of_inkscape_loses_its_outlines_to_the_cut_paths) {
  REQUIRE_GHOSTSCRIPT();
  if (!HaveProgram("inkscape")) GTEST_SKIP() << "Inkscape is not installed.";
  const RipFixture bench;
  const std::string drawing = bench.File(
      "job.svg",
      R"(<svg xmlns="http://www.w3.org/2000/svg" width="144pt" height="144pt" viewBox="0 0 144 144">
<rect x="30" y="34" width="20" height="20" fill="#0000ff"/>
<rect x="20" y="74" width="100" height="50" fill="none" stroke="#ff0000" stroke-width="2"/>
</svg>
)");
  const std::string out = drawing.substr(0, drawing.size() - 4);
  ASSERT_TRUE(
      RunCommand("inkscape " + Quoted(drawing) +
                 " --export-area-page --export-type=eps,ps,pdf --export-filename=" + Quoted(out)));
  const std::string prefix = PrefixOf(bench, prefix::CutterSection(RedCut()));
  for (const std::string type : {".ps", ".pdf"}) {
    SCOPED_TRACE(type);
    ExpectOutlineCut(Pages(bench.Run({prefix, out + type}), 1).front());
  }
  // The EPS is cropped to its drawing, whose box is in its comment.
  const std::string eps = TextOf(out + ".eps");
  std::istringstream box(eps.substr(eps.find("%%BoundingBox:") + 14));
  double left = 0;
  double bottom = 0;
  ASSERT_TRUE(box >> left >> bottom);
  const std::string page = Pages(bench.Run({prefix, out + ".eps"}), 1).front();
  const std::vector<CutPath> paths = CutPathsOf(page);
  ASSERT_EQ(paths.size(), 1U);
  for (const auto& [x, y] : {std::pair(20, 20), {120, 20}, {120, 70}, {20, 70}}) {
    EXPECT_TRUE(paths[0].Passes(x - left, y - bottom, 0.5)) << x << " " << y;
  }
  EXPECT_FALSE(HasRed(ReadPixels(page + "/page.tif")));
}

// The numbers before a word that ends a segment: "1 2 m", "1 2 3 4 5 6 C". A reading of the file's
// own text, with no interpreter in between.
std::vector<double> PointsInText(const std::string& text) {
  std::vector<double> points;
  std::vector<double> numbers;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    char* end = nullptr;
    const double number = std::strtod(word.c_str(), &end);
    if (*end == '\0') {
      numbers.push_back(number);
    } else {
      if (word == "m" || word == "L" || word == "l" || word == "C" || word == "c") {
        points.insert(points.end(), numbers.begin(), numbers.end());
      }
      numbers.clear();
    }
  }
  return points;
}

TEST(ForeignFile, of_coreldraw_keeps_the_outline_of_its_cutting_line_to_each_point) {
  REQUIRE_GHOSTSCRIPT();
  const std::string file = jobspool::testing::CorpusFile("doseps/coreldraw-x7-cutcontour.eps");
  if (file.empty()) GTEST_SKIP() << "The corpus of real files is not here.";
  const RipFixture bench;
  const std::string prefix =
      PrefixOf(bench, prefix::CutDataSection(NamedCut(L"CutContour")), Mode300);
  const std::string page = Pages(bench.Run({prefix, file}), 1).front();
  const std::vector<CutPath> paths = CutPathsOf(page);
  ASSERT_EQ(paths.size(), 1U);
  EXPECT_EQ(paths[0].kind, "stroke");
  EXPECT_EQ(paths[0].color, "separation CutContour");
  // "0 0.50003 0.50003 0.00000 @w" sets the line's width.
  EXPECT_NEAR(paths[0].width, 0.5, HalfPixel);

  const std::string text = TextOf(file);
  const std::size_t start = text.find("(CutContour) [", text.find("%%EndComments"));
  ASSERT_NE(start, text.npos);
  const std::vector<double> points =
      PointsInText(text.substr(start, text.find("\nS", start) - start));
  ASSERT_GT(points.size(), 100U);
  ASSERT_EQ(paths[0].points.size(), points.size());
  for (std::size_t i = 0; i < points.size(); ++i) {
    // The page begins at the corner of the box in the comments.
    EXPECT_NEAR(paths[0].points[i], points[i] - (i % 2 == 0 ? 72 : 490), HalfPixel) << i;
  }
}

// ---- Text of PDF files ----

struct Box {
  double left = 1e9;
  double bottom = 1e9;
  double right = -1e9;
  double top = -1e9;
};

void Add(Box& box, double x, double y) {
  box.left = std::min(box.left, x);
  box.right = std::max(box.right, x);
  box.bottom = std::min(box.bottom, y);
  box.top = std::max(box.top, y);
}

// Around all places of a path; of a curve, around 33 on its way.
void Add(Box& box, const CutPath& path) {
  std::size_t at = 0;
  for (const char letter : path.letters) {
    if (letter == 'h') continue;
    for (int step = 0; letter == 'c' && step <= 32; ++step) {
      const double t = step / 32.0;
      const double u = 1 - t;
      const auto on = [&](std::size_t axis) {
        const double* const p = path.points.data() + at - 2 + axis;
        return u * u * u * p[0] + 3 * u * u * t * p[2] + 3 * u * t * t * p[4] + t * t * t * p[6];
      };
      Add(box, on(0), on(1));
    }
    if (letter != 'c') Add(box, path.points[at], path.points[at + 1]);
    at += letter == 'c' ? 6 : 2;
  }
}

Box BoxOf(const std::vector<CutPath>& paths) {
  Box box;
  for (const CutPath& path : paths) Add(box, path);
  return box;
}

// The box of a file's first page as the interpreter paints it without any of our prolog: another
// way to the same box. In points, from pixels of 1/1200 inch.
Box PaintedBox(const std::string& file) {
  const std::string picture = file + ".ppm";
  EXPECT_TRUE(RunCommand(Ghostscript + "-sDEVICE=pgmraw -r1200 -dLastPage=1 -sOutputFile=- " +
                         Quoted(file) + " | LC_ALL=C sed '2{/^#/d}' > " + Quoted(picture) + " #"));
  const Pixels pixels = ReadPixels(picture);
  Box box;
  for (unsigned y = 0; y < pixels.height; ++y) {
    const std::string_view row(pixels.samples.data() + std::size_t{y} * pixels.width, pixels.width);
    const std::size_t first = row.find_first_not_of('\xFF');
    if (first == row.npos) continue;
    const double scale = 72.0 / 1200;
    box.left = std::min(box.left, static_cast<double>(first) * scale);
    box.right = std::max(box.right, static_cast<double>(row.find_last_not_of('\xFF') + 1) * scale);
    box.top = std::max(box.top, (pixels.height - y) * scale);
    box.bottom = std::min(box.bottom, (pixels.height - y - 1) * scale);
  }
  return box;
}

void ExpectSameBox(const Box& box, const Box& other) {
  EXPECT_NEAR(box.left, other.left, HalfPixel);
  EXPECT_NEAR(box.right, other.right, HalfPixel);
  EXPECT_NEAR(box.bottom, other.bottom, HalfPixel);
  EXPECT_NEAR(box.top, other.top, HalfPixel);
}

// A PDF of one page of 200 by 200 points with these operators. Font F is Helvetica; T has glyphs
// that are programs; the color space Cut is a separation.
std::string HandMadePdf(const std::string& content) {
  const std::string square = "1000 0 0 0 750 750 d1 0 0 750 750 re f";
  const std::vector<std::string> objects{
      "<< /Type /Catalog /Pages 2 0 R >>",
      "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
      "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 200 200] /Contents 4 0 R /Resources << /Font "
      "<< /F 5 0 R /T 7 0 R >> /ColorSpace << /Cut [/Separation /CutContour /DeviceCMYK 6 0 R] >> "
      ">> >>",
      PdfStream(content),
      "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>",
      "<< /FunctionType 2 /Domain [0 1] /C0 [0 0 0 0] /C1 [0 1 0 0] /N 1 >>",
      "<< /Type /Font /Subtype /Type3 /FontBBox [0 0 1000 1000] /FontMatrix [.001 0 0 .001 0 0] "
      "/FirstChar 97 /LastChar 97 /Widths [1000] /Encoding << /Type /Encoding /Differences [97 /a] "
      ">> /CharProcs << /a 8 0 R >> /Resources << >> >>",
      PdfStream(square)};
  return PdfOf(objects);
}

Names KindsOf(const std::vector<CutPath>& paths) {
  Names kinds;
  for (const CutPath& path : paths) kinds.push_back(path.kind);
  return kinds;
}

// Every way in which a PDF spaces and turns its text: the outlines lie where the text is painted.
TEST(PdfText, in_the_cut_color_becomes_outlines_where_it_would_be_painted) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string show = " /F 20 Tf 20 100 Td (Cut me) Tj ET";
  for (const std::string& content :
       Names{"1 0 0 rg BT" + show, "1 0 0 rg BT 5 Tc" + show, "1 0 0 rg BT 10 Tw" + show,
             "1 0 0 rg BT 5 Tc 10 Tw 80 Tz" + show,
             "q .7 .7 -.7 .7 90 -40 cm 1 0 0 rg BT" + show + " Q",
             "1 0 0 rg BT /F 20 Tf 20 100 Td [(A) -500 (V) 120 (A)] TJ 3 Ts (B) Tj ET",
             "1 0 0 rg q BT 3 Tr ET Q BT" + show, "q 1 0 0 rg BT 4 Tr" + show + " Q"}) {
    SCOPED_TRACE(content);
    const std::string pdf = bench.File("job.pdf", HandMadePdf(content));
    const std::string prefix = PrefixOf(bench, prefix::CutterSection(RedCut()), Mode300);
    const std::string page = Pages(bench.Run({prefix, pdf}), 1).front();
    const std::vector<CutPath> paths = CutPathsOf(page);
    ASSERT_FALSE(paths.empty());
    for (const std::string& kind : KindsOf(paths)) EXPECT_EQ(kind, "text");
    ExpectSameBox(BoxOf(paths), PaintedBox(pdf));
    EXPECT_FALSE(HasRed(ReadPixels(page + "/page.tif")));
  }
}

struct Rendering {
  std::string content;
  Names kinds;
  bool red = false;  // in the picture that is left
  bool blue = false;
};

TEST(PdfText, is_taken_out_in_every_rendering_mode_as_far_as_it_has_the_color) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string show = " /F 40 Tf 20 100 Td (Cut) Tj ET";
  const std::vector<Rendering> cases{
      {"1 0 0 RG 0 0 1 rg BT 0 Tr" + show, {}, false, true},
      {"1 0 0 RG 0 0 1 rg BT 1 Tr" + show, {"stroke"}, false, false},
      {"1 0 0 RG 0 0 1 rg BT 2 Tr" + show, {"stroke"}, false, true},
      {"0 0 1 RG 1 0 0 rg BT 2 Tr" + show, {"fill"}, false, true},
      {"1 0 0 RG 1 0 0 rg BT 3 Tr" + show, {}, false, false},
      {"q 1 0 0 RG 0 0 1 rg BT 5 Tr" + show + " 0 0 200 110 re f Q", {"stroke"}, false, true},
      {"q 1 0 0 rg BT 7 Tr" + show + " 0 0 1 rg 0 0 200 110 re f Q", {}, false, true},
      // The color or the mode changes within a text.
      {"1 0 0 rg BT /F 40 Tf 20 100 Td (A) Tj 0 0 1 rg (B) Tj ET", {"text"}, false, true},
      {"1 0 0 rg BT 3 Tr ET q BT 0 Tr" + show + " Q BT 1 0 0 1 20 20 Tm (C) Tj ET",
       {"text"},
       false,
       false},
      // Glyphs that are programs are painted.
      {"1 0 0 rg BT /T 20 Tf 20 100 Td (aa) Tj ET", {}, true, false}};
  for (const Rendering& one : cases) {
    SCOPED_TRACE(one.content);
    const std::string pdf = bench.File("job.pdf", HandMadePdf(one.content));
    const std::string prefix = PrefixOf(bench, prefix::CutterSection(RedCut()));
    const std::string page = Pages(bench.Run({prefix, pdf}), 1).front();
    EXPECT_EQ(KindsOf(CutPathsOf(page)), one.kinds);
    const Pixels pixels = ReadPixels(page + "/page.tif");
    EXPECT_EQ(HasRed(pixels), one.red);
    bool blue = false;
    for (std::size_t i = 0; i + 2 < pixels.samples.size(); i += 3) {
      blue = blue || static_cast<unsigned char>(pixels.samples[i + 2]) >
                         static_cast<unsigned char>(pixels.samples[i + 1]);
    }
    EXPECT_EQ(blue, one.blue);
  }
}

TEST(PdfText, of_a_separation_is_taken_out) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string pdf =
      bench.File("job.pdf", HandMadePdf("/Cut cs 1 scn BT /F 20 Tf 20 100 Td (Cut me) Tj ET"));
  const std::string prefix =
      PrefixOf(bench, prefix::CutDataSection(NamedCut(L"CutContour")), Mode300);
  const std::string page = Pages(bench.Run({prefix, pdf}), 1).front();
  const std::vector<CutPath> paths = CutPathsOf(page);
  EXPECT_EQ(KindsOf(paths), (Names{"text"}));
  ExpectSameBox(BoxOf(paths), PaintedBox(pdf));
  EXPECT_FALSE(HasRed(ReadPixels(page + "/page.tif")));
}

// Text in embedded fonts, as the writers of PDF files embed it, on two pages.
TEST(PdfText, of_other_programs_files_is_taken_out) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string text =
      "%!PS\n<< /PageSize [200 200] >> setpagedevice\n/Helvetica findfont 20 scalefont setfont\n"
      "2 { 1 0 0 setrgbcolor 20 100 moveto (Cut me) show showpage } repeat\n";
  const std::string pdf = Pdf(bench, text);
  const std::string job = bench.File("job.pdf", "");
  const std::string both = Quoted(pdf) + " " + Quoted(job);
  for (const auto& [program, command] :
       {std::pair(std::string("gs"), "cp " + both),
        std::pair(std::string("pdftocairo"), "pdftocairo -pdf " + both)}) {
    SCOPED_TRACE(command);
    if (!HaveProgram(program)) continue;
    ASSERT_TRUE(RunCommand(command));
    const std::string prefix = PrefixOf(bench, prefix::CutterSection(RedCut()), Mode300);
    for (const std::string& page : Pages(bench.Run({prefix, job}), 2)) {
      const std::vector<CutPath> paths = CutPathsOf(page);
      ASSERT_FALSE(paths.empty());
      ExpectSameBox(BoxOf(paths), PaintedBox(job));
      EXPECT_FALSE(HasRed(ReadPixels(page + "/page.tif")));
    }
  }
}

// The interpreter's PDF code in C calls no operators. With the choice of the other code left out of
// the prolog, it is the one that runs, as in a Ghostscript that has no other.
TEST(PdfText, that_can_not_be_taken_out_is_warned_of) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string cutter = "root/Queue/rip/System/prolog/cutter.ps";
  std::string prolog = TextOf(bench.RipDirectory() + "/System/prolog/cutter.ps");
  const std::string choice = "userdict /NEWPDF false put";
  ASSERT_NE(prolog.find(choice), prolog.npos);
  prolog.erase(prolog.find(choice), choice.size());
  const std::string pdf =
      bench.File("job.pdf", HandMadePdf("1 0 0 rg BT /F 20 Tf 20 100 Td (Cut me) Tj ET"));
  const std::string prefix = PrefixOf(bench, prefix::CutterSection(RedCut()));
  const std::string warning =
      "WARNING: This Ghostscript has no PDF code that cut paths can be taken from; they stay in "
      "the "
      "picture.";
  EXPECT_FALSE(bench.Run({prefix, pdf}).Says(warning));
  bench.File(cutter, prolog);
  const ProgramRun outcome = bench.Run({prefix, pdf});
  EXPECT_TRUE(outcome.Says(warning)) << outcome.reports;
  const std::string page = Pages(outcome, 1).front();
  EXPECT_TRUE(CutPathsOf(page).empty());
  EXPECT_TRUE(HasRed(ReadPixels(page + "/page.tif")));
}

// Its ink's box, as it was measured when the file was collected: 11.214 19.728 194.04 28.746.
TEST(PdfText, of_a_real_file_in_a_spot_color_is_taken_out) {
  REQUIRE_GHOSTSCRIPT();
  const std::string file = jobspool::testing::CorpusFile("pdf/sep-pantone485m-tiny.pdf");
  if (file.empty()) GTEST_SKIP() << "The corpus of real files is not here.";
  const RipFixture bench;
  const std::string prefix =
      PrefixOf(bench, prefix::CutDataSection(NamedCut(L"PANTONE 485 M")), Mode300);
  const std::string page = Pages(bench.Run({prefix, file}), 1).front();
  const std::vector<CutPath> paths = CutPathsOf(page);
  ASSERT_EQ(KindsOf(paths), (Names{"text"}));
  EXPECT_EQ(paths[0].color, "separation PANTONE 485 M");
  ExpectSameBox(BoxOf(paths), {11.214, 19.728, 194.04, 28.746});
  EXPECT_FALSE(HasRed(ReadPixels(page + "/page.tif")));
}

}  // namespace
}  // namespace rastrel::corerast::testing
