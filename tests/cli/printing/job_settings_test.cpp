#include "cli/printing/job_settings.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "cli/console/options.h"
#include "rastrel/platform/os/shown_text.h"
#include "rastrel/prefix/cutter.h"
#include "rastrel/prefix/scaling.h"

namespace rastrel::cli {
namespace {

// The message with which a value is refused; empty if it is taken.
template <typename Result>
std::string RefusalOf(const Result& result) {
  return result ? std::string() : Describe(result.Error());
}

std::string RefusalOfScale(const std::string& text) {
  CJobData settings;
  return RefusalOf(ApplyScale(settings, text));
}

std::string RefusalOfCut(const std::string& text, TicketKind kind) {
  CJobData settings;
  return RefusalOf(ApplyCutColor(settings, text, kind));
}

CJobData Scaled(const char* text) {
  CJobData settings;
  EXPECT_EQ(RefusalOf(ApplyScale(settings, text)), "");
  return settings;
}

CJobData Cut(const std::string& text, TicketKind kind = TicketKind::Print) {
  CJobData settings;
  EXPECT_EQ(RefusalOf(ApplyCutColor(settings, text, kind)), "");
  return settings;
}

CJobData Applied(std::vector<const char*> words, TicketKind kind = TicketKind::Print) {
  words.insert(words.begin(), {"rastrel", "print", "job.ps"});
  CJobData settings;
  const Invocation invocation = ParseArguments(static_cast<int>(words.size()), words.data());
  EXPECT_EQ(RefusalOf(ApplySettings(settings, invocation, kind)), "");
  return settings;
}

// Tickets on disk hold these numbers.
static_assert(prefix::ScaleNone == 0 && prefix::ScaleNamed == 1 && prefix::ScaleCustom == 2);
static_assert(prefix::CutterRgb == 0 && prefix::CutterCmyk == 1 && prefix::CutterNamed == 2);

using Color = std::array<std::int32_t, 4>;

TEST(ApplyScale, none_is_no_scaling) {
  CJobData settings;
  settings.ScaleMode = prefix::ScaleCustom;
  EXPECT_TRUE(ApplyScale(settings, "none"));
  EXPECT_EQ(settings.ScaleMode, prefix::ScaleNone);
}

TEST(ApplyScale, a_word_is_the_name_of_a_size_in_any_case) {
  for (const auto& [text, name] : {std::pair("Letter", L"Letter"), std::pair("A4", L"A4"),
                                   std::pair("a4", L"A4"), std::pair("TABLOID", L"Tabloid")}) {
    const CJobData settings = Scaled(text);
    EXPECT_EQ(settings.ScaleMode, prefix::ScaleNamed);
    EXPECT_EQ(settings.ScaleTarget, name);
  }
  EXPECT_EQ(Scaled("None").ScaleMode, prefix::ScaleNone);
}

TEST(ApplyScale, a_size_that_the_rip_does_not_know_is_refused_with_the_list) {
  EXPECT_EQ(
      RefusalOfScale("B9"),
      "--scale B9: no size has that name; there are none, Letter, Legal, Tabloid, A0, A1, A2, "
      "A3, A4 and A5, and sizes with a unit, as in 10x5in");
  for (const char* text : {"A6", "A", "Lette", "Letters", "x", "Roll-1.5_wide"})
    EXPECT_TRUE(RefusalOfScale(text).starts_with(std::string("--scale ") + text + ": no size"))
        << text;
}

// "/ConcinnaA4  8.268  11.693 //rip.sheet exec"
TEST(ApplyScale, knows_each_size_of_the_rips_prolog) {
  std::ifstream prolog(std::string(RASTREL_SOURCE_DIR) + "/share/rip/System/prolog/sections.ps");
  const std::string start = "/Concinna";
  int sizes = 0;
  for (std::string line; std::getline(prolog, line);) {
    if (!line.starts_with(start) || line.find("//rip.sheet exec") == line.npos) continue;
    const std::string name = line.substr(start.size(), line.find(' ') - start.size());
    EXPECT_EQ(RefusalOfScale(name), "");
    ++sizes;
  }
  EXPECT_EQ(sizes, 9);
}

TEST(ApplyScale, a_size_becomes_centimetres) {
  for (const char* text : {"10x5in", "25.4x12.7cm", "254x127mm"}) {
    const CJobData settings = Scaled(text);
    EXPECT_EQ(settings.ScaleMode, prefix::ScaleCustom) << text;
    EXPECT_NEAR(settings.ScaleWidthCm, 25.4, 1e-9) << text;
    EXPECT_NEAR(settings.ScaleHeightCm, 12.7, 1e-9) << text;
  }
}

TEST(ApplyScale, refuses_a_text_that_is_neither_a_size_nor_a_plain_name) {
  const std::vector<std::string> wrong = {
      "",        "10x5",    "10in",     "10x5x2in",   "x5in x",   "10x5ft",   "0x5in", "-1x5in",
      "1e3x5in", "10 x5in", "10x 5in",  "10xin",      "10xinfin", "10xnanin", "A4)",   "A 4",
      "A4/x",    "A4\nq",   "\xC3\xA9", "200000x1cm", "10,5x2cm", "+1x1cm",   "%"};
  for (const std::string& text : wrong) {
    EXPECT_TRUE(RefusalOfScale(text).starts_with("--scale " + os::CleanLine(text) + ": ")) << text;
  }
  EXPECT_NE(RefusalOfScale("10x5").find("cm, mm or in"), std::string::npos);
}

TEST(ParseLevels, takes_low_gamma_and_high) {
  const auto levels = ParseLevels("--levels", "10,1.2,250.5");
  ASSERT_TRUE(levels);
  EXPECT_EQ(levels->Low, 10.0);
  EXPECT_EQ(levels->Gamma, 1.2);
  EXPECT_EQ(levels->High, 250.5);
}

TEST(ParseLevels, refuses_other_numbers_and_says_which) {
  for (const char* text : {"", "1", "1,2", "1,2,3,4", "-1,1,255", "0,0,255", "0,1,256", "a,1,255",
                           "0,1,", "0, 1,255", "0,nan,255", "0,inf,255", "0,101,255"}) {
    EXPECT_TRUE(RefusalOf(ParseLevels("--levels-red", text)).starts_with("--levels-red ")) << text;
  }
  EXPECT_EQ(RefusalOf(ParseLevels("--levels", "0,101,255")),
            "--levels 0,101,255: '101' is no gamma from 0.01 to 100");
}

TEST(ApplySettings, levels_for_all_are_linked) {
  const CJobData settings = Applied({"--levels", "10,1.2,250"});
  EXPECT_TRUE(settings.LevelsEnabled);
  EXPECT_TRUE(settings.LevelsLinked);
  EXPECT_EQ(settings.Levels[0].Low, 10.0);
}

TEST(ApplySettings, levels_of_one_channel_leave_the_others_at_those_for_all) {
  const CJobData settings = Applied({"--levels-green", "1,2,3", "--levels", "10,1.2,250"});
  EXPECT_TRUE(settings.LevelsEnabled);
  EXPECT_FALSE(settings.LevelsLinked);
  for (const std::size_t index : {1U, 3U, 4U}) EXPECT_EQ(settings.Levels[index].Low, 10.0);
  EXPECT_EQ(settings.Levels[2].Low, 1.0);
  EXPECT_EQ(settings.Levels[2].Gamma, 2.0);
  EXPECT_EQ(settings.Levels[2].High, 3.0);
}

TEST(ApplySettings, each_channel_has_its_own_place) {
  const CJobData settings = Applied({"--levels-red", "1,1,255", "--levels-green", "2,1,255",
                                     "--levels-blue", "3,1,255", "--levels-gray", "4,1,255"});
  for (std::size_t index = 1; index < 5; ++index)
    EXPECT_EQ(settings.Levels[index].Low, static_cast<double>(index));
}

TEST(ApplySettings, nothing_given_changes_nothing) {
  const CJobData settings = Applied({});
  EXPECT_EQ(settings.ScaleMode, prefix::ScaleNone);
  EXPECT_FALSE(settings.LevelsEnabled);
  EXPECT_FALSE(settings.CutterEnabled);
}

TEST(ApplyCutColor, rgb_stays_on_the_scale_of_255) {
  for (const TicketKind kind : {TicketKind::Print, TicketKind::Preview}) {
    const CJobData settings = Cut("rgb:255,0,50%", kind);
    EXPECT_TRUE(settings.CutterEnabled);
    EXPECT_EQ(settings.CutterColorModel, prefix::CutterRgb);
    EXPECT_EQ(settings.CutterColor, Color({255, 0, 128, 0}));
  }
}

TEST(ApplyCutColor, cmyk_takes_the_scale_of_the_record) {
  const CJobData print = Cut("cmyk:0,127.5,50%,100%");
  EXPECT_EQ(print.CutterColorModel, prefix::CutterCmyk);
  EXPECT_EQ(print.CutterColor, Color({0, 128, 128, 255}));
  EXPECT_EQ(Cut("cmyk:0,127.5,50%,100%", TicketKind::Preview).CutterColor,
            Color({0, 500, 500, 1000}));
}

TEST(ApplyCutColor, a_spot_color_is_for_previews_only) {
  const CJobData preview = Cut("spot:Cut Contour: 1", TicketKind::Preview);
  EXPECT_EQ(preview.CutterColorModel, prefix::CutterNamed);
  EXPECT_EQ(preview.CutterSeparation, L"Cut Contour: 1");
  const std::string refusal = RefusalOfCut("spot:CutContour", TicketKind::Print);
  EXPECT_NE(refusal.find("for previews"), std::string::npos) << refusal;
}

TEST(ApplyCutColor, refuses_a_text_that_is_no_color_or_would_end_its_string) {
  for (const char* text : {"", "red", "rgb", "rgb:", "rgb:1,2", "rgb:1,2,3,4", "cmyk:1,2,3",
                           "rgb:256,0,0", "rgb:-1,0,0", "rgb:101%,0,0", "rgb:a,0,0", "rgb:%,0,0",
                           "RGB:1,2,3", "spot:", "spot:a)b", "spot:(a", "spot:a\\", "spot:a\nb"})
    EXPECT_TRUE(RefusalOfCut(text, TicketKind::Preview)
                    .starts_with("--cut-color " + os::CleanLine(text) + ": "))
        << text;
}

}  // namespace
}  // namespace rastrel::cli
