// The prolog's capture of cut paths, which saves steps wherever it can, against one that does all
// of them for each path (plain_capture.ps): the same bytes on jobs that are made at random.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "rastrel/prefix/cutter.h"
#include "rastrel/prefix/preview_sections.h"
#include "tests/children/rip_effects.h"

namespace rastrel::corerast::testing {
namespace {

std::string TextOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// Jobs that draw shapes and text in colors that are cut and others, under clips that change, within
// saves and on several pages.
class RandomJob {
 public:
  // Half of the colors are that one.
  RandomJob(unsigned seed, std::string color) : m_Random(seed), m_Color(std::move(color)) {}

  std::string Text() {
    m_Text =
        "%!PS\n<< /PageSize [200 150] >> setpagedevice\n"
        "<< /PatternType 1 /PaintType 2 /TilingType 1 /BBox [0 0 5 5] /XStep 5 /YStep 5 /PaintProc "
        "{pop 0 0 3 3 rectfill} >> matrix makepattern /pat exch def\n"
        "/Glyphs << /FontType 3 /FontMatrix [.01 0 0 .01 0 0] /FontBBox [0 0 100 100] /Encoding "
        "256 "
        "array 0 1 255 {1 index exch /a put} for /BuildChar {pop pop 100 0 setcharwidth gsave 10 "
        "10 "
        "50 50 rectclip 20 20 moveto 80 80 lineto 90 20 lineto fill grestore 0 0 30 30 rectfill 0 "
        "5 "
        "moveto 90 5 lineto stroke} >> definefont pop\n";
    m_Text += m_Color + "\n";
    const int steps = Number(30, 70);
    for (int i = 0; i < steps; ++i) AddStep();
    return m_Text + "showpage\n";
  }

 private:
  int Number(int low, int high) { return std::uniform_int_distribution(low, high)(m_Random); }
  std::string Length(int high = 200) {
    return std::to_string(Number(-high / 8, high)) + "." + std::to_string(Number(0, 999)) + " ";
  }
  std::string OneOf(const std::vector<std::string>& texts) {
    return texts[static_cast<std::size_t>(Number(0, static_cast<int>(texts.size()) - 1))];
  }

  std::string Path() {
    std::string path = "newpath ";
    for (int part = Number(1, 3); part > 0; --part) {
      path += Length() + Length() + "moveto ";
      for (int segment = Number(0, 4); segment > 0; --segment)
        path += OneOf({Length() + Length() + "lineto ", Length(40) + Length(40) + "rlineto ",
                       Length() + Length() + Length() + Length() + Length() + Length() + "curveto ",
                       Length() + Length() + "20 0 300 arc ", "closepath "});
    }
    return path;
  }

  std::string Color() {
    if (Number(0, 1) == 0) return m_Color;
    return OneOf({"1 0 0 setrgbcolor", "0.9996 0.0001 0 setrgbcolor", "1 0 0.4 setrgbcolor",
                  "0 setgray", "0 0 0 1 setcmykcolor", "0 0 0.5 1 setcmykcolor",
                  "[/CalRGB << /WhitePoint [1 1 1] >>] setcolorspace 1 0 0 setcolor",
                  "[/Pattern /DeviceRGB] setcolorspace 1 0 0 pat setcolor",
                  "[/Indexed /DeviceRGB 1 <ff000000ff00>] setcolorspace 0 setcolor",
                  "[/Separation /CutContour /DeviceCMYK {0 exch dup 0}] setcolorspace " +
                      OneOf({"1", "0", "0.5"}) + " setcolor"});
  }

  // The last one has as many points as the prolog compares, one less, one more, and far more.
  std::string Clip() {
    return OneOf({Path() + "clip", Path() + "eoclip", "0 0 150 120 rectclip",
                  Length(40) + Length(40) + "120 90 rectclip", "initclip",
                  "0 0 moveto 1 1 " + OneOf({"148", "149", "150", "151", "2000"}) +
                      " { dup 7 mul 200 mod exch 3 mul 150 mod lineto } for clip"}) +
           " newpath";
  }

  void AddStep() {
    const int kind = Number(0, 19);
    std::string step;
    if (kind < 7) {
      step = Path() +
             OneOf({"stroke", "fill", "eofill", "strokepath fill", "gsave fill grestore stroke"});
    } else if (kind < 9) {
      step = Color();
    } else if (kind < 11) {
      step = Clip();
    } else if (kind == 11) {
      step = Length(4) + "abs setlinewidth";
    } else if (kind == 12 || (kind == 13 && m_Depth == 0)) {
      step = "gsave";
      ++m_Depth;
    } else if (kind == 13) {
      step = "grestore";
      --m_Depth;
    } else if (kind == 14) {
      step = OneOf({"1.3 0.7 scale", "-0.5 1 scale", Length(20) + "rotate", "10 -5 translate"});
    } else if (kind == 15) {
      step = OneOf({"/Glyphs", "/Courier"}) + " findfont 20 scalefont setfont " + Length() +
             Length() + "moveto (A b) show";
    } else if (kind == 16) {
      step = Length() + Length() + Length(60) + Length(60) + OneOf({"rectfill", "rectstroke"});
    } else if (kind == 17) {
      step = "0 0 moveto 900 { 1 0.5 rlineto -1 1 rlineto } repeat stroke";
    } else {
      step = AddPageOrSave(kind == 18);
    }
    m_Text += step + "\n";
  }

  // A restore to before a setpagedevice begins the page anew, and its paths are lost.
  std::string AddPageOrSave(bool isPage) {
    if (isPage)
      return "showpage " + OneOf({"", m_Saved ? "" : "<< /PageSize [150 200] >> setpagedevice "}) +
             m_Color;
    std::string text = m_Saved ? "clear state restore" : "/state save def";
    for (; m_Depth > 0; --m_Depth) text.insert(0, "grestore ");
    m_Saved = !m_Saved;
    return text;
  }

  std::mt19937 m_Random;
  std::string m_Color;
  std::string m_Text;
  int m_Depth = 0;
  bool m_Saved = false;
};

// The shipped prolog with plain_capture.ps, and with a match that looks at the whole color each
// time.
void MakePlain(const RipFixture& bench) {
  const std::string prolog = "root/Queue/rip/System/prolog/";
  bench.File(prolog + "capture.ps", TextOf(RASTREL_SOURCE_DIR "/tests/children/plain_capture.ps"));
  std::string match = TextOf(bench.RipDirectory() + "/System/prolog/match.ps");
  const std::size_t prepare = match.find("% rip.prepare");
  ASSERT_NE(prepare, match.npos);
  for (const char* steps : {"rgb", "cmyk", "spot"})
    match.insert(prepare, "/rip." + std::string(steps) + "steps //rip.allsteps def\n");
  bench.File(prolog + "match.ps", match);
}

TEST(CutCapture, has_the_same_bytes_as_one_that_saves_no_step) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture quick;
  const RipFixture plain;
  MakePlain(plain);
  const std::vector<std::pair<std::wstring, std::string>> cuts{
      {prefix::CutterSection(RedCut()), "1 0 0 setrgbcolor"},
      {prefix::CutterSection(CutColor(prefix::CutterCmyk, {0, 0, 0, 255})), "0 0 0 1 setcmykcolor"},
      {prefix::CutDataSection(NamedCut(L"CutContour")), Spot}};
  std::size_t paths = 0;
  for (unsigned seed = 1; seed <= 12; ++seed) {
    SCOPED_TRACE(seed);
    const auto& [section, color] = cuts[seed % cuts.size()];
    const std::string text = RandomJob(seed, color).Text();
    const ProgramRun one = quick.Run({PrefixOf(quick, section), quick.File("job.ps", text)});
    const ProgramRun other = plain.Run({PrefixOf(plain, section), plain.File("job.ps", text)});
    ASSERT_EQ(one.status, 0) << one.reports << text;
    ASSERT_EQ(other.status, 0) << other.reports;
    const Names made = RipFixture::PagesOf(one);
    const Names expected = RipFixture::PagesOf(other);
    ASSERT_EQ(made.size(), expected.size());
    for (std::size_t page = 0; page < made.size(); ++page) {
      EXPECT_EQ(TextOf(made[page] + "/cut-paths"), TextOf(expected[page] + "/cut-paths"));
      EXPECT_EQ(TextOf(made[page] + "/page.tif"), TextOf(expected[page] + "/page.tif"));
      paths += CutPathsOf(made[page]).size();
    }
  }
  EXPECT_GT(paths, 100U) << "or nothing was compared";
}

}  // namespace
}  // namespace rastrel::corerast::testing
