#pragma once

#include <cstdint>

#include "rastrel/export.h"

class CArchive;

/// A moment in local time, as the number of days since 30 December 1899, 0:00. The fraction is the
/// time of day. It counts forward before that day too (-1.25 is 29 December 1899, 6:00), which is
/// the form of OLE Automation. A plain value: threads must not share one while it changes.
class RASTREL_API COleDateTime {
 public:
  /// The state of a date: it is good, it could not be made, there is none.
  enum DateTimeStatus : std::int32_t { valid = 0, invalid = 1, null = 2 };

  /// Zero: 30 December 1899, valid.
  COleDateTime() = default;
  /// A calendar moment: month and day from 1, hour 0 to 23. Invalid if there is no such day or
  /// time, or the year is not 100 to 9999.
  COleDateTime(int year, int month, int day, int hour, int minute, int second);
  /// The current moment. Invalid if the conversion to days and back does not lead to the same
  /// calendar moment.
  static COleDateTime GetCurrentTime();

  /// The state, m_status. Setting it does not change the days.
  [[nodiscard]] DateTimeStatus GetStatus() const { return m_status; }
  void SetStatus(DateTimeStatus status) { m_status = status; }
  /// The calendar parts; -1 if the date is not valid.
  [[nodiscard]] int GetYear() const;
  [[nodiscard]] int GetMonth() const;
  [[nodiscard]] int GetDay() const;
  [[nodiscard]] int GetHour() const;
  [[nodiscard]] int GetMinute() const;
  [[nodiscard]] int GetSecond() const;

  double m_dt = 0.0;                ///< days
  DateTimeStatus m_status = valid;  ///< m_dt has a meaning only if valid
};

/// Writes the status and the days:
///
///     +----------+--------+
///     | m_status | m_dt   |
///     | 32 bits  | double |
///     +----------+--------+
RASTREL_API CArchive& operator<<(CArchive& archive, const COleDateTime& date);
/// Reads both. If the archive ends early, the date stays and CArchiveException passes.
RASTREL_API CArchive& operator>>(CArchive& archive, COleDateTime& date);
