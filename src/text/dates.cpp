// Dates of ZkUtil on the Modified Julian Day (day 0 is 1858-11-17): Julian calendar before
// 1582-10-15, Gregorian from then on.
#include "zkcommon/text/util.h"

#include <cmath>
#include <limits>

namespace ZkCommonNS {

namespace {

// The first Gregorian day, 1582-10-15, as a Modified Julian Day.
constexpr long long kGregorianSwitchMjd = -100840;

// The arithmetic runs in 64 bits: a year, month or day near the ends of int must not overflow
// on the way; a result beyond int is clamped.
int clampToInt(long long value) noexcept {
    if (value > std::numeric_limits<int>::max())
        return std::numeric_limits<int>::max();
    if (value < std::numeric_limits<int>::min())
        return std::numeric_limits<int>::min();
    return static_cast<int>(value);
}

long long floorDiv(long long a, long long b) noexcept {
    long long q = a / b;
    return (a % b != 0 && ((a < 0) != (b < 0))) ? q - 1 : q;
}

} // namespace

int ZkUtil::modifiedJulianDay(int year, int month, int day) noexcept {
    long long y = year;
    long long m = month;
    if (month <= 2) {
        y = static_cast<long long>(year) - 1;
        m = static_cast<long long>(month) + 12;
    }
    // floor rather than truncation, so that years before 1 count on without a jump; the month
    // term is truncated toward zero as the formula is written.
    const long long d = static_cast<long long>(std::floor(365.25 * static_cast<double>(y))) +
                        static_cast<long long>(30.59 * static_cast<double>(m - 2)) + day;
    if (static_cast<long long>(year) * 10000 + static_cast<long long>(month) * 100 + day < 15821015)
        return clampToInt(d - 678914);
    return clampToInt(d + y / 400 - y / 100 - 678912);
}

void ZkUtil::mjd2Date(int mjd, int& year, int& month, int& day) noexcept {
    // Days are counted from 1 March of year 0 of the calendar in force, so that the leap day
    // closes each cycle; MJD -678881 is that day in the Gregorian calendar, -678883 in the
    // Julian one.
    long long days;
    long long y;
    if (mjd < kGregorianSwitchMjd) {
        // Julian: cycles of four years of 1461 days, the leap day closing each cycle.
        days = static_cast<long long>(mjd) + 678883;
        long long cycles = floorDiv(days, 1461);
        long long rest = days - cycles * 1461;
        long long inCycle = rest / 365;
        if (inCycle == 4)
            inCycle = 3;
        y = cycles * 4 + inCycle;
        days = rest - inCycle * 365;
    } else {
        days = static_cast<long long>(mjd) + 678881;
        long long eras = floorDiv(days, 146097);
        long long rest = days - eras * 146097;
        long long centuries = rest / 36524;
        if (centuries == 4)
            centuries = 3;
        rest -= centuries * 36524;
        long long quads = rest / 1461;
        rest -= quads * 1461;
        long long inCycle = rest / 365;
        if (inCycle == 4)
            inCycle = 3;
        y = eras * 400 + centuries * 100 + quads * 4 + inCycle;
        days = rest - inCycle * 365;
    }
    // days: 0 is 1 March. Months of the March year: 153 days per five months.
    long long m = (5 * days + 2) / 153;
    day = static_cast<int>(days - (153 * m + 2) / 5 + 1);
    month = static_cast<int>(m < 10 ? m + 3 : m - 9);
    year = clampToInt(m < 10 ? y : y + 1);
}

int ZkUtil::mjd2WeekDay(int mjd) noexcept {
    // mjd + 3 could overflow; the remainder first cannot.
    int weekDay = (mjd % 7 + 3) % 7;
    return weekDay < 0 ? weekDay + 7 : weekDay;
}

} // namespace ZkCommonNS
