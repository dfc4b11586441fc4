// Dates of ZkUtil on the Modified Julian Day (day 0 is 1858-11-17): Julian calendar before
// 1582-10-15, Gregorian from then on.
#include "zkcommon/text/util.h"

#include <cmath>

namespace ZkCommonNS {

namespace {

// The first Gregorian day, 1582-10-15, as a Modified Julian Day.
constexpr int kGregorianSwitchMjd = -100840;

// Truncation toward zero of a product, as the formulas are written.
int truncated(double value) noexcept {
    return static_cast<int>(value);
}

int floorDiv(int a, int b) noexcept {
    int q = a / b;
    return (a % b != 0 && ((a < 0) != (b < 0))) ? q - 1 : q;
}

} // namespace

int ZkUtil::modifiedJulianDay(int year, int month, int day) noexcept {
    int y = year;
    int m = month;
    if (month <= 2) {
        y = year - 1;
        m = month + 12;
    }
    // floor rather than truncation, so that years before 1 count on without a jump.
    int d = static_cast<int>(std::floor(365.25 * y)) + truncated(30.59 * (m - 2)) + day;
    if (year * 10000 + month * 100 + day < 15821015)
        return d - 678914;
    return d + y / 400 - y / 100 - 678912;
}

void ZkUtil::mjd2Date(int mjd, int& year, int& month, int& day) noexcept {
    // Days are counted from 1 March of year 0 of the calendar in force, so that the leap day
    // closes each cycle; MJD -678881 is that day in the Gregorian calendar, -678883 in the
    // Julian one.
    int days;
    int y;
    if (mjd < kGregorianSwitchMjd) {
        // Julian: cycles of four years of 1461 days, the leap day closing each cycle.
        days = mjd + 678883;
        int cycles = floorDiv(days, 1461);
        int rest = days - cycles * 1461;
        int inCycle = rest / 365;
        if (inCycle == 4)
            inCycle = 3;
        y = cycles * 4 + inCycle;
        days = rest - inCycle * 365;
    } else {
        days = mjd + 678881;
        int eras = floorDiv(days, 146097);
        int rest = days - eras * 146097;
        int centuries = rest / 36524;
        if (centuries == 4)
            centuries = 3;
        rest -= centuries * 36524;
        int quads = rest / 1461;
        rest -= quads * 1461;
        int inCycle = rest / 365;
        if (inCycle == 4)
            inCycle = 3;
        y = eras * 400 + centuries * 100 + quads * 4 + inCycle;
        days = rest - inCycle * 365;
    }
    // days: 0 is 1 March. Months of the March year: 153 days per five months.
    int m = (5 * days + 2) / 153;
    day = days - (153 * m + 2) / 5 + 1;
    month = m < 10 ? m + 3 : m - 9;
    year = m < 10 ? y : y + 1;
}

int ZkUtil::mjd2WeekDay(int mjd) noexcept {
    int weekDay = (mjd + 3) % 7;
    return weekDay < 0 ? weekDay + 7 : weekDay;
}

} // namespace ZkCommonNS
