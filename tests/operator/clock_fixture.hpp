// SPDX-License-Identifier: MIT
// The CMCC task suites: the test clock pinned at local times of a chosen
// zone, and the "now time" lines the handlers print to standard output.
#pragma once

#include <cstdlib>
#include <ctime>
#include <string>

#include "operator_fixture.hpp"
#include "test_clock.h"

namespace optest {

// China Standard Time, no summer time.
inline constexpr char kChina[] = "CST-8";
// Central Europe with its summer time (last Sunday of March 02:00 to last
// Sunday of October 03:00).
inline constexpr char kEurope[] = "CET-1CEST,M3.5.0,M10.5.0/3";

inline std::time_t utc(int year, int month, int day, int hour, int minute, int second) {
    std::tm tm{};
    tm.tm_year = year - 1900;
    tm.tm_mon = month - 1;
    tm.tm_mday = day;
    tm.tm_hour = hour;
    tm.tm_min = minute;
    tm.tm_sec = second;
    return ::timegm(&tm);
}

inline std::string now_line(int hour, int minute, int task_hour, int task_minute) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "now time %02d:%02d, your timer %02d:%02d\n", hour, minute, task_hour, task_minute);
    return buf;
}

class ClockTest : public OperatorTest {
protected:
    void SetUp() override {
        OperatorTest::SetUp();
        zone(kChina);
    }
    void TearDown() override {
        test_clock_release();
        OperatorTest::TearDown();
    }
    static void zone(const char *tz) {
        ::setenv("TZ", tz, 1);
        ::tzset();
    }
    // 2026-06-01 at the given local time in China (UTC+8).
    static void at(int hour, int minute, int second) { test_clock_pin(utc(2026, 6, 1, hour, minute, second) - 8 * 3600); }

    // Runs a handler with standard output captured.
    template <typename F>
    static int printing(F f, std::string &out) {
        qvstest::CaptureFd capture(1);
        int r = f();
        out = capture.text();
        return r;
    }
};

}  // namespace optest
