// Pages whose bands several threads of the interpreter paint.

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "tests/children/rip_fixture.h"

namespace rastrel::corerast::testing {
namespace {

// A page of 2500 x 2500 pixels at 600 pixels per inch, which the interpreter paints band by band:
// shadings, discs across the bands' edges, thin lines, text and a picture.
const std::string HeavyPage =
    "%!PS\n<< /PageSize [300 300] >> setpagedevice\n"
    "(threads ) print currentpagedevice /NumRenderingThreads known\n"
    "{ currentpagedevice /NumRenderingThreads get = } { (none) = } ifelse flush\n"
    "0 1 8 { /i exch def gsave i 3 mod 100 mul i 3 idiv 100 mul translate 0 0 100 100 rectclip\n"
    "<< /ShadingType 3 /ColorSpace /DeviceRGB /Coords [30 50 0 30 50 60] /Extend [true true]\n"
    "/Function << /FunctionType 2 /Domain [0 1] /C0 [i 9 div 0 1] /C1 [1 i 9 div 0] /N 1 >> >>\n"
    "shfill grestore } for\n"
    "0 1 199 { /i exch def i 200 div 0.5 0.3 setrgbcolor\n"
    "i 17 mul 300 mod i 23 mul 300 mod 9 0 360 arc fill } for\n"
    "0 setgray 0.1 setlinewidth 0 1 40 { 7 mul 0 moveto 30 280 lineto stroke } for\n"
    "/Helvetica findfont 20 scalefont setfont 20 140 moveto (Open on Sundays) show\n"
    "gsave 180 180 translate 80 80 scale 2 2 8 [2 0 0 -2 0 2] {<10f060c0>} image grestore\n"
    "showpage\n";

std::string Bytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

struct ThreadCase {
  const char* mode;     // PostScript that selects it
  const char* pixels;   // name of the page's file
  const char* ofThree;  // the interpreter's line about its threads where three are asked for
  const char* ofOne;    // and one
};

class RipThreads : public ::testing::TestWithParam<ThreadCase> {
 protected:
  // The pixels of the heavy page with so many threads.
  [[nodiscard]] std::string PixelsWith(const std::string& threads, const std::string& line) {
    m_Bench.Set("RASTREL_RIP_THREADS", threads);
    const std::string job = m_Bench.File("job.ps", HeavyPage);
    const std::string prefix = m_Bench.File(
        "job.psp", std::string("%!PS\nserverdict begin 0 exitserver\n") + GetParam().mode + "\n");
    const ProgramRun outcome = m_Bench.Run({prefix, job});
    EXPECT_EQ(outcome.status, 0) << outcome.reports;
    EXPECT_TRUE(outcome.Says(line)) << outcome.reports;
    const auto pages = RipFixture::PagesOf(outcome);
    return pages.size() == 1 ? Bytes(pages.front() + "/" + GetParam().pixels) : std::string();
  }

 private:
  RipFixture m_Bench;
};

TEST_P(RipThreads, paint_the_same_pixels_as_one) {
  REQUIRE_GHOSTSCRIPT();
  const std::string one = PixelsWith("1", GetParam().ofOne);
  ASSERT_FALSE(one.empty());
  EXPECT_TRUE(PixelsWith("3", GetParam().ofThree) == one);
}

// Separations are painted by the interpreter's own thread: several would gain nothing there.
INSTANTIATE_TEST_SUITE_P(Modes, RipThreads,
                         ::testing::Values(ThreadCase{"3Color 600 600 SetXYResolution", "page.tif",
                                                      "gs: threads 3", "gs: threads 0"},
                                           ThreadCase{"1Color 600 600 SetXYResolution", "page.tif",
                                                      "gs: threads 3", "gs: threads 0"},
                                           ThreadCase{"4Color 300 300 SetXYResolution",
                                                      "preview.png", "gs: threads none",
                                                      "gs: threads none"}));

// Their stacks and heaps take address space that a job's memory is not to be measured by.
TEST(RipThreadsOfAJob, with_little_memory_have_room_beside_it) {
  REQUIRE_GHOSTSCRIPT();
  RipFixture bench;
  bench.Set("RASTREL_RIP_THREADS", "16");
  bench.Set("RASTREL_RIP_MEMORY", "128");
  const ProgramRun outcome =
      bench.Run({bench.Prefix("RGB/600 dpi.ps"), bench.File("job.ps", HeavyPage)});
  EXPECT_EQ(outcome.status, 0) << outcome.reports;
  EXPECT_TRUE(outcome.Says("gs: threads 16")) << outcome.reports;
  EXPECT_EQ(outcome.reports.find("WARNING"), std::string::npos) << outcome.reports;
}

}  // namespace
}  // namespace rastrel::corerast::testing
