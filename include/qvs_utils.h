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

/* ==== Alarms ============================================================== */

/* ==== Steering: VPN route lists =========================================== */

/* ==== Steering: application route lists =================================== */
/*
 * Per rule index n, three list files under "/userconfig/config/approute"
 * ("approute_ip<n>", "approute_domain<n>", "approute_mac<n>"), one entry per
 * line, mirrored into the route module through "/proc/approute/rule".
 * List types: 0 = IP, 1 = domain, 2 = MAC (the module numbers them 1, 2, 3).
 * List texts join items with ','. Text arguments may be changed in place
 * (a trailing line end removed, MACs lower-cased and '-' turned into ':',
 * lists split at ','), so they must be writable. A null text, or text that
 * could change a shell command line (see above; one trailing line end is
 * allowed, since it is removed first), is refused with -1 before anything
 * is written or run. The directory is created (0755) when it is missing.
 */

/* Adds one entry to the file and the module. 0 added; the 1-based number of
 * a line that already holds it (IP, domain: contains it; MAC: begins with it,
 * case ignored), nothing changed; -1 directory or file failure. */
QVS_API int approute_add_route_ip(int n, char *ip);
QVS_API int approute_add_route_domain(int n, char *domain);
QVS_API int approute_add_route_mac(int n, char *mac);

/* Deletes the first line holding the entry and sends it to the module as
 * deleted. 0 (also when absent); -1 when the directory cannot be created. */
QVS_API int approute_del_route_ip(int n, char *ip);
QVS_API int approute_del_route_domain(int n, char *domain);
QVS_API int approute_del_route_mac(int n, char *mac);

/* Empties the list file and the module's list. 0; -1 directory or file failure. */
QVS_API int approute_flush_route_ip(int n);
QVS_API int approute_flush_route_domain(int n);
QVS_API int approute_flush_route_mac(int n);

/* Sends the whole comma-joined list to the module, then appends each item
 * that no line holds yet (domains: an item found in a line replaces that
 * line, moving it to the end). 0; -1 directory or file failure. */
QVS_API int approute_add_route_iplist(int n, char *list);
QVS_API int approute_add_route_domainlist(int n, char *list);
QVS_API int approute_add_route_maclist(int n, char *list);

/* Sends the list to the module as deleted, then deletes each item's line.
 * 0; -1 when the directory cannot be created. */
QVS_API int approute_del_route_iplist(int n, char *list);
QVS_API int approute_del_route_domainlist(int n, char *list);
QVS_API int approute_del_route_maclist(int n, char *list);

/* The list functions of type 0, 1 or 2; always 0 (also for another type). */
QVS_API int approute_add_route_list(int n, unsigned int type, char *list);
QVS_API int approute_del_route_list(int n, unsigned int type, char *list);

/* Replaces a whole list in the module (clear, then the list) and in the
 * file. No line end allowed in the list. 0; -1 bad type, directory or file
 * failure. */
QVS_API int approute_set_route_all(int n, unsigned int type, char *list);

/* Refills the module's three lists of rule n from the files (after a
 * restart). 0; -1 when the directory cannot be created. */
QVS_API int approute_reload_route(int n);

/* Writes the list's entries (each cut at its first blank) joined by ','
 * into out (size bytes, emptied first; entries that do not fit are
 * skipped). Number of entries written; -1 bad type, null out, size < 1 or
 * unreadable file; 0 with out untouched when the directory was missing. */
QVS_API int approute_get_route_all(int n, unsigned int type, char *out, int size);

/* Number of lines of the list file; 0 when the directory or the file is
 * missing (nothing is created) or the type is not 0, 1 or 2. */
QVS_API int approute_get_route_count(int n, int type);

/* ==== Steering: application filter lists ================================== */
/*
 * Per rule index n, one file per list type under
 * "/userconfig/config/appfilter" ("appfilter_ip<n>", "appfilter_domain<n>",
 * "appfilter_mac<n>"), each a single line of items joined by ',' (at most
 * 81919 characters), mirrored into the filter module through
 * "/proc/appfilter/rule": every change clears the module's list and adds
 * each item again. List types: 0 = IP, 1 = domain, 2 = MAC. List arguments
 * are split in place at ','; a null list, or one that could change a shell
 * command line (see above, line ends included), is refused with -1 before
 * anything is written or run. The directory is created (0755) by the add,
 * delete and flush functions when it is missing.
 */

/* Sends the stored list of rule n and type to the module (clear, then one
 * add per item). 0; -1 when the list file cannot be opened or no memory. */
QVS_API int update_data_list_to_appfilter_module(int n, unsigned int type);

/* Adds the items that the stored line does not contain yet (a substring
 * test), then updates the module. 0; -1 directory or file failure. */
QVS_API int appfilter_add_route_iplist(int n, char *list);
QVS_API int appfilter_add_route_domainlist(int n, char *list);
QVS_API int appfilter_add_route_maclist(int n, char *list);

/* Removes each item's first occurrence (a substring) with its separating
 * comma, then updates the module. 0 (also when there is no file, then
 * nothing is sent); -1 directory or file failure. */
QVS_API int appfilter_del_route_iplist(int n, char *list);
QVS_API int appfilter_del_route_domainlist(int n, char *list);
QVS_API int appfilter_del_route_maclist(int n, char *list);

/* Empties the list file and the module's list. 0; -1 directory or file failure. */
QVS_API int appfilter_flush_route_ip(int n);
QVS_API int appfilter_flush_route_domain(int n);
QVS_API int appfilter_flush_route_mac(int n);

/* The function of type 0, 1 or 2 and its result; 0 for another type. */
QVS_API int appfilter_add_route_list(int n, unsigned int type, char *list);
QVS_API int appfilter_del_route_list(int n, unsigned int type, char *list);
QVS_API int appfilter_flush_route_list(int n, unsigned int type);

/* Copies the stored line (at most size - 1 characters, terminated) into
 * out. 0 (out untouched when the file is missing or empty, or the type is
 * not 0, 1 or 2: clear out first); -1 when the directory is not writable
 * (it is not created), out is null or size < 1. */
QVS_API int appfilter_get_route_list(int n, int type, char *out, int size);

/* ==== VPN account retrieval =============================================== */

/* ==== Base64 codecs ======================================================= */

/* ==== String helpers ====================================================== */

#ifdef __cplusplus
}
#endif

#endif /* QVS_UTILS_H */
