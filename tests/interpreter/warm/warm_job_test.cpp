// Jobs of a warm interpreter against the same jobs of a program that is started for each: equal to
// the byte.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <utility>

#include "tests/interpreter/warm/warm_fixture.h"

namespace rastrel::interpreter::testing {
namespace {

namespace fs = std::filesystem;

const std::string Mixed =
    "%!PS\n<< /PageSize [200 150] >> setpagedevice\n"
    "/Helvetica findfont 20 scalefont setfont 10 10 moveto (Rastrel) show\n"
    "/Times-Italic findfont 14 scalefont setfont 10 60 moveto (Letters) show\n"
    "/NoSuchFont findfont 9 scalefont setfont 10 90 moveto (another) show\n"
    "0.5 0.1 0.7 setrgbcolor 20 40 60 30 rectfill\n"
    "0.1 0.9 0 0.2 setcmykcolor 100 50 30 20 rectfill 3 setlinewidth 0 0 moveto 200 150 lineto "
    "stroke\n"
    "gsave 120 80 translate 40 40 scale 2 2 8 [2 0 0 2 0 0] {<00FF8040 10203040 50607080>} false 3 "
    "colorimage grestore\n"
    "[/Separation (Spot) /DeviceCMYK {0 exch dup 0 exch 0}] setcolorspace 0.4 setcolor 5 120 50 20 "
    "rectfill\n"
    "showpage\n0.3 setgray 5 5 20 20 rectfill showpage\n";

const std::string Eps =
    "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 10 20 110 90\n%%EndComments\n"
    "1 0 0 setrgbcolor 10 20 50 70 rectfill /Helvetica findfont 12 scalefont setfont\n"
    "12 30 moveto (EPS) show showpage\n";

const std::string Pdf =
    "%PDF-1.4\n1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj\n"
    "2 0 obj<</Type/Pages/Kids[3 0 R]/Count 1>>endobj\n"
    "3 0 obj<</Type/Page/Parent 2 0 R/MediaBox[0 0 90 70]/Contents 4 0 R/Resources"
    "<</Font<</F<</Type/Font/Subtype/Type1/BaseFont/Helvetica>>>>/ExtGState<</G<</ca 0.5>>>>>>>>"
    "endobj\n4 0 obj<</Length 87>>stream\n"
    "0 0.4 1 rg 9 9 50 40 re f /G gs 1 0 0 rg 30 20 50 40 re f BT /F 12 Tf 9 50 Td (PDF) Tj ET\n"
    "endstream endobj\ntrailer<</Root 1 0 R>>\n";

// Jobs that end in pages, in errors, by quit, or are none.
const std::vector<std::pair<const char*, std::string>>& Jobs() {
  static const std::vector<std::pair<const char*, std::string>> jobs{
      {"pages", Mixed},
      {"eps", Eps},
      {"pdf", Pdf},
      {"an error", "%!PS\n0 0 9 9 rectfill showpage (text) == moveto showpage\n"},
      {"a quit", "%!PS\n(before) = quit (after) =\n"},
      {"a stop", "%!PS\nstop\n"},
      {"no job", "this is none"},
      {"nothing", ""},
      {"a damaged pdf", Pdf.substr(0, Pdf.size() / 2)},
      {"an open page", "%!PS\n0 0 50 50 rectfill\n"},
      {"another device",
       "%!PS\n<< /OutputDevice /pgmraw >> setpagedevice 0.5 setgray 0 0 9 9 "
       "rectfill showpage\n"},
      {"an end that is redefined",
       "%!PS\n/quit {} def /flush {} def /systemdict 1 dict def "
       "0 0 9 9 rectfill showpage\n"},
  };
  return jobs;
}

void ExpectSame(const TestJob& job) {
  const TestEnd exec = WarmFixture::RunByExec(job);
  const TestEnd warm = WarmFixture::Run(job);
  EXPECT_FALSE(exec.warm);
  EXPECT_TRUE(warm.warm);
  EXPECT_EQ(warm.end.byItself, exec.end.byItself);
  EXPECT_EQ(warm.end.status, exec.end.status);
  EXPECT_EQ(warm.output, exec.output);
  EXPECT_EQ(warm.messages, exec.messages);
  ASSERT_EQ(warm.files.size(), exec.files.size());
  for (const auto& [name, content] : exec.files) {
    ASSERT_TRUE(warm.files.contains(name)) << name;
    EXPECT_TRUE(warm.files.at(name) == content) << name;
  }
}

class WarmJob : public ::testing::TestWithParam<const char*> {};

TEST_P(WarmJob, leaves_the_bytes_of_a_program) {
  REQUIRE_WARM();
  WarmFixture fixture;
  TestJob job{.device = GetParam(), .options = {"-r100"}};
  fixture.Warm(job);
  for (const auto& [name, content] : Jobs()) {
    SCOPED_TRACE(name);
    job.content = content;
    ExpectSame(job);
  }
}

INSTANTIATE_TEST_SUITE_P(Device, WarmJob,
                         ::testing::Values("bbox", "ppmraw", "pgmraw", "png16m", "nullpage"));

// A plane's file has the time in its head.
TEST(WarmSeparation, leaves_the_planes_of_a_program) {
  REQUIRE_WARM();
  WarmFixture fixture;
  const TestJob job{.device = "tiffsep", .content = Mixed, .options = {"-r72"}};
  fixture.Warm(job);
  const std::regex time("\\d{4}:\\d\\d:\\d\\d \\d\\d:\\d\\d:\\d\\d");
  TestEnd exec = WarmFixture::RunByExec(job);
  TestEnd warm = WarmFixture::Run(job);
  ASSERT_TRUE(warm.warm);
  for (TestEnd* const end : {&exec, &warm}) {
    for (auto& [name, content] : end->files) content = std::regex_replace(content, time, "");
  }
  EXPECT_GE(exec.files.size(), 10U);
  EXPECT_TRUE(warm.IsAs(exec)) << warm.messages;
}

TEST(WarmScript, runs_texts_before_and_after_the_file) {
  REQUIRE_WARM();
  WarmFixture fixture;
  const TestJob job{.device = "ppmraw",
                    .content = "%!PS\n0 0 9 9 rectfill (in the file) =\n",
                    .options = {"-c", "(before) = << /PageSize [20 20] >> setpagedevice"},
                    .after = {"-c", "(after (nested\\)) ) =", "showpage"}};
  fixture.Warm(job);
  ExpectSame(job);
}

// Files of many makers, where they are.
TEST(WarmJobOfTheCorpus, leaves_the_bytes_of_a_program) {
  REQUIRE_WARM();
  const fs::path corpus = fs::path(RASTREL_SOURCE_DIR) / "../shared/corpus";
  if (!fs::exists(corpus)) GTEST_SKIP() << "There is no corpus here.";
  WarmFixture fixture;
  std::map<std::string, TestJob> jobs;
  for (const char* const device : {"bbox", "ppmraw", "pgmraw"}) {
    jobs[device] = {.device = device, .options = {"-r36"}};
    fixture.Warm(jobs[device]);
  }
  for (const auto& entry : fs::recursive_directory_iterator(corpus)) {
    const std::string extension = entry.path().extension();
    if (extension != ".eps" && extension != ".ps" && extension != ".pdf") continue;
    if (entry.file_size() > WarmJobBytes) continue;
    std::ostringstream content;
    content << std::ifstream(entry.path(), std::ios::binary).rdbuf();
    for (auto& [device, job] : jobs) {
      SCOPED_TRACE(entry.path().filename().string() + " " + device);
      job.content = content.str();
      ExpectSame(job);
    }
  }
}

}  // namespace
}  // namespace rastrel::interpreter::testing
