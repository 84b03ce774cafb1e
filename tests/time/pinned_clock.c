#include "pinned_clock.h"

#include <sys/time.h>

static volatile int g_pinned;
static volatile time_t g_seconds;
static volatile unsigned long g_reads;

void pinned_clock_set(time_t seconds) {
    g_seconds = seconds;
    g_pinned = 1;
    g_reads = 0;
}

void pinned_clock_release(void) {
    g_pinned = 0;
    g_reads = 0;
}

unsigned long pinned_clock_reads(void) { return g_reads; }

time_t time(time_t *out) {
    time_t now;
    if (g_pinned) {
        now = g_seconds;
    } else {
        struct timeval tv = {0, 0};
        gettimeofday(&tv, 0);
        now = tv.tv_sec;
    }
    g_reads = g_reads + 1;
    if (out != 0) *out = now;
    return now;
}
