#include "rastrel/conversion/cut_data.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "rastrel/platform/values/stream.h"
#include "tests/support/archive_bytes.h"
#include "tests/support/comma_locale.h"

using rastrel::test::Bytes;
using rastrel::test::Hex;
using rastrel::test::Joined;

namespace {

CPS2CutData WithRgb(double r, double g, double b) {
  CPS2CutData cut;
  cut.enabled = 1;
  cut.color.SetColor(r, g, b, COLORSPACE_RGB);
  return cut;
}

CPS2CutData WithCmyk(double c, double m, double y, double k) {
  CPS2CutData cut;
  cut.enabled = 1;
  cut.colorKind = CutColorCmyk;
  cut.color.SetColor(c, m, y, k, COLORSPACE_CMYK);
  return cut;
}

CPS2CutData WithName(const wchar_t* name) {
  CPS2CutData cut;
  cut.enabled = 1;
  cut.colorKind = CutColorNamed;
  cut.color.SetColorName(name);
  return cut;
}

Bytes Saved(const CPS2CutData& cut) {
  CMemFile file;
  CStream stream(&file);
  EXPECT_EQ(cut.Save(&stream), 1);
  stream.Flush();
  return file.Bytes();
}

bool Same(const CPS2CutData& one, const CPS2CutData& other) {
  return one.resolution == other.resolution && one.colorKind == other.colorKind &&
         one.enabled == other.enabled && one.color == other.color;
}

// Keeps each text that is written through WritePostscript apart.
class RecordingStream : public CStream {
 public:
  RecordingStream() : CStream(&m_File) {}
  int WritePostscript(const wchar_t* text) override {
    m_Texts.emplace_back(text);
    return 1;
  }
  std::vector<std::wstring> m_Texts;

 private:
  CMemFile m_File;
};

std::vector<std::wstring> Override(const CPS2CutData& cut) {
  RecordingStream stream;
  cut.PutCutterOverride(&stream);
  return stream.m_Texts;
}

std::wstring Selection(const CPS2CutData& cut) { return Override(cut).at(3); }

// The color of the golden bytes: RGB black without a name.
const char* const BlackBytes =
    "01 00 00 00  00 00 00 00  00 00 00 00  00 00 00 00 "
    "00 00 00 00 00 00 00 00  00 00 00 00 00 00 00 00 "
    "00 00 00 00 00 00 00 00  00 00 00 00 00 00 00 00  00 00 00 00";

TEST(CPS2CutData, a_fresh_record_has_72_dots_rgb_black_and_no_cut_line) {
  const CPS2CutData cut;
  EXPECT_EQ(cut.resolution, 72);
  EXPECT_EQ(cut.colorKind, 0);
  EXPECT_EQ(cut.enabled, 0);
  EXPECT_EQ(cut.color, CVKFullColor(0, 1, 0, 0));
}

TEST(CPS2CutData, assigning_a_record_to_itself_changes_nothing) {
  CPS2CutData cut = WithName(L"Cut");
  const CPS2CutData& same = cut;
  cut = same;
  EXPECT_TRUE(Same(cut, WithName(L"Cut")));
}

TEST(CPS2CutData, is_saved_as_version_block_length_three_numbers_and_the_color) {
  CPS2CutData cut;
  cut.resolution = 300;
  cut.colorKind = -1;
  cut.enabled = 1;
  EXPECT_EQ(Saved(cut), Joined({Hex("00 00 00 00  40 00 00 00 00 00 00 00"),
                                Hex("2C 01 00 00  FF FF FF FF  01 00 00 00"), Hex(BlackBytes)}));
}

TEST(CPS2CutData, comes_back_as_it_was_saved) {
  CPS2CutData extreme;
  extreme.resolution = std::numeric_limits<std::int32_t>::min();
  extreme.colorKind = std::numeric_limits<std::int32_t>::max();
  for (const CPS2CutData& cut : {CPS2CutData(), WithRgb(1, 2, 3), WithCmyk(0, 1, 1, 0),
                                 WithName(L"Schnitt \u00fc"), extreme}) {
    CMemFile file(Joined({Saved(cut), Saved(cut)}));
    CStream stream(&file);
    for (int round = 0; round < 2; ++round) {
      CPS2CutData back;
      EXPECT_EQ(back.Load(&stream), 1);
      EXPECT_TRUE(Same(back, cut));
    }
  }
}

TEST(CPS2CutData, bytes_that_a_later_writer_appended_to_the_block_are_passed_over) {
  const Bytes later =
      Joined({Hex("31 00 00 00  44 00 00 00 00 00 00 00"),
              Hex("2C 01 00 00  01 00 00 00  01 00 00 00"), Hex(BlackBytes), Hex("DE AD BE EF")});
  CMemFile file(Joined({later, Saved(WithRgb(1, 2, 3))}));
  CStream stream(&file);
  CPS2CutData cut;
  EXPECT_EQ(cut.Load(&stream), 1) << "version 49";
  EXPECT_EQ(cut.resolution, 300);
  EXPECT_EQ(cut.colorKind, 1);
  EXPECT_EQ(cut.Load(&stream), 1);
  EXPECT_TRUE(Same(cut, WithRgb(1, 2, 3))) << "the next record reads correctly";
}

TEST(CPS2CutData, a_record_of_version_50_is_passed_over_and_changes_nothing) {
  for (const char* version : {"32 00 00 00", "33 00 00 00", "FF FF FF FF"}) {
    CMemFile file(
        Joined({Hex(version), Hex("03 00 00 00 00 00 00 00 01 02 03"), Saved(WithName(L"Next"))}));
    CStream stream(&file);
    CPS2CutData cut = WithCmyk(0.1, 0.2, 0.3, 0.4);
    EXPECT_EQ(cut.Load(&stream), 1);
    EXPECT_TRUE(Same(cut, WithCmyk(0.1, 0.2, 0.3, 0.4)));
    EXPECT_EQ(cut.Load(&stream), 1);
    EXPECT_TRUE(Same(cut, WithName(L"Next")));
  }
}

TEST(CPS2CutData, a_block_shorter_than_its_fields_is_read_on) {
  Bytes bytes = Saved(WithRgb(1, 2, 3));
  bytes[4] = 4;  // the block ends after the resolution
  CMemFile file(Joined({bytes, Hex("07 00 00 00")}));
  CStream stream(&file);
  CPS2CutData cut;
  EXPECT_EQ(cut.Load(&stream), 1);
  EXPECT_TRUE(Same(cut, WithRgb(1, 2, 3)));
  EXPECT_EQ(stream.ReadUInt32(), 7U) << "nothing is passed over";
}

TEST(CPS2CutData, an_unknown_color_is_the_result_and_the_rest_is_taken) {
  Bytes bytes = Saved(WithRgb(1, 2, 3));
  bytes[24] = 2;  // the color's space
  CMemFile file(Joined({bytes, Hex("07 00 00 00")}));
  CStream stream(&file);
  CPS2CutData cut = WithName(L"Old");
  EXPECT_EQ(cut.Load(&stream), 0);
  EXPECT_EQ(cut.colorKind, CutColorRgb);
  EXPECT_EQ(cut.color, WithName(L"Old").color);
  EXPECT_EQ(stream.ReadUInt32(), 7U);
}

TEST(CPS2CutData, cut_at_any_byte_raises_and_stays_as_it_was) {
  const Bytes whole = Saved(WithName(L"Cut"));
  for (std::size_t length = 0; length < whole.size(); ++length) {
    CMemFile file(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
    CStream stream(&file);
    CPS2CutData cut = WithRgb(1, 2, 3);
    EXPECT_THROW(cut.Load(&stream), CStreamException) << length;
    EXPECT_TRUE(Same(cut, WithRgb(1, 2, 3))) << length;
  }
}

TEST(CPS2CutData, a_file_that_is_full_raises_when_saved_records_reach_it) {
  class FullFile : public CFile {
    bool Write(const void*, unsigned) override { return false; }
  } file;
  CStream stream(&file);
  CPS2CutData().Save(&stream);
  EXPECT_THROW(stream.Flush(), CStreamException);
}

TEST(CutterOverride, of_a_fresh_record_is_nothing_at_all) {
  EXPECT_EQ(Override(CPS2CutData()), std::vector<std::wstring>());
}

TEST(CutterOverride, is_seven_texts_with_single_percent_signs_doubled_only_for_comments) {
  EXPECT_EQ(Override(WithRgb(255, 128, 0)),
            (std::vector<std::wstring>{
                L"\n% -- Cutter --\n", L"%\n", L"[{\r\n%%BeginFeature: RIP Cutter\r\n",
                L"mark false 1.000 0.502 0.000 /DeviceRGB $stripcontour\r\n", L"%%EndFeature\r\n",
                L"} stopped cleartomark\r\n", L"% -- End of $setcutter Override --\r\n"}));
}

TEST(CutterOverride, has_four_decimals_and_two_blanks_for_cmyk) {
  EXPECT_EQ(Selection(WithCmyk(0, 1, 1, 0)),
            L"mark false 0.0000 1.0000 1.0000 0.0000  /DeviceCMYK $stripcontour\r\n");
}

TEST(CutterOverride, names_a_separation_unescaped) {
  EXPECT_EQ(Selection(WithName(L"Cut (2)%")),
            L"mark false (Cut (2)%) /Separation $stripcontour\r\n");
}

TEST(CutterOverride, of_a_named_color_without_a_name_only_sets_the_cutter) {
  EXPECT_EQ(Selection(WithName(L"")), L"mark false $setcutter\r\n");
}

TEST(CutterOverride, of_any_other_kind_strips_without_a_color) {
  for (const std::int32_t kind : {-1, 3, 1000}) {
    CPS2CutData cut = WithRgb(1, 2, 3);
    cut.colorKind = kind;
    EXPECT_EQ(Selection(cut), L"mark false $stripcontour\r\n");
  }
}

TEST(CutterOverride, knows_no_locale) {
  const rastrel::test::CommaLocale locale;
  EXPECT_EQ(Selection(WithRgb(255, 128, 0)),
            L"mark false 1.000 0.502 0.000 /DeviceRGB $stripcontour\r\n");
}

TEST(IsColorMatchKVI, rgb_prints_three_decimals_with_two_blanks_between) {
  const CPS2CutData cut = WithRgb(255, 128, 0);
  EXPECT_TRUE(cut.IsColorMatchKVI(L"RGB: 1.000  0.502  0.000"));
  EXPECT_FALSE(cut.IsColorMatchKVI(L"RGB: 1.000 0.502 0.000"));
  EXPECT_FALSE(cut.IsColorMatchKVI(L"RGB: 1.000  0.503  0.000"));
  EXPECT_FALSE(cut.IsColorMatchKVI(L"rgb: 1.000  0.502  0.000"));
}

TEST(IsColorMatchKVI, colors_match_if_and_only_if_they_print_alike) {
  EXPECT_TRUE(WithRgb(128, 0, 0).IsColorMatchKVI(L"RGB: 0.502  0.000  0.000"));
  EXPECT_TRUE(WithRgb(128.1, 0, 0).IsColorMatchKVI(L"RGB: 0.502  0.000  0.000"));
  EXPECT_FALSE(WithRgb(128.2, 0, 0).IsColorMatchKVI(L"RGB: 0.502  0.000  0.000"));
}

TEST(IsColorMatchKVI, cmyk_prints_four_decimals) {
  EXPECT_TRUE(WithCmyk(0, 1, 0.12345, 0).IsColorMatchKVI(L"CMYK: 0.0000  1.0000  0.1235  0.0000"));
  EXPECT_FALSE(WithCmyk(0, 1, 0.12345, 0).IsColorMatchKVI(L"CMYK: 0.000  1.000  0.123  0.000"));
}

TEST(IsColorMatchKVI, a_named_color_is_compared_case_and_all) {
  EXPECT_TRUE(WithName(L"CutContour").IsColorMatchKVI(L"CutContour"));
  EXPECT_FALSE(WithName(L"CutContour").IsColorMatchKVI(L"Cutcontour"));
}

TEST(IsColorMatchKVI, a_named_color_without_a_name_and_any_other_kind_match_the_empty_text) {
  EXPECT_TRUE(WithName(L"").IsColorMatchKVI(L""));
  EXPECT_FALSE(WithName(L"").IsColorMatchKVI(L"CutContour"));
  CPS2CutData cut = WithRgb(1, 2, 3);
  cut.colorKind = 7;
  EXPECT_TRUE(cut.IsColorMatchKVI(L""));
  EXPECT_FALSE(cut.IsColorMatchKVI(L"RGB: 0.004  0.008  0.012"));
}

TEST(IsColorMatchKVI, does_not_look_at_whether_a_cut_line_is_wanted) {
  CPS2CutData cut = WithRgb(255, 0, 0);
  cut.enabled = 0;
  EXPECT_TRUE(cut.IsColorMatchKVI(L"RGB: 1.000  0.000  0.000"));
}

}  // namespace
