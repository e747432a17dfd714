#include "rastrel/imports/font_type.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct Answer {
  int type;
  std::wstring name;  ///< the rest of the name
  bool operator==(const Answer&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Answer& answer) {
  return out << answer.type << ' ' << std::string(answer.name.begin(), answer.name.end());
}

using rastrel::imports::FontTable;

Answer TypeOf(std::wstring name, FontTable table = FontTable::Plates) {
  const int type = rastrel::imports::FontTypeOf(name.data(), table);
  return {type, name.c_str()};
}

TEST(FontTypeOf, knows_the_extensions_of_font_files_and_cuts_them_off) {
  const std::pair<const wchar_t*, int> extensions[] = {
      {L"ttf", 2},  {L"otf", 2},  {L"pfb", 3},  {L"wfn", 0},  {L"vef", 1},
      {L"fnt", 5},  {L"clf", 6},  {L"be", 7},   {L"fon", 8},  {L"cff", 9},
      {L"ft9", 10}, {L"shx", 13}, {L"chr", 15}, {L"f3s", 15}, {L"1c", 14}};
  for (const auto& [extension, type] : extensions)
    EXPECT_EQ(TypeOf(std::wstring(L"Roman Bold.") + extension), (Answer{type, L"Roman Bold"}));
}

TEST(FontTypeOf, compares_the_beginning_of_an_extension_only) {
  EXPECT_EQ(TypeOf(L"a.shxyz"), (Answer{13, L"a"}));
  EXPECT_EQ(TypeOf(L"a.bee"), (Answer{7, L"a"}));
  EXPECT_EQ(TypeOf(L"a.1cx"), (Answer{14, L"a"}));
  EXPECT_EQ(TypeOf(L"a.sh"), (Answer{2, L"a"}));
  EXPECT_EQ(TypeOf(L"a.b"), (Answer{2, L"a"}));
}

TEST(FontTypeOf, compares_by_case) {
  EXPECT_EQ(TypeOf(L"a.SHX"), (Answer{2, L"a"}));
  EXPECT_EQ(TypeOf(L"a.Pfb"), (Answer{2, L"a"}));
}

TEST(FontTypeOf, takes_a_name_without_a_dot_whole_with_type_2) {
  EXPECT_EQ(TypeOf(L"shx"), (Answer{2, L"shx"}));
  EXPECT_EQ(TypeOf(L""), (Answer{2, L""}));
}

TEST(FontTypeOf, cuts_at_the_last_dot_also_before_unknown_extensions) {
  EXPECT_EQ(TypeOf(L"a.shx.fnt"), (Answer{5, L"a.shx"}));
  EXPECT_EQ(TypeOf(L"St. Louis"), (Answer{2, L"St"}));
  EXPECT_EQ(TypeOf(L".pfb"), (Answer{3, L""}));
  EXPECT_EQ(TypeOf(L"a."), (Answer{2, L"a"}));
}

TEST(FontTypeOf, case_does_not_count_in_a_cr2_but_for_chr_and_f3s) {
  const std::pair<const wchar_t*, int> extensions[] = {
      {L"TTF", 2}, {L"Pfb", 3},  {L"WFN", 0},  {L"vEf", 1},  {L"FNT", 5},  {L"CLF", 6},
      {L"BE", 7},  {L"FON", 8},  {L"CFF", 9},  {L"Ft9", 10}, {L"SHX", 13}, {L"1C", 14},
      {L"1c", 14}, {L"chr", 15}, {L"f3s", 15}, {L"CHR", 2},  {L"F3S", 2},  {L"SHXY", 13}};
  for (const auto& [extension, type] : extensions)
    EXPECT_EQ(TypeOf(std::wstring(L"Roman.") + extension, FontTable::Cr2),
              (Answer{type, L"Roman"}));
}

TEST(FontTypeOf, a_zml_has_another_type_for_cff_and_knows_no_chr_f3s_and_1c) {
  const std::pair<const wchar_t*, int> extensions[] = {
      {L"cff", 14}, {L"CFF", 14}, {L"chr", 2}, {L"f3s", 2},  {L"1c", 2}, {L"CHR", 2},
      {L"shx", 13}, {L"SHX", 13}, {L"pfb", 3}, {L"ft9", 10}, {L"be", 7}, {L"Fon", 8}};
  for (const auto& [extension, type] : extensions)
    EXPECT_EQ(TypeOf(std::wstring(L"Roman.") + extension, FontTable::Zml),
              (Answer{type, L"Roman"}));
}

TEST(FontTypeOf, names_without_a_dot_and_with_two_are_cut_alike_in_every_format) {
  for (const FontTable table : {FontTable::Cr2, FontTable::Zml}) {
    EXPECT_EQ(TypeOf(L"SHX", table), (Answer{2, L"SHX"}));
    EXPECT_EQ(TypeOf(L"a.SHX.Fnt", table), (Answer{5, L"a.SHX"}));
  }
}

}  // namespace
