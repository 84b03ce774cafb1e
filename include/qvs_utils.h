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
 * run. So is text that would make a command line longer than its buffer (a
 * line cut short is never run; "refused text too long for its command line
 * [<text>]"); a stored line too long for its command during a reload is
 * skipped with that log line.
 *
 * List files survive a full or read-only flash: every list write checks its
 * writes, flush and close; whole-file rewrites go through a temporary file
 * in the same directory and rename, failed appends are cut back. A failed
 * write gives -1 (where the function has a failure result), leaves the file
 * as it was and sends no kernel command that would follow it.
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

/* SSIDs are numbered three ways: the external index (1 to 16, as users and
 * the data model see them), the internal index (the driver slot and SSID
 * object instance: 1 to 8 on radio 1, the 5 GHz radio; 9 to 16 on radio 2,
 * the 2.4 GHz radio) and the ubus index of the Wi-Fi agent. The map from
 * external to internal index is the text "X_QV_External_SSID_Map" of the
 * Wi-Fi common object: decimal numbers joined by ",", entry k the internal
 * index of external index k (0: free). Functions taking a handle use the
 * caller's store handle and never attach, detach or save. */

/* Reads the map into table (room for *count one-byte entries; pass 16).
 * On success *count is the number of entries read (extra numbers ignored).
 * 0; -22 zero handle; -1003 no Wi-Fi common object; -1000 empty map text or
 * *count below 1 (then *count is left as passed). */
QVS_API int qvs_wlan_get_ssid_map(uint32_t handle, uint8_t *table, int *count);

/* Internal index of an external index (0 when the external index is free),
 * or -1 when the index is below 1, the map cannot be read or holds fewer
 * entries than the index. */
QVS_API int qvs_wlan_get_internal_ssididx_by_ext_ssididx(uint32_t handle, int ext_idx);

/* External index (first map position holding internal_idx, plus 1), or -1
 * when the map cannot be read, internal_idx is outside 1 to 16 or no entry
 * read holds it. */
QVS_API int qvs_wlan_get_ext_ssididx_by_internal_ssididx(uint32_t handle, int internal_idx);

/* The ubus index taken as an internal index value: the external index that
 * maps to it (first match among all 16 positions), 0 when none does; -1 when
 * the index is below 1, the map cannot be read or holds fewer entries than
 * the index. */
QVS_API int qvs_wlan_get_ssididx_by_ubus_ssididx(uint32_t handle, int ubus_idx);

/* The ubus index taken as a zero-based external position: the internal index
 * of external index ubus_idx + 1 (0 past the table's end); -1 under the same
 * conditions as qvs_wlan_get_internal_ssididx_by_ext_ssididx. */
QVS_API int qvs_wlan_get_internal_ssididx_by_ubus(uint32_t handle, int ubus_idx);

/* Radio of an internal index: 2 for 9 to 16, 1 for anything else. */
QVS_API int qvs_wlan_internal_ssididx_to_radioidx(int internal_idx);

/* Radio of a station-side interface index: 2 for 1, 1 for anything else. */
QVS_API int qvs_wlan_internal_staidx_to_radioidx(int sta_idx);

/* Attaches to the store itself. 1 when the external index's SSID lies on
 * radio 1 (internal 1 to 8, also when the index is unknown), 0 when it lies
 * on radio 2 or the store cannot be attached. */
QVS_API int qvs_wlan_get_ssid_band(int ext_idx);

/* Always 1: both radios are present. */
QVS_API int qvs_wlan_get_dual_bandsupport(void);

/* Read "X_QV_SharedSSID_Map" / "X_QV_GuestSSID_Map" into table (room for
 * *count one-byte entries; pass 16; at most 63 characters of text are read).
 * 0 with *count the number read; -22 zero handle and -1003 no Wi-Fi common
 * object (both set *count to 0); -1000 empty text or *count below 1 (sets
 * *count to 0). */
QVS_API int qvs_wlan_get_shared_ssid_list(uint32_t handle, uint8_t *table, int *count);
QVS_API int qvs_wlan_get_guest_ssid_list(uint32_t handle, uint8_t *table, int *count);


/* ==== WLAN: same-SSID merge and guest clean-up ============================ */

/* List selectors of the shared and guest SSID lists. */
#define QVS_WLAN_SHARED_LIST 0x10000
#define QVS_WLAN_GUEST_LIST 0x20000

/* Merges two SSIDs into one network: marks both merged (bit 0x40000 of
 * "X_QV_SSID_Bitmap"), copies the source's network name and security
 * settings ("ModeEnabled", the WEP group when the mode holds "WEP-", the WPA
 * group when it holds "WPA") to the target and saves (no reply).
 * 0; -1003 when the source's name or security object or the target's
 * security object is missing; -14 when no parameter list can be made;
 * -22 zero handle. The merge marks stay set on the failures. */
QVS_API int qvs_wlan_set_same_ssid(uint32_t handle, int src_ext_idx, int dst_ext_idx);

/* Clears every merge mark, renames each formerly merged SSID of internal
 * slots 1 to 8 to its first 29 characters plus "-5G", and saves (no reply).
 * 0; -1 zero handle. */
QVS_API int qvs_wlan_cancel_same_ssid(uint32_t handle);

/* 1 when any of the 16 SSIDs carries the merge mark, else 0; -1 zero handle. */
QVS_API int qvs_wlan_get_same_ssid_status(uint32_t handle);

/* Entry at position (1 to 16) of the shared or guest list (selector
 * QVS_WLAN_SHARED_LIST or QVS_WLAN_GUEST_LIST), or -1 for a bad position or
 * selector, an unreadable or empty list, or fewer entries than the position. */
QVS_API int qvs_wlan_get_ext_ssid_idx_by_mapped_ssid_oid_idx(uint32_t handle, int position, int selector);

/* Sets the entry at position (1 to 16) of the selected list to value (0
 * clears it) and writes the list back (never saves). The entries read are
 * written back, and up to the position when it lies beyond them. Returns the
 * store's write result, or -1 for a bad position or selector, an unreadable
 * or empty list, or a non-zero value the list already holds. */
QVS_API int qvs_wlan_update_mapped_list(uint32_t handle, int position, int value, int selector);

/* Tears down the guest settings of an external SSID: guest duration 0, port
 * isolation off, disabled, guest mark (0x20000) cleared; removes it from the
 * guest list when found at positions 1 to 15. Never saves. 0; -1 zero handle. */
QVS_API int qvs_wlan_clean_guest_ssid_conf_by_ext_ssididx(uint32_t handle, int ext_idx);

/* Number of guest SSIDs (0 to 8) on the radio of internal index
 * internal_idx: slots 9 to 16 when it is above 8, slots 1 to 8 otherwise;
 * -1 zero handle. */
QVS_API int qvs_wlan_get_guest_ssid_count_per_radio(uint32_t handle, int internal_idx);

/* Attaches to the store itself. Finds the WAN connection whose bound LAN
 * interfaces hold "InternetGatewayDevice.WiFi.SSID.<ssid_idx>" (PPP before IP
 * connections, first connection device first) and copies its interface name
 * into ifname (the caller provides 32 bytes).
 * 0 when found or when ifname is NULL; -1105 when none binds the SSID or the
 * WAN device is missing; -1001 when the store cannot be attached. */
QVS_API int qvs_wlan_get_bind_ifname_by_ssididx(int ssid_idx, char *ifname);


/* ==== WLAN: adding and deleting SSIDs ===================================== */

/* Picks the first free internal slot of a radio (band non-zero: 9 to 16,
 * the 2.4 GHz radio; zero: 1 to 8, the 5 GHz radio), skipping slots in the
 * map or with bit 0x80000 of "X_QV_SSID_Bitmap", and maps external index
 * ext_idx to it (an existing entry is overwritten). Neither enables the SSID
 * nor saves. 0; -1 zero handle, no free slot or failed map write. */
QVS_API int qvs_wlan_add_ssid(uint32_t handle, int ext_idx, int band);

/* Disables the SSID of an external index and frees the index in the map.
 * Never saves. 0 (also when refusing to delete internal slot 1 or 9, the
 * radios' first SSIDs); -1 zero handle, unknown or free external index, or
 * failed map write. */
QVS_API int qvs_wlan_del_ssid(uint32_t handle, int ext_idx);

/* The same with the ubus index taken as the internal index; the external
 * index freed is the one mapping to it (none: the map is only rewritten).
 * 0; -1 zero handle, index below 1 or failed map write. */
QVS_API int qvs_wlan_del_ssid_by_ubus(uint32_t handle, int ubus_idx);


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
 * the line of 10.0.0.12. IP, domain and MAC text (and the lists of
 * qvvpn_set_route_all, every type) holding shell characters or a line end is
 * refused with -1; so is IP text whose "ipset add|del vpn_ip<n> <ip> 2>
 * /dev/null" line would pass 127 characters. */

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
 * (MACs lower-cased and '-' turned into ':', lists split at ','), so they
 * must be writable. A null text, or text that could change a shell command
 * line (see above, line ends included), is refused with -1 before anything
 * is written or run; so is text whose ADD_DATA line (1024-byte buffer) or
 * DEL_DATA line (128-byte buffer) would not fit (the dispatchers still
 * return 0). The directory is created (0755) when it is missing.
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
 * anything is written or run, and so is an added list holding an item whose
 * ADD_DATA line would pass 127 characters; a stored item too long for it is
 * skipped when the list is sent. The directory is created (0755) by the add,
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

/* cJSON's object type (from cJSON.h, whose functions this library exports). */
struct cJSON;

/* Writes the hardware address of "br0" as 12 upper-case hex digits and a NUL
 * to `mac` (at least 13 bytes). Prints "cd get_macAddr() " first. When the
 * address cannot be read, `mac` is left as it was. Returns 0 when written,
 * -1 otherwise (informational only; callers need not check it). */
QVS_API int get_macAddr(char *mac);

/* Writes the 16 digest bytes as 32 upper-case hex digits and a NUL to `out`
 * (at least 33 bytes). */
QVS_API void md5ToAscii(const unsigned char *digest, char *out);

/* Adds the six members of the signed account request to `req`, in order:
 * "RPCMethod" "Post", "Plugin_Name" "", "MD5", "time", "mac", "Message"
 * (Base64 of the formatted inner object {"CmdType", "tunnelName", "userId"}).
 * Progress is printed to standard output.
 * Returns 0 on success; -1 when an argument is NULL, when the inner object
 * cannot be created or printed, or when its formatted text is longer than
 * 765 bytes (its Base64 would not fit the 1024-byte message buffer: such a
 * request is refused, never cut; `req` is then left unchanged). */
QVS_API int constructReqData(const char *tunnelName, const char *userId, struct cJSON *req);

/* Sends the signed account request for `tunnelName`/`userId` over one TCP
 * connection to `proxy` ("host:port"; host a dotted quad or a host name; the
 * port text is everything after the first ':', read up to its first
 * non-digit; only the first 63 characters of `proxy` are used), frame =
 * 4-byte big-endian length + the formatted JSON text; waits up to 30 s for
 * one reply, reads it once (at most 2048 bytes) and copies its text after the
 * 4-byte length prefix, up to its first NUL or the received length, to
 * `reply` (the caller provides at least 2045 bytes). Progress is printed to
 * standard output.
 * Returns 1 on success; -1 when an argument is NULL or a text is empty, or
 * the request object cannot be created; 0 on any later failure (request not
 * built, bad designation, name lookup, socket, connect, write, time-out,
 * read error, or the peer closing without a reply); `reply` is then
 * untouched. */
QVS_API int createSocketToGetAccount(const char *tunnelName, const char *userId, const char *proxy,
                                     char *reply);

/* Parses a reply text {"return_Parameter": {"CmdType": "GET_VPN_ACCOUNT",
 * "Status": "0", "data": {"vpn_addr", "vpn_port", "vpn_user", "vpn_pwd",
 * "account_timeout"}}} (all strings, the five non-empty) and copies the five
 * values, unbounded, into the caller's buffers, which must each hold the
 * corresponding value and its NUL (a reply from createSocketToGetAccount
 * holds at most 2044 characters). Prints its progress to standard output.
 * Returns 0 on success; -1 on any failure (an argument NULL, not JSON, a
 * member missing, of the wrong type or value), with no buffer written. */
QVS_API int parseRepData(const char *buf, char *vpn_addr, char *vpn_port, char *vpn_user, char *vpn_pwd,
                         char *account_timeout);

/* ==== Base64 codecs ======================================================= */

/* Lenient codec, 32-bit sizes, no failures reported, no bounds checked. */

/* The alphabet b64_encode writes from: 64 characters and a NUL. Writable:
 * changing it changes the encoding of the whole process. */
extern QVS_API char b64_chr[65];

/* 6-bit value of one character: A-Z 0-25, a-z 26-51, 0-9 52-61, '+' 62,
 * '/' 63, '=' 64, anything else 0. */
QVS_API unsigned int b64_int(unsigned int ch);

/* Encoded size of `in_size` bytes: 4 * ceil(in_size / 3) modulo 2^32, NUL not
 * counted. */
QVS_API unsigned int b64e_size(unsigned int in_size);

/* Decoded size bound of `in_size` characters: (3 * in_size mod 2^32) >> 2. */
QVS_API unsigned int b64d_size(unsigned int in_size);

/* Encodes `len` bytes with '=' padding into `out`, which must hold
 * b64e_size(len) + 1 bytes; NUL-terminates. Returns the characters written
 * (without the NUL). */
QVS_API unsigned int b64_encode(const unsigned char *in, unsigned int len, unsigned char *out);

/* Decodes the whole quartets of `len` characters into `out` (at least
 * b64d_size(len) bytes); a trailing group of 1 to 3 characters is dropped,
 * characters outside the alphabet count as 0, a '=' third character ends the
 * quartet after one byte, a '=' fourth after two. Writes no NUL. Returns the
 * bytes written. */
QVS_API unsigned int b64_decode(const unsigned char *in, unsigned int len, unsigned char *out);

/* Strict, bounded codec, lengths of the size type. */

#include <stdbool.h> /* bool, in C as in C++ */

/* Encodes `inlen` bytes into at most `outlen` characters (cut exactly there,
 * even inside a quartet); a NUL follows only when room is left. */
QVS_API void base64_encode(const char *in, size_t inlen, char *out, size_t outlen);

/* Encodes into a new malloc'ed, NUL-terminated block stored in *out (free()
 * it). Returns the encoded length; 0 with *out NULL when the size overflows
 * size_t; (size_t)-1 with *out NULL when memory is short. */
QVS_API size_t base64_encode_alloc(const char *in, size_t inlen, char **out);

/* True when `ch` is one of the 64 alphabet characters ('=' and '\n' are not). */
QVS_API bool isbase64(char ch);

/* Streaming decoder state, owned by the caller: `i` characters (0 to 4) of a
 * quartet gathered across calls in `buf`. */
struct base64_decode_context {
    unsigned int i;
    char buf[4];
};

/* Starts a decoding context (i = 0). */
QVS_API void base64_decode_ctx_init(struct base64_decode_context *ctx);

/* Decodes `inlen` characters into `out`, whose capacity is *outlen; bytes
 * beyond it are dropped. *outlen becomes the bytes written (including those
 * written before a fault). Without a context the input must be whole
 * quartets, '=' only in the last one. With a context, line feeds are skipped,
 * an incomplete quartet waits in the context for the next call, '=' may end
 * any quartet, and a call with `inlen` 0 flushes (fails when 1 to 3
 * characters are held). Returns true when all input was consumed. */
QVS_API bool base64_decode_ctx(struct base64_decode_context *ctx, const char *in, size_t inlen, char *out,
                               size_t *outlen);

/* As base64_decode_ctx into a new malloc'ed block of 3 * (inlen / 4) + 2
 * bytes stored in *out (free() it); *outlen (if not NULL) gets the bytes
 * decoded. Returns false (and *out NULL) on bad input; true with *out NULL
 * when memory is short. */
QVS_API bool base64_decode_alloc_ctx(struct base64_decode_context *ctx, const char *in, size_t inlen,
                                     char **out, size_t *outlen);

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
