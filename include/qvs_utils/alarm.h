/* SPDX-License-Identifier: MIT */
/*
 * libqvs_utils, alarms: the operator's alarm table and the alarm entries.
 *
 * Callers include <qvs_utils.h>, which includes every family's header;
 * this one also compiles on its own.
 */
#ifndef QVS_UTILS_ALARM_H
#define QVS_UTILS_ALARM_H

#include <stdint.h>

#include "api.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ==== Alarms ============================================================== */

/** One row of the operator's alarm definition table.
 * Layout: 12 bytes on 32-bit ARM (armhf), 16 bytes on 64-bit hosts; the
 * members at the offsets given, 2 padding bytes after perceivedSeverity. */
typedef struct {
    uint32_t alarmCode;        /**< alarm code, e.g. 104001 (offset 0) */
    uint8_t alarmStatus;       /**< status logged with the alarm (offset 4) */
    uint8_t perceivedSeverity; /**< severity, compared with the configured alarm level (offset 5) */
    const char *alarmDetail;   /**< detail text (offset 8) */
} CU_ALARM_INFO;

/** Number of rows of cu_alarmInfo. */
#define CU_ALARM_INFO_COUNT 21

/** The known alarm codes with their status, severity and detail text,
 * searched first row first (read-only).
 * CU_ALARM_INFO_COUNT rows: 252 bytes on armhf, 336 bytes on 64-bit hosts. */
extern QVS_API const CU_ALARM_INFO cu_alarmInfo[CU_ALARM_INFO_COUNT];

/** Raises an alarm: logs a new entry under
 * InternetGatewayDevice.X_CU_Function.Log.AlarmInfo.`<n>` (n = first free index
 * 1..255) or refreshes the entry that already holds this code. Codes outside
 * the table are logged with severity 0, status 0 and an empty detail.
 * Returns 0 when logged or refreshed (also when no index was free); -1 when
 * the store cannot be attached, the alarm object is missing, alarms are
 * disabled (enable flag or level 0) or the code's severity is above the
 * configured alarm level. Attaches and detaches itself.
 * @param alarmCode the alarm code
 * @par Touches
 * the alarm object and its AlarmInfo entries (attaches and detaches itself).
 * @par Thread safety
 * MT-Unsafe race:AlarmInfo env: the search for a free entry index and the add
 * are separate store calls, so concurrent raises can choose the same index;
 * the time stamp reads the process's time zone (TZ). */
QVS_API int CU_add_AlarmID(uint32_t alarmCode);

/** Clears an alarm: the first entry (index 1..255) holding this code gets
 * status 3 and the current local time as its cleared time. Returns 0 (also
 * when no entry holds the code); -1 when the store cannot be attached.
 * @param alarmCode the alarm code
 * @par Touches
 * the AlarmInfo entries (attaches and detaches itself).
 * @par Thread safety
 * MT-Safe env: the time stamp reads the process's time zone (TZ). */
QVS_API int CU_clear_AlarmID(uint32_t alarmCode);

/** On an attached store: when an entry with index 1..254 holds alarmCode, sets
 * its status to alarmStatus, its raised time to now and its cleared time to
 * "0000-00-00T00:00:00" and returns -1. Otherwise returns the first index
 * 1..255 without an entry, or -1 when all are taken. -1 for a zero handle.
 * @param handle attached store handle
 * @param alarmCode the alarm code looked for
 * @param alarmStatus status written to an entry that holds the code
 * @par Touches
 * reads the AlarmInfo entries; refreshes the one holding the code.
 * @par Thread safety
 * MT-Unsafe race:AlarmInfo env: the free index returned may be taken by a
 * concurrent raise before the caller adds its entry; the time stamp reads the
 * process's time zone (TZ). */
QVS_API int add_AlarmInfo_Index(uint32_t handle, uint32_t alarmCode, uint8_t alarmStatus);

/** On an attached store: writes NumberOfAlarmInfo = value on the alarm
 * configuration object whose record alarmObject is (as the store returned
 * it). Always returns 0.
 * @param handle attached store handle
 * @param alarmObject the alarm configuration object as the store returned it
 * @param value the new NumberOfAlarmInfo
 * @par Touches
 * one parameter of the alarm object.
 * @par Thread safety
 * MT-Safe. */
QVS_API int update_numberofAlarmInfo(uint32_t handle, const void *alarmObject, uint32_t value);

#ifdef __cplusplus
}
#endif

#endif /* QVS_UTILS_ALARM_H */
