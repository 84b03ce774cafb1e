// SPDX-License-Identifier: MIT
// One time of a timer rule moved by the zone offset.
#include <array>
#include <cstdio>
#include <cstring>

#include "core/log.hpp"
#include "time/utc_rule.hpp"
#include "time/zone_text.hpp"

namespace qvs::time {

namespace {

constexpr long long kMinutesPerDay = 1440;

// "%02d:%02d" of hours and minutes, cut at kConvertedTimeSize - 1 characters.
void write_time(char *out, long long t) {
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%02lld:%02lld", t / 60, t % 60);
    std::size_t n = strnlen(text.data(), kConvertedTimeSize - 1);
    std::memcpy(out, text.data(), n);
    out[n] = '\0';
}

}  // namespace

int my_utcChangeTime(const char *time, char *out, int offset, bool subtract) {
    std::array<char, kTimeBufferSize> buf{};
    std::strncpy(buf.data(), time, buf.size() - 1);

    // Hours, then every further field as minutes (a seconds field too).
    long long minutes = 0;
    bool first = true;
    char *field = buf.data();
    for (;;) {
        char *colon = std::strchr(field, ':');
        if (colon != nullptr) *colon = '\0';
        long long v = read_decimal(field);
        minutes += first ? v * 60 : v;
        first = false;
        if (colon == nullptr) break;
        field = colon + 1;
    }

    long long t = subtract ? minutes - offset : minutes + offset;
    if (t >= kMinutesPerDay) {
        write_time(out, t - kMinutesPerDay);
        QVS_UTIL_PRINTF("next weekend time %s\n", out);
        return kNextDay;
    }
    if (t < 0) {
        write_time(out, t + kMinutesPerDay);
        QVS_UTIL_PRINTF("previous weekend time %s\n", out);
        return kPreviousDay;
    }
    write_time(out, t);
    QVS_UTIL_PRINTF("weekend do not change %s\n", out);
    return kSameDay;
}

}  // namespace qvs::time
