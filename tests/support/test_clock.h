/* SPDX-License-Identifier: MIT */
/* The suites' one test clock: this test program's own time(),
 * gettimeofday(), clock_gettime(CLOCK_REALTIME), sleep(), usleep() and
 * nanosleep(). The library's calls reach these definitions before the C
 * library's (the program's symbols come first in the lookup order), on the
 * host and under qemu-arm alike, so the shipped code keeps its real clock
 * reads and real sleeps.
 *
 * Unpinned, everything is real. Pinned, the clock stands still until a test
 * moves it, and every sleep returns at once after moving the pinned clock by
 * what was asked: an algorithm that polls ten times a second apart runs in
 * no wall time, and the test still sees how often and how long it paused.
 *
 * On a 32-bit target the clock holds 64-bit time and answers both kinds of
 * caller: code built with _TIME_BITS=64 (the library and the suites on
 * armhf), which reaches glibc's 64-bit entry points (__time64,
 * __clock_gettime64, ...), and code built with the 32-bit time_t, which
 * reaches the plain names. Seconds are given and returned as long long, so
 * a clock pinned past 2038 means the same to either. */
#ifndef QVSTEST_TEST_CLOCK_H
#define QVSTEST_TEST_CLOCK_H

#include <time.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Pins the clock at t (whole seconds); clears the counters. */
void test_clock_pin(long long t);
/* Moves a pinned clock by the given seconds (negative goes back). */
void test_clock_advance(long seconds);
/* Back to the real clock; clears the counters. */
void test_clock_release(void);
/* 1 while pinned. */
int test_clock_pinned(void);
/* Non-zero: a pinned clock's sleeps are real pauses that leave it where it
 * stands (still counted), for callers that wait on another process, such as
 * on a lock it holds; 0 (the default, and after a pin or a release): they
 * return at once after moving it. */
void test_clock_real_pauses(int on);
/* The real wall clock, pinned or not. */
long long test_clock_real_now(void);
/* The pinned clock's current value, to the nanosecond (for callers built
 * with the library's time_t: 64 bits on every target). */
struct timespec test_clock_now(void);

/* Since the last pin or release: how often time() was asked, how many
 * sleeps were taken, their total in nanoseconds, and the length of the
 * n-th sleep (0-based; the first 256 are kept; -1 past those). */
unsigned long test_clock_reads(void);
unsigned long test_clock_sleeps(void);
long long test_clock_slept_ns(void);
long long test_clock_sleep_ns(unsigned long n);

/* While pinned, hook(n) runs inside the n-th sleep (1-based), in the
 * sleeping thread: a test acts at an exact point of a waiting loop. Cleared
 * by pin and release. */
void test_clock_on_sleep(void (*hook)(unsigned long n));

#ifdef __cplusplus
}
#endif

#endif
