#pragma once

#include <cstdint>

#include "rastrel/export.h"

class CArchive;

/// A date as a number of days since 30 December 1899, 0:00, local time; the fraction is the time of
/// day. For dates before that day the fraction counts forward all the same (-1.25 is 29 December
/// 1899, 6:00), which is the form of OLE Automation.
class RASTREL_API COleDateTime {
 public:
  /// Whether there is a date: a good one, one that could not be made, none at all.
  enum DateTimeStatus : std::int32_t { valid = 0, invalid = 1, null = 2 };

  /// Zero: 30 December 1899, valid.
  COleDateTime() = default;
  /// A calendar moment; invalid if there is no such day or time, or the year is not 100 to 9999.
  COleDateTime(int year, int month, int day, int hour, int minute, int second);
  /// The present moment in local time; invalid if the conversion to days and back does not give the
  /// same calendar moment.
  static COleDateTime GetCurrentTime();

  /// The mark m_status. Setting it leaves the days as they are.
  [[nodiscard]] DateTimeStatus GetStatus() const { return m_status; }
  void SetStatus(DateTimeStatus status) { m_status = status; }
  /// Calendar parts. -1 if the date is not valid.
  [[nodiscard]] int GetYear() const;
  [[nodiscard]] int GetMonth() const;
  [[nodiscard]] int GetDay() const;
  [[nodiscard]] int GetHour() const;
  [[nodiscard]] int GetMinute() const;
  [[nodiscard]] int GetSecond() const;

  double m_dt = 0.0;                ///< days
  DateTimeStatus m_status = valid;  ///< whether m_dt means something
};

/// Writes the status as 32 bits, then the days as a double.
RASTREL_API CArchive& operator<<(CArchive& archive, const COleDateTime& date);
/// Reads both; a short read leaves the date as it was.
RASTREL_API CArchive& operator>>(CArchive& archive, COleDateTime& date);
