// Tests of the Modified Julian Day functions of ZkUtil, across the Gregorian switch.
#include "zkcommon/text/util.h"

#include <gtest/gtest.h>
#include <limits>
#include <string>

using namespace ZkCommonNS;

namespace {

struct DateCase {
    int year;
    int month;
    int day;
    int mjd;
    int weekDay; // 0 is Sunday
};

// Known days: the epoch, the switch (Thursday 4 October 1582, Julian, is followed by Friday
// 15 October 1582, Gregorian), leap days on both sides, and the Julian day 0 neighbourhood.
const DateCase kDates[] = {
    {1858, 11, 17, 0, 3},       {1858, 11, 16, -1, 2},      {1858, 11, 18, 1, 4},
    {2000, 1, 1, 51544, 6},     {2000, 2, 29, 51603, 2},    {2000, 3, 1, 51604, 3},
    {1900, 2, 28, 15078, 3},    {1900, 3, 1, 15079, 4},     {1970, 1, 1, 40587, 4},
    {2024, 2, 29, 60369, 4},    {1582, 10, 15, -100840, 5}, {1582, 10, 4, -100841, 4},
    {1582, 10, 16, -100839, 6}, {1582, 10, 3, -100842, 3},  {1500, 2, 29, -131009, 6},
    {1500, 3, 1, -131008, 0},   {1600, 2, 29, -94494, 2},   {1, 1, 1, -678577, 6},
    {1000, 1, 1, -313693, 1},   {1583, 1, 1, -100762, 6},   {2100, 3, 1, 88128, 1},
};

std::string name(const DateCase& k) {
    return std::to_string(k.year) + "-" + std::to_string(k.month) + "-" + std::to_string(k.day);
}

} // namespace

TEST(ZkUtilDates, KnownDaysBothWaysAndTheirWeekDays) {
    for (const DateCase& k : kDates) {
        SCOPED_TRACE(name(k));
        EXPECT_EQ(ZkUtil::modifiedJulianDay(k.year, k.month, k.day), k.mjd);
        int year = 0, month = 0, day = 0;
        ZkUtil::mjd2Date(k.mjd, year, month, day);
        EXPECT_EQ(name({year, month, day, 0, 0}), name(k));
        EXPECT_EQ(ZkUtil::mjd2WeekDay(k.mjd), k.weekDay);
    }
    EXPECT_EQ(ZkUtil::mjd2WeekDay(-3), 0);
    EXPECT_EQ(ZkUtil::mjd2WeekDay(-4), 6);
}

TEST(ZkUtilDates, EveryDayRoundTripsOverSixCenturies) {
    // Consecutive days map to consecutive dates, through the ten days that never were.
    int previousYear = 0, previousMonth = 0, previousDay = 0;
    ZkUtil::mjd2Date(-150000 - 1, previousYear, previousMonth, previousDay);
    for (int mjd = -150000; mjd <= 80000; ++mjd) {
        int year, month, day;
        ZkUtil::mjd2Date(mjd, year, month, day);
        ASSERT_EQ(ZkUtil::modifiedJulianDay(year, month, day), mjd)
            << year << "-" << month << "-" << day;
        bool nextDay = day == previousDay + 1 && month == previousMonth;
        bool nextMonth =
            day == 1 && (month == previousMonth + 1 || (month == 1 && previousMonth == 12));
        bool switchDay = year == 1582 && month == 10 && day == 15 && previousDay == 4;
        ASSERT_TRUE(nextDay || nextMonth || switchDay) << mjd;
        previousYear = year;
        previousMonth = month;
        previousDay = day;
    }
}

TEST(ZkUtilDates, ExtremesNeitherOverflowNorLoseTheRoundTrip) {
    const int kMax = std::numeric_limits<int>::max();
    const int kMin = std::numeric_limits<int>::min();
    for (int mjd : {kMax, kMax - 1, kMin + 1000000, kMin}) {
        SCOPED_TRACE(mjd);
        int year = 0, month = 0, day = 0;
        ZkUtil::mjd2Date(mjd, year, month, day);
        EXPECT_EQ(ZkUtil::modifiedJulianDay(year, month, day), mjd);
        EXPECT_EQ(ZkUtil::mjd2WeekDay(mjd), int(((long long)mjd + 3) % 7 + 7) % 7);
    }
    EXPECT_EQ(ZkUtil::modifiedJulianDay(kMax, kMax, kMax), kMax);
    EXPECT_EQ(ZkUtil::modifiedJulianDay(kMin, kMin, kMin), kMin);
}
