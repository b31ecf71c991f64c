#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <limits>
#include <string>
#include <tuple>

#include "EnvGuard.h"
#include "ZTDateTime.h"

using namespace zentrail;
using zentrail::test::EnvGuard;

namespace {

TZentrailTimeStamp Stamp(int32_t date, int32_t time) {
  TZentrailTimeStamp s;
  s.Date = date;
  s.Time = time;
  return s;
}

bool NotAfter(const TZentrailTimeStamp& a, const TZentrailTimeStamp& b) {
  return std::tie(a.Date, a.Time) <= std::tie(b.Date, b.Time);
}

// Switches the process's time zone for one test and back.
class ZoneGuard {
 public:
  explicit ZoneGuard(const char* tz) {
    FEnv.Set("TZ", tz);
    ::tzset();
  }
  ~ZoneGuard() {
    FEnv.Restore();
    ::tzset();
  }

 private:
  EnvGuard FEnv;
};

}  // namespace

TEST(DateTime, DayNumbersFollowTheCalendar) {
  EXPECT_EQ(EncodeDayNumber(1, 1, 1), 1);
  EXPECT_EQ(EncodeDayNumber(1899, 12, 30), ztDateDelta);
  EXPECT_EQ(EncodeDayNumber(2000, 1, 1), ztDateOf2000);
  EXPECT_EQ(EncodeDayNumber(1970, 1, 1), 719163);
  EXPECT_EQ(EncodeDayNumber(2000, 2, 29) + 1, EncodeDayNumber(2000, 3, 1));
  EXPECT_EQ(EncodeDayNumber(1900, 2, 28) + 1, EncodeDayNumber(1900, 3, 1));
  EXPECT_EQ(EncodeDayNumber(1900, 2, 29), 0);
  EXPECT_EQ(EncodeDayNumber(2001, 2, 29), 0);
  EXPECT_EQ(EncodeDayNumber(2024, 2, 29) + 1, EncodeDayNumber(2024, 3, 1));
  EXPECT_EQ(EncodeDayNumber(2023, 4, 31), 0);
  EXPECT_EQ(EncodeDayNumber(2023, 13, 1), 0);
  EXPECT_EQ(EncodeDayNumber(2023, 0, 1), 0);
  EXPECT_EQ(EncodeDayNumber(0, 12, 31), 0);
  EXPECT_EQ(EncodeDayNumber(9999, 12, 31), 3652059);

  int y, m, d;
  EXPECT_FALSE(DecodeDayNumber(0, y, m, d));
  EXPECT_FALSE(DecodeDayNumber(-3, y, m, d));
  for (int32_t day = 1; day <= 3652059; day += 997) {
    ASSERT_TRUE(DecodeDayNumber(day, y, m, d));
    ASSERT_EQ(EncodeDayNumber(y, m, d), day) << y << "-" << m << "-" << d;
  }
  ASSERT_TRUE(DecodeDayNumber(730120 + 59, y, m, d));
  EXPECT_EQ(std::tie(y, m, d), std::make_tuple(2000, 2, 29));
}

TEST(DateTime, StampsConvertToDateTimeValuesAndBack) {
  EXPECT_EQ(TimeStampToDateTime(Stamp(0, 1000)), 0.0);
  EXPECT_EQ(TimeStampToDateTime(Stamp(-5, 0)), 0.0);
  EXPECT_EQ(TimeStampToDateTime(Stamp(730120, -1)), 0.0);
  EXPECT_EQ(TimeStampToDateTime(Stamp(ztDateDelta, 0)), 0.0);
  EXPECT_EQ(TimeStampToDateTime(Stamp(730120, 43200000)), 36526.5);
  EXPECT_EQ(TimeStampToDateTime(Stamp(730120, 86400000)), 36527.0);
  // Before the base day the fraction counts away from zero: 29 Dec 1899 06:00 is -1.25.
  EXPECT_EQ(TimeStampToDateTime(Stamp(ztDateDelta - 1, 21600000)), -1.25);
  EXPECT_EQ(TimeStampToDateTime(Stamp(1, 0)), 1.0 - ztDateDelta);

  EXPECT_EQ(DateTimeToTimeStamp(-1.25), Stamp(ztDateDelta - 1, 21600000));
  EXPECT_EQ(DateTimeToTimeStamp(36526.5), Stamp(730120, 43200000));
  EXPECT_EQ(DateTimeToTimeStamp(0.0), Stamp(ztDateDelta, 0));
  // Less than half a millisecond before midnight rounds into the next day, not to 86,400,000.
  EXPECT_EQ(DateTimeToTimeStamp(36526.0 + 86399999.7 / 86400000.0), Stamp(730121, 0));
  EXPECT_EQ(DateTimeToTimeStamp(std::numeric_limits<double>::infinity()), Stamp(0, 0));

  for (int32_t date : {1, 693593, 693594, 693595, 730120, 766499}) {
    for (int32_t time : {0, 1, 999, 43200000, 86399999}) {
      TZentrailTimeStamp s = Stamp(date, time);
      EXPECT_EQ(DateTimeToTimeStamp(TimeStampToDateTime(s)), s) << date << " " << time;
    }
  }
}

TEST(DateTime, StampsSplitIntoFieldsAtTheDayBoundaries) {
  TZTDateTimeParts p;
  ASSERT_TRUE(DecodeTimeStamp(Stamp(730120, 86399999), p));
  EXPECT_EQ(p, (TZTDateTimeParts{2000, 1, 1, 23, 59, 59, 999}));
  ASSERT_TRUE(DecodeTimeStamp(Stamp(730120, 86400000), p));
  EXPECT_EQ(p, (TZTDateTimeParts{2000, 1, 2, 0, 0, 0, 0}));
  ASSERT_TRUE(DecodeTimeStamp(Stamp(730120 + 365, 0), p));
  EXPECT_EQ(p, (TZTDateTimeParts{2000, 12, 31, 0, 0, 0, 0}));
  EXPECT_FALSE(DecodeTimeStamp(Stamp(730120, 86400001), p));
  EXPECT_FALSE(DecodeTimeStamp(Stamp(730120, -1), p));
  EXPECT_FALSE(DecodeTimeStamp(Stamp(0, 0), p));

  TZentrailTimeStamp s;
  ASSERT_TRUE(EncodeTimeStamp(TZTDateTimeParts{2026, 11, 22, 3, 4, 5, 6}, s));
  EXPECT_EQ(s.Time, ((3 * 60 + 4) * 60 + 5) * 1000 + 6);
  ASSERT_TRUE(DecodeTimeStamp(s, p));
  EXPECT_EQ(p, (TZTDateTimeParts{2026, 11, 22, 3, 4, 5, 6}));
  TZentrailTimeStamp untouched = Stamp(7, 7);
  EXPECT_FALSE(EncodeTimeStamp(TZTDateTimeParts{2026, 11, 22, 24, 0, 0, 0}, untouched));
  EXPECT_FALSE(EncodeTimeStamp(TZTDateTimeParts{2026, 11, 22, 0, 60, 0, 0}, untouched));
  EXPECT_FALSE(EncodeTimeStamp(TZTDateTimeParts{2026, 11, 22, 0, 0, 0, 1000}, untouched));
  EXPECT_FALSE(EncodeTimeStamp(TZTDateTimeParts{2026, 11, 31, 0, 0, 0, 0}, untouched));
  EXPECT_EQ(untouched, Stamp(7, 7));
  EXPECT_EQ(EncodeDateTime(TZTDateTimeParts{2026, 2, 30, 0, 0, 0, 0}), 0.0);
  EXPECT_EQ(EncodeDateTime(TZTDateTimeParts{2000, 1, 1, 12, 0, 0, 0}), 36526.5);
}

TEST(DateTime, MessageTimeCheckHasOpenAndClosedEnds) {
  EXPECT_FALSE(CheckMessageTime(Stamp(730000, 0)));
  EXPECT_TRUE(CheckMessageTime(Stamp(730001, 0)));
  EXPECT_TRUE(CheckMessageTime(Stamp(766499, 0)));
  EXPECT_FALSE(CheckMessageTime(Stamp(766500, 0)));
  EXPECT_FALSE(CheckMessageTime(Stamp(730120, -1)));
  EXPECT_TRUE(CheckMessageTime(Stamp(730120, 86400000)));
  EXPECT_FALSE(CheckMessageTime(Stamp(730120, 86400001)));
  EXPECT_FALSE(CheckMessageTime(Stamp(0, 0)));
}

TEST(DateTime, FormatsWithTheUsualLetters) {
  TZentrailTimeStamp s;
  ASSERT_TRUE(EncodeTimeStamp(TZTDateTimeParts{2007, 3, 4, 5, 6, 7, 8}, s));
  EXPECT_EQ(TimeStampToText(s), "2007-03-04 05:06:07.008");
  EXPECT_EQ(FormatTimeStamp("yyyy-mm-dd", s), "2007-03-04");
  EXPECT_EQ(FormatTimeStamp("hh:nn:ss.zzz", s), "05:06:07.008");
  EXPECT_EQ(FormatTimeStamp("yyyymmdd", s), "20070304");
  EXPECT_EQ(FormatTimeStamp("hh:mm", s), "05:06");  // minutes after an hour
  EXPECT_EQ(FormatTimeStamp("d/m/yy h:n:s z", s), "4/3/07 5:6:7 8");
  EXPECT_EQ(FormatTimeStamp("'day' d \"of\" m", s), "day 4 of 3");
  EXPECT_EQ(FormatDateTime("yyyy-mm-dd hh:nn:ss.zzz", 36526.5), "2000-01-01 12:00:00.000");
  // An invalid stamp formats as the base day rather than as garbage.
  EXPECT_EQ(TimeStampToText(Stamp(0, 5)), "1899-12-30 00:00:00.000");
  EXPECT_EQ(TimeStampToText(Stamp(730120, 86400000)), "2000-01-02 00:00:00.000");
}

TEST(DateTime, LocalTimeFollowsTheZone) {
  using namespace std::chrono;
  {
    ZoneGuard zone("UTC0");
    EXPECT_EQ(GetLocalTimeBiasMinutes(), 0);
    EXPECT_EQ(LocalTimeStamp(system_clock::time_point{}), Stamp(719163, 0));
    EXPECT_EQ(LocalTimeStamp(system_clock::time_point{} - milliseconds(1)), Stamp(719162, 86399999));
    EXPECT_EQ(LocalTimeStamp(system_clock::time_point{} + milliseconds(86400000LL * 10957 + 1234)),
              Stamp(730120, 1234));
  }
  {
    ZoneGuard zone("XYZ-2");  // two hours east of UTC
    EXPECT_EQ(GetLocalTimeBiasMinutes(), -120);
    EXPECT_EQ(LocalTimeStamp(system_clock::time_point{}), Stamp(719163, 7200000));
  }
  {
    ZoneGuard zone("ABC5:30");  // five and a half hours west
    EXPECT_EQ(GetLocalTimeBiasMinutes(), 330);
    EXPECT_EQ(LocalTimeStamp(system_clock::time_point{}), Stamp(719162, 86400000 - 19800000));
  }
  auto before = LocalTimeStamp(system_clock::now());
  auto now = NowTimeStamp();
  auto after = LocalTimeStamp(system_clock::now());
  EXPECT_TRUE(NotAfter(before, now));
  EXPECT_TRUE(NotAfter(now, after));
  EXPECT_TRUE(CheckMessageTime(now));
  double dt = NowDateTime();
  EXPECT_GE(dt, TimeStampToDateTime(before));
}
