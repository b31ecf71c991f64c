#pragma once
// Dates and times: the message time stamp (milliseconds since midnight and a day count in which
// 1 January 0001 is day 1 and 30 December 1899 is day 693594) and the date-time value
// (a double: days since 30 December 1899 plus the fraction of the day), with conversions,
// splitting into fields, the current local time and formatting.

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "ZentrailMessage.h"

namespace zentrail {

using TDateTime = double;

inline constexpr int32_t ztDateDelta = 693594;       // day number of 30 December 1899
inline constexpr int32_t ztMSecsPerDay = 86400000;

struct TZTDateTimeParts {
  int Year = 0;
  int Month = 0;   // 1..12
  int Day = 0;     // 1..31
  int Hour = 0;    // 0..23
  int Minute = 0;
  int Second = 0;
  int MSec = 0;
  bool operator==(const TZTDateTimeParts&) const = default;
};

bool IsValidDate(int year, int month, int day);
// Day number of a calendar date (proleptic Gregorian), 0 for an invalid date.
int32_t EncodeDayNumber(int year, int month, int day);
// False for a day number below 1.
bool DecodeDayNumber(int32_t dayNumber, int& year, int& month, int& day);

// A stamp from fields; false (and the stamp untouched) if a field is out of range.
bool EncodeTimeStamp(const TZTDateTimeParts& parts, TZentrailTimeStamp& stamp);
// The fields of a stamp. A time of 86,400,000 (the very end of a day) reads as 00:00:00.000 of
// the next day. False for a date below 1 or a time outside 0..86,400,000.
bool DecodeTimeStamp(const TZentrailTimeStamp& stamp, TZTDateTimeParts& parts);

// A stamp whose date part is below 1, or whose time is negative, gives 0 and no failure.
TDateTime TimeStampToDateTime(const TZentrailTimeStamp& stamp);
TZentrailTimeStamp DateTimeToTimeStamp(TDateTime value);
bool DecodeDateTime(TDateTime value, TZTDateTimeParts& parts);
// 0 when a field is out of range.
TDateTime EncodeDateTime(const TZTDateTimeParts& parts);

// The current local time, to the millisecond.
TZentrailTimeStamp NowTimeStamp();
TDateTime NowDateTime();
// A point in time as a local-time stamp.
TZentrailTimeStamp LocalTimeStamp(std::chrono::system_clock::time_point when);

// The local zone's bias in minutes at this moment: UTC = local time + bias (so UTC+2 gives -120).
int32_t GetLocalTimeBiasMinutes();

// True if the date is above 730000 and below 766500 and the time is at least 0 and below
// 86,400,001: the plausible range for a message stamp.
bool CheckMessageTime(const TZentrailTimeStamp& stamp);

// Formats with the usual date-time letters: yyyy, yy, m, mm (minutes when they follow an hour),
// d, dd, h, hh, n, nn, s, ss, z, zzz; text in double or single quotes is copied; every other
// character stands for itself. An invalid value formats as 1899-12-30 00:00:00.000.
std::string FormatDateTime(std::string_view format, TDateTime value);
std::string FormatTimeStamp(std::string_view format, const TZentrailTimeStamp& stamp);
// "yyyy-mm-dd hh:nn:ss.zzz"
std::string TimeStampToText(const TZentrailTimeStamp& stamp);

}  // namespace zentrail
