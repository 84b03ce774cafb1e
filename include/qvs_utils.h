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

/* PID of the first process listed by "ps -ef | grep '<name>' | grep -v grep"
 * (the name may match anywhere in a process list line: the first line whose
 * text contains it wins; its first number is taken as the PID).
 * Returns the PID, 0 when no process matched (a line is printed on standard
 * output), -1 when the search could not be run (popen failed), the name is
 * NULL, or the name holds a character that could change the shell command
 * line (; & | ` $ < > ( ) \ ' " # or a line end; refused and logged at level
 * 1 without running anything). The command line is cut at 511 characters. */
QVS_API int qvs_util_get_process_pid(const char *process_name);

/* Looks the name up as qvs_util_get_process_pid() does and writes the result
 * (even 0 or -1) in decimal, without a newline, to
 * "/tmp/process_pid_<name>.pid" (path cut at 255 characters).
 * Returns 0 when the record was written; -1 for a NULL or empty name, a name
 * refused as unsafe for the shell (nothing looked up, nothing written), or a
 * record file that cannot be opened for writing. */
QVS_API int qvs_util_recordProcessPid(const char *process_name);

/* Reads the PID recorded by qvs_util_recordProcessPid() for the name.
 * Returns the recorded number, 0 when the record exists but holds no number,
 * -1 when there is no record or the name is NULL or empty. */
QVS_API int qvs_util_getPidFromRecord(const char *process_name);

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

/* ==== Alarms ============================================================== */

/* ==== Steering: VPN route lists =========================================== */

/* Per tunnel index n three lists are kept as text files, one entry per line,
 * under "/userconfig/config/qvvpn" ("VPN_IP_<n>", "VPN_DOMAIN_<n>",
 * "VPN_MAC_<n>") and mirrored into the ipset sets "vpn_ip<n>",
 * "vpn_domain<n>" (filled by dnsmasq from "/etc/dnsmasq/ipset/vpn_domain<n>")
 * and "vpn_mac<n>". List types: 0 IP, 1 domain, 2 MAC.
 * Every function but qvvpn_get_pkgCount first makes sure the list directory
 * exists: when it cannot be created the result is -1; when it had to be
 * created, the add functions and qvvpn_set_route_all go on, all others
 * return 0 at once.
 * Entries are found by substring: adding 10.0.0.1 next to 10.0.0.12 finds
 * the line of 10.0.0.12. IP and MAC text (and IP/MAC lists of
 * qvvpn_set_route_all) holding shell characters is refused with -1. */

/* Adds an IP address or network. 0 added (and put into vpn_ip<n>); the
 * 1-based number of an existing line containing the text (nothing added);
 * -1 on directory or file failure or refused text. */
QVS_API int qvvpn_add_route_ip(int n, const char *ip);
/* Deletes the first line containing the text, and the member from the set.
 * 0 (also when not found); -1 on directory failure or refused text. */
QVS_API int qvvpn_del_route_ip(int n, const char *ip);
/* Empties the IP list and the set. 0; -1 when the file cannot be truncated
 * or the directory cannot be created. */
QVS_API int qvvpn_flush_route_ip(int n);
/* Adds a domain (when no line contains it yet) and always rewrites the
 * dnsmasq ipset file and signals dnsmasq. 0 when new, else the line number
 * found; -1 on directory or file failure. */
QVS_API int qvvpn_add_route_domain(int n, const char *domain);
/* Deletes the first line containing the domain; in every case empties the
 * domain set and rewrites the dnsmasq file. 0; -1 on directory failure. */
QVS_API int qvvpn_del_route_domain(int n, const char *domain);
/* Empties the domain list, the set and the dnsmasq file. 0 or -1. */
QVS_API int qvvpn_flush_route_domain(int n);
/* Adds a MAC (aa:bb:cc:dd:ee:ff or twelve hex digits); mac is lower-cased
 * in place. Results as qvvpn_add_route_ip. */
QVS_API int qvvpn_add_route_mac(int n, char *mac);
/* Deletes a MAC (lower-cased in place). Results as qvvpn_del_route_ip. */
QVS_API int qvvpn_del_route_mac(int n, char *mac);
/* Empties the MAC list and the set. 0 or -1. */
QVS_API int qvvpn_flush_route_mac(int n);
/* Refills vpn_ip<n> and vpn_mac<n> from the files and regenerates the
 * dnsmasq file (the domain set keeps its members). 0; -1 on directory
 * failure. */
QVS_API int qvvpn_reload_route(int n);
/* The part of qvvpn_reload_route for one list type (others: nothing). 0;
 * -1 on directory failure. */
QVS_API int qvvpn_reload_route_mode(int n, unsigned int type);
/* Replaces a whole list with the items of list joined by '%' (split in
 * place; empty items vanish), then reloads that list. 0; -1 on bad type,
 * directory or file failure, or refused text. */
QVS_API int qvvpn_set_route_all(int n, unsigned int type, char *list);
/* Writes the list's items joined by '%' into out (size bytes; each line cut
 * at its first blank; an item that does not fit is skipped). Number of
 * items written; -1 on bad type or unreadable file. */
QVS_API int qvvpn_get_route_all(int n, unsigned int type, char *out, int size);
/* Per list entry the packets counted for the set members it contains, as
 * "<entry>@<count>" joined by '%' into out (size bytes; stops at the first
 * piece that does not fit). At most 2048 entries. 0; -1 on bad type,
 * directory failure, unreadable list file or no memory. */
QVS_API int qvvpn_get_statistics(int n, unsigned int type, char *out, int size);
/* Packet sum read from a file named "iptables -t mangle -nvL QV_VPN<n>
 * 2>/dev/null" (two blanks before "2>"), which normally does not exist:
 * then 0. */
QVS_API unsigned int qvvpn_get_pkgCount(int n);

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

/* Bytes needed by generateName()'s destination for any arguments. */
#define QVS_GENERATE_NAME_SIZE 78

/* Replaces every character equal to `from` by `to` in the text, in place.
 * Characters are compared as signed bytes (a byte above 0x7F matches only a
 * negative `from`). A NULL or empty text is left as it is. */
QVS_API void qvsReplace(char *str, char from, char to);

/* Writes the display name of a WAN connection to dst:
 * mode 0 "<index>_<name>_<R|B>_VID_", mode 1 "<index>_<name>_<R|B>_VID_0",
 * mode 2 "<index>_<name>_<R|B>_VID_<vid>"; any other mode leaves dst
 * untouched. The name is cut to 47 characters and every ',' in it becomes
 * '_'; the letter is R when connType contains "Routed", otherwise B; the
 * index is printed as a signed decimal number. A NULL name or connType counts
 * as empty; a NULL dst is not written.
 * dst must hold QVS_GENERATE_NAME_SIZE (78) bytes. Always returns 0. */
QVS_API int generateName(unsigned int index, const char *name, const char *connType,
                         int vid, uint8_t mode, char *dst);

/* Replaces every occurrence of `from` by `to` in the text held in a buffer of
 * `size` bytes, left to right, in place. The result is cut so that it fits:
 * the rewrite stops once its length reaches size - strlen(to) - 1 (the first
 * step always runs), then at most size - 1 characters are copied back, the
 * rest of the buffer is zeroed and its last byte set to 0.
 * Returns str. The text is returned unchanged when `from` is empty, any
 * pointer is NULL, no work buffer of `size` bytes can be allocated, or size
 * is smaller than strlen(to) + 1 (no room for one replacement). */
QVS_API char *str_replace(char *str, size_t size, const char *from, const char *to);

/* 1 when every character of the text is a hexadecimal digit (0-9, a-f, A-F)
 * or the text is empty; 0 otherwise, and 0 for NULL. */
QVS_API int qvs_is_hex_string(const char *str);

/* 0 when the 6 bytes are all 0x00 or all 0xFF (or mac is NULL); 1 for any
 * other address, multicast ones included. */
QVS_API int isValidMac(const unsigned char *mac);

#ifdef __cplusplus
}
#endif

#endif /* QVS_UTILS_H */
