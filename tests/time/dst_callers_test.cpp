// SPDX-License-Identifier: MIT
// qvsTimeToDST from a caller built with the target's own time_t and from
// one built with _TIME_BITS=64, and qvsCheckDST past 2038: on armhf the
// 32-bit caller keeps the 32-bit function, the 64-bit caller gets the twin,
// and both are right wherever their time_t reaches.
#include <climits>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "dst_callers.h"
#include "qvs_utils.h"
#include "time_test_support.hpp"

using timetest::utc;

namespace {

// Weekday (Sunday 0) of a UTC calendar day.
int weekday(int y, int m, int d) {
    const long long days = utc(y, m, d, 0, 0, 0) / 86400;
    return static_cast<int>(((days % 7) + 11) % 7);  // 1970-01-01 was a Thursday (4)
}

// The summer window of a year: last Sunday of March 01:00:00 to last Sunday
// of October 01:00:00, both included (the process runs in UTC).
long long summer_start(int y) { return utc(y, 3, 31 - weekday(y, 3, 31), 1, 0, 0); }
long long summer_end(int y) { return utc(y, 10, 31 - weekday(y, 10, 31), 1, 0, 0); }

long long expected(long long t, int y) { return summer_start(y) <= t && t <= summer_end(y) ? t + 3600 : t; }

// Moments of a year around both ends of its summer and in mid-winter.
std::vector<long long> moments(int y) {
    return {utc(y, 1, 15, 12, 0, 0), summer_start(y) - 1, summer_start(y), utc(y, 7, 1, 12, 0, 0),
            summer_end(y),           summer_end(y) + 1,   utc(y, 12, 31, 23, 59, 59)};
}

class DstCallers : public ::testing::Test {
protected:
    void SetUp() override { timetest::use_zone("UTC0"); }
};

TEST_F(DstCallers, EachCallerHasTheTimeSizeItWasBuiltWith) {
    EXPECT_EQ(caller64_time_size(), 8);
    EXPECT_EQ(caller32_time_size(), sizeof(void *) == 4 ? 4 : 8);
}

TEST_F(DstCallers, TheSixtyFourBitCallerIsRightThrough2106) {
    int checked = 0;
    for (int y = 1971; y <= 2105; ++y)
        for (long long t : moments(y)) {
            EXPECT_EQ(caller64_to_dst(t), expected(t, y)) << y << " " << t;
            ++checked;
        }
    EXPECT_EQ(checked, 135 * 7);
    // 2040-07-01 12:00 UTC lies in summer time: one hour more.
    EXPECT_EQ(caller64_to_dst(utc(2040, 7, 1, 12, 0, 0)), utc(2040, 7, 1, 13, 0, 0));
    EXPECT_EQ(caller64_to_dst(utc(2105, 1, 1, 0, 0, 0)), utc(2105, 1, 1, 0, 0, 0));
}

TEST_F(DstCallers, TheTwinIsTheSameFunctionUnderItsOwnName) {
    for (int y : {1999, 2037, 2040, 2105})
        for (long long t : moments(y)) EXPECT_EQ(qvsTimeToDST64(t), expected(t, y)) << t;
}

TEST_F(DstCallers, TheCallerWithTheTargetsTimeSizeIsRightWhereItsTimeReaches) {
    const int last_year = caller32_time_size() == 4 ? 2037 : 2105;
    int checked = 0;
    for (int y = 1971; y <= last_year; ++y)
        for (long long t : moments(y)) {
            EXPECT_EQ(caller32_to_dst(t), expected(t, y)) << y << " " << t;
            ++checked;
        }
    EXPECT_GE(checked, 67 * 7);
    // The last second a 32-bit time_t holds (January 2038, winter).
    EXPECT_EQ(caller32_to_dst(INT32_MAX), INT32_MAX);
}

TEST_F(DstCallers, CheckDstPast2038AgreesWithTheCalendarOnEveryTarget) {
    EXPECT_EQ(qvsCheckDST(2040, 7, 1, 12, 0, 0), 1);
    EXPECT_EQ(qvsCheckDST(2040, 1, 1, 12, 0, 0), 0);
    for (int y = 2038; y <= 2105; ++y) {
        const int ms = 31 - weekday(y, 3, 31), me = 31 - weekday(y, 10, 31);
        EXPECT_EQ(qvsCheckDST(y, 3, ms, 0, 59, 59), 0) << y;
        EXPECT_EQ(qvsCheckDST(y, 3, ms, 1, 0, 0), 1) << y;
        EXPECT_EQ(qvsCheckDST(y, 10, me, 1, 0, 0), 1) << y;
        EXPECT_EQ(qvsCheckDST(y, 10, me, 1, 0, 1), 0) << y;
    }
}

}  // namespace
