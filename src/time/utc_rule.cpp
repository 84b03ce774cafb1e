// SPDX-License-Identifier: MIT
// A daily timer rule (time range and weekday list) from local time to UTC.
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/log.hpp"
#include "time/utc_rule.hpp"
#include "time/zone_text.hpp"

namespace qvs::time {

namespace {

// The fixed range ends, written as 8 bytes without a terminator.
constexpr char kDayEnd[] = "23:59:59";
constexpr char kDayStart[] = "00:00:00";
constexpr std::size_t kFixedEndLength = 8;

// A terminated working copy for a weekday list: on the stack for lists of
// ordinary length, on the heap for longer ones.
class WeekdayText {
public:
    explicit WeekdayText(std::size_t length) : heap_(nullptr), text_(inline_.data()) {
        if (length + 1 > inline_.size()) {
            heap_ = static_cast<char *>(std::calloc(length + 1, 1));
            text_ = heap_;
        }
    }
    ~WeekdayText() { std::free(heap_); }
    WeekdayText(const WeekdayText &) = delete;
    WeekdayText &operator=(const WeekdayText &) = delete;
    explicit operator bool() const { return text_ != nullptr; }
    char *data() { return text_; }

private:
    std::array<char, 64> inline_{};
    char *heap_;
    char *text_;
};

// Copies a time text unchanged (up to 8 characters) with its terminator.
void copy_time(char *out, const char *time) {
    std::size_t n = strnlen(time, kConvertedTimeSize - 1);
    std::memcpy(out, time, n);
    out[n] = '\0';
}

}  // namespace

}  // namespace qvs::time

extern "C" QVS_API int my_utctime(const char *zone, const char *start, const char *end, const char *weekdays,
                                  char *utcStart, char *utcEnd, char *utcWeekdays, char *nextStart,
                                  char *nextEnd, char *nextWeekdays) {
    using namespace qvs::time;
    if (zone == nullptr || start == nullptr || end == nullptr || weekdays == nullptr || utcStart == nullptr ||
        utcEnd == nullptr || utcWeekdays == nullptr || nextStart == nullptr || nextEnd == nullptr ||
        nextWeekdays == nullptr)
        return -1;

    std::array<char, kZoneBufferSize> zone_copy{};
    std::strncpy(zone_copy.data(), zone, zone_copy.size() - 1);
    const std::size_t days_length = std::strlen(weekdays);

    Zone z = read_zone(zone);
    if (z.sign == ZoneSign::kNone) {
        copy_time(utcStart, start);
        copy_time(utcEnd, end);
        std::memcpy(utcWeekdays, weekdays, days_length);
        QVS_UTIL_PRINTF("time do not change zone %s\n", zone_copy.data());
        return 0;
    }

    // A "-" zone lies behind UTC: its offset is added. A "+" zone: subtracted.
    const bool minus_zone = (z.sign == ZoneSign::kMinus);
    if (z.empty) {
        std::puts(minus_zone ? "ntp ptr is NULL!" : "localtime ptr is NULL!");
        std::fflush(stdout);
        return -1;
    }

    WeekdayText shifted(days_length);
    if (!shifted) return -1;

    const int offset = static_cast<int>(z.hours * 60 + z.minutes);
    if (minus_zone)
        QVS_UTIL_PRINTF("+zone minute %d\n", offset);
    else
        QVS_UTIL_PRINTF("-zone minute %d\n", offset);

    std::array<char, kConvertedTimeSize> conv_start{};
    std::array<char, kConvertedTimeSize> conv_end{};
    const bool subtract = !minus_zone;
    const int rs = my_utcChangeTime(start, conv_start.data(), offset, subtract);
    const int re = my_utcChangeTime(end, conv_end.data(), offset, subtract);
    std::memcpy(utcStart, conv_start.data(), std::strlen(conv_start.data()) + 1);
    std::memcpy(utcEnd, conv_end.data(), std::strlen(conv_end.data()) + 1);

    if (rs == kSameDay && re == kSameDay) {  // both on the same day
        std::memcpy(utcWeekdays, weekdays, days_length);
        if (minus_zone)
            QVS_UTIL_PRINTF("utc weekend %s - %s %s\n", conv_start.data(), conv_end.data(), weekdays);
        else
            QVS_UTIL_PRINTF("utc: time %s - %s weekend %s\n", conv_start.data(), conv_end.data(), weekdays);
    } else if (rs == kNextDay && re == kNextDay) {  // the whole range on the next day
        my_utcChangeWeekend(weekdays, shifted.data(), +1);
        std::memcpy(utcWeekdays, shifted.data(), days_length);
        if (minus_zone)
            QVS_UTIL_PRINTF("utc weekend + 1 %s - %s %s\n", conv_start.data(), conv_end.data(), shifted.data());
        else
            QVS_UTIL_PRINTF("utc: time %s - %s weekend + 1 %s\n", conv_start.data(), conv_end.data(),
                            shifted.data());
    } else if (rs == kPreviousDay && re == kPreviousDay) {  // the whole range on the previous day
        my_utcChangeWeekend(weekdays, shifted.data(), -1);
        std::memcpy(utcWeekdays, shifted.data(), days_length);
        if (minus_zone)
            QVS_UTIL_PRINTF("utc weekend - 1 %s - %s %s\n", conv_start.data(), conv_end.data(), shifted.data());
        else
            QVS_UTIL_PRINTF("utc: time %s - %s weekend - 1 %s\n", conv_start.data(), conv_end.data(),
                            shifted.data());
    } else if (rs == kSameDay && re == kNextDay) {  // the end crosses into the next day: split
        std::memcpy(nextEnd, conv_end.data(), std::strlen(conv_end.data()) + 1);
        std::memcpy(utcEnd, kDayEnd, kFixedEndLength);
        std::memcpy(utcWeekdays, weekdays, days_length);
        std::memcpy(nextStart, kDayStart, kFixedEndLength);
        my_utcChangeWeekend(weekdays, shifted.data(), +1);
        std::memcpy(nextWeekdays, shifted.data(), days_length);
        if (minus_zone)
            QVS_UTIL_PRINTF("utc weekend: %s - %s %s, local weekend: %s - %s %s\n", conv_start.data(), kDayEnd,
                            weekdays, kDayStart, conv_end.data(), shifted.data());
        else
            QVS_UTIL_PRINTF("utc: time %s - %s weekend %s, local: time %s - %s  weekend %s\n", conv_start.data(),
                            kDayEnd, weekdays, kDayStart, conv_end.data(), shifted.data());
    } else if (rs == kPreviousDay && re == kSameDay) {  // the start falls on the previous day: split
        std::memcpy(nextEnd, conv_end.data(), std::strlen(conv_end.data()) + 1);
        std::memcpy(utcEnd, kDayEnd, kFixedEndLength);
        my_utcChangeWeekend(weekdays, shifted.data(), -1);
        std::memcpy(utcWeekdays, shifted.data(), days_length);
        std::memcpy(nextStart, kDayStart, kFixedEndLength);
        std::memcpy(nextWeekdays, weekdays, days_length);
        if (minus_zone)
            QVS_UTIL_PRINTF("utc weekend: %s - %s %s, local weekend: %s - %s %s\n", conv_start.data(), kDayEnd,
                            shifted.data(), kDayStart, conv_end.data(), weekdays);
        else
            QVS_UTIL_PRINTF("utc: time %s - %s weekend %s, local: time %s - %s weekend %s\n", conv_start.data(),
                            kDayEnd, shifted.data(), kDayStart, conv_end.data(), weekdays);
    }
    // Any other pair: the local range itself wraps past midnight; the
    // converted times stand, the weekdays are not written.
    return 0;
}
