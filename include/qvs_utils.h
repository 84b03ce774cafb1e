/*
 * libqvs_utils: the shared utility library of the home gateway.
 *
 * Every function is called synchronously by another gateway process, does
 * its work through the platform's configuration store, Linux tools and small
 * state files, and returns an integer. Output buffers belong to the caller;
 * their required sizes are given with each function.
 *
 * Store handles are the platform's 32-bit store handles (0: none attached).
 *
 * Hardening: text from a caller that would end up on a shell command line is
 * checked first; text holding any of ; & | ` $ < > ( ) \ ' " # or a line end
 * is refused with -1 (and a level-1 log line) before anything is written or
 * run.
 */
#ifndef QVS_UTILS_H
#define QVS_UTILS_H

#include <stddef.h>
#include <stdint.h>
#include <time.h>

#if defined(__GNUC__)
#define QVS_API __attribute__((visibility("default")))
#else
#define QVS_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ==== Logging and diagnostics ============================================ */

/* Path of the running executable ("/proc/self/exe", at most 127 bytes),
 * newly allocated (free() it), or NULL when it cannot be read. */
QVS_API char *util_getPidname(void);

/* Writes "<exe path>[file:function:line]" then the formatted message and a
 * newline to standard error. Returns the result of writing the newline. */
QVS_API int util_printf(const char *file, const char *function, int line,
                        const char *format, ...) __attribute__((format(printf, 4, 5)));

/* Weak flag kept for the platform's direct-write mode; the library never
 * reads it. */
extern QVS_API int allow_direct_write_xmlShm;

/* ==== Process PID records ================================================ */

/* ==== WLAN: SSID index map ================================================ */

/* ==== WLAN: same-SSID merge and guest clean-up ============================ */

/* ==== WLAN: adding and deleting SSIDs ===================================== */

/* ==== Time: timer rules in UTC ============================================ */

/* Converts one daily timer rule from local time to UTC. Inputs: zone
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
 * argument is NULL); outputs are then untouched. */
QVS_API int my_utctime(const char *zone, const char *start, const char *end, const char *weekdays,
                       char *utcStart, char *utcEnd, char *utcWeekdays,
                       char *nextStart, char *nextEnd, char *nextWeekdays);


/* ==== Time: local time, summer time, time stamps ========================== */

/* Writes the current local time as "YYYY-MM-DDTHH:MM:SS" into out (at
 * least 20 bytes); on 29 February a blank stands in place of the "T".
 * zone: "-HH:MM" subtracts, "+HH:MM" adds, no sign means UTC. With
 * dstEnable non-zero, summer time (qvsTimeToDST) adds an hour. Times before
 * 1970 after the shift read as 1970-01-01T00:00:00.
 * Returns 0, or -1 when the zone has a sign and nothing after it ("+" alone
 * also prints "localtime ptr is NULL!" on standard output) or out is NULL. */
QVS_API int my_localtime(int dstEnable, const char *zone, char *out);

/* Returns seconds + 3600 when that moment (broken down in the process's own
 * zone) lies in summer time (qvsCheckDST), else seconds. */
QVS_API time_t qvsTimeToDST(time_t seconds);

/* 1 when the calendar time (year in full, month 1-12) lies between the last
 * Sunday of March 01:00:00 and the last Sunday of October 01:00:00, both
 * included, in the process's own zone; else 0 (also for times the C library
 * cannot represent). */
QVS_API int qvsCheckDST(int year, int month, int day, int hour, int minute, int second);

/* Converts a local calendar time in the given zone to UTC and writes it as
 * "YYYY-MM-DD HH:MM:SS" (always with a blank) into out (at least 20 bytes).
 * The calendar time is read with mktime in the process's own zone; a "-"
 * zone adds the offset, a "+" zone subtracts it; no summer time.
 * Returns 0, or -1 when the zone has a sign and nothing after it or out is
 * NULL. */
QVS_API int my_settime(struct tm time, const char *zone, char *out);

/* Writes the current local time stamp for alarm records into out (26
 * bytes) and returns out. The store's time object (read through handle)
 * gives the zone and the summer-time flag; without it (or with a zero
 * handle, or an unusable zone) the process's own local time is used,
 * "YYYY-MM-DDTHH:MM:SS". Never fails; returns NULL only for a NULL out. */
QVS_API char *get_currentTime(uint32_t handle, char *out);

/* ==== PON zero-configuration state ======================================== */

/* How far the zero-configuration of a newly connected EPON gateway has come,
 * as one code (attaches to the store itself, detaches on every path):
 *   0  undetermined (store, OLT object or registration record missing, or a
 *      registration status not listed below)
 *   1  OLT link starting             2  OLT not registered, within 180 s
 *   3  OLT not registered > 180 s, known failure state
 *   4  OLT not registered > 180 s, other state
 *   5  no up TR-069 WAN connection, within 120 s
 *   6  no up TR-069 WAN connection > 120 s
 *   7  more than 10 remote management registration attempts
 *   8  remote management registration under way, within 120 s
 *   9  remote management registration under way > 120 s
 *  10  registration indicator 97 or status 1
 *  11  registration status 4         12  registration status 5
 *  13  service configuration (status 0, result 0) waiting > 120 s
 *  14  service configuration (status 0, result 0) within 120 s
 *  15  service result 1   16  service result 2   17  service result 99
 * Phase clocks are the files /tmp/oltretime, /tmp/getwantime,
 * /tmp/registerrms and /tmp/servicetime (seconds since 1970), created on the
 * first call that finds the gateway in that phase and never deleted. */
QVS_API int getzeroconfigeponstate(void);

/* The same for a GPON uplink (GPON OLT registration object and texts). */
QVS_API int getzeroconfiggponstate(void);

/* ==== Alarms ============================================================== */

/* One row of the operator's alarm definition table. */
typedef struct {
    uint32_t alarmCode;
    uint8_t alarmStatus;
    uint8_t perceivedSeverity;
    const char *alarmDetail;
} CU_ALARM_INFO;

#define CU_ALARM_INFO_COUNT 21

/* The known alarm codes with their status, severity and detail text,
 * searched first row first (read-only). */
extern QVS_API const CU_ALARM_INFO cu_alarmInfo[CU_ALARM_INFO_COUNT];

/* Raises an alarm: logs a new entry under
 * InternetGatewayDevice.X_CU_Function.Log.AlarmInfo.<n> (n = first free index
 * 1..255) or refreshes the entry that already holds this code. Codes outside
 * the table are logged with severity 0, status 0 and an empty detail.
 * Returns 0 when logged or refreshed (also when no index was free); -1 when
 * the store cannot be attached, the alarm object is missing, alarms are
 * disabled (enable flag or level 0) or the code's severity is above the
 * configured alarm level. Attaches and detaches itself. */
QVS_API int CU_add_AlarmID(uint32_t alarmCode);

/* Clears an alarm: the first entry (index 1..255) holding this code gets
 * status 3 and the current local time as its cleared time. Returns 0 (also
 * when no entry holds the code); -1 when the store cannot be attached. */
QVS_API int CU_clear_AlarmID(uint32_t alarmCode);

/* On an attached store: when an entry with index 1..254 holds alarmCode, sets
 * its status to alarmStatus, its raised time to now and its cleared time to
 * "0000-00-00T00:00:00" and returns -1. Otherwise returns the first index
 * 1..255 without an entry, or -1 when all are taken. -1 for a zero handle. */
QVS_API int add_AlarmInfo_Index(uint32_t handle, uint32_t alarmCode, uint8_t alarmStatus);

/* On an attached store: writes NumberOfAlarmInfo = value on the alarm
 * configuration object whose record alarmObject is (as the store returned
 * it). Always returns 0. */
QVS_API int update_numberofAlarmInfo(uint32_t handle, const void *alarmObject, uint32_t value);

/* ==== Steering: VPN route lists =========================================== */

/* ==== Steering: application route lists =================================== */

/* ==== Steering: application filter lists ================================== */

/* ==== VPN account retrieval =============================================== */

/* ==== Base64 codecs ======================================================= */

/* ==== String helpers ====================================================== */

#ifdef __cplusplus
}
#endif

#endif /* QVS_UTILS_H */
