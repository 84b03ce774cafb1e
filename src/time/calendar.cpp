// SPDX-License-Identifier: MIT
// Seconds to calendar fields, without the C library's calendar functions.
#include "time/calendar.hpp"

#include <array>
#include <cstdio>

namespace qvs::time {

namespace {

constexpr std::uint64_t kHoursPerCycle = 35064;  // 1461 days: four years
constexpr std::uint64_t kHoursPerYear = 8760;
constexpr std::uint64_t kHoursPerLeapYear = 8784;
// Beyond year 9999 the text would no longer have four year digits.
constexpr std::uint64_t kMaxSeconds = 253402300799ULL;
constexpr std::array<int, 12> kMonthDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

}  // namespace

CalendarFields calendar_from_seconds(std::uint64_t t) {
    if (t > kMaxSeconds) t = kMaxSeconds;
    CalendarFields f;
    f.second = static_cast<int>(t % 60);
    f.minute = static_cast<int>((t / 60) % 60);
    std::uint64_t hours = t / 3600;

    // Year counted from 1900, as the calendar structure does.
    std::uint64_t year = 70 + 4 * (hours / kHoursPerCycle);
    std::uint64_t r = hours % kHoursPerCycle;
    for (;;) {
        std::uint64_t in_year = (year % 4 == 0) ? kHoursPerLeapYear : kHoursPerYear;
        if (r < in_year) break;
        r -= in_year;
        ++year;
    }
    f.year = static_cast<int>(year + 1900);
    bool leap_year = (year % 4 == 0);

    int yday = static_cast<int>(r / 24);  // 0-based
    f.hour = static_cast<int>(r % 24);
    int d = yday + 1;

    if (leap_year) {
        if (yday == 59) {
            f.month = 2;
            f.day = 29;
            f.leap_day = true;
            return f;
        }
        if (d > 60) d -= 1;  // the leap day taken out
    }

    int month = 0;
    while (month < 11 && d > kMonthDays[static_cast<std::size_t>(month)]) {
        d -= kMonthDays[static_cast<std::size_t>(month)];
        ++month;
    }
    f.month = month + 1;
    f.day = d;
    return f;
}

char *format_stamp(char *out, const CalendarFields &f, bool blank) {
    std::snprintf(out, kStampSize, blank ? "%04d-%02d-%02d %02d:%02d:%02d" : "%04d-%02d-%02dT%02d:%02d:%02d",
                  f.year, f.month, f.day, f.hour, f.minute, f.second);
    return out;
}

}  // namespace qvs::time
