/* SPDX-License-Identifier: MIT */
/*
 * libqvs_utils, time: timer rules in UTC, local time, summer time and time
 * stamps.
 *
 * Callers include <qvs_utils.h>, which includes every family's header;
 * this one also compiles on its own.
 */
#ifndef QVS_UTILS_TIMEKEEPING_H
#define QVS_UTILS_TIMEKEEPING_H

#include <stdint.h>
#include <time.h>

#include "api.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ==== Time: timer rules in UTC ============================================ */

/** Converts one daily timer rule from local time to UTC. Inputs: zone
 * ("+HH:MM" / "-HH:MM", minutes optional; only its first 6 characters are
 * read), start and end ("HH:MM"; only the first 19 characters are read) and
 * a weekday list ("1,2,7": single digits 1-7 and commas).
 * Outputs, all caller-owned and ZERO-FILLED by the caller: utcStart, utcEnd,
 * nextStart, nextEnd at least 9 bytes each (a converted time is "HH:MM"
 * with a terminator; the fixed ends "00:00:00" / "23:59:59" are written as
 * 8 bytes without one); utcWeekdays and nextWeekdays at least
 * strlen(weekdays) + 1 bytes (the list is written without a terminator).
 * A "-" zone adds the offset, a "+" zone subtracts it; a range that crosses
 * midnight at both ends moves its weekdays one day; a range with only its
 * end (or only its start) on another day is split in two, the second
 * range going to next*. nextStart stays empty unless the rule was split.
 * A zone without sign copies the rule unchanged.
 * Returns 0, or -1 when the zone has a sign and nothing after it (or an
 * argument is NULL); outputs are then untouched.
 * @param zone zone text "+HH:MM" / "-HH:MM"
 * @param start local start time "HH:MM"
 * @param end local end time "HH:MM"
 * @param weekdays weekday list, e.g. "1,2,7"
 * @param utcStart out: UTC start (9 bytes, zero-filled)
 * @param utcEnd out: UTC end (9 bytes, zero-filled)
 * @param utcWeekdays out: UTC weekday list (strlen(weekdays) + 1 bytes, zero-filled)
 * @param nextStart out: start of the split-off range (9 bytes, zero-filled)
 * @param nextEnd out: end of the split-off range (9 bytes, zero-filled)
 * @param nextWeekdays out: weekdays of the split-off range (strlen(weekdays) + 1 bytes, zero-filled)
 * @par Touches
 * nothing but the caller's buffers.
 * @par Thread safety
 * MT-Safe. */
QVS_API int my_utctime(const char *zone, const char *start, const char *end, const char *weekdays,
                       char *utcStart, char *utcEnd, char *utcWeekdays,
                       char *nextStart, char *nextEnd, char *nextWeekdays);

/* ==== Time: local time, summer time, time stamps ========================== */

/** Writes the current local time as "YYYY-MM-DDTHH:MM:SS" into out (at
 * least 20 bytes); on 29 February a blank stands in place of the "T".
 * zone: "-HH:MM" subtracts, "+HH:MM" adds, no sign means UTC. With
 * dstEnable non-zero, summer time (qvsTimeToDST) adds an hour. Times before
 * 1970 after the shift read as 1970-01-01T00:00:00.
 * Returns 0, or -1 when the zone has a sign and nothing after it ("+" alone
 * also prints "localtime ptr is NULL!" on standard output) or out is NULL.
 * @param dstEnable non-zero: apply summer time
 * @param zone zone text "+HH:MM" / "-HH:MM", or no sign for UTC
 * @param out caller's buffer of at least 20 bytes
 * @par Touches
 * the clock (read) and the caller's buffer.
 * @par Thread safety
 * MT-Safe env: with summer time it reads the process's time zone (TZ), as
 * localtime_r() does. */
QVS_API int my_localtime(int dstEnable, const char *zone, char *out);

/** Returns seconds + 3600 when that moment (broken down in the process's own
 * zone) lies in summer time (qvsCheckDST), else seconds.
 * On a 32-bit target a caller built with _TIME_BITS=64 (64-bit time_t)
 * reaches qvsTimeToDST64 under this name, as glibc redirects its own time
 * functions; others reach the 32-bit function.
 * @param seconds time in seconds since 1970
 * @par Touches
 * nothing (uses the process's zone).
 * @par Thread safety
 * MT-Safe env: reads the process's time zone (TZ), as localtime_r() and
 * mktime() do. */
#if defined(__USE_TIME_BITS64) && defined(__TIMESIZE) && __TIMESIZE == 32
QVS_API time_t qvsTimeToDST(time_t seconds) __asm__("qvsTimeToDST64");
#else
QVS_API time_t qvsTimeToDST(time_t seconds);
#endif

/** The 64-bit twin of qvsTimeToDST, for any caller: seconds + 3600 when that
 * moment lies in summer time, else seconds; right through 2106 on 32-bit
 * targets too.
 * @param seconds time in seconds since 1970
 * @par Touches
 * nothing (uses the process's zone).
 * @par Thread safety
 * MT-Safe env: reads the process's time zone (TZ), as localtime_r() and
 * mktime() do. */
QVS_API int64_t qvsTimeToDST64(int64_t seconds);

/** 1 when the calendar time (year in full, month 1-12) lies between the last
 * Sunday of March 01:00:00 and the last Sunday of October 01:00:00, both
 * included, in the process's own zone; else 0 (also for times the C library
 * cannot represent).
 * @param year year in full
 * @param month month 1-12
 * @param day day of the month
 * @param hour hour
 * @param minute minute
 * @param second second
 * @par Touches
 * nothing (uses the process's zone).
 * @par Thread safety
 * MT-Safe env: reads the process's time zone (TZ), as mktime() does. */
QVS_API int qvsCheckDST(int year, int month, int day, int hour, int minute, int second);

/** Converts a local calendar time in the given zone to UTC and writes it as
 * "YYYY-MM-DD HH:MM:SS" (always with a blank) into out (at least 20 bytes).
 * The calendar time is read with mktime in the process's own zone; a "-"
 * zone adds the offset, a "+" zone subtracts it; no summer time.
 * Returns 0, or -1 when the zone has a sign and nothing after it or out is
 * NULL.
 * @param time local calendar time (broken down)
 * @param zone zone text "+HH:MM" / "-HH:MM"
 * @param out caller's buffer of at least 20 bytes
 * @par Touches
 * nothing but the caller's buffer; the system clock is not set.
 * @par Thread safety
 * MT-Safe env: reads the process's time zone (TZ), as mktime() does. */
QVS_API int my_settime(struct tm time, const char *zone, char *out);

/** Writes the current local time stamp for alarm records into out (26
 * bytes) and returns out. The store's time object (read through handle)
 * gives the zone and the summer-time flag; without it (or with a zero
 * handle, or an unusable zone) the process's own local time is used,
 * "YYYY-MM-DDTHH:MM:SS". Never fails; returns NULL only for a NULL out.
 * @param handle attached store handle, or 0
 * @param out caller's buffer of 26 bytes
 * @par Touches
 * reads the store's time object (zone, summer-time flag) and the clock.
 * @par Thread safety
 * MT-Safe env: reads the process's time zone (TZ), as localtime_r() does. */
QVS_API char *get_currentTime(uint32_t handle, char *out);

#ifdef __cplusplus
}
#endif

#endif /* QVS_UTILS_TIMEKEEPING_H */
