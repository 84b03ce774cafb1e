// SPDX-License-Identifier: MIT
// The library's own calendar arithmetic: seconds since 1970 to a time stamp.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qvs::time {

struct CalendarFields {
    int year = 1970;  // in full
    int month = 1;    // 1-12
    int day = 1;
    int hour = 0;
    int minute = 0;
    int second = 0;
    bool leap_day = false;  // 29 February
};

// Breaks seconds since 1970-01-01 00:00:00 (no leap seconds) into calendar
// fields (seconds beyond the end of year 9999 count as that end) by whole four-year cycles of 35064 hours, then years of 8760 or
// 8784 hours (every fourth year from 1972 is a leap year, with no century
// rule), then the day of the year against a 28-day February.
CalendarFields calendar_from_seconds(std::uint64_t seconds);

// Time-stamp text size: 19 characters and the terminator.
inline constexpr std::size_t kStampSize = 20;

// Writes "YYYY-MM-DDTHH:MM:SS", or with a blank in place of the "T" when
// blank is set, into out (kStampSize bytes). Returns out.
char *format_stamp(char *out, const CalendarFields &f, bool blank);

}  // namespace qvs::time
