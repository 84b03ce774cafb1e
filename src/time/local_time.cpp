// SPDX-License-Identifier: MIT
// Local time stamps from the clock, and UTC texts from a local time.
#include <cstdio>
#include <ctime>
#include <limits>

#include "core/log.hpp"
#include "time/calendar.hpp"
#include "time/zone_text.hpp"

namespace qvs::time {

namespace {

// Shifts seconds by the zone's offset (direction +1 or -1) and keeps the
// result inside what time_t holds: before 1970 becomes 0, past the end of
// time_t becomes its last second.
time_t shift(long long seconds, const Zone &z, int direction) {
    long long t = seconds + direction * (z.hours * 3600 + z.minutes * 60);
    if (t < 0) t = 0;
    constexpr long long kMax = static_cast<long long>(std::numeric_limits<time_t>::max());
    if (t > kMax) t = kMax;
    return static_cast<time_t>(t);
}

}  // namespace

}  // namespace qvs::time

extern "C" QVS_API int my_localtime(int dstEnable, const char *zone, char *out) {
    using namespace qvs::time;
    if (out == nullptr) return -1;
    time_t now = ::time(nullptr);

    Zone z = read_zone(zone);
    time_t t = now;
    if (z.sign == ZoneSign::kMinus) {
        if (z.empty) return -1;
        t = shift(now, z, -1);
    } else if (z.sign == ZoneSign::kPlus) {
        if (z.empty) {
            std::puts("localtime ptr is NULL!");
            std::fflush(stdout);
            return -1;
        }
        t = shift(now, z, +1);
    } else if (t < 0) {
        t = 0;
    }

    if (dstEnable != 0) {
        QVS_UTIL_PRINTF("second=%lu\n", static_cast<unsigned long>(t));
        t = qvsTimeToDST(t);
        QVS_UTIL_PRINTF("second=%lu\n", static_cast<unsigned long>(t));
    }

    CalendarFields f = calendar_from_seconds(static_cast<std::uint64_t>(t));
    format_stamp(out, f, f.leap_day);
    return 0;
}

extern "C" QVS_API int my_settime(struct tm local, const char *zone, char *out) {
    using namespace qvs::time;
    if (out == nullptr) return -1;
    time_t given = mktime(&local);

    Zone z = read_zone(zone);
    if (z.empty) return -1;
    int direction = 0;
    if (z.sign == ZoneSign::kMinus) direction = +1;
    if (z.sign == ZoneSign::kPlus) direction = -1;
    time_t t = shift(given, z, direction);

    format_stamp(out, calendar_from_seconds(static_cast<std::uint64_t>(t)), true);
    return 0;
}
