// The sections by themselves, with settings at their limits.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "rastrel/prefix/cutter.h"
#include "rastrel/prefix/preview_sections.h"
#include "rastrel/prefix/scaling.h"

namespace {

using namespace rastrel::prefix;

bool Holds(const std::wstring& text, const std::wstring& part) {
  return text.find(part) != std::wstring::npos;
}

CJobData Scaled(int mode) {
  CJobData settings;
  settings.ScaleMode = mode;
  return settings;
}

CJobData Cut(int model, std::array<std::int32_t, 4> color) {
  CJobData settings;
  settings.CutterEnabled = true;
  settings.CutterColorModel = model;
  settings.CutterColor = color;
  settings.CutterSeparation = L"CutContour";
  return settings;
}

TEST(ScalingSection, an_unknown_mode_leaves_the_frame_empty) {
  const std::wstring frame =
      L"\n% -- Scaling Override --\n"
      L"userdict /SetScaleTarget known {\n"
      L"} if\n"
      L"\n";
  for (const int mode : {3, -1, 4, 2147483647, -2147483647 - 1})
    EXPECT_EQ(frame, ScalingSection(Scaled(mode))) << mode;
}

TEST(ScalingSection, no_mode_has_a_percent_line_under_the_heading) {
  for (int mode = 0; mode < 4; ++mode)
    EXPECT_TRUE(
        ScalingSection(Scaled(mode))
            .starts_with(L"\n% -- Scaling Override --\nuserdict /SetScaleTarget known {\n"));
}

TEST(ScalingSection, the_comment_has_width_first_and_the_box_height_first) {
  CJobData settings = Scaled(2);
  settings.ScaleWidthCm = 25.4;
  settings.ScaleHeightCm = 12.7;
  const std::wstring text = ScalingSection(settings);
  EXPECT_TRUE(Holds(text, L"\n% User Selections >> Width: 10.000  Height: 5.000 inches\n"));
  EXPECT_TRUE(Holds(text, L"\n      /BBoxInches [ 0.0 5.000 10.000 0.0 ] def\n"));
}

TEST(ScalingSection, a_targets_name_follows_its_word_without_a_blank) {
  CJobData settings = Scaled(1);
  EXPECT_TRUE(Holds(ScalingSection(settings), L"\n  /Concinna SetScaleTarget\n"));
  settings.ScaleTarget = L"Letter";
  EXPECT_TRUE(Holds(ScalingSection(settings),
                    L"\n  /ConcinnaLetter SetScaleTarget\n  true SetAspectPolicy\n} if\n\n"));
}

TEST(CutterSection, a_cutter_that_is_off_ignores_model_and_components) {
  CJobData settings;
  const std::wstring off = CutterSection(settings);
  EXPECT_TRUE(Holds(off, L"\n%\nfalse $setcutter\n\n% Disable $setcutter\n"));
  for (const int model : {0, 1, 2, 7}) {
    settings = Cut(model, {1, 2, 3, 4});
    settings.CutterEnabled = false;
    EXPECT_EQ(off, CutterSection(settings)) << model;
  }
}

TEST(CutterSection, every_model_but_1_is_rgb) {
  const std::wstring line = L"\nfalse 1.000 0.000 0.000 /DeviceRGB $setcutter\n\n";
  for (const int model : {0, 2, 3, -1})
    EXPECT_TRUE(Holds(CutterSection(Cut(model, {255, 0, 0, 9})), line)) << model;
  EXPECT_FALSE(Holds(CutterSection(Cut(1, {255, 0, 0, 9})), L"DeviceRGB"));
}

TEST(CutterSection, cmyk_has_four_decimals_on_a_scale_of_255) {
  EXPECT_TRUE(Holds(CutterSection(Cut(1, {0, 128, 0, 0})),
                    L"\nfalse 0.0000 0.5020 0.0000 0.0000 /DeviceCMYK $setcutter\n\n"));
}

TEST(CutDataSection, cmyk_stands_on_a_scale_of_1000) {
  EXPECT_TRUE(
      Holds(CutDataSection(Cut(1, {500, 0, 1000, 1})),
            L"\nmark 0.5000 0.0000 1.0000 0.0010 [1 0 0 1 0 0] /DeviceCMYK $setcutter\n\n"));
}

TEST(CutDataSection, rgb_needs_model_0_and_other_models_cut_nothing) {
  EXPECT_TRUE(Holds(CutDataSection(Cut(0, {255, 0, 51, 0})),
                    L"\nmark 1.000 0.000 0.200 [1 0 0 1 0 0] /DeviceRGB $setcutter\n\n"));
  for (const int model : {3, -1, 255})
    EXPECT_TRUE(Holds(CutDataSection(Cut(model, {255, 0, 51, 0})),
                      L"\n%\nmark false $setcutter\n\n% Disable"))
        << model;
}

TEST(CutDataSection, a_separation_needs_a_name) {
  CJobData settings = Cut(2, {});
  EXPECT_TRUE(Holds(CutDataSection(settings),
                    L"\nmark [1 0 0 1 0 0] (CutContour) /Separation $setcutter\n\n"));
  settings.CutterSeparation = L"";
  EXPECT_TRUE(Holds(CutDataSection(settings), L"\n%\nmark false $setcutter\n\n% Disable"));
}

TEST(CutDataSection, keeps_no_alias_of_the_old_operator) {
  const std::wstring text = CutDataSection(CJobData());
  EXPECT_FALSE(Holds(text, L"$setcutter$"));
  EXPECT_TRUE(Holds(text, L"\nuserdict/$setcutter {cleartomark}put\n"));
}

TEST(PreviewHeader, names_the_resolution_once_for_both_axes) {
  EXPECT_EQ(PreviewHeader(72),
            L"\n% PS header for TIF preview.\n"
            L"8 SetBPS    % 8 bits per pixel.\n"
            L"3Color      % 3Color = RGB\n"
            L"72 dup SetXYResolution \n");
}

}  // namespace
