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

/* ==== Time: local time, summer time, time stamps ========================== */

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
