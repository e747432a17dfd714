#include "rastrel/conversion/job_header_writer.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/support/comma_locale.h"
#include "tests/support/scratch_directory.h"
#include "tests/support/test_host.h"

using rastrel::conversion::JobHeaderText;
using rastrel::conversion::WriteJobHeader;
using rastrel::test::ScratchDirectory;
using rastrel::test::TestHost;

namespace {

const std::wstring Begin =
    L"%#Velumark Header 2.0\r\n%#Begin Job: 0\r\n%# Title: MyJob\r\n%#Type=Print\r\n";
const std::wstring End = L"%#End Job\r\n";
const std::wstring Flatness10 = L"%# KVI_Setflat= 10\r\n";

CPS2CutData Cut(std::int32_t kind) {
  CPS2CutData cut;
  cut.enabled = 1;
  cut.colorKind = kind;
  return cut;
}

CPS2CutData Red() {
  CPS2CutData cut = Cut(CutColorRgb);
  cut.color.SetColor(255.0, 0.0, 0.0, COLORSPACE_RGB);
  return cut;
}

// The lines between those that are always there.
std::wstring Middle(const PageSize* page, const CPS2CutData& cut, const CPS2CutData& halfCut,
                    const int* resolution) {
  const std::wstring text = JobHeaderText(page, &cut, &halfCut, resolution);
  EXPECT_TRUE(text.starts_with(Begin));
  EXPECT_TRUE(text.ends_with(End));
  return text.substr(Begin.size(), text.size() - Begin.size() - End.size());
}

std::wstring CutLines(const CPS2CutData& cut, const CPS2CutData& halfCut = CPS2CutData()) {
  return Middle(nullptr, cut, halfCut, nullptr);
}

class JobHeader : public ::testing::Test {
 protected:
  TestHost m_Host;
};

TEST_F(JobHeader, without_anything_is_five_lines) { EXPECT_EQ(CutLines(CPS2CutData()), L""); }

TEST_F(JobHeader, has_no_cut_line_and_no_flatness_if_neither_record_is_enabled) {
  const int resolution = 72;
  CPS2CutData off = Red();
  off.enabled = 0;
  EXPECT_EQ(Middle(nullptr, off, off, &resolution), L"%# KVI_Res= 72\r\n");
}

TEST_F(JobHeader, has_the_page_in_points_width_first) {
  const PageSize page{.height = 29.7, .width = 21};
  EXPECT_EQ(Middle(&page, CPS2CutData(), CPS2CutData(), nullptr),
            L"%#PageSize=Custom,595.275591,841.889764\r\n");
}

TEST_F(JobHeader, has_a_page_of_no_size_as_it_is) {
  const PageSize page;
  EXPECT_EQ(Middle(&page, CPS2CutData(), CPS2CutData(), nullptr),
            L"%#PageSize=Custom,0.000000,0.000000\r\n");
}

TEST_F(JobHeader, has_no_resolution_below_1) {
  for (const int none : {0, -1, std::numeric_limits<int>::min()})
    EXPECT_EQ(Middle(nullptr, CPS2CutData(), CPS2CutData(), &none), L"");
  const int least = 1;
  EXPECT_EQ(Middle(nullptr, CPS2CutData(), CPS2CutData(), &least), L"%# KVI_Res= 1\r\n");
}

TEST_F(JobHeader, has_red_green_and_blue_with_three_decimals) {
  CPS2CutData cut = Red();
  cut.color.SetColor(255.0, 128.0, 0.0, COLORSPACE_RGB);
  EXPECT_EQ(CutLines(cut), L"%# KVI_CutLine= RGB, 1.000, 0.502, 0.000\r\n" + Flatness10);
}

TEST_F(JobHeader, has_inks_with_four_decimals) {
  CPS2CutData cut = Cut(CutColorCmyk);
  cut.color.SetColor(0.0, 1.0, 0.3333333, 0.0, COLORSPACE_CMYK);
  EXPECT_EQ(CutLines(cut),
            L"%# KVI_CutLine= CMYK, 0.0000, 1.0000, 0.3333, 0.0000\r\n" + Flatness10);
}

TEST_F(JobHeader, has_the_name_of_a_separation_as_it_stands) {
  CPS2CutData cut = Cut(CutColorNamed);
  cut.color.SetColorName(L"Cut %s, 2");
  EXPECT_EQ(CutLines(cut), L"%# KVI_CutLine= SEP, Cut %s, 2\r\n" + Flatness10);
}

TEST_F(JobHeader, has_no_cut_line_for_a_named_color_without_a_name_but_its_flatness) {
  EXPECT_EQ(CutLines(Cut(CutColorNamed)), Flatness10);
}

TEST_F(JobHeader, has_no_cut_line_for_any_other_kind_but_its_flatness) {
  EXPECT_EQ(CutLines(Cut(3)), Flatness10);
  EXPECT_EQ(CutLines(Cut(-1)), Flatness10);
}

TEST_F(JobHeader, has_the_cut_line_before_the_half_cut_line_and_one_flatness) {
  CPS2CutData half = Cut(CutColorNamed);
  half.color.SetColorName(L"Half");
  EXPECT_EQ(
      CutLines(Red(), half),
      L"%# KVI_CutLine= RGB, 1.000, 0.000, 0.000\r\n%# KVI_CutLine= SEP, Half\r\n" + Flatness10);
  EXPECT_EQ(CutLines(CPS2CutData(), half), L"%# KVI_CutLine= SEP, Half\r\n" + Flatness10);
}

TEST_F(JobHeader, takes_the_flatness_from_the_setting) {
  m_Host.m_Settings[{L"RASTREL", L"Flatness"}] = L"3";
  EXPECT_TRUE(CutLines(Red()).ends_with(L"%# KVI_Setflat= 3\r\n"));
}

TEST_F(JobHeader, has_an_empty_flatness_if_the_setting_is_empty) {
  m_Host.m_Settings[{L"RASTREL", L"Flatness"}] = L"";
  EXPECT_TRUE(CutLines(Red()).ends_with(L"%# KVI_Setflat= \r\n"));
}

TEST_F(JobHeader, cuts_the_flatness_to_seven_characters) {
  const std::pair<const wchar_t*, const wchar_t*> rows[] = {
      {L"123456", L"123456"}, {L"1234567", L"1234567"}, {L"12345678", L"1234567"}};
  for (const auto& [setting, written] : rows) {
    m_Host.m_Settings[{L"RASTREL", L"Flatness"}] = setting;
    EXPECT_TRUE(CutLines(Red()).ends_with(L"%# KVI_Setflat= " + std::wstring(written) + L"\r\n"));
  }
}

TEST_F(JobHeader, does_not_read_the_flatness_where_there_is_no_cut_line) {
  bool read = false;
  m_Host.m_OnRead = [&read] { read = true; };
  CutLines(CPS2CutData());
  EXPECT_FALSE(read);
}

TEST_F(JobHeader, knows_no_locale) {
  const rastrel::test::CommaLocale locale;
  const PageSize page{.height = 2.54, .width = 1.27};
  EXPECT_EQ(Middle(&page, CPS2CutData(), CPS2CutData(), nullptr),
            L"%#PageSize=Custom,36.000000,72.000000\r\n");
}

TEST_F(JobHeader, stands_in_front_of_the_file_byte_for_byte) {
  const ScratchDirectory directory;
  directory.Write("sign.ps", "%!PS\nshowpage\n");
  const PageSize page{.height = 2.54, .width = 5.08};
  const CPS2CutData cut = Red();
  const CPS2CutData none;
  const int resolution = 300;
  EXPECT_TRUE(WriteJobHeader(directory.Wide("sign.ps").c_str(), &page, &cut, &none, &resolution));
  EXPECT_EQ(directory.Read("sign.ps"),
            "%#Velumark Header 2.0\r\n"
            "%#Begin Job: 0\r\n"
            "%# Title: MyJob\r\n"
            "%#Type=Print\r\n"
            "%#PageSize=Custom,144.000000,72.000000\r\n"
            "%# KVI_Res= 300\r\n"
            "%# KVI_CutLine= RGB, 1.000, 0.000, 0.000\r\n"
            "%# KVI_Setflat= 10\r\n"
            "%#End Job\r\n"
            "%!PS\nshowpage\n");
}

TEST_F(JobHeader, of_a_missing_file_is_not_written) {
  const ScratchDirectory directory;
  const CPS2CutData none;
  EXPECT_FALSE(WriteJobHeader(directory.Wide("none.ps").c_str(), nullptr, &none, &none, nullptr));
}

}  // namespace
