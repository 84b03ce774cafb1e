/* SPDX-License-Identifier: MIT */
/* The test clock (see test_clock.h). Real clock reads and sleeps go straight
 * to the kernel, so these definitions never call themselves. */
#include "test_clock.h"

#include <errno.h>
#include <stdint.h>
#include <string.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

/* A 32-bit target built with 64-bit time: struct timespec has 64-bit
 * seconds, the kernel's time64 calls fill it, and the 32-bit entry points
 * are defined as well (at the end). */
#if defined(__USE_TIME_BITS64) && defined(__TIMESIZE) && __TIMESIZE == 32
#define TWO_TIME_ABIS 1
#define SYS_CLOCK_GETTIME SYS_clock_gettime64
#else
#define TWO_TIME_ABIS 0
#define SYS_CLOCK_GETTIME SYS_clock_gettime
#endif

#define KEPT_SLEEPS 256
#define NS_PER_S 1000000000LL

static volatile int g_pinned;
static volatile int g_real_pauses;
static struct timespec g_now;
static volatile unsigned long g_reads;
static volatile unsigned long g_sleeps;
static long long g_slept_ns;
static long long g_sleep_ns[KEPT_SLEEPS];

static struct timespec real_clock(clockid_t id) {
    struct timespec ts;
    memset(&ts, 0, sizeof ts);
    syscall(SYS_CLOCK_GETTIME, id, &ts);
    return ts;
}

/* A real sleep of ns nanoseconds (the kernel's call for this time_t). */
static int real_sleep(long long ns) {
#if TWO_TIME_ABIS
    struct timespec req;
    memset(&req, 0, sizeof req); /* the padding next to tv_nsec too */
    req.tv_sec = (time_t)(ns / 1000000000LL);
    req.tv_nsec = (long)(ns % 1000000000LL);
    return (int)syscall(SYS_clock_nanosleep_time64, CLOCK_REALTIME, 0, &req, (struct timespec *)0);
#else
    struct timespec req = {(time_t)(ns / 1000000000LL), (long)(ns % 1000000000LL)};
    return (int)syscall(SYS_nanosleep, &req, (struct timespec *)0);
#endif
}

static void (*volatile g_sleep_hook)(unsigned long);

static void clear_counters(void) {
    g_sleep_hook = 0;
    g_reads = 0;
    g_sleeps = 0;
    g_slept_ns = 0;
}

void test_clock_pin(long long t) {
    g_now.tv_sec = (time_t)t;
    g_now.tv_nsec = 0;
    g_pinned = 1;
    g_real_pauses = 0;
    clear_counters();
}

void test_clock_advance(long seconds) { g_now.tv_sec += seconds; }

void test_clock_release(void) {
    g_pinned = 0;
    g_real_pauses = 0;
    clear_counters();
}

void test_clock_real_pauses(int on) { g_real_pauses = on; }

int test_clock_pinned(void) { return g_pinned; }

long long test_clock_real_now(void) { return (long long)real_clock(CLOCK_REALTIME).tv_sec; }

struct timespec test_clock_now(void) { return g_pinned ? g_now : real_clock(CLOCK_REALTIME); }

unsigned long test_clock_reads(void) { return g_reads; }
unsigned long test_clock_sleeps(void) { return g_sleeps; }
long long test_clock_slept_ns(void) { return g_slept_ns; }
long long test_clock_sleep_ns(unsigned long n) { return n < KEPT_SLEEPS && n < g_sleeps ? g_sleep_ns[n] : -1; }

/* A sleep of ns nanoseconds: real, or recorded and added to a pinned clock. */
static int take_sleep(long long ns) {
    if (ns < 0) ns = 0;
    if (!g_pinned) return real_sleep(ns);
    if (g_sleeps < KEPT_SLEEPS) g_sleep_ns[g_sleeps] = ns;
    g_sleeps = g_sleeps + 1;
    g_slept_ns += ns;
    if (g_real_pauses) return real_sleep(ns);
    long long total = (long long)g_now.tv_nsec + ns % NS_PER_S;
    g_now.tv_sec += (time_t)(ns / NS_PER_S + total / NS_PER_S);
    g_now.tv_nsec = (long)(total % NS_PER_S);
    if (g_sleep_hook) g_sleep_hook(g_sleeps);
    return 0;
}

void test_clock_on_sleep(void (*hook)(unsigned long n)) { g_sleep_hook = hook; }

time_t time(time_t *out) {
    time_t now = g_pinned ? g_now.tv_sec : real_clock(CLOCK_REALTIME).tv_sec;
    g_reads = g_reads + 1;
    if (out != 0) *out = now;
    return now;
}

int gettimeofday(struct timeval *tv, void *tz) {
    (void)tz;
    struct timespec now = test_clock_now();
    tv->tv_sec = now.tv_sec;
    tv->tv_usec = now.tv_nsec / 1000;
    return 0;
}

int clock_gettime(clockid_t id, struct timespec *ts) {
    if (id == CLOCK_REALTIME && g_pinned) {
        *ts = g_now;
        return 0;
    }
    return (int)syscall(SYS_CLOCK_GETTIME, id, ts);
}

unsigned int sleep(unsigned int seconds) {
    take_sleep((long long)seconds * NS_PER_S);
    return 0;
}

int usleep(useconds_t usec) { return take_sleep((long long)usec * 1000); }

int nanosleep(const struct timespec *req, struct timespec *rem) {
    if (req->tv_nsec < 0 || req->tv_nsec >= NS_PER_S) {
        errno = EINVAL;
        return -1;
    }
    if (rem != 0) rem->tv_sec = 0, rem->tv_nsec = 0;
    return take_sleep((long long)req->tv_sec * NS_PER_S + req->tv_nsec);
}

#if TWO_TIME_ABIS
/* The 32-bit entry points, for code built with the 32-bit time_t. The
 * definitions above answer under glibc's 64-bit names (__time64, ...). */
struct timespec32 {
    int32_t tv_sec;
    int32_t tv_nsec;
};
struct timeval32 {
    int32_t tv_sec;
    int32_t tv_usec;
};

int32_t time32(int32_t *out) __asm__("time");
int gettimeofday32(struct timeval32 *tv, void *tz) __asm__("gettimeofday");
int clock_gettime32(clockid_t id, struct timespec32 *ts) __asm__("clock_gettime");
int nanosleep32(const struct timespec32 *req, struct timespec32 *rem) __asm__("nanosleep");

int32_t time32(int32_t *out) {
    int32_t now = (int32_t)time((time_t *)0);
    if (out != 0) *out = now;
    return now;
}

int gettimeofday32(struct timeval32 *tv, void *tz) {
    (void)tz;
    struct timespec now = test_clock_now();
    tv->tv_sec = (int32_t)now.tv_sec;
    tv->tv_usec = (int32_t)(now.tv_nsec / 1000);
    return 0;
}

int clock_gettime32(clockid_t id, struct timespec32 *ts) {
    struct timespec now;
    int r = clock_gettime(id, &now);
    ts->tv_sec = (int32_t)now.tv_sec;
    ts->tv_nsec = (int32_t)now.tv_nsec;
    return r;
}

int nanosleep32(const struct timespec32 *req, struct timespec32 *rem) {
    if (req->tv_nsec < 0 || req->tv_nsec >= NS_PER_S) {
        errno = EINVAL;
        return -1;
    }
    if (rem != 0) rem->tv_sec = 0, rem->tv_nsec = 0;
    return take_sleep((long long)req->tv_sec * NS_PER_S + req->tv_nsec);
}
#endif
