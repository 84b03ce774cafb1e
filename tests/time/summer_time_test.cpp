// SPDX-License-Identifier: MIT
// Summer time: the window from the last Sunday of March 01:00:00 to the last
// Sunday of October 01:00:00, both included, against the European rule
// worked out here from the C library's UTC calendar.
#include <climits>
#include <string>

#include <gtest/gtest.h>

#include "qvs_utils.h"
#include "test_support.hpp"
#include "time_test_support.hpp"

using qvstest::CaptureFd;
using timetest::LogLine;
using timetest::parse_log;
using timetest::utc;

namespace {

// Day of the month of the last Sunday of March or October.
int last_sunday(int year, int month) {
    for (int d = 31; d > 24; --d) {
        time_t t = static_cast<time_t>(utc(year, month, d, 12, 0, 0));
        struct tm tm {};
        gmtime_r(&t, &tm);
        if (tm.tm_wday == 0) return d;
    }
    return 0;
}

class SummerTime : public ::testing::Test {
protected:
    void SetUp() override { timetest::use_zone("UTC0"); }
};

}  // namespace

TEST_F(SummerTime, BothBoundariesOfEveryYearFrom1971To2037) {
    for (int y = 1971; y <= 2037; ++y) {
        int march = last_sunday(y, 3), october = last_sunday(y, 10);
        ASSERT_GE(march, 25);
        ASSERT_GE(october, 25);
        EXPECT_EQ(qvsCheckDST(y, 3, march, 0, 59, 59), 0) << y;
        EXPECT_EQ(qvsCheckDST(y, 3, march, 1, 0, 0), 1) << y;
        EXPECT_EQ(qvsCheckDST(y, 10, october, 1, 0, 0), 1) << y;
        EXPECT_EQ(qvsCheckDST(y, 10, october, 1, 0, 1), 0) << y;
        EXPECT_EQ(qvsCheckDST(y, 3, march - 7, 1, 0, 0), 0) << y;
        EXPECT_EQ(qvsCheckDST(y, 10, october - 7, 1, 0, 1), 1) << y;
        EXPECT_EQ(qvsCheckDST(y, 1, 1, 0, 0, 0), 0) << y;
        EXPECT_EQ(qvsCheckDST(y, 7, 1, 12, 0, 0), 1) << y;
        EXPECT_EQ(qvsCheckDST(y, 12, 31, 23, 59, 59), 0) << y;
    }
}

TEST_F(SummerTime, EveryHourOfEveryYearFrom1971To2037) {
    int mismatches = 0, hours = 0;
    for (int y = 1971; y <= 2037; ++y) {
        long long start = utc(y, 3, last_sunday(y, 3), 1, 0, 0);
        long long end = utc(y, 10, last_sunday(y, 10), 1, 0, 0);
        for (long long t = utc(y, 1, 1, 0, 0, 0); t < utc(y + 1, 1, 1, 0, 0, 0); t += 3600) {
            time_t tt = static_cast<time_t>(t);
            struct tm tm {};
            gmtime_r(&tt, &tm);
            int want = (start <= t && t <= end) ? 1 : 0;
            int got = qvsCheckDST(tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec);
            if (got != want && ++mismatches <= 5) ADD_FAILURE() << t << ": " << got;
            ++hours;
        }
    }
    EXPECT_EQ(mismatches, 0);
    EXPECT_EQ(hours, 587328);  // 24 * the days of 1971-2037
}

TEST_F(SummerTime, TheWindowIsWallClockTimeInTheProcesssZone) {
    timetest::use_zone("XXX-8");
    EXPECT_EQ(qvsCheckDST(2024, 3, 31, 0, 59, 59), 0);
    EXPECT_EQ(qvsCheckDST(2024, 3, 31, 1, 0, 0), 1);
    EXPECT_EQ(qvsCheckDST(2024, 10, 27, 1, 0, 0), 1);
    EXPECT_EQ(qvsCheckDST(2024, 10, 27, 1, 0, 1), 0);
}

TEST_F(SummerTime, FieldsOutsideTheirRangesAreNormalised) {
    EXPECT_EQ(qvsCheckDST(2024, 13, 1, 0, 0, 0), 0);    // January of 2025
    EXPECT_EQ(qvsCheckDST(2024, 3, 30, 25, 0, 0), 1);   // 31 March, 01:00
    EXPECT_EQ(qvsCheckDST(2024, 3, 31, 0, 0, 3599), 0); // 31 March, 00:59:59
    EXPECT_EQ(qvsCheckDST(2024, 0, 1, 0, 0, 0), 0);     // December of 2023
}

TEST_F(SummerTime, TimesTheClockCannotHoldAreNotSummer) {
    EXPECT_EQ(qvsCheckDST(INT_MIN, INT_MIN, INT_MIN, INT_MIN, INT_MIN, INT_MIN), 0);
    EXPECT_EQ(qvsCheckDST(INT_MAX, 7, 1, 12, 0, 0), sizeof(time_t) == 4 ? 0 : 1);
    int far = qvsCheckDST(2100, 7, 1, 12, 0, 0);
    EXPECT_EQ(far, sizeof(time_t) == 4 ? 0 : 1);
}

TEST_F(SummerTime, TimeToDstAddsAnHourInsideTheWindow) {
    long long start = utc(2024, 3, 31, 1, 0, 0);
    CaptureFd e(2);
    EXPECT_EQ(static_cast<long long>(qvsTimeToDST(static_cast<time_t>(start))), start + 3600);
    EXPECT_EQ(static_cast<long long>(qvsTimeToDST(static_cast<time_t>(start - 1))), start - 1);
    long long end = utc(2024, 10, 27, 1, 0, 0);
    EXPECT_EQ(static_cast<long long>(qvsTimeToDST(static_cast<time_t>(end))), end + 3600);
    EXPECT_EQ(static_cast<long long>(qvsTimeToDST(static_cast<time_t>(end + 1))), end + 1);
    EXPECT_EQ(parse_log(e.text()), (std::vector<LogLine>{{"qvsTimeToDST", "isDST=1\n"},
                                                          {"qvsTimeToDST", "isDST=0\n"},
                                                          {"qvsTimeToDST", "isDST=1\n"},
                                                          {"qvsTimeToDST", "isDST=0\n"}}));
}

TEST_F(SummerTime, TimeToDstBreaksSecondsDownInTheProcesssZone) {
    timetest::use_zone("XXX-1");  // one hour ahead: 00:00 UTC is 01:00 here
    long long t = utc(2024, 3, 31, 0, 0, 0);
    EXPECT_EQ(static_cast<long long>(qvsTimeToDST(static_cast<time_t>(t))), t + 3600);
    EXPECT_EQ(static_cast<long long>(qvsTimeToDST(static_cast<time_t>(t - 1))), t - 1);
}

TEST_F(SummerTime, TimeToDstLeavesWinterAndTheEpochAlone) {
    EXPECT_EQ(static_cast<long long>(qvsTimeToDST(0)), 0);
    long long t = utc(2024, 12, 24, 18, 0, 0);
    EXPECT_EQ(static_cast<long long>(qvsTimeToDST(static_cast<time_t>(t))), t);
}
