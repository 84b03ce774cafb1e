// SPDX-License-Identifier: MIT
// The stamp follows the system clock itself. On the build machine the clock
// is pinned and moved from outside with Debian's faketime around a small
// probe program; where that preload library cannot run (the 32-bit ARM
// build under an emulator), the stamp is checked against the clock read
// just before and just after the call.
#include <cstring>
#include <ctime>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

#include "qvs_utils.h"
#include "test_support.hpp"
#include "time_test_support.hpp"

namespace {

std::string stamp(time_t t) {
    struct tm tm {};
    gmtime_r(&t, &tm);
    char buf[32];
    std::snprintf(buf, sizeof buf,
                  (tm.tm_mon == 1 && tm.tm_mday == 29) ? "%04d-%02d-%02d %02d:%02d:%02d" : "%04d-%02d-%02dT%02d:%02d:%02d",
                  tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec);
    return buf;
}

}  // namespace

#if defined(__x86_64__)

namespace {

constexpr char kFaketime[] = "/usr/lib/x86_64-linux-gnu/faketime/libfaketime.so.1";

// my_localtime in the probe with the clock frozen at `when` (UTC).
std::string probe(const char *when, int dst, const char *zone) {
    std::string cmd = std::string("env TZ=UTC0 FAKETIME='") + when + "' LD_PRELOAD=" + kFaketime +
                      " ASAN_OPTIONS=verify_asan_link_order=0:detect_leaks=0 " + QVS_TIME_PROBE + " " +
                      std::to_string(dst) + " '" + zone + "' 2>/dev/null";
    int status = -1;
    std::string out = qvstest::run(cmd, &status);
    if (status != 0) return "status " + std::to_string(status) + ": " + out;
    return out;
}

}  // namespace

TEST(SystemClock, PinnedAndMovedWithFaketime) {
    ASSERT_EQ(access(kFaketime, R_OK), 0) << "Debian's faketime package is needed";
    EXPECT_EQ(probe("2024-02-29 04:00:00", 0, "+08:00"), "0 2024-02-29 12:00:00\n");
    EXPECT_EQ(probe("2024-02-29 04:00:00", 0, "-05:00"), "0 2024-02-28T23:00:00\n");
    EXPECT_EQ(probe("2024-03-01 12:00:00", 0, "+00:00"), "0 2024-03-01T12:00:00\n");
    EXPECT_EQ(probe("2024-03-31 00:59:59", 1, "+00:00"), "0 2024-03-31T00:59:59\n");
    EXPECT_EQ(probe("2024-03-31 01:00:00", 1, "+00:00"), "0 2024-03-31T02:00:00\n");
    EXPECT_EQ(probe("2024-10-27 01:00:00", 1, "+00:00"), "0 2024-10-27T02:00:00\n");
    EXPECT_EQ(probe("2024-10-27 01:00:01", 1, "+00:00"), "0 2024-10-27T01:00:01\n");
    EXPECT_EQ(probe("1970-01-01 01:00:00", 0, "-08:00"), "0 1970-01-01T00:00:00\n");
    EXPECT_EQ(probe("2037-12-31 23:59:59", 0, "+00:00"), "0 2037-12-31T23:59:59\n");
    EXPECT_EQ(probe("2024-01-01 00:00:00", 0, "-"), "-1 \n");
}

#else

TEST(SystemClock, FollowsTheClockBetweenTwoReadings) {
    timetest::use_zone("UTC0");
    for (const char *zone : {"+00:00", "+08:00", "-05:30"}) {
        long long shift = std::strcmp(zone, "+08:00") == 0 ? 8 * 3600 : std::strcmp(zone, "-05:30") == 0 ? -(5 * 3600 + 1800) : 0;
        char out[26] = {};
        time_t before = ::time(nullptr);
        ASSERT_EQ(my_localtime(0, zone, out), 0);
        time_t after = ::time(nullptr);
        bool matches = false;
        for (time_t t = before; t <= after; ++t) matches = matches || stamp(static_cast<time_t>(t + shift)) == out;
        EXPECT_TRUE(matches) << zone << ": " << out;
    }
}

#endif

TEST(SystemClock, ProcessLocalTimeFallbackFollowsTheClock) {
    timetest::use_zone("UTC0");
    char out[26] = {};
    time_t before = ::time(nullptr);
    ASSERT_EQ(get_currentTime(0, out), out);
    time_t after = ::time(nullptr);
    bool matches = false;
    for (time_t t = before; t <= after; ++t) {
        struct tm tm {};
        gmtime_r(&t, &tm);
        char want[32];
        std::strftime(want, sizeof want, "%Y-%m-%dT%H:%M:%S", &tm);
        matches = matches || std::string(want) == out;
    }
    EXPECT_TRUE(matches) << out;
    EXPECT_EQ(stamp(before).size(), std::strlen(out));
}
