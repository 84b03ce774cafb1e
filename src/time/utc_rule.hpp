// SPDX-License-Identifier: MIT
// Timer rules from local time to UTC: the two steps of the conversion.
#pragma once

#include <cstddef>

namespace qvs::time {

// Day on which a converted time falls.
inline constexpr int kSameDay = 0;
inline constexpr int kNextDay = 1;
inline constexpr int kPreviousDay = 2;

// A converted time is "HH:MM" and its terminator; the text is cut at 8
// characters (9 bytes, the least the caller provides) whatever the input.
inline constexpr std::size_t kConvertedTimeSize = 9;
// Input time texts are read up to 19 characters.
inline constexpr std::size_t kTimeBufferSize = 20;

// Converts one time text ("HH:MM"; the first ":"-separated field counts as
// hours, every later one as minutes) by offset minutes, added or
// subtracted; writes "%02d:%02d" with its terminator into out (at least
// kConvertedTimeSize bytes). Returns kSameDay, kNextDay or kPreviousDay.
int my_utcChangeTime(const char *time, char *out, int offset, bool subtract);

// Shifts each weekday of the list one day forward (direction > 0) or back,
// commas kept; writes strlen(weekdays) characters and a terminator into out.
void my_utcChangeWeekend(const char *weekdays, char *out, int direction);

}  // namespace qvs::time
