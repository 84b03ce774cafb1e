// SPDX-License-Identifier: MIT
// Local time stamps from the clock (pinned and moved through this
// program's own time()), the calendar arithmetic against the C library's
// UTC calendar, summer time in the stamp, and UTC texts from local times.
#include <climits>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "test_clock.h"
#include "qvs_utils.h"
#include "test_support.hpp"
#include "time_test_support.hpp"

using qvstest::CaptureFd;
using timetest::LogLine;
using timetest::parse_log;
using timetest::utc;

namespace {

// The reference: the C library's UTC calendar, with the blank in place of
// the "T" on 29 February (or always, as UTC texts are written).
std::string reference(long long seconds, bool always_blank = false) {
    time_t t = static_cast<time_t>(seconds);
    struct tm tm {};
    if (gmtime_r(&t, &tm) == nullptr) return "gmtime_r failed";
    bool blank = always_blank || (tm.tm_mon == 1 && tm.tm_mday == 29);
    char buf[64];
    std::snprintf(buf, sizeof buf, blank ? "%04d-%02d-%02d %02d:%02d:%02d" : "%04d-%02d-%02dT%02d:%02d:%02d",
                  tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec);
    return buf;
}

struct tm local_tm(int y, int mo, int d, int h, int mi, int s) {
    struct tm tm {};
    tm.tm_year = y - 1900;
    tm.tm_mon = mo - 1;
    tm.tm_mday = d;
    tm.tm_hour = h;
    tm.tm_min = mi;
    tm.tm_sec = s;
    return tm;
}

// Last day of the test range the platform's time_t holds.
long long last_day_start() { return utc(2037, 12, 31, 0, 0, 0); }

class LocalTime : public ::testing::Test {
protected:
    void SetUp() override { timetest::use_zone("UTC0"); }
    void TearDown() override { test_clock_release(); }

    // my_localtime at a pinned moment.
    std::string at(long long seconds, const char *zone, int dst = 0, int *result = nullptr) {
        test_clock_pin(static_cast<time_t>(seconds));
        char out[26];
        std::memset(out, 'X', sizeof out);
        int r = my_localtime(dst, zone, out);
        if (result != nullptr) *result = r;
        if (r != 0) return "result " + std::to_string(r);
        if (strnlen(out, sizeof out) == sizeof out) return "unterminated";
        return out;
    }
};

}  // namespace

// ---- the calendar arithmetic ---------------------------------------------

TEST_F(LocalTime, AgreesWithTheUtcCalendarOnEveryDayTo2037) {
    int days = 0, mismatches = 0;
    for (long long day_start = 0; day_start <= last_day_start(); day_start += 86400) {
        // A different second of the day every day, and both ends of the day.
        long long within = (day_start / 86400 * 7919) % 86400;
        for (long long t : {day_start, day_start + within, day_start + 86399}) {
            std::string got = at(t, "+00:00");
            if (got != reference(t) && ++mismatches <= 5) ADD_FAILURE() << t << ": " << got << " != " << reference(t);
        }
        ++days;
    }
    EXPECT_EQ(mismatches, 0);
    EXPECT_EQ(days, 24837);  // 1970-01-01 to 2037-12-31
}

TEST_F(LocalTime, AgreesWithTheUtcCalendarForRandomSeconds) {
    std::mt19937 gen(20240229);
    std::uniform_int_distribution<long long> pick(0, INT_MAX);
    int mismatches = 0;
    for (int i = 0; i < 200000; ++i) {
        long long t = pick(gen);
        std::string got = at(t, "+00:00");
        if (got != reference(t) && ++mismatches <= 5) ADD_FAILURE() << t << ": " << got << " != " << reference(t);
    }
    EXPECT_EQ(mismatches, 0);
}

TEST_F(LocalTime, YearAndCycleBoundaries) {
    for (int y = 1970; y <= 2037; ++y) {
        for (long long t : {utc(y, 1, 1, 0, 0, 0), utc(y, 1, 31, 23, 59, 59), utc(y, 2, 1, 0, 0, 0),
                            utc(y, 2, 28, 23, 59, 59), utc(y, 3, 1, 0, 0, 0), utc(y, 12, 31, 23, 59, 59)})
            EXPECT_EQ(at(t, "+00:00"), reference(t)) << t;
        if (y % 4 == 0) {
            EXPECT_EQ(at(utc(y, 2, 29, 0, 0, 0), "+00:00"), reference(utc(y, 2, 29, 0, 0, 0)));
            EXPECT_EQ(at(utc(y, 2, 29, 23, 59, 59), "+00:00"), reference(utc(y, 2, 29, 23, 59, 59)));
        }
    }
}

// ---- the leap day -----------------------------------------------------------

TEST_F(LocalTime, LeapDayIsWrittenWithABlank) {
    EXPECT_EQ(at(utc(2024, 2, 29, 12, 0, 0), "+00:00"), "2024-02-29 12:00:00");
    EXPECT_EQ(at(utc(2024, 3, 1, 12, 0, 0), "+00:00"), "2024-03-01T12:00:00");
    EXPECT_EQ(at(utc(2024, 2, 28, 12, 0, 0), "+00:00"), "2024-02-28T12:00:00");
    EXPECT_EQ(at(utc(2000, 2, 29, 0, 0, 0), "+00:00"), "2000-02-29 00:00:00");
    EXPECT_EQ(at(utc(1972, 2, 29, 23, 59, 59), "+00:00"), "1972-02-29 23:59:59");
    EXPECT_EQ(at(utc(2023, 3, 1, 0, 0, 0), "+00:00"), "2023-03-01T00:00:00");
}

TEST_F(LocalTime, ZoneShiftCanLandOnTheLeapDay) {
    EXPECT_EQ(at(utc(2024, 3, 1, 2, 0, 0), "-05:00"), "2024-02-29 21:00:00");
    EXPECT_EQ(at(utc(2024, 2, 29, 20, 0, 0), "+08:00"), "2024-03-01T04:00:00");
}

// ---- zones ------------------------------------------------------------------

TEST_F(LocalTime, PlusZoneAddsAndMinusZoneSubtracts) {
    long long t = utc(2024, 1, 1, 0, 0, 0);
    EXPECT_EQ(at(t, "+08:00"), "2024-01-01T08:00:00");
    EXPECT_EQ(at(t, "-05:30"), "2023-12-31T18:30:00");
    EXPECT_EQ(at(t, "+8"), "2024-01-01T08:00:00");
    EXPECT_EQ(at(t, "+05:45"), "2024-01-01T05:45:00");
}

TEST_F(LocalTime, NoSignIsUtc) {
    long long t = utc(2024, 6, 15, 10, 20, 30);
    for (const char *zone : {"", "UTC", "0", "08:00"}) EXPECT_EQ(at(t, zone), "2024-06-15T10:20:30") << zone;
}

TEST_F(LocalTime, TextBeforeTheSignIsTheHourField) {
    long long t = utc(2024, 6, 15, 10, 0, 0);
    EXPECT_EQ(at(t, "UTC+8"), "2024-06-15T10:00:00");
    EXPECT_EQ(at(t, "3-"), "2024-06-15T07:00:00");  // both read "3" before the sign
    EXPECT_EQ(at(t, "+8:00-"), "2024-06-15T02:00:00");  // a "-" zone whose hour field is "+8"
}

TEST_F(LocalTime, OnlyTheFirstSixZoneCharactersAreRead) {
    long long t = utc(2024, 6, 15, 10, 0, 0);
    EXPECT_EQ(at(t, "+08:00-"), "2024-06-15T18:00:00");  // cut to "+08:00": a "+" zone
    EXPECT_EQ(at(t, "+0000001"), "2024-06-15T10:00:00");  // cut to "+00000"
}

TEST_F(LocalTime, MinusAloneGivesMinusOneSilently) {
    test_clock_pin(static_cast<time_t>(utc(2024, 1, 1, 0, 0, 0)));
    char out[26];
    std::memset(out, 'X', sizeof out);
    CaptureFd o(1), e(2);
    EXPECT_EQ(my_localtime(0, "-", out), -1);
    EXPECT_EQ(my_localtime(1, "--", out), -1);
    EXPECT_EQ(o.text(), "");
    EXPECT_EQ(e.text(), "");
    EXPECT_EQ(std::string(out, sizeof out), std::string(sizeof out, 'X'));
}

TEST_F(LocalTime, PlusAlonePrintsAndGivesMinusOne) {
    test_clock_pin(static_cast<time_t>(utc(2024, 1, 1, 0, 0, 0)));
    char out[26];
    std::memset(out, 'X', sizeof out);
    CaptureFd o(1), e(2);
    EXPECT_EQ(my_localtime(1, "+", out), -1);
    EXPECT_EQ(o.text(), "localtime ptr is NULL!\n");
    EXPECT_EQ(e.text(), "");
    EXPECT_EQ(std::string(out, sizeof out), std::string(sizeof out, 'X'));
}

TEST_F(LocalTime, NullOutputIsRefused) {
    EXPECT_EQ(my_localtime(0, "+08:00", nullptr), -1);
}

TEST_F(LocalTime, WritesNineteenCharactersAndATerminator) {
    test_clock_pin(static_cast<time_t>(utc(2024, 5, 6, 7, 8, 9)));
    char out[26];
    std::memset(out, 'X', sizeof out);
    ASSERT_EQ(my_localtime(0, "+00:00", out), 0);
    EXPECT_EQ(std::string(out, 21), std::string("2024-05-06T07:08:09\0X", 21));
}

// ---- the clamp at 1970 and the end of time_t ---------------------------------

TEST_F(LocalTime, BeforeNineteenSeventyIsClampedToItsStart) {
    EXPECT_EQ(at(utc(1970, 1, 1, 1, 0, 0), "-08:00"), "1970-01-01T00:00:00");
    EXPECT_EQ(at(0, "-00:01"), "1970-01-01T00:00:00");
    EXPECT_EQ(at(utc(1970, 1, 1, 8, 0, 0), "-08:00"), "1970-01-01T00:00:00");
    EXPECT_EQ(at(utc(1970, 1, 1, 8, 0, 1), "-08:00"), "1970-01-01T00:00:01");
}

TEST_F(LocalTime, PastTheEndOfTimeTIsClampedOnNarrowClocks) {
    std::string got = at(INT_MAX, "+08:00");
    if (sizeof(time_t) == 4)
        EXPECT_EQ(got, "2038-01-19T03:14:07");
    else
        EXPECT_EQ(got, "2038-01-19T11:14:07");
}

// ---- summer time -----------------------------------------------------------------

TEST_F(LocalTime, SummerTimeStartsAtOneOClockOnTheLastSundayOfMarch) {
    long long start = utc(2024, 3, 31, 1, 0, 0);
    {
        CaptureFd e(2);
        EXPECT_EQ(at(start, "+00:00", 1), "2024-03-31T02:00:00");
        EXPECT_EQ(parse_log(e.text()),
                  (std::vector<LogLine>{{"my_localtime", "second=" + std::to_string(start) + "\n"},
                                        {"qvsTimeToDST", "isDST=1\n"},
                                        {"my_localtime", "second=" + std::to_string(start + 3600) + "\n"}}));
    }
    {
        CaptureFd e(2);
        EXPECT_EQ(at(start - 1, "+00:00", 1), "2024-03-31T00:59:59");
        EXPECT_EQ(parse_log(e.text()),
                  (std::vector<LogLine>{{"my_localtime", "second=" + std::to_string(start - 1) + "\n"},
                                        {"qvsTimeToDST", "isDST=0\n"},
                                        {"my_localtime", "second=" + std::to_string(start - 1) + "\n"}}));
    }
}

TEST_F(LocalTime, SummerTimeEndsAfterOneOClockOnTheLastSundayOfOctober) {
    long long end = utc(2024, 10, 27, 1, 0, 0);
    EXPECT_EQ(at(end, "+00:00", 1), "2024-10-27T02:00:00");
    EXPECT_EQ(at(end + 1, "+00:00", 1), "2024-10-27T01:00:01");
}

TEST_F(LocalTime, SummerTimeIsJudgedOnTheShiftedTime) {
    // 00:00 UTC with +01:00 is 01:00 local: inside the window.
    EXPECT_EQ(at(utc(2024, 3, 31, 0, 0, 0), "+01:00", 1), "2024-03-31T02:00:00");
    EXPECT_EQ(at(utc(2024, 3, 31, 0, 0, 0), "+00:00", 1), "2024-03-31T00:00:00");
}

TEST_F(LocalTime, WithoutSummerTimeNothingIsLogged) {
    CaptureFd e(2);
    EXPECT_EQ(at(utc(2024, 7, 1, 12, 0, 0), "+00:00", 0), "2024-07-01T12:00:00");
    EXPECT_EQ(e.text(), "");
}

TEST_F(LocalTime, AnyNonZeroFlagTurnsSummerTimeOn) {
    EXPECT_EQ(at(utc(2024, 7, 1, 12, 0, 0), "+00:00", -1), "2024-07-01T13:00:00");
    EXPECT_EQ(at(utc(2024, 7, 1, 12, 0, 0), "+00:00", 128), "2024-07-01T13:00:00");
}

// ---- the clock itself ------------------------------------------------------------

TEST_F(LocalTime, ReadsTheClockOncePerCall) {
    test_clock_pin(static_cast<time_t>(utc(2024, 1, 1, 0, 0, 0)));
    char out[26] = {};
    ASSERT_EQ(my_localtime(0, "+08:00", out), 0);
    EXPECT_EQ(test_clock_reads(), 1u);
}

TEST_F(LocalTime, MovingTheClockMovesTheStamp) {
    long long t = utc(2024, 2, 28, 23, 59, 58);
    EXPECT_EQ(at(t, "+00:00"), "2024-02-28T23:59:58");
    EXPECT_EQ(at(t + 2, "+00:00"), "2024-02-29 00:00:00");
    EXPECT_EQ(at(t + 2 + 86400, "+00:00"), "2024-03-01T00:00:00");
}

TEST_F(LocalTime, FollowsTheRealClock) {
    test_clock_release();
    char out[26] = {};
    time_t before = ::time(nullptr);
    ASSERT_EQ(my_localtime(0, "+08:00", out), 0);
    time_t after = ::time(nullptr);
    std::string got = out;
    bool matches = false;
    for (long long t = before; t <= after; ++t) matches = matches || (got == reference(t + 8 * 3600));
    EXPECT_TRUE(matches) << got;
}

// ---- past 2038 (64-bit time on every target) -----------------------------------

// The stamps' calendar counts every fourth year as a leap year (no century
// rule): from March 2100 on it runs one day behind the Gregorian calendar.
// The instant itself (64-bit time, the zone shift, summer time) is right.
TEST_F(LocalTime, StampsWithTheClockPinnedIn2040And2105) {
    EXPECT_EQ(at(utc(2040, 7, 1, 12, 0, 0), "+08:00", 1), "2040-07-01T21:00:00");
    EXPECT_EQ(at(utc(2040, 2, 29, 12, 0, 0), "+00:00"), "2040-02-29 12:00:00");
    EXPECT_EQ(at(utc(2040, 12, 1, 12, 0, 0), "-05:00", 1), "2040-12-01T07:00:00");
    for (int y = 2038; y <= 2099; ++y)
        for (long long t : {utc(y, 1, 1, 0, 0, 0), utc(y, 2, 28, 23, 59, 59), utc(y, 3, 1, 0, 0, 0),
                            utc(y, 12, 31, 23, 59, 59)})
            EXPECT_EQ(at(t, "+00:00"), reference(t)) << t;
    EXPECT_EQ(at(utc(2100, 2, 28, 23, 59, 59), "+00:00"), "2100-02-28T23:59:59");
    EXPECT_EQ(at(utc(2100, 3, 1, 0, 0, 0), "+00:00"), "2100-02-29 00:00:00");
    // Gregorian 2105-06-30 19:00 local, summer time judged on it: 20:00.
    EXPECT_EQ(at(utc(2105, 7, 1, 0, 0, 0), "-05:00", 1), "2105-06-29T20:00:00");
    // Gregorian 2106-01-01 07:59:59 local.
    EXPECT_EQ(at(utc(2105, 12, 31, 23, 59, 59), "+08:00"), "2105-12-31T07:59:59");
}

TEST_F(LocalTime, SettimeIn2040And2105) {
    char out[26] = {};
    EXPECT_EQ(my_settime(local_tm(2040, 7, 1, 8, 0, 0), "+08:00", out), 0);
    EXPECT_STREQ(out, "2040-07-01 00:00:00");
    // Gregorian 2106-01-01 01:30, in the stamps' calendar.
    EXPECT_EQ(my_settime(local_tm(2105, 12, 31, 20, 0, 0), "-05:30", out), 0);
    EXPECT_STREQ(out, "2105-12-31 01:30:00");
}

// ---- UTC texts from local times ----------------------------------------------------

TEST_F(LocalTime, SettimePlusZoneSubtracts) {
    char out[26] = {};
    EXPECT_EQ(my_settime(local_tm(2024, 1, 1, 8, 0, 0), "+08:00", out), 0);
    EXPECT_STREQ(out, "2024-01-01 00:00:00");
}

TEST_F(LocalTime, SettimeMinusZoneAdds) {
    char out[26] = {};
    EXPECT_EQ(my_settime(local_tm(2024, 12, 31, 20, 0, 0), "-05:30", out), 0);
    EXPECT_STREQ(out, "2025-01-01 01:30:00");
}

TEST_F(LocalTime, SettimeAlwaysWritesTheBlank) {
    char out[26];
    std::memset(out, 'X', sizeof out);
    EXPECT_EQ(my_settime(local_tm(2024, 7, 4, 9, 8, 7), "UTC", out), 0);
    EXPECT_EQ(std::string(out, 21), std::string("2024-07-04 09:08:07\0X", 21));
    EXPECT_EQ(my_settime(local_tm(2024, 2, 29, 9, 8, 7), "", out), 0);
    EXPECT_STREQ(out, "2024-02-29 09:08:07");
}

TEST_F(LocalTime, SettimeAgreesWithTheUtcCalendarOnEveryDayTo2037) {
    int mismatches = 0;
    for (long long day_start = 0; day_start <= last_day_start(); day_start += 86400) {
        long long t = day_start + (day_start / 86400 * 104729) % 86400;
        time_t tt = static_cast<time_t>(t);
        struct tm tm {};
        ASSERT_NE(gmtime_r(&tt, &tm), nullptr);
        char out[26] = {};
        ASSERT_EQ(my_settime(tm, "-00:00", out), 0);
        if (reference(t, true) != out && ++mismatches <= 5) ADD_FAILURE() << t << ": " << out;
    }
    EXPECT_EQ(mismatches, 0);
}

TEST_F(LocalTime, SettimeEmptyZoneGivesMinusOneWithoutMessage) {
    char out[26];
    std::memset(out, 'X', sizeof out);
    CaptureFd o(1), e(2);
    EXPECT_EQ(my_settime(local_tm(2024, 1, 1, 8, 0, 0), "-", out), -1);
    EXPECT_EQ(my_settime(local_tm(2024, 1, 1, 8, 0, 0), "+", out), -1);
    EXPECT_EQ(o.text(), "");
    EXPECT_EQ(e.text(), "");
    EXPECT_EQ(std::string(out, sizeof out), std::string(sizeof out, 'X'));
    EXPECT_EQ(my_settime(local_tm(2024, 1, 1, 8, 0, 0), "+08:00", nullptr), -1);
}

TEST_F(LocalTime, SettimeClampsBeforeNineteenSeventy) {
    char out[26] = {};
    EXPECT_EQ(my_settime(local_tm(1970, 1, 1, 5, 0, 0), "+08:00", out), 0);
    EXPECT_STREQ(out, "1970-01-01 00:00:00");
}

TEST_F(LocalTime, SettimeNormalisesTheGivenTimeAndIgnoresSummerTime) {
    char out[26] = {};
    EXPECT_EQ(my_settime(local_tm(2024, 1, 32, 24, 0, 0), "+00:00", out), 0);
    EXPECT_STREQ(out, "2024-02-02 00:00:00");
    EXPECT_EQ(my_settime(local_tm(2024, 7, 1, 12, 0, 0), "+01:00", out), 0);
    EXPECT_STREQ(out, "2024-07-01 11:00:00");
}

TEST_F(LocalTime, SettimeReadsTheGivenTimeInTheProcesssZone) {
    timetest::use_zone("XXX-8");  // the process runs eight hours ahead of UTC
    char out[26] = {};
    EXPECT_EQ(my_settime(local_tm(2024, 1, 1, 8, 0, 0), "", out), 0);
    EXPECT_STREQ(out, "2024-01-01 00:00:00");
}
