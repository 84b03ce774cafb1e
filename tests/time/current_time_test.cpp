// SPDX-License-Identifier: MIT
// The current time stamp for alarm records: zone and summer-time flag from
// the store's time object, the process's local time when that fails.
#include <cstdlib>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "libqv.h"
#include "test_clock.h"
#include "qvs_utils.h"
#include "qvsim.h"
#include "test_support.hpp"
#include "time_test_support.hpp"

using qvstest::CaptureFd;
using timetest::parse_log;
using timetest::utc;

namespace {

std::string journal() {
    char *j = qvsim_journal_text();
    std::string s = j != nullptr ? j : "";
    std::free(j);
    return s;
}

class CurrentTime : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(qvstest::in_sandbox());
        timetest::use_zone("UTC0");
        ASSERT_EQ(qvsim_reset(), 0);
        handle_ = qvs_xmlShmInit();
        ASSERT_NE(handle_, 0u);
        qvsim_journal_clear();
    }
    void TearDown() override {
        qvs_xmlShmDeInit(&handle_);
        test_clock_release();
    }

    std::string at(long long seconds, uint32_t handle) {
        test_clock_pin(static_cast<time_t>(seconds));
        char out[26];
        std::memset(out, 'X', sizeof out);
        char *r = get_currentTime(handle, out);
        if (r != out) return "not out";
        if (strnlen(out, sizeof out) == sizeof out) return "unterminated";
        return out;
    }
    std::string at(long long seconds) { return at(seconds, handle_); }

    QVS_XMLSHM_HANDLE handle_ = 0;
};

const char kFallbackLog[] = "log\tqvs_utils.cpp\tget_currentTime\t";

}  // namespace

TEST_F(CurrentTime, UsesTheZoneOfTheTimeObject) {
    // The factory model: "+08:00", summer time off.
    EXPECT_EQ(at(utc(2024, 1, 1, 0, 0, 0)), "2024-01-01T08:00:00");
    ASSERT_EQ(qvsim_set(85, "", "LocalTimeZone", "-05:00"), 0);
    EXPECT_EQ(at(utc(2024, 1, 1, 0, 0, 0)), "2023-12-31T19:00:00");
    ASSERT_EQ(qvsim_set(85, "", "LocalTimeZone", "+05:45"), 0);
    EXPECT_EQ(at(utc(2024, 1, 1, 0, 0, 0)), "2024-01-01T05:45:00");
    EXPECT_EQ(journal().find("log\t"), std::string::npos);
}

TEST_F(CurrentTime, WritesTheStampWithItsTerminatorOnly) {
    test_clock_pin(static_cast<time_t>(utc(2024, 5, 6, 7, 8, 9)));
    char out[26];
    std::memset(out, 'X', sizeof out);
    EXPECT_EQ(get_currentTime(handle_, out), out);
    EXPECT_EQ(std::string(out, 26), std::string("2024-05-06T15:08:09\0XXXXXX", 26));
}

TEST_F(CurrentTime, SummerTimeFlagOfTheTimeObject) {
    ASSERT_EQ(qvsim_set(85, "", "LocalTimeZone", "+00:00"), 0);
    EXPECT_EQ(at(utc(2024, 7, 1, 12, 0, 0)), "2024-07-01T12:00:00");
    ASSERT_EQ(qvsim_set(85, "", "DaylightSavingsUsed", "1"), 0);
    CaptureFd e(2);
    EXPECT_EQ(at(utc(2024, 7, 1, 12, 0, 0)), "2024-07-01T13:00:00");
    EXPECT_EQ(at(utc(2024, 12, 1, 12, 0, 0)), "2024-12-01T12:00:00");
    auto log = parse_log(e.text());
    ASSERT_EQ(log.size(), 6u);
    EXPECT_EQ(log[1].function, "qvsTimeToDST");
    EXPECT_EQ(log[1].message, "isDST=1\n");
    EXPECT_EQ(log[4].message, "isDST=0\n");
}

TEST_F(CurrentTime, LeapDayKeepsItsBlank) {
    EXPECT_EQ(at(utc(2024, 2, 29, 4, 0, 0)), "2024-02-29 12:00:00");
    EXPECT_EQ(at(utc(2024, 2, 29, 16, 0, 0)), "2024-03-01T00:00:00");
}

TEST_F(CurrentTime, MovingTheClockMovesTheStamp) {
    long long t = utc(2025, 12, 31, 15, 59, 59);
    EXPECT_EQ(at(t), "2025-12-31T23:59:59");
    EXPECT_EQ(at(t + 1), "2026-01-01T00:00:00");
    EXPECT_EQ(at(t + 3601), "2026-01-01T01:00:00");
}

TEST_F(CurrentTime, TheClockPinnedIn2040And2105) {
    EXPECT_EQ(at(utc(2040, 1, 1, 0, 0, 0)), "2040-01-01T08:00:00");
    EXPECT_EQ(at(utc(2040, 2, 29, 4, 0, 0)), "2040-02-29 12:00:00");
    // The stamps' calendar has no century rule: from March 2100 on it is
    // one day behind the Gregorian one (here 2105-12-31 23:59:59 and
    // 2106-01-01 00:00:00 in +08:00).
    EXPECT_EQ(at(utc(2105, 12, 31, 15, 59, 59)), "2105-12-30T23:59:59");
    EXPECT_EQ(at(utc(2105, 12, 31, 16, 0, 0)), "2105-12-31T00:00:00");
    ASSERT_EQ(qvsim_set(85, "", "LocalTimeZone", "+00:00"), 0);
    ASSERT_EQ(qvsim_set(85, "", "DaylightSavingsUsed", "1"), 0);
    CaptureFd e(2);
    EXPECT_EQ(at(utc(2040, 7, 1, 12, 0, 0)), "2040-07-01T13:00:00");
    EXPECT_EQ(at(utc(2105, 7, 1, 12, 0, 0)), "2105-06-30T13:00:00");
}

TEST_F(CurrentTime, ZoneWithoutSignIsUtcAndNotAFailure) {
    ASSERT_EQ(qvsim_set(85, "", "LocalTimeZone", ""), 0);
    timetest::use_zone("XXX-3");  // the fallback would show +3 hours
    EXPECT_EQ(at(utc(2024, 1, 1, 0, 0, 0)), "2024-01-01T00:00:00");
    EXPECT_EQ(journal().find(kFallbackLog), std::string::npos);
}

TEST_F(CurrentTime, OnlyTheFirstSixZoneCharactersCount) {
    ASSERT_EQ(qvsim_set(85, "", "LocalTimeZone", "+03:00-01:00"), 0);
    EXPECT_EQ(at(utc(2024, 1, 1, 0, 0, 0)), "2024-01-01T03:00:00");
}

TEST_F(CurrentTime, MissingTimeObjectFallsBackToTheProcesssLocalTime) {
    ASSERT_EQ(qvsim_fault_add("object 85"), 0);
    timetest::use_zone("XXX-3");
    EXPECT_EQ(at(utc(2024, 1, 1, 0, 0, 0)), "2024-01-01T03:00:00");
    std::string j = journal();
    size_t pos = j.find(kFallbackLog);
    ASSERT_NE(pos, std::string::npos) << j;
    std::string line = j.substr(pos, j.find('\n', pos) - pos);
    EXPECT_NE(line.find("\t5\tcurrTime=2024-01-01T03:00:00!\\n"), std::string::npos) << line;
}

TEST_F(CurrentTime, FallbackAlsoWritesTheTOnTheLeapDay) {
    ASSERT_EQ(qvsim_fault_add("object 85"), 0);
    EXPECT_EQ(at(utc(2024, 2, 29, 12, 0, 0)), "2024-02-29T12:00:00");
}

TEST_F(CurrentTime, EmptyZoneAfterThePlusSignFallsBack) {
    ASSERT_EQ(qvsim_set(85, "", "LocalTimeZone", "+"), 0);
    CaptureFd o(1);
    EXPECT_EQ(at(utc(2024, 1, 1, 0, 0, 0)), "2024-01-01T00:00:00");
    EXPECT_EQ(o.text(), "localtime ptr is NULL!\n");
    EXPECT_NE(journal().find("currTime=2024-01-01T00:00:00!"), std::string::npos);
}

TEST_F(CurrentTime, EmptyZoneAfterTheMinusSignFallsBackSilently) {
    ASSERT_EQ(qvsim_set(85, "", "LocalTimeZone", "-"), 0);
    timetest::use_zone("XXX-1");
    CaptureFd o(1);
    EXPECT_EQ(at(utc(2024, 1, 1, 0, 0, 0)), "2024-01-01T01:00:00");
    EXPECT_EQ(o.text(), "");
    EXPECT_NE(journal().find("currTime=2024-01-01T01:00:00!"), std::string::npos);
}

TEST_F(CurrentTime, ZeroHandleFallsBack) {
    EXPECT_EQ(at(utc(2024, 1, 1, 0, 0, 0), 0), "2024-01-01T00:00:00");
    EXPECT_NE(journal().find("currTime=2024-01-01T00:00:00!"), std::string::npos);
}

TEST_F(CurrentTime, UsesTheCallersHandleWithoutAttaching) {
    EXPECT_EQ(at(utc(2024, 1, 1, 0, 0, 0)), "2024-01-01T08:00:00");
    std::string j = journal();
    EXPECT_EQ(j.find("attach"), std::string::npos) << j;
    EXPECT_EQ(j.find("detach"), std::string::npos) << j;
}

TEST_F(CurrentTime, NullOutputGivesNull) {
    EXPECT_EQ(get_currentTime(handle_, nullptr), nullptr);
}

TEST_F(CurrentTime, FollowsTheRealClock) {
    ASSERT_EQ(qvsim_set(85, "", "LocalTimeZone", "-03:30"), 0);
    char out[26] = {};
    time_t before = ::time(nullptr);
    ASSERT_EQ(get_currentTime(handle_, out), out);
    time_t after = ::time(nullptr);
    bool matches = false;
    for (time_t t = before; t <= after; ++t) {
        time_t local = t - 3 * 3600 - 30 * 60;
        struct tm tm {};
        gmtime_r(&local, &tm);
        char want[32];
        std::snprintf(want, sizeof want, (tm.tm_mon == 1 && tm.tm_mday == 29) ? "%04d-%02d-%02d %02d:%02d:%02d"
                                                                              : "%04d-%02d-%02dT%02d:%02d:%02d",
                      tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec);
        matches = matches || std::string(want) == out;
    }
    EXPECT_TRUE(matches) << out;
}
