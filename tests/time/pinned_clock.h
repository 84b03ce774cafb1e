/* A clock the time suites pin and move: this test program's own time(),
 * which the library's calls to time() reach instead of the C library's.
 * Unpinned, it reads the real clock. */
#ifndef TIMETEST_PINNED_CLOCK_H
#define TIMETEST_PINNED_CLOCK_H

#include <time.h>

#ifdef __cplusplus
extern "C" {
#endif

void pinned_clock_set(time_t seconds);
void pinned_clock_release(void);
/* How often time() was asked since the last set or release. */
unsigned long pinned_clock_reads(void);

#ifdef __cplusplus
}
#endif

#endif
