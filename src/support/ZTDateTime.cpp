#include "ZTDateTime.h"

#include <cmath>
#include <ctime>

namespace zentrail {

namespace {

// Days since 1 January 1970 of a proleptic Gregorian date (H. Hinnant's algorithm).
int64_t DaysFromCivil(int64_t y, unsigned m, unsigned d) {
  y -= m <= 2;
  const int64_t era = (y >= 0 ? y : y - 399) / 400;
  const unsigned yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<int64_t>(doe) - 719468;
}

void CivilFromDays(int64_t z, int& year, int& month, int& day) {
  z += 719468;
  const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const unsigned doe = static_cast<unsigned>(z - era * 146097);
  const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const int64_t y = static_cast<int64_t>(yoe) + era * 400;
  const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const unsigned mp = (5 * doy + 2) / 153;
  day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  year = static_cast<int>(y + (month <= 2));
}

// Day 1 is 1 January 0001.
constexpr int64_t kDayNumberOf1970 = 719163;

void Append2(std::string& out, int v) {
  out.push_back(static_cast<char>('0' + (v / 10) % 10));
  out.push_back(static_cast<char>('0' + v % 10));
}

void AppendPadded(std::string& out, int v, int width) {
  std::string digits = std::to_string(v < 0 ? -v : v);
  if (v < 0) out.push_back('-');
  for (int i = static_cast<int>(digits.size()); i < width; ++i) out.push_back('0');
  out += digits;
}

std::size_t RunLength(std::string_view s, std::size_t pos) {
  std::size_t n = 1;
  char c = static_cast<char>(s[pos] | 0x20);
  while (pos + n < s.size() && static_cast<char>(s[pos + n] | 0x20) == c) ++n;
  return n;
}

std::string FormatParts(std::string_view format, const TZTDateTimeParts& p) {
  std::string out;
  bool afterHour = false;
  std::size_t i = 0;
  while (i < format.size()) {
    char c = format[i];
    if (c == '"' || c == '\'') {
      std::size_t end = format.find(c, i + 1);
      if (end == std::string_view::npos) end = format.size();
      out.append(format.substr(i + 1, end - i - 1));
      i = end + 1;
      continue;
    }
    char lower = static_cast<char>((c >= 'A' && c <= 'Z') ? c + 32 : c);
    std::size_t n = (lower == 'y' || lower == 'm' || lower == 'd' || lower == 'h' || lower == 'n' ||
                     lower == 's' || lower == 'z')
                        ? RunLength(format, i)
                        : 1;
    switch (lower) {
      case 'y':
        if (n >= 3)
          AppendPadded(out, p.Year, 4);
        else
          Append2(out, p.Year % 100);
        break;
      case 'm': {
        int v = afterHour ? p.Minute : p.Month;
        if (n >= 2) Append2(out, v); else out += std::to_string(v);
        afterHour = false;
        i += n;
        continue;
      }
      case 'd':
        if (n >= 2) Append2(out, p.Day); else out += std::to_string(p.Day);
        break;
      case 'h':
        if (n >= 2) Append2(out, p.Hour); else out += std::to_string(p.Hour);
        afterHour = true;
        i += n;
        continue;
      case 'n':
        if (n >= 2) Append2(out, p.Minute); else out += std::to_string(p.Minute);
        break;
      case 's':
        if (n >= 2) Append2(out, p.Second); else out += std::to_string(p.Second);
        break;
      case 'z':
        if (n >= 3) AppendPadded(out, p.MSec, 3); else out += std::to_string(p.MSec);
        break;
      default:
        out.push_back(c);
        // Separators between an hour and its minutes keep "m" meaning minutes ("hh:mm").
        if (lower == ':' || lower == ' ') {
          i += 1;
          continue;
        }
        break;
    }
    afterHour = false;
    i += n;
  }
  return out;
}

TZTDateTimeParts PartsFromTm(const std::tm& tm, int msec) {
  TZTDateTimeParts p;
  p.Year = tm.tm_year + 1900;
  p.Month = tm.tm_mon + 1;
  p.Day = tm.tm_mday;
  p.Hour = tm.tm_hour;
  p.Minute = tm.tm_min;
  p.Second = tm.tm_sec > 59 ? 59 : tm.tm_sec;  // a leap second is shown as :59
  p.MSec = msec;
  return p;
}

}  // namespace

bool IsValidDate(int year, int month, int day) {
  if (year < 1 || year > 9999 || month < 1 || month > 12 || day < 1) return false;
  static const int kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
  int last = kDays[month - 1] + (month == 2 && leap ? 1 : 0);
  return day <= last;
}

int32_t EncodeDayNumber(int year, int month, int day) {
  if (!IsValidDate(year, month, day)) return 0;
  return static_cast<int32_t>(DaysFromCivil(year, static_cast<unsigned>(month),
                                            static_cast<unsigned>(day)) +
                              kDayNumberOf1970);
}

bool DecodeDayNumber(int32_t dayNumber, int& year, int& month, int& day) {
  if (dayNumber < 1) return false;
  CivilFromDays(int64_t{dayNumber} - kDayNumberOf1970, year, month, day);
  return true;
}

bool EncodeTimeStamp(const TZTDateTimeParts& p, TZentrailTimeStamp& stamp) {
  if (p.Hour < 0 || p.Hour > 23 || p.Minute < 0 || p.Minute > 59 || p.Second < 0 ||
      p.Second > 59 || p.MSec < 0 || p.MSec > 999)
    return false;
  int32_t date = EncodeDayNumber(p.Year, p.Month, p.Day);
  if (date == 0) return false;
  stamp.Date = date;
  stamp.Time = ((p.Hour * 60 + p.Minute) * 60 + p.Second) * 1000 + p.MSec;
  return true;
}

bool DecodeTimeStamp(const TZentrailTimeStamp& stamp, TZTDateTimeParts& parts) {
  if (stamp.Date < 1 || stamp.Time < 0 || stamp.Time > ztMSecsPerDay) return false;
  int32_t date = stamp.Date;
  int32_t time = stamp.Time;
  if (time == ztMSecsPerDay) {
    if (date == INT32_MAX) return false;
    ++date;
    time = 0;
  }
  TZTDateTimeParts p;
  DecodeDayNumber(date, p.Year, p.Month, p.Day);
  p.MSec = time % 1000;
  time /= 1000;
  p.Second = time % 60;
  time /= 60;
  p.Minute = time % 60;
  p.Hour = time / 60;
  parts = p;
  return true;
}

TDateTime TimeStampToDateTime(const TZentrailTimeStamp& stamp) {
  if (stamp.Date < 1 || stamp.Time < 0) return 0.0;
  double days = static_cast<double>(stamp.Date) - ztDateDelta;
  double frac = static_cast<double>(stamp.Time) / ztMSecsPerDay;
  // Before 30 December 1899 the fraction counts away from zero, as the date-time type defines.
  return days >= 0 ? days + frac : days - frac;
}

TZentrailTimeStamp DateTimeToTimeStamp(TDateTime value) {
  TZentrailTimeStamp stamp;
  if (!std::isfinite(value) || std::fabs(value) > 3.0e6) return stamp;
  double whole = std::trunc(value);
  int64_t time = std::llround(std::fabs(value - whole) * ztMSecsPerDay);
  int64_t date = ztDateDelta + static_cast<int64_t>(whole);
  if (time >= ztMSecsPerDay) {
    time -= ztMSecsPerDay;
    date += value >= 0 ? 1 : -1;
  }
  stamp.Date = static_cast<int32_t>(date);
  stamp.Time = static_cast<int32_t>(time);
  return stamp;
}

bool DecodeDateTime(TDateTime value, TZTDateTimeParts& parts) {
  if (!std::isfinite(value) || std::fabs(value) > 3.0e6) return false;
  return DecodeTimeStamp(DateTimeToTimeStamp(value), parts);
}

TDateTime EncodeDateTime(const TZTDateTimeParts& parts) {
  TZentrailTimeStamp stamp;
  if (!EncodeTimeStamp(parts, stamp)) return 0.0;
  return TimeStampToDateTime(stamp);
}

TZentrailTimeStamp LocalTimeStamp(std::chrono::system_clock::time_point when) {
  using namespace std::chrono;
  auto ms = duration_cast<milliseconds>(when.time_since_epoch()).count();
  int64_t secs = ms >= 0 ? ms / 1000 : -((-ms + 999) / 1000);
  int msec = static_cast<int>(ms - secs * 1000);
  std::time_t t = static_cast<std::time_t>(secs);
  std::tm tm{};
  TZentrailTimeStamp stamp;
  if (!::localtime_r(&t, &tm)) return stamp;
  EncodeTimeStamp(PartsFromTm(tm, msec), stamp);
  return stamp;
}

TZentrailTimeStamp NowTimeStamp() { return LocalTimeStamp(std::chrono::system_clock::now()); }

TDateTime NowDateTime() { return TimeStampToDateTime(NowTimeStamp()); }

int32_t GetLocalTimeBiasMinutes() {
  std::time_t now = std::time(nullptr);
  std::tm tm{};
  if (!::localtime_r(&now, &tm)) return 0;
  return static_cast<int32_t>(-tm.tm_gmtoff / 60);
}

bool CheckMessageTime(const TZentrailTimeStamp& stamp) {
  return stamp.Date > 730000 && stamp.Date < 766500 && stamp.Time >= 0 && stamp.Time < 86400001;
}

std::string FormatDateTime(std::string_view format, TDateTime value) {
  TZTDateTimeParts parts;
  if (!DecodeDateTime(value, parts)) DecodeDateTime(0.0, parts);
  return FormatParts(format, parts);
}

std::string FormatTimeStamp(std::string_view format, const TZentrailTimeStamp& stamp) {
  TZTDateTimeParts parts;
  if (!DecodeTimeStamp(stamp, parts)) DecodeDateTime(0.0, parts);
  return FormatParts(format, parts);
}

std::string TimeStampToText(const TZentrailTimeStamp& stamp) {
  return FormatTimeStamp("yyyy-mm-dd hh:nn:ss.zzz", stamp);
}

}  // namespace zentrail
