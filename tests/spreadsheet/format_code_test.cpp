// Numbers by their formats. The expected texts are what office programs show; the standard's own
// examples (ECMA-376 Part 1, 18.8.31) are among them.

#include "spreadsheet/format_code.h"

#include <gtest/gtest.h>

#include <limits>

#include "spreadsheet/decimal_digits.h"
#include "spreadsheet/iso_date.h"

namespace rastrel::test {
namespace {

using spreadsheet::BuiltInFormat;
using spreadsheet::DateSystem;
using spreadsheet::DecimalDigits;
using spreadsheet::FormatCode;
using spreadsheet::ShowGeneral;
using spreadsheet::ShowIsoDate;

struct Example {
  const char* code;
  double value;
  const char* shown;
};

void Check(std::initializer_list<Example> examples) {
  for (const Example& one : examples)
    EXPECT_EQ(FormatCode(one.code).ShowNumber(one.value, DateSystem::From1900), one.shown)
        << one.code << " of " << one.value;
}

TEST(ShowGeneral, gives_up_to_fifteen_digits_and_an_exponent_only_where_it_must) {
  const std::pair<double, const char*> examples[] = {
      {0, "0"},
      {-0.0, "0"},
      {1, "1"},
      {-1234.567, "-1234.567"},
      {0.1 + 0.2, "0.3"},
      {1.0 / 3, "0.333333333333333"},
      {2.0 / 3, "0.666666666666667"},
      {1e15, "1000000000000000"},
      {1e16, "1E+16"},
      {123456789012345678.0, "1.23456789012346E+17"},
      {1e-5, "0.00001"},
      {1e-9, "0.000000001"},
      {1.5e-10, "1.5E-10"},
      {-1e300, "-1E+300"},
      {5e-324, "4.94065645841247E-324"},
      {1234567890.123456, "1234567890.12346"},
  };
  for (const auto& [value, shown] : examples) EXPECT_EQ(ShowGeneral(value), shown);
}

TEST(DecimalDigits, rounds_halves_up_by_the_typed_digits) {
  const std::tuple<double, int, const char*, const char*> examples[] = {
      {2.675, 2, "2", "68"}, {1.005, 2, "1", "01"},  {0.5, 0, "1", ""},
      {0.4999, 0, "", ""},   {99.95, 1, "100", "0"}, {9.99, 0, "10", ""},
      {0.05, 1, "", "1"},    {0.04, 1, "", "0"},     {1e20, 1, "100000000000000000000", "0"},
      {0.06, 0, "", ""},
  };
  for (const auto& [value, places, integer, fraction] : examples) {
    DecimalDigits digits(value);
    digits.RoundTo(places);
    EXPECT_EQ(digits.Integer(), integer) << value;
    EXPECT_EQ(digits.Fraction(places), fraction) << value;
  }
}

TEST(FormatCode, shows_places_groups_and_percentages) {
  Check({{"0", 1234.567, "1235"},
         {"0", -0.001, "0"},
         {"0.00", -1.005, "-1.01"},
         {"#", 0, ""},
         {"#.##", 0.5, ".5"},
         {"0.###", 1.5, "1.5"},
         {"?0.0?", 1.5, " 1.5 "},
         {"#,##0", 1234567.891, "1,234,568"},
         {"#,##0", 999, "999"},
         {"0,000", 12, "0,012"},
         {"#,##0,", 1234567, "1,235"},
         {"0.0,,\"M\"", 1234567, "1.2M"},
         {"0%", 0.126, "13%"},
         {"0.00%", -0.001, "-0.10%"},
         {"00000", 12, "00012"},
         {"000-00-0000", 1234567.891, "001-23-4568"},
         {"# ##0", 1234567, "1234 567"},
         {".00", 1.5, "1.50"}});
}

TEST(FormatCode, shows_exponents) {
  Check({{"0.00E+00", 1234.567, "1.23E+03"},
         {"0.00E+00", 0.5, "5.00E-01"},
         {"0.0e-00", 1234.567, "1.2e03"},
         {"##0.0E+0", 0.5, "500.0E-3"},
         {"##0.0E+0", 1234567, "1.2E+6"},
         {"0.00E+000", 5, "5.00E+000"},
         {"0.0E+0", 9.99, "1.0E+1"},
         {"0E+0", 0, "0E+0"}});
}

TEST(FormatCode, shows_fractions) {
  Check({{"# ?/?", 0.5, " 1/2"},
         {"# ?/?", 1234.567, "1234 4/7"},
         {"# ?\?/?\?", 1234.567, "1234 55/97"},
         {"# ?\?/?\?", 0.5, "  1/2 "},
         {"# ??\?/??\?", 3.14159265, "3  16/113"},
         {"?/?", 1234.567, "8642/7"},
         {"# ?/8", 1234.567, "1234 5/8"},
         {"# ?/16", 1.3, "1 5/16"},
         {"#/#", 0.75, "3/4"},
         {"# ?/?", 0.99, "1    "},
         {"# ?/?", 0, "0    "},
         {"# ?/?", -0.5, "- 1/2"}});
}

TEST(FormatCode, shows_literals_and_currencies) {
  Check({{"[$\u20AC-407] #,##0.00", -1, "-\u20AC 1.00"},
         {"#,##0.00 [$\u20AC-1]", 3, "3.00 \u20AC"},
         {"[$-409]0", 3, "3"},
         {"\"x\"", -1, "x"},
         {"\\a0", -1, "-a1"},
         {"0 \"a\"\"b\"", 1, "1 ab"},
         {"General\" kg\"", -0.126, "-0.126 kg"},
         {"0_)", 5, "5 "},
         {"*x0", 5, "5"},
         {"0.00 \u20AC", 3, "3.00 \u20AC"},
         {"0 %", 0.5, "50 %"},
         {"0.00 \"%\"", 0.5, "0.50 %"}});
}

TEST(FormatCode, chooses_sections_by_sign_and_by_condition) {
  Check({{"#,##0.00_);(#,##0.00)", -1234.567, "(1,234.57)"},
         {"0;-0;\"zero\"", 0, "zero"},
         {"0;;", -1, ""},
         {";;;", 5, ""},
         {"+0;-0;0", 1, "+1"},
         {"$#,##0.00;[Red]-$#,##0.00", -1, "-$1.00"},
         {"[>=1000]0.0,\"K\";[<0]\"neg\" 0;0.00", 1234.567, "1.2K"},
         {"[>=1000]0.0,\"K\";[<0]\"neg\" 0;0.00", -1234.567, "neg 1235"},
         {"[>=1000]0.0,\"K\";[<0]\"neg\" 0;0.00", 0.5, "0.50"},
         {"[<=100]0;\"big\" 0", 100, "100"},
         {"[<=100]0;\"big\" 0", 101, "big 101"},
         {"[=1]\"one\";[=2]\"two\";0", 2, "two"},
         {"[Color 3]0.0", 1.25, "1.3"},
         {"_-* #,##0.00_-;-* #,##0.00_-;_-* \"-\"?\?_-;_-@_-", 0, " -   "}});
}

TEST(FormatCode, shows_dates) {
  Check({{"yyyy-mm-dd", 44197.9999999, "2021-01-01"},
         {"d mmm yyyy", 61, "1 Mar 1900"},
         {"dddd, mmmm dd, yyyy", 44197, "Friday, January 01, 2021"},
         {"mmmmm", 44197, "J"},
         {"ddd yy", 44197, "Fri 21"},
         {"yyyy\"\u5E74\"m\"\u6708\"", 44197, "2021\u5E741\u6708"},
         {"[$-409]mmmm d, yyyy;@", 44197, "January 1, 2021"},
         {"ddmmyy", 44197, "010121"},
         {"yyyy-mm-dd", 36585, "2000-02-29"},
         {"yyyy-mm-dd", 2958465, "9999-12-31"},
         {"yyyy-mm-dd", 2958466, "#####"},
         {"yyyy", 1e300, "#####"},
         {"yyyy-mm-dd", -1, "1899-12-29"}});
  EXPECT_EQ(FormatCode("yyyy-mm-dd").ShowNumber(0, DateSystem::From1904), "1904-01-01");
  EXPECT_EQ(FormatCode("yyyy-mm-dd").ShowNumber(42735, DateSystem::From1904), "2021-01-01");
}

TEST(FormatCode, shows_times_with_minutes_apart_from_months) {
  Check({{"h:mm", 0.75, "18:00"},
         {"h:mm AM/PM", 0, "12:00 AM"},
         {"h:mm AM/PM", 0.5, "12:00 PM"},
         {"h:mm A/P", 0.75, "6:00 P"},
         {"mm:ss", 44197.123456789, "57:46"},
         {"hh:mm:ss.000", 44197.123456789, "02:57:46.667"},
         {"mm:ss.0", 44197.9999999, "59:59.9"},
         {"m/d/yy h:mm", 44197.9999999, "1/2/21 0:00"},
         {"h", 0.999999, "23"},
         {"yyyymmddhhmmss", 44197.5, "20210101120000"},
         {"yyyy-mm-dd hh:mm", 44197.57291666666, "2021-01-01 13:45"},
         {"h\"h\"m\"m\"s", 0.75, "18h0m0"}});
}

TEST(FormatCode, shows_time_that_has_passed) {
  Check({{"[h]:mm", 1.5, "36:00"},
         {"[hh]:mm:ss", 1.1, "26:24:00"},
         {"[mm]:ss", 1, "1440:00"},
         {"[ss]", 0.75, "64800"},
         {"[h]:mm:ss", -0.5, "-12:00:00"},
         {"[h]:mm", 0.999999, "24:00"}});
}

TEST(FormatCode, shows_texts) {
  EXPECT_EQ(FormatCode("0.00").ShowText("a"), "a");
  EXPECT_EQ(FormatCode("\"t:\"@").ShowText("a"), "t:a");
  EXPECT_EQ(FormatCode("0;0;0;\"T \"@\" end\"").ShowText("a"), "T a end");
  EXPECT_EQ(FormatCode(";;;").ShowText("a"), "");
  EXPECT_EQ(FormatCode("@").ShowNumber(-1.5, DateSystem::From1900), "-1.5");
}

TEST(FormatCode, reads_anything) {
  const std::string letters = "0#?.,;%/E+-@\"\\_*[]<>=$hmsydAP:General 5x";
  for (std::size_t begin = 0; begin < letters.size(); ++begin)
    for (std::size_t size = 0; begin + size <= letters.size(); ++size) {
      const FormatCode code(letters.substr(begin, size));
      for (const double value : {0.0, -1.5, 1e300, 5e-324, 44197.5})
        static_cast<void>(code.ShowNumber(value, DateSystem::From1904));
      EXPECT_EQ(code.ShowNumber(std::numeric_limits<double>::infinity(), DateSystem::From1900),
                "#NUM!");
    }
}

TEST(BuiltInFormat, has_the_codes_of_the_standard) {
  EXPECT_EQ(BuiltInFormat(0), "General");
  EXPECT_EQ(BuiltInFormat(4), "#,##0.00");
  EXPECT_EQ(BuiltInFormat(14), "m/d/yyyy");
  EXPECT_EQ(BuiltInFormat(46), "[h]:mm:ss");
  EXPECT_EQ(BuiltInFormat(49), "@");
  EXPECT_EQ(BuiltInFormat(31), "m/d/yyyy");
  EXPECT_EQ(BuiltInFormat(33), "h:mm:ss");
  EXPECT_EQ(BuiltInFormat(23), "General");
  EXPECT_EQ(BuiltInFormat(-1), "General");
}

TEST(ShowIsoDate, shows_dates_by_formats_of_dates_only) {
  const FormatCode date("d/m/yyyy h:mm");
  EXPECT_EQ(ShowIsoDate("2021-03-01T12:30:00Z", date, DateSystem::From1900), "1/3/2021 12:30");
  EXPECT_EQ(ShowIsoDate("2021-03-01", date, DateSystem::From1904), "1/3/2021 0:00");
  EXPECT_EQ(ShowIsoDate("2021-03-01", FormatCode(), DateSystem::From1900), "2021-03-01");
  for (const char* text : {"", "2021", "2021-13-01", "2021-02-30", "2021-03-01X",
                           "2021-03-01T25:00", "99999999999-01-01", "abcd-ef-gh"})
    EXPECT_EQ(ShowIsoDate(text, date, DateSystem::From1900), text);
}

}  // namespace
}  // namespace rastrel::test
