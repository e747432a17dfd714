#include "rastrel/job/scan_number.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>

namespace {

using rastrel::job::ScanUnsigned;

TEST(ScanUnsigned, reads_as_scanf_does) {
  EXPECT_EQ(ScanUnsigned<std::uint32_t>(L"12"), 12U);
  EXPECT_EQ(ScanUnsigned<std::uint32_t>(L" \t\n\v\f\r+12abc"), 12U);
  EXPECT_EQ(ScanUnsigned<std::uint32_t>(L"-1"), 4294967295U);
  EXPECT_EQ(ScanUnsigned<std::uint32_t>(L"-0"), 0U);
  EXPECT_EQ(ScanUnsigned<std::uint32_t>(L"4294967296"), 0U);
  EXPECT_EQ(ScanUnsigned<std::uint32_t>(L""), std::nullopt);
  EXPECT_EQ(ScanUnsigned<std::uint32_t>(L"  "), std::nullopt);
  EXPECT_EQ(ScanUnsigned<std::uint32_t>(L"x1"), std::nullopt);
  EXPECT_EQ(ScanUnsigned<std::uint32_t>(L"- 1"), std::nullopt);
  EXPECT_EQ(ScanUnsigned<std::uint32_t>(L"--1"), std::nullopt);
  EXPECT_EQ(ScanUnsigned<std::uint32_t>(L"\u0663"), std::nullopt);  // an Arabic digit
}

TEST(ScanUnsigned, keeps_the_low_16_bits_of_a_short) {
  EXPECT_EQ(ScanUnsigned<std::uint16_t>(L"-1"), 65535);
  EXPECT_EQ(ScanUnsigned<std::uint16_t>(L"65536"), 0);
  EXPECT_EQ(ScanUnsigned<std::uint16_t>(L"4294967297"), 1);
  EXPECT_EQ(ScanUnsigned<std::uint16_t>(L"50%"), 50);
}

TEST(ScanUnsigned, a_very_long_number_keeps_its_low_bits) {
  // 2^64 + 5, then 10^40, whose low 32 bits are 0 since 2^40 divides it.
  EXPECT_EQ(ScanUnsigned<std::uint32_t>(L"18446744073709551621"), 5U);
  EXPECT_EQ(ScanUnsigned<std::uint32_t>(L"1" + std::wstring(40, L'0')), 0U);
}

}  // namespace
