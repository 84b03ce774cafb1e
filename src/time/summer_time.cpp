// SPDX-License-Identifier: MIT
// Summer time: the window from the last Sunday of March, 01:00:00, to the
// last Sunday of October, 01:00:00, both ends included, in the process's
// own zone (the gateway runs its processes in UTC).
#include <ctime>

#include "core/log.hpp"
#include "time/summer_time.hpp"

namespace qvs::time {

namespace {

constexpr int kMonthDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

// Weekday (Sunday = 0) of the 31st of month m (1-12) in the given year.
long long weekday_of_31st(long long year, int month) {
    long long y = year - 1;
    long long j = (y + y / 4 - y / 100 + y / 400) % 7;
    long long d = 31;
    for (int i = 0; i < month - 1; ++i) d += kMonthDays[i];
    long long leap = ((year % 4 == 0 && year % 100 != 0) || year % 400 == 0) ? 1 : 0;
    long long w = (j + d + leap) % 7;
    return w < 0 ? w + 7 : w;
}

// mktime of a calendar time in the process's zone, with no summer time.
time_t seconds_of(long long year, long long month0, long long day, int hour, int minute, int second) {
    struct tm tm {};
    tm.tm_year = static_cast<int>(year - 1900);
    tm.tm_mon = static_cast<int>(month0);
    tm.tm_mday = static_cast<int>(day);
    tm.tm_hour = hour;
    tm.tm_min = minute;
    tm.tm_sec = second;
    tm.tm_isdst = 0;
    return mktime(&tm);
}

}  // namespace

}  // namespace qvs::time

extern "C" QVS_API int qvsCheckDST(int year, int month, int day, int hour, int minute, int second) {
    using namespace qvs::time;
    // Years whose calendar structure would overflow are never in summer time.
    if (year < -2147483647 + 1900 + 1) return 0;
    long long y = year;
    time_t start = seconds_of(y, 2, 31 - weekday_of_31st(y, 3), 1, 0, 0);
    time_t end = seconds_of(y, 9, 31 - weekday_of_31st(y, 10), 1, 0, 0);
    time_t t = seconds_of(y, month - 1LL, day, hour, minute, second);
    // mktime's -1 is its failure (a time it cannot represent): not summer.
    if (start == static_cast<time_t>(-1) || end == static_cast<time_t>(-1) || t == static_cast<time_t>(-1))
        return 0;
    return (start <= t && t <= end) ? 1 : 0;
}

namespace qvs::time {

long long time_to_dst(long long seconds) {
    const time_t t = static_cast<time_t>(seconds);
    struct tm tm {};
    int is_dst = 0;
    if (localtime_r(&t, &tm) != nullptr)
        is_dst = qvsCheckDST(tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec);
    // Logged under the name callers know, whichever of the two they reach.
    QVS_UTIL_PRINTF_AS("qvsTimeToDST", "isDST=%d\n", is_dst);
    return is_dst == 1 ? seconds + 3600 : seconds;
}

}  // namespace qvs::time

extern "C" QVS_API int64_t qvsTimeToDST64(int64_t seconds) { return qvs::time::time_to_dst(seconds); }
