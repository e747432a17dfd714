#include "rastrel/readers/finger_size.h"

#include <gtest/gtest.h>

#include "tests/support/comma_locale.h"

namespace {

using rastrel::readers::SatisfiesFingerSizeRule;

TEST(FingerSizeRule, less_and_greater_leave_the_number_itself_out) {
  EXPECT_TRUE(SatisfiesFingerSizeRule(L"5", L"L6"));
  EXPECT_FALSE(SatisfiesFingerSizeRule(L"5", L"G6"));
  EXPECT_FALSE(SatisfiesFingerSizeRule(L"6", L"L6"));
  EXPECT_FALSE(SatisfiesFingerSizeRule(L"6", L"G6"));
  EXPECT_TRUE(SatisfiesFingerSizeRule(L"6.5", L"G6"));
  EXPECT_TRUE(SatisfiesFingerSizeRule(L"11", L"G10.5"));
}

TEST(FingerSizeRule, two_numbers_hold_of_themselves_and_of_all_between) {
  for (const wchar_t* const size : {L"4.5", L"5", L"6"})
    EXPECT_TRUE(SatisfiesFingerSizeRule(size, L"4.5,6"));
  for (const wchar_t* const size : {L"4", L"7", L"6.5", L""})
    EXPECT_FALSE(SatisfiesFingerSizeRule(size, L"4.5,6"));
}

TEST(FingerSizeRule, reversed_numbers_still_mean_between) {
  for (const wchar_t* const size : {L"4.5", L"5", L"6"})
    EXPECT_TRUE(SatisfiesFingerSizeRule(size, L"6,4.5"));
  EXPECT_FALSE(SatisfiesFingerSizeRule(L"7", L"6,4.5"));
  EXPECT_FALSE(SatisfiesFingerSizeRule(L"4", L"6,4.5"));
}

TEST(FingerSizeRule, sizes_that_differ_by_less_than_a_hundredth_are_the_same) {
  EXPECT_TRUE(SatisfiesFingerSizeRule(L"6.009", L"4.5,6"));
  EXPECT_FALSE(SatisfiesFingerSizeRule(L"6.011", L"4.5,6"));
  EXPECT_TRUE(SatisfiesFingerSizeRule(L"4.491", L"4.5,6"));
  EXPECT_FALSE(SatisfiesFingerSizeRule(L"4.489", L"4.5,6"));
  EXPECT_FALSE(SatisfiesFingerSizeRule(L"5.991", L"L6"));
  EXPECT_TRUE(SatisfiesFingerSizeRule(L"5.989", L"L6"));
  EXPECT_FALSE(SatisfiesFingerSizeRule(L"6.009", L"G6"));
  EXPECT_TRUE(SatisfiesFingerSizeRule(L"6.011", L"G6"));
}

TEST(FingerSizeRule, the_letter_counts_as_a_0_in_front_of_its_number) {
  EXPECT_TRUE(SatisfiesFingerSizeRule(L"0.4", L"L.5"));
  EXPECT_FALSE(SatisfiesFingerSizeRule(L"0.6", L"L.5"));
  // "0-6" and "0 6" are 0.
  EXPECT_FALSE(SatisfiesFingerSizeRule(L"5", L"L 6"));
  EXPECT_TRUE(SatisfiesFingerSizeRule(L"-3", L"L-6"));
  EXPECT_TRUE(SatisfiesFingerSizeRule(L"5", L"G 6"));
  EXPECT_TRUE(SatisfiesFingerSizeRule(L"1", L"G"));
}

TEST(FingerSizeRule, only_the_capital_letters_are_known) {
  // "l6,0" is 0 and 0.
  EXPECT_FALSE(SatisfiesFingerSizeRule(L"5", L"l6"));
  EXPECT_FALSE(SatisfiesFingerSizeRule(L"7", L"g6"));
  EXPECT_TRUE(SatisfiesFingerSizeRule(L"0", L"l6"));
}

TEST(FingerSizeRule, a_number_that_is_missing_or_none_is_0) {
  EXPECT_TRUE(SatisfiesFingerSizeRule(L"3", L"5"));
  EXPECT_TRUE(SatisfiesFingerSizeRule(L"0", L"5,"));
  EXPECT_TRUE(SatisfiesFingerSizeRule(L"3", L",5"));
  EXPECT_FALSE(SatisfiesFingerSizeRule(L"6", L"5"));
  EXPECT_TRUE(SatisfiesFingerSizeRule(L"any", L""));
  EXPECT_FALSE(SatisfiesFingerSizeRule(L"1", L""));
  EXPECT_TRUE(SatisfiesFingerSizeRule(L"none", L"L6"));
  EXPECT_TRUE(SatisfiesFingerSizeRule(L"5 or so", L"4, 6 or so"));
}

TEST(FingerSizeRule, text_after_a_second_comma_does_not_count) {
  EXPECT_TRUE(SatisfiesFingerSizeRule(L"5", L"4,6,9"));
  EXPECT_FALSE(SatisfiesFingerSizeRule(L"8", L"4,6,9"));
}

TEST(FingerSizeRule, numbers_never_follow_the_locale) {
  const rastrel::test::CommaLocale locale;
  EXPECT_TRUE(SatisfiesFingerSizeRule(L"4.6", L"4.5,4.7"));
  EXPECT_FALSE(SatisfiesFingerSizeRule(L"4.4", L"4.5,4.7"));
}

}  // namespace
