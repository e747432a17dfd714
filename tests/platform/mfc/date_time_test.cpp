#include "rastrel/platform/mfc/date_time.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "rastrel/platform/mfc/archive.h"

namespace {

void ExpectMoment(const COleDateTime& date, int year, int month, int day, int hour, int minute,
                  int second) {
  EXPECT_EQ(date.GetYear(), year);
  EXPECT_EQ(date.GetMonth(), month);
  EXPECT_EQ(date.GetDay(), day);
  EXPECT_EQ(date.GetHour(), hour);
  EXPECT_EQ(date.GetMinute(), minute);
  EXPECT_EQ(date.GetSecond(), second);
}

COleDateTime Days(double days) {
  COleDateTime date;
  date.m_dt = days;
  return date;
}

}  // namespace

TEST(COleDateTime, zero_is_the_thirtieth_of_december_1899) {
  const COleDateTime date;
  EXPECT_EQ(date.GetStatus(), COleDateTime::valid);
  EXPECT_EQ(date.m_dt, 0.0);
  ExpectMoment(date, 1899, 12, 30, 0, 0, 0);
}

// Day numbers of OLE Automation's documentation.
TEST(COleDateTime, well_known_moments_have_their_numbers) {
  EXPECT_EQ(COleDateTime(1899, 12, 31, 0, 0, 0).m_dt, 1.0);
  EXPECT_EQ(COleDateTime(1900, 1, 1, 0, 0, 0).m_dt, 2.0);
  EXPECT_EQ(COleDateTime(1900, 1, 4, 0, 0, 0).m_dt, 5.0);
  EXPECT_EQ(COleDateTime(1900, 1, 4, 6, 0, 0).m_dt, 5.25);
  EXPECT_EQ(COleDateTime(1900, 1, 4, 12, 0, 0).m_dt, 5.5);
  EXPECT_EQ(COleDateTime(1899, 12, 29, 6, 0, 0).m_dt, -1.25);
  EXPECT_EQ(COleDateTime(1970, 1, 1, 0, 0, 0).m_dt, 25569.0);
  EXPECT_EQ(COleDateTime(100, 1, 1, 0, 0, 0).m_dt, -657434.0);
  EXPECT_EQ(COleDateTime(9999, 12, 31, 0, 0, 0).m_dt, 2958465.0);
}

TEST(COleDateTime, the_time_of_day_counts_forward_before_day_zero_too) {
  ExpectMoment(Days(-1.25), 1899, 12, 29, 6, 0, 0);
  ExpectMoment(Days(-1.75), 1899, 12, 29, 18, 0, 0);
  ExpectMoment(Days(-0.5), 1899, 12, 30, 12, 0, 0);
  ExpectMoment(Days(0.5), 1899, 12, 30, 12, 0, 0);
}

TEST(COleDateTime, every_second_of_a_day_comes_back) {
  for (const int year : {100, 1899, 1900, 2024, 9999})
    for (int second = 0; second < 86400; second += 7) {
      const COleDateTime date(year, 2, 28, second / 3600, second / 60 % 60, second % 60);
      ASSERT_EQ(date.GetStatus(), COleDateTime::valid);
      ASSERT_EQ(date.GetYear(), year);
      ASSERT_EQ(date.GetDay(), 28);
      ASSERT_EQ((date.GetHour() * 60 + date.GetMinute()) * 60 + date.GetSecond(), second);
    }
}

TEST(COleDateTime, a_fraction_next_to_midnight_is_the_next_day) {
  ExpectMoment(Days(1.9999999), 1900, 1, 1, 0, 0, 0);
  ExpectMoment(Days(-1.9999999), 1899, 12, 30, 0, 0, 0);
}

TEST(COleDateTime, a_value_that_is_no_moment_is_invalid) {
  const int rows[][6] = {{99, 12, 31, 0, 0, 0},      {10000, 1, 1, 0, 0, 0}, {2023, 2, 29, 0, 0, 0},
                         {1900, 2, 29, 0, 0, 0},     {2024, 0, 1, 0, 0, 0},  {2024, 13, 1, 0, 0, 0},
                         {2024, 1, 0, 0, 0, 0},      {2024, 4, 31, 0, 0, 0}, {2024, 1, 32, 0, 0, 0},
                         {2024, 1, 1, -1, 0, 0},     {2024, 1, 1, 24, 0, 0}, {2024, 1, 1, 0, 60, 0},
                         {2024, 1, 1, 0, 0, 60},     {0, 0, 0, 0, 0, 0},     {-5, 1, 1, 0, 0, 0},
                         {2024, 1, 256 + 1, 0, 0, 0}};
  for (const auto& row : rows) {
    const COleDateTime date(row[0], row[1], row[2], row[3], row[4], row[5]);
    EXPECT_EQ(date.GetStatus(), COleDateTime::invalid);
    EXPECT_EQ(date.GetYear(), -1);
  }
  EXPECT_EQ(COleDateTime(2024, 2, 29, 0, 0, 0).GetStatus(), COleDateTime::valid);
}

TEST(COleDateTime, numbers_beyond_every_date_have_no_parts) {
  for (const double days :
       {-657435.0, 2958466.0, 1e300, -1e300, std::numeric_limits<double>::quiet_NaN(),
        std::numeric_limits<double>::infinity()}) {
    const COleDateTime date = Days(days);
    EXPECT_EQ(date.GetYear(), -1) << days;
    EXPECT_EQ(date.GetSecond(), -1) << days;
  }
}

TEST(COleDateTime, a_date_without_validity_has_no_parts) {
  COleDateTime date(2024, 5, 6, 7, 8, 9);
  ExpectMoment(date, 2024, 5, 6, 7, 8, 9);
  for (const auto status : {COleDateTime::invalid, COleDateTime::null}) {
    date.SetStatus(status);
    ExpectMoment(date, -1, -1, -1, -1, -1, -1);
  }
}

TEST(COleDateTime, the_present_is_valid_and_later_than_this_library) {
  const COleDateTime now = COleDateTime::GetCurrentTime();
  EXPECT_EQ(now.GetStatus(), COleDateTime::valid);
  EXPECT_GT(now.m_dt, COleDateTime(2024, 1, 1, 0, 0, 0).m_dt);
}

TEST(COleDateTime, is_archived_as_status_and_days) {
  CMemFile file;
  {
    COleDateTime date = Days(1.5);
    date.SetStatus(COleDateTime::null);
    CArchive archive(&file, CArchive::store);
    archive << date;
  }
  EXPECT_EQ(file.Bytes(), (std::vector<std::uint8_t>{2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xF8, 0x3F}));
  COleDateTime back;
  CArchive archive(&file, CArchive::load);
  archive >> back;
  EXPECT_EQ(back.GetStatus(), COleDateTime::null);
  EXPECT_EQ(back.m_dt, 1.5);
}

TEST(COleDateTime, a_short_read_leaves_the_date_as_it_was) {
  for (std::size_t length = 0; length < 12; ++length) {
    CMemFile file(std::vector<std::uint8_t>(length, 1));
    CArchive archive(&file, CArchive::load);
    COleDateTime date(2024, 5, 6, 7, 8, 9);
    EXPECT_THROW(archive >> date, CArchiveException);
    ExpectMoment(date, 2024, 5, 6, 7, 8, 9);
  }
}
