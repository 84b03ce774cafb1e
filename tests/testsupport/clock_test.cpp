// SPDX-License-Identifier: MIT
// The shared test clock: pinned time stands still, sleeps move it without
// waiting and are counted; the library's own clock reads reach it.
#include <gtest/gtest.h>
#include <sys/time.h>
#include <unistd.h>

#include <chrono>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "qvs_utils.h"
#include "test_clock.h"

namespace {

struct Clock : ::testing::Test {
    void TearDown() override { test_clock_release(); }
};

double wall_seconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

TEST_F(Clock, PinnedTimeStandsStillAndCountsReads) {
    test_clock_pin(1700000000);
    EXPECT_EQ(time(nullptr), 1700000000);
    time_t out = 0;
    EXPECT_EQ(time(&out), 1700000000);
    EXPECT_EQ(out, 1700000000);
    EXPECT_EQ(test_clock_reads(), 2u);
    test_clock_advance(59);
    EXPECT_EQ(time(nullptr), 1700000059);
    test_clock_advance(-60);
    EXPECT_EQ(time(nullptr), 1699999999);
}

TEST_F(Clock, SleepsMoveThePinnedClockAtOnce) {
    test_clock_pin(1000);
    double before = wall_seconds();
    EXPECT_EQ(sleep(3), 0u);
    EXPECT_EQ(usleep(200000), 0);
    struct timespec req = {1, 500000000};
    EXPECT_EQ(nanosleep(&req, nullptr), 0);
    EXPECT_LT(wall_seconds() - before, 1.0);
    EXPECT_EQ(test_clock_sleeps(), 3u);
    EXPECT_EQ(test_clock_sleep_ns(0), 3000000000LL);
    EXPECT_EQ(test_clock_sleep_ns(1), 200000000LL);
    EXPECT_EQ(test_clock_sleep_ns(2), 1500000000LL);
    EXPECT_EQ(test_clock_sleep_ns(3), -1);
    EXPECT_EQ(test_clock_slept_ns(), 4700000000LL);
    EXPECT_EQ(time(nullptr), 1004);
    struct timespec now = test_clock_now();
    EXPECT_EQ(now.tv_sec, 1004);
    EXPECT_EQ(now.tv_nsec, 700000000L);
    struct timeval tv {};
    gettimeofday(&tv, nullptr);
    EXPECT_EQ(tv.tv_sec, 1004);
    EXPECT_EQ(tv.tv_usec, 700000);
    struct timespec rt {};
    clock_gettime(CLOCK_REALTIME, &rt);
    EXPECT_EQ(rt.tv_sec, 1004);
}

TEST_F(Clock, RealPausesWaitAndLeaveThePinnedClockStanding) {
    test_clock_pin(1000);
    test_clock_real_pauses(1);
    double before = wall_seconds();
    EXPECT_EQ(usleep(20000), 0);
    EXPECT_GE(wall_seconds() - before, 0.019);
    EXPECT_EQ(test_clock_sleeps(), 1u);
    EXPECT_EQ(test_clock_sleep_ns(0), 20000000LL);
    EXPECT_EQ(time(nullptr), 1000);
    // A new pin goes back to pauses that return at once.
    test_clock_pin(2000);
    before = wall_seconds();
    EXPECT_EQ(sleep(5), 0u);
    EXPECT_LT(wall_seconds() - before, 1.0);
    EXPECT_EQ(time(nullptr), 2005);
}

TEST_F(Clock, BadNanosleepIsRefusedAndNotCounted) {
    test_clock_pin(1000);
    struct timespec req = {0, 1000000000L};
    EXPECT_EQ(nanosleep(&req, nullptr), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(test_clock_sleeps(), 0u);
}

TEST_F(Clock, UnpinnedIsTheRealClock) {
    time_t real = test_clock_real_now();
    EXPECT_LE(std::labs(time(nullptr) - real), 1);
    EXPECT_EQ(test_clock_pinned(), 0);
    double before = wall_seconds();
    usleep(20000);
    EXPECT_GE(wall_seconds() - before, 0.019);
    EXPECT_EQ(test_clock_sleeps(), 0u);
}

TEST_F(Clock, TheLibraryReadsThePinnedClock) {
    // 2024-03-01T12:34:56Z, shown with no zone (UTC) and no summer time.
    test_clock_pin(1709296496);
    char stamp[32] = {0};
    ASSERT_EQ(my_localtime(0, "", stamp), 0);
    EXPECT_STREQ(stamp, "2024-03-01T12:34:56");
    EXPECT_GE(test_clock_reads(), 1u);
}

}  // namespace
