/* SPDX-License-Identifier: MIT */
/*
 * libqvs_utils, PON zero-configuration state of an EPON or GPON uplink.
 *
 * Callers include <qvs_utils.h>, which includes every family's header;
 * this one also compiles on its own.
 */
#ifndef QVS_UTILS_PON_H
#define QVS_UTILS_PON_H

#include "api.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ==== PON zero-configuration state ======================================== */

/** How far the zero-configuration of a newly connected EPON gateway has come,
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
 * first call that finds the gateway in that phase and never deleted.
 * @return the state code above.
 * @par Touches
 * attaches to the store (OLT, WAN and registration objects), reads and creates the phase clock files.
 * @par Thread safety
 * MT-Safe: a phase clock file is checked (and created) by one call at a
 * time, between threads and processes (a lock file named after the clock
 * under /var/lock/qvs_utils), so a call never reads a clock another call is
 * still writing, and a missing clock is stamped once. A clock whose lock
 * stays busy for 10 s counts as unreadable (waiting), with a level-1 log
 * line. */
QVS_API int getzeroconfigeponstate(void);

/** The same for a GPON uplink (GPON OLT registration object and texts).
 * @return the state code, as for the EPON uplink.
 * @par Touches
 * as getzeroconfigeponstate().
 * @par Thread safety
 * MT-Safe: as getzeroconfigeponstate(), one check of a phase clock at a
 * time. */
QVS_API int getzeroconfiggponstate(void);

#ifdef __cplusplus
}
#endif

#endif /* QVS_UTILS_PON_H */
