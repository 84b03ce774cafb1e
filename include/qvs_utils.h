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

/** Path of the running executable ("/proc/self/exe", at most 127 bytes),
 * newly allocated (free() it), or NULL when it cannot be read.
 * @par Touches
 * reads the link "/proc/self/exe"; nothing else.
 * @return a new block the caller frees, or NULL. */
QVS_API char *util_getPidname(void);

/** Writes "<exe path>[file:function:line]" then the formatted message and a
 * newline to standard error. Returns the result of writing the newline.
 * @param file source file name shown in the prefix
 * @param function function name shown in the prefix
 * @param line line number shown in the prefix
 * @param format printf format of the message, followed by its arguments
 * @par Touches
 * standard error only (and "/proc/self/exe" for the prefix). */
QVS_API int util_printf(const char *file, const char *function, int line,
                        const char *format, ...) __attribute__((format(printf, 4, 5)));

/** Weak flag kept for the platform's direct-write mode; the library never
 * reads it. */
extern QVS_API int allow_direct_write_xmlShm;

/* ==== Process PID records ================================================ */

/** PID of the first process listed by "ps -ef | grep '<name>' | grep -v grep"
 * (the name may match anywhere in a process list line: the first line whose
 * text contains it wins; its first number is taken as the PID).
 * Returns the PID, 0 when no process matched (a line is printed on standard
 * output), -1 when the search could not be run (popen failed), the name is
 * NULL, or the name holds a character that could change the shell command
 * line (; & | ` $ < > ( ) \ ' " # or a line end; refused and logged at level
 * 1 without running anything), or is so long (more than 480 characters) that
 * the 512-byte command line would be cut short (refused the same way).
 * @param process_name text looked for in the process list; must not hold shell characters
 * @par Touches
 * runs one "ps" command line through popen; no store, no files. */
QVS_API int qvs_util_get_process_pid(const char *process_name);

/** Looks the name up as qvs_util_get_process_pid() does and writes the result
 * (even 0 or -1) in decimal, without a newline, to
 * "/tmp/process_pid_<name>.pid" (path cut at 255 characters).
 * Returns 0 when the record was written; -1 for a NULL or empty name, a name
 * refused as unsafe for the shell or too long for the lookup line (nothing
 * looked up, nothing written), or a
 * record file that cannot be opened for writing.
 * @param process_name process name, also the record file's name part
 * @par Touches
 * runs "ps" through popen and writes "/tmp/process_pid_<name>.pid". */
QVS_API int qvs_util_recordProcessPid(const char *process_name);

/** Reads the PID recorded by qvs_util_recordProcessPid() for the name.
 * Returns the recorded number, 0 when the record exists but holds no number,
 * -1 when there is no record or the name is NULL or empty.
 * @param process_name process name whose record is read
 * @par Touches
 * reads "/tmp/process_pid_<name>.pid" only. */
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

/** Reads the map into table (room for *count one-byte entries; pass 16).
 * On success *count is the number of entries read (extra numbers ignored).
 * 0; -22 zero handle; -1003 no Wi-Fi common object; -1000 empty map text or
 * *count below 1 (then *count is left as passed).
 * @param handle attached store handle (not attached, detached or saved here)
 * @param table caller's buffer of *count bytes; pass 16 entries
 * @param count in: room in table; out: entries read
 * @par Touches
 * reads "X_QV_External_SSID_Map" of the Wi-Fi common object. */
QVS_API int qvs_wlan_get_ssid_map(uint32_t handle, uint8_t *table, int *count);

/** Internal index of an external index (0 when the external index is free),
 * or -1 when the index is below 1, the map cannot be read or holds fewer
 * entries than the index.
 * @param handle attached store handle
 * @param ext_idx external SSID index, 1 to 16
 * @par Touches
 * reads the SSID map from the store. */
QVS_API int qvs_wlan_get_internal_ssididx_by_ext_ssididx(uint32_t handle, int ext_idx);

/** External index (first map position holding internal_idx, plus 1), or -1
 * when the map cannot be read, internal_idx is outside 1 to 16 or no entry
 * read holds it.
 * @param handle attached store handle
 * @param internal_idx internal SSID index, 1 to 16
 * @par Touches
 * reads the SSID map from the store. */
QVS_API int qvs_wlan_get_ext_ssididx_by_internal_ssididx(uint32_t handle, int internal_idx);

/** The ubus index taken as an internal index value: the external index that
 * maps to it (first match among all 16 positions), 0 when none does; -1 when
 * the index is below 1, the map cannot be read or holds fewer entries than
 * the index.
 * @param handle attached store handle
 * @param ubus_idx ubus SSID index of the Wi-Fi agent
 * @par Touches
 * reads the SSID map from the store. */
QVS_API int qvs_wlan_get_ssididx_by_ubus_ssididx(uint32_t handle, int ubus_idx);

/** The ubus index taken as a zero-based external position: the internal index
 * of external index ubus_idx + 1 (0 past the table's end); -1 under the same
 * conditions as qvs_wlan_get_internal_ssididx_by_ext_ssididx.
 * @param handle attached store handle
 * @param ubus_idx ubus SSID index (zero-based external position)
 * @par Touches
 * reads the SSID map from the store. */
QVS_API int qvs_wlan_get_internal_ssididx_by_ubus(uint32_t handle, int ubus_idx);

/** Radio of an internal index: 2 for 9 to 16, 1 for anything else.
 * @param internal_idx internal SSID index
 * @par Touches
 * nothing (pure computation). */
QVS_API int qvs_wlan_internal_ssididx_to_radioidx(int internal_idx);

/** Radio of a station-side interface index: 2 for 1, 1 for anything else.
 * @param sta_idx station-side interface index
 * @par Touches
 * nothing (pure computation). */
QVS_API int qvs_wlan_internal_staidx_to_radioidx(int sta_idx);

/** Attaches to the store itself. 1 when the external index's SSID lies on
 * radio 1 (internal 1 to 8, also when the index is unknown), 0 when it lies
 * on radio 2 or the store cannot be attached.
 * @param ext_idx external SSID index, 1 to 16
 * @par Touches
 * attaches to the store, reads the SSID map, detaches on every path. */
QVS_API int qvs_wlan_get_ssid_band(int ext_idx);

/** Always 1: both radios are present.
 * @par Touches
 * nothing. */
QVS_API int qvs_wlan_get_dual_bandsupport(void);

/** @name qvs_wlan_get_shared_ssid_list, qvs_wlan_get_guest_ssid_list
 * @{ */
/** Read "X_QV_SharedSSID_Map" / "X_QV_GuestSSID_Map" into table (room for
 * *count one-byte entries; pass 16; at most 63 characters of text are read).
 * 0 with *count the number read; -22 zero handle and -1003 no Wi-Fi common
 * object (both set *count to 0); -1000 empty text or *count below 1 (sets
 * *count to 0).
 * @par Arguments of both
 * handle, an attached store handle (never attached, detached or saved here); table, the caller's buffer of *count bytes; count, in: room in table, out: entries read.
 * @par Touches
 * reads the text from the Wi-Fi common object only. */
QVS_API int qvs_wlan_get_shared_ssid_list(uint32_t handle, uint8_t *table, int *count);
QVS_API int qvs_wlan_get_guest_ssid_list(uint32_t handle, uint8_t *table, int *count);
/** @} */


/* ==== WLAN: same-SSID merge and guest clean-up ============================ */

/** @name QVS_WLAN_SHARED_LIST, QVS_WLAN_GUEST_LIST
 * @{ */
/** List selectors of the shared and guest SSID lists. */
#define QVS_WLAN_SHARED_LIST 0x10000 /**< the shared SSID list, "X_QV_SharedSSID_Map" */
#define QVS_WLAN_GUEST_LIST 0x20000  /**< the guest SSID list, "X_QV_GuestSSID_Map" */
/** @} */

/** Merges two SSIDs into one network: marks both merged (bit 0x40000 of
 * "X_QV_SSID_Bitmap"), copies the source's network name and security
 * settings ("ModeEnabled", the WEP group when the mode holds "WEP-", the WPA
 * group when it holds "WPA") to the target and saves (no reply).
 * 0; -1003 when the source's name or security object or the target's
 * security object is missing; -14 when no parameter list can be made;
 * -22 zero handle. The merge marks stay set on the failures.
 * @param handle attached store handle
 * @param src_ext_idx external index of the SSID whose settings are copied
 * @param dst_ext_idx external index of the SSID that receives them
 * @par Touches
 * the SSID objects' "X_QV_SSID_Bitmap", "SSID" and security parameters; saves the store (no reply). */
QVS_API int qvs_wlan_set_same_ssid(uint32_t handle, int src_ext_idx, int dst_ext_idx);

/** Clears every merge mark, renames each formerly merged SSID of internal
 * slots 1 to 8 to its first 29 characters plus "-5G", and saves (no reply).
 * 0; -1 zero handle.
 * @param handle attached store handle
 * @par Touches
 * "X_QV_SSID_Bitmap" and "SSID" of the SSID objects; saves the store (no reply). */
QVS_API int qvs_wlan_cancel_same_ssid(uint32_t handle);

/** 1 when any of the 16 SSIDs carries the merge mark, else 0; -1 zero handle.
 * @param handle attached store handle
 * @par Touches
 * reads "X_QV_SSID_Bitmap" of the 16 SSIDs. */
QVS_API int qvs_wlan_get_same_ssid_status(uint32_t handle);

/** Entry at position (1 to 16) of the shared or guest list (selector
 * QVS_WLAN_SHARED_LIST or QVS_WLAN_GUEST_LIST), or -1 for a bad position or
 * selector, an unreadable or empty list, or fewer entries than the position.
 * @param handle attached store handle
 * @param position list position, 1 to 16
 * @param selector QVS_WLAN_SHARED_LIST or QVS_WLAN_GUEST_LIST
 * @par Touches
 * reads the selected list text of the Wi-Fi common object. */
QVS_API int qvs_wlan_get_ext_ssid_idx_by_mapped_ssid_oid_idx(uint32_t handle, int position, int selector);

/** Sets the entry at position (1 to 16) of the selected list to value (0
 * clears it) and writes the list back (never saves). The entries read are
 * written back, and up to the position when it lies beyond them. Returns the
 * store's write result, or -1 for a bad position or selector, an unreadable
 * or empty list, or a non-zero value the list already holds.
 * @param handle attached store handle
 * @param position list position, 1 to 16
 * @param value external SSID index to store there, 0 to clear
 * @param selector QVS_WLAN_SHARED_LIST or QVS_WLAN_GUEST_LIST
 * @par Touches
 * reads and writes the selected list text of the Wi-Fi common object. */
QVS_API int qvs_wlan_update_mapped_list(uint32_t handle, int position, int value, int selector);

/** Tears down the guest settings of an external SSID: guest duration 0, port
 * isolation off, disabled, guest mark (0x20000) cleared; removes it from the
 * guest list when found at positions 1 to 15. Never saves. 0; -1 zero handle.
 * @param handle attached store handle
 * @param ext_idx external SSID index
 * @par Touches
 * the SSID's guest, isolation, enable and "X_QV_SSID_Bitmap" parameters and the guest list. */
QVS_API int qvs_wlan_clean_guest_ssid_conf_by_ext_ssididx(uint32_t handle, int ext_idx);

/** Number of guest SSIDs (0 to 8) on the radio of internal index
 * internal_idx: slots 9 to 16 when it is above 8, slots 1 to 8 otherwise;
 * -1 zero handle.
 * @param handle attached store handle
 * @param internal_idx internal SSID index choosing the radio
 * @par Touches
 * reads "X_QV_SSID_Bitmap" of the radio's eight SSIDs. */
QVS_API int qvs_wlan_get_guest_ssid_count_per_radio(uint32_t handle, int internal_idx);

/** Attaches to the store itself. Finds the WAN connection whose bound LAN
 * interfaces hold "InternetGatewayDevice.WiFi.SSID.<ssid_idx>" (PPP before IP
 * connections, first connection device first) and copies its interface name
 * into ifname (the caller provides 32 bytes).
 * 0 when found or when ifname is NULL; -1105 when none binds the SSID or the
 * WAN device is missing; -1001 when the store cannot be attached.
 * @param ssid_idx SSID instance number as it appears in the bound interface names
 * @param ifname caller's buffer of 32 bytes for the interface name, or NULL
 * @par Touches
 * attaches to the store, reads the WAN connection objects, detaches on every path. */
QVS_API int qvs_wlan_get_bind_ifname_by_ssididx(int ssid_idx, char *ifname);


/* ==== WLAN: adding and deleting SSIDs ===================================== */

/** Picks the first free internal slot of a radio (band non-zero: 9 to 16,
 * the 2.4 GHz radio; zero: 1 to 8, the 5 GHz radio), skipping slots in the
 * map or with bit 0x80000 of "X_QV_SSID_Bitmap", and maps external index
 * ext_idx to it (an existing entry is overwritten). Neither enables the SSID
 * nor saves. 0; -1 zero handle, no free slot or failed map write.
 * @param handle attached store handle
 * @param ext_idx external SSID index to map
 * @param band non-zero: the 2.4 GHz radio (slots 9 to 16); zero: the 5 GHz radio (1 to 8)
 * @par Touches
 * the SSID map and "X_QV_SSID_Bitmap" (read); writes the map. */
QVS_API int qvs_wlan_add_ssid(uint32_t handle, int ext_idx, int band);

/** Disables the SSID of an external index and frees the index in the map.
 * Never saves. 0 (also when refusing to delete internal slot 1 or 9, the
 * radios' first SSIDs); -1 zero handle, unknown or free external index, or
 * failed map write.
 * @param handle attached store handle
 * @param ext_idx external SSID index to delete
 * @par Touches
 * the SSID's "Enable" and the SSID map. */
QVS_API int qvs_wlan_del_ssid(uint32_t handle, int ext_idx);

/** The same with the ubus index taken as the internal index; the external
 * index freed is the one mapping to it (none: the map is only rewritten).
 * 0; -1 zero handle, index below 1 or failed map write.
 * @param handle attached store handle
 * @param ubus_idx ubus index, taken as the internal index
 * @par Touches
 * the SSID's "Enable" and the SSID map. */
QVS_API int qvs_wlan_del_ssid_by_ubus(uint32_t handle, int ubus_idx);


/* ==== WLAN: scans, neighbour statistics, supported standards ============== */

/* A neighbour scan is requested by writing "X_QV_DiagnosticsState" of a
 * radio object ("InternetGatewayDevice.WiFi.Radio.<radio>": 1 the radio of
 * slots 1 to 8, 2 that of slots 9 to 16); the Wi-Fi driver answers with
 * "Complete" or "Error", after which the radio's neighbour table holds the
 * results. These functions use the caller's store handle and never attach,
 * detach or save. */

/** @name qvs_wlan_start_scan, qvs_wlan_start_scan_force, qvs_wlan_start_scan_partial
 * @{ */
/** Request a scan of one radio: write "X_QV_DiagnosticsState" = "Requested",
 * "Request_Force" or "Request_partial" respectively on the radio object
 * through a parameter list.
 * @return the store's write result (0 on success); -1 when no parameter list
 * could be made or the radio object is missing (also for a zero handle).
 * @par Arguments of all three
 * handle, an attached store handle (never attached, detached or saved here); radio, the radio instance (1 or 2).
 * @par Touches
 * the radio's "X_QV_DiagnosticsState" (written). */
QVS_API int qvs_wlan_start_scan(uint32_t handle, int radio);
QVS_API int qvs_wlan_start_scan_force(uint32_t handle, int radio);
QVS_API int qvs_wlan_start_scan_partial(uint32_t handle, int radio);
/** @} */

/** Waits for the scan of a radio: up to 10 polls, each after a 1-second
 * sleep, of "X_QV_DiagnosticsState". Blocks for up to about 10 seconds.
 * @param handle attached store handle
 * @param radio radio instance (1 or 2)
 * @return on "Complete", at once, the store's statistics of the radio's
 * neighbour table (the number of neighbours found); otherwise, after "Error"
 * or the tenth poll, -1, or the store's negative read code when the last
 * failing poll was a failed read. In both failure cases the state is
 * rewritten to "Error", so a timed-out scan is left marked as failed.
 * @par Touches
 * the radio's "X_QV_DiagnosticsState" (read; "Error" written on failure), the
 * statistics of the neighbour table (OID 392, 6000). */
QVS_API int qvs_wlan_get_scan_result(uint32_t handle, int radio);

/** @name qvs_stats_wlan_neighbor, qvs_stats_wlan_neighbor_force
 * @{ */
/** Neighbour statistics with retries, with the plain or the forced request:
 * for attempt 0 to retry (retry + 1 attempts; none for a negative retry)
 * request a scan (a failed request ends at once) and wait for its result
 * (qvs_wlan_get_scan_result). Each failed wait prints "qvs_wlan_start_scan()
 * Failed, retry" and the attempt number to standard error (util_printf) and,
 * when attempts remain, sleeps 3 seconds; giving up prints the function's own
 * name followed by "() Failed". Blocks for up to (retry + 1) x 10 + retry x 3
 * seconds.
 * @return the first non-negative scan result; otherwise the last failure (-1
 * when no attempt was made).
 * @par Arguments of both
 * handle, an attached store handle (never attached, detached or saved here); radio, the radio instance (1 or 2); retry, the further attempts after the first.
 * @par Touches
 * as qvs_wlan_start_scan and qvs_wlan_get_scan_result; standard error. */
QVS_API int qvs_stats_wlan_neighbor(uint32_t handle, int radio, int retry);
QVS_API int qvs_stats_wlan_neighbor_force(uint32_t handle, int radio, int retry);
/** @} */

/** The 802.11 standards that radio 1 or radio 2 lists in its supported
 * standards (comma-separated letters, matched exactly), each once, in the
 * order a, b, g, n, ac, ax, as "802.11" and the letters joined by "/", for
 * example "802.11a/802.11b/802.11g/802.11n/802.11ac". A missing radio object
 * is logged ("fail to get object ID 390", level 1) and skipped.
 * @param handle attached store handle
 * @param out receives the text; the caller provides at least 50 bytes (49
 * characters and the zero). Left untouched when no radio names a known
 * standard.
 * @return 0; -1 for a null out or a zero handle.
 * @par Touches
 * the radios' supported standards (read). */
QVS_API int qvs_wlan_get_supported_standards_for_ct(uint32_t handle, char *out);


/* ==== WLAN: Wi-Fi agent, OMCI Wi-Fi VLANs, stations ======================= */

/** Sends one message to the Wi-Fi agent over a new connection to its UNIX
 * stream socket, in one send, then closes it. No reply is read and nothing is
 * retried. Failures are reported on standard error with perror: "socket
 * create failed", "connect failed", "send failed" (a short or failed send,
 * which does not change the result). A send to an agent that has gone away
 * raises no SIGPIPE.
 * @param msg the message bytes
 * @param length their number
 * @return the connect result: 0, or -1 when the agent could not be reached;
 * -1 when no socket could be made.
 * @par Touches
 * the socket "/var/run/wlan_event_agent_socket", standard error. */
QVS_API int communicate_to_wlan_agent(const void *msg, size_t length);

/** Hands the uplink Wi-Fi credentials to the Wi-Fi agent: a 124-byte message
 * (byte 0 type 2, bytes 4 to 36 the SSID, 37 to 100 the password, 101 to 123
 * the security mode, each zero-terminated within its field; every other byte
 * zero) sent with communicate_to_wlan_agent. Logs the three values at level
 * 1, and "send msg to wlan_event_agent failed." when the agent could not be
 * reached. Texts longer than their fields (32, 63, 22 characters) are cut.
 * @param ssid network name, at most 32 characters
 * @param password at most 63 characters
 * @param security_mode at most 22 characters
 * @return 0, also when the send failed; -1 when an argument is null ("wlan
 * info args invaild", level 1).
 * @par Touches
 * the Wi-Fi agent's socket, the log, standard error. */
QVS_API int qvs_set_uplink_wlan_conn_info(const char *ssid, const char *password, const char *security_mode);

/** Applies the OMCI VLAN settings of a Wi-Fi interface. The file holds lines
 * of an interface name, VLAN mode, VLAN, VLAN type and physical index; every
 * line of that form is traced at level 5; at the first whose interface name
 * equals wifi_name, the switch gets a VLAN configuration (default TCI = the
 * VLAN, the VLAN type) through libqv_switchApi_setVlanCfgMain and the network
 * layer the line's values through libqv_netApi_setVlanMode; later lines are
 * not read. A missing file, a null name or no matching line change nothing.
 * Lines without all five fields are skipped; names of any length are
 * compared whole.
 * @param wifi_name the Wi-Fi interface name
 * @par Touches
 * "/var/run/qvOmciWifi" (read), the switch and network device layer, the log. */
QVS_API void qvsTask_wlanUpToOmciMsg(const char *wifi_name);

/** Attaches to the store itself and looks for an associated station by MAC
 * address: station instances 1 to 128 under the parent, in order.
 * @param parent the parent (internal SSID) instance number
 * @param mac 6 bytes
 * @return the station instance (1 to 128); -22 for a null mac; -1001 when the
 * store cannot be attached; otherwise the result of the last read (station
 * 128): 0 when it exists but does not match, the store's negative code when
 * it does not exist. Any value below 1 means not found.
 * @par Touches
 * "MACAddress" of "InternetGatewayDevice.WiFi.AccessPoint.<parent>.AssociatedDevice.<n>"
 * (read). */
QVS_API int qvs_wlan_get_sta_objidx_by_mac(int parent, const uint8_t *mac);

/** @name qvs_wlan_get_map_sta_num, qvs_wlan_get_map_bh_almac
 * @{ */
/** The mesh station count and backhaul AL MAC: not supported by this library.
 * @return always -1.
 * @par Touches
 * nothing. */
QVS_API int qvs_wlan_get_map_sta_num(void);
QVS_API int qvs_wlan_get_map_bh_almac(void);
/** @} */


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
 * nothing but the caller's buffers. */
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
 * the clock (read) and the caller's buffer. */
QVS_API int my_localtime(int dstEnable, const char *zone, char *out);

/** Returns seconds + 3600 when that moment (broken down in the process's own
 * zone) lies in summer time (qvsCheckDST), else seconds.
 * On a 32-bit target a caller built with _TIME_BITS=64 (64-bit time_t)
 * reaches qvsTimeToDST64 under this name, as glibc redirects its own time
 * functions; others reach the 32-bit function.
 * @param seconds time in seconds since 1970
 * @par Touches
 * nothing (uses the process's zone). */
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
 * nothing (uses the process's zone). */
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
 * nothing (uses the process's zone). */
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
 * nothing but the caller's buffer; the system clock is not set. */
QVS_API int my_settime(struct tm time, const char *zone, char *out);

/** Writes the current local time stamp for alarm records into out (26
 * bytes) and returns out. The store's time object (read through handle)
 * gives the zone and the summer-time flag; without it (or with a zero
 * handle, or an unusable zone) the process's own local time is used,
 * "YYYY-MM-DDTHH:MM:SS". Never fails; returns NULL only for a NULL out.
 * @param handle attached store handle, or 0
 * @param out caller's buffer of 26 bytes
 * @par Touches
 * reads the store's time object (zone, summer-time flag) and the clock. */
QVS_API char *get_currentTime(uint32_t handle, char *out);

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
 * attaches to the store (OLT, WAN and registration objects), reads and creates the phase clock files. */
QVS_API int getzeroconfigeponstate(void);

/** The same for a GPON uplink (GPON OLT registration object and texts).
 * @return the state code, as for the EPON uplink.
 * @par Touches
 * as getzeroconfigeponstate(). */
QVS_API int getzeroconfiggponstate(void);

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
 * the alarm object and its AlarmInfo entries (attaches and detaches itself). */
QVS_API int CU_add_AlarmID(uint32_t alarmCode);

/** Clears an alarm: the first entry (index 1..255) holding this code gets
 * status 3 and the current local time as its cleared time. Returns 0 (also
 * when no entry holds the code); -1 when the store cannot be attached.
 * @param alarmCode the alarm code
 * @par Touches
 * the AlarmInfo entries (attaches and detaches itself). */
QVS_API int CU_clear_AlarmID(uint32_t alarmCode);

/** On an attached store: when an entry with index 1..254 holds alarmCode, sets
 * its status to alarmStatus, its raised time to now and its cleared time to
 * "0000-00-00T00:00:00" and returns -1. Otherwise returns the first index
 * 1..255 without an entry, or -1 when all are taken. -1 for a zero handle.
 * @param handle attached store handle
 * @param alarmCode the alarm code looked for
 * @param alarmStatus status written to an entry that holds the code
 * @par Touches
 * reads the AlarmInfo entries; refreshes the one holding the code. */
QVS_API int add_AlarmInfo_Index(uint32_t handle, uint32_t alarmCode, uint8_t alarmStatus);

/** On an attached store: writes NumberOfAlarmInfo = value on the alarm
 * configuration object whose record alarmObject is (as the store returned
 * it). Always returns 0.
 * @param handle attached store handle
 * @param alarmObject the alarm configuration object as the store returned it
 * @param value the new NumberOfAlarmInfo
 * @par Touches
 * one parameter of the alarm object. */
QVS_API int update_numberofAlarmInfo(uint32_t handle, const void *alarmObject, uint32_t value);

/* ==== Operator features: timed tasks, speed limits, sleep, hardware ======= */

/* CMCC timed tasks and device-limit tasks run by the scheduler at least once a
 * minute, speed limits by MAC, the CUC sleep mode, Wi-Fi hardware check and
 * channels in use, and the LAN hosts' hardware QoS entries. The task handlers
 * read the local clock (the process's time zone). */

/** Size in bytes of the record filled by qvs_cuc_check_hardware_status(). */
#define QVS_HW_STATUS_SIZE 9
/** Bytes a qvs_cuc_get_channelsinuse() buffer must hold (the store's field). */
#define QVS_CHANNELS_IN_USE_SIZE 128

/** Runs the CMCC timed task InternetGatewayDevice.X_CMCC_TimedTask.Task.`<instance>`
 * if the current local time falls in the minute it names (seconds ignored).
 * Each time test prints "now time HH:MM, your timer HH:MM" to standard
 * output.
 * - A task whose Enable is not 1: nothing, 0.
 * - Action 1 in its minute: raises platform event 300 with a 4-byte payload
 *   holding 0, after deleting a once-only task (Repeat 0) whose Removable is
 *   1 and saving the store. Outside its minute: -1.
 * - Action 2: at Time switches Wi-Fi off (external SSID SSIDIndex, or SSIDs 1
 *   and 5 when it is 0), at EndTime back on (equal times only switch off). At
 *   EndTime a once-only task with Removable 1 is deleted and the store
 *   saved. The SSIDs' "Enable" writes are not saved here. 0 in or out of its
 *   minutes.
 * - Any other action: 0.
 *
 * Returns 0 when done or nothing to do; -1 when the store can't be attached
 * (level-1 log "XMLSHMINIT fail"), the task is missing, or an action-1 task
 * is called outside its minute.
 * @param instance the task's instance number
 * @par Touches
 * the timed task (deleted when used up), the SSID objects' "Enable", platform
 * event 300, a save of the store; attaches and detaches itself. */
QVS_API int qvs_cmcc_timedTask_handler(int instance);

/** Sets "UpSpeedLimit" and "DownSpeedLimit" of the first LAN device
 * InternetGatewayDevice.LANDevice.1.Hosts.Host.`<n>` (n = 1..255, gaps
 * skipped) whose MAC address is the 6 given bytes, then saves the store.
 * Returns 0 on success (the store's result of the write is not returned);
 * -1 when mac is NULL, the store can't be attached (level-1 log), no
 * parameter list can be had or no device has that MAC; when a limit cannot
 * be added to the parameter list, the non-zero OR of the two add results
 * (nothing written).
 * @param mac 6 binary bytes
 * @param upLimit value for "UpSpeedLimit" (0: no limit)
 * @param downLimit value for "DownSpeedLimit" (0: no limit)
 * @par Touches
 * the LAN device's two limits and a save of the store; attaches and detaches
 * itself. */
QVS_API int qvs_setSpeedLimitByMac(const uint8_t *mac, uint32_t upLimit, uint32_t downLimit);

/** Runs the CMCC device-limit task InternetGatewayDevice.X_CMCC_DeviceLimit.Task.`<instance>`
 * for its LAN device (the first of devices 1..255 holding the task's MAC).
 * Prints the "now time" line of each time test to standard output.
 * - In the StartTime minute: the device gets the task's up and down limits.
 * - Otherwise in the EndTime minute: a daily task (Repeat non-zero) writes
 *   both limits 0 (lifted); a once-only task is deleted and the device keeps
 *   its limits.
 *
 * The store is saved after each of these. Returns 0 when an action was
 * taken; -1 when the store can't be attached (level-1 log), the task is
 * missing or its Enable is not 1, both its limits are 0, no device has its
 * MAC, no parameter list can be had, or neither time matches; the non-zero OR
 * of the add results when a limit cannot be added to the parameter list
 * (nothing written).
 * @param instance the task's instance number
 * @par Touches
 * the LAN device's "UpSpeedLimit" and "DownSpeedLimit", the task (deleted
 * when a once-only task ends), a save of the store; attaches and detaches
 * itself. */
QVS_API int qvs_cmcc_deviceLimit_handler(int instance);

/** CUC sleep mode. enable exactly 1 puts the gateway to sleep: the current
 * Wi-Fi switch ("X_QV_Enable" of InternetGatewayDevice.X_QV_WiFi) and
 * "Leds_Turnoff" are remembered as "LastWLANEnable" and "LastLeds_Turnoff"
 * of the sleep object, Wi-Fi is switched off, the LEDs off ("Leds_Turnoff"
 * 1) and the switch port of every existing LAN Ethernet interface 1..5 set
 * administratively down. Any other value wakes it: the remembered values
 * are written back and the ports set up. The sleep object's "Enable"
 * receives the value as given; the store is saved at the end. Logs
 * "enable=%d, gateway_sleep->Enable=%d." at level 1.
 *
 * Returns 0 on success or when "Enable" already holds the value (nothing
 * written); -1 when the store can't be attached, an object or a parameter
 * list is missing or the store refuses a write. A failure part-way leaves
 * the earlier writes applied and unsaved ("Enable" already changed, so the
 * same call then returns 0 at once).
 * @param enable 1: sleep; anything else: wake
 * @par Touches
 * InternetGatewayDevice.X_CU_Function.Sleep, the Wi-Fi common object, the LED
 * object, the switch ports' admin state, a save of the store; attaches and
 * detaches itself. */
QVS_API int qvs_cuc_set_sleep_mode(int enable);

/** Returns the sleep object's "Enable" byte (0 or 1), or -1 when the store
 * can't be attached or the object is missing.
 * @par Touches
 * reads InternetGatewayDevice.X_CU_Function.Sleep; attaches and detaches
 * itself. */
QVS_API int qvs_cuc_get_sleep_mode(void);

/** Start hook of the Wi-Fi hardware check, kept for callers: does nothing
 * and returns 0.
 * @par Touches
 * nothing. */
QVS_API int qvs_cuc_check_hardware_start(void);

/** Wi-Fi hardware check: looks for a known Wi-Fi chip (PCI 14c3:7615,
 * 14c3:7915, 14c3:7663, 14c3:7603, in this order) in the PCI device list.
 * Byte 1 of the record becomes 0 when a chip is present, 254 when none is (a
 * hardware fault); the other bytes 0. Always returns 0; an unreadable list
 * counts as no chip and prints "fail to open file /proc/bus/pci/devices" to
 * standard error for each chip tried.
 * @param status record of QVS_HW_STATUS_SIZE (9) bytes; NULL: nothing written
 * @par Touches
 * reads "/proc/bus/pci/devices". */
QVS_API int qvs_cuc_check_hardware_status(uint8_t *status);

/** Copies the channels-in-use text of radio InternetGatewayDevice.WiFi.Radio.`<radio>`
 * into channels, unbounded. Returns 0 with the text copied; -1 when channels
 * is NULL, the store can't be attached or the radio object is missing.
 * @param radio radio index (1: 5 GHz, 2: 2.4 GHz)
 * @param channels buffer of QVS_CHANNELS_IN_USE_SIZE (128) bytes
 * @par Touches
 * reads the radio object; attaches and detaches itself. */
QVS_API int qvs_cuc_get_channelsinuse(int radio, char *channels);

/** Keeps the hardware QoS host entry of one LAN device in step with its
 * record (InternetGatewayDevice.LANDevice.1.Hosts.Host.`<n>`): an active
 * device whose limits differ from an active old record (or that has none)
 * gets an entry through libqv_qos_hostEntryAdd, without a delete first; an
 * inactive device holding an entry (BucketID or CounterID non-zero) loses
 * it through libqv_qos_hostEntryDel. "BucketID" and "CounterID" as the QoS
 * API left them are then written to the device's object (type code 2); the
 * store is not saved. Logs through util_printf: "Invalid Host. index:%d",
 * "LAN HostEntry add ...", "LAN HostEntry del ...", "newParameterList()
 * failed!!!". The result is informative only (callers ignore it): the
 * store's result of the write-back, or -1 for a zero handle, a refused
 * record or no parameter list.
 * @param handle attached store handle (0: nothing done)
 * @param hostIndex the QoS API's index of the entry
 * @param newHost the device's current record as the store returned it (NULL,
 *        or a MAC of all 0x00 or all 0xFF: refused)
 * @param oldHost the device's previous record (a copy), or NULL
 * @par Touches
 * the hardware QoS host entry, the device's "BucketID" and "CounterID". */
QVS_API int qvsTask_LanDeviceHost_exec(uint32_t handle, int hostIndex, const void *newHost, const void *oldHost);

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

/** Adds an IP address or network. 0 added (and put into vpn_ip<n>); the
 * 1-based number of an existing line containing the text (nothing added);
 * -1 on directory or file failure or refused text.
 * @param n tunnel index
 * @param ip IP address or network text
 * @par Touches
 * "/userconfig/config/qvvpn/VPN_IP_<n>", an "ipset add" command line. */
QVS_API int qvvpn_add_route_ip(int n, const char *ip);
/** Deletes the first line containing the text, and the member from the set.
 * 0 (also when not found); -1 on directory failure or refused text.
 * @param n tunnel index
 * @param ip IP address or network text
 * @par Touches
 * the VPN_IP_<n> list file (line deleted by a synced rewrite), an "ipset del" command line. */
QVS_API int qvvpn_del_route_ip(int n, const char *ip);
/** Empties the IP list and the set. 0; -1 when the file cannot be truncated
 * or the directory cannot be created.
 * @param n tunnel index
 * @par Touches
 * the VPN_IP_<n> list file, an "ipset flush" command line. */
QVS_API int qvvpn_flush_route_ip(int n);
/** Adds a domain (when no line contains it yet) and always rewrites the
 * dnsmasq ipset file and signals dnsmasq. 0 when new, else the line number
 * found; -1 on directory or file failure.
 * @param n tunnel index
 * @param domain domain name
 * @par Touches
 * the VPN_DOMAIN_<n> list file, "/etc/dnsmasq/ipset/vpn_domain<n>", "ps" and a SIGUSR1 to dnsmasq. */
QVS_API int qvvpn_add_route_domain(int n, const char *domain);
/** Deletes the first line containing the domain; in every case empties the
 * domain set and rewrites the dnsmasq file. 0; -1 on directory failure.
 * @param n tunnel index
 * @param domain domain name
 * @par Touches
 * the VPN_DOMAIN_<n> list file, the vpn_domain<n> set, the dnsmasq ipset file and dnsmasq. */
QVS_API int qvvpn_del_route_domain(int n, const char *domain);
/** Empties the domain list, the set and the dnsmasq file. 0 or -1.
 * @param n tunnel index
 * @par Touches
 * the VPN_DOMAIN_<n> list file, the set and the dnsmasq ipset file. */
QVS_API int qvvpn_flush_route_domain(int n);
/** Adds a MAC (aa:bb:cc:dd:ee:ff or twelve hex digits); mac is lower-cased
 * in place. Results as qvvpn_add_route_ip.
 * @param n tunnel index
 * @param mac MAC text (writable: lower-cased in place)
 * @par Touches
 * the VPN_MAC_<n> list file, an "ipset add" command line. */
QVS_API int qvvpn_add_route_mac(int n, char *mac);
/** Deletes a MAC (lower-cased in place). Results as qvvpn_del_route_ip.
 * @param n tunnel index
 * @param mac MAC text (writable: lower-cased in place)
 * @par Touches
 * the VPN_MAC_<n> list file, an "ipset del" command line. */
QVS_API int qvvpn_del_route_mac(int n, char *mac);
/** Empties the MAC list and the set. 0 or -1.
 * @param n tunnel index
 * @par Touches
 * the VPN_MAC_<n> list file, an "ipset flush" command line. */
QVS_API int qvvpn_flush_route_mac(int n);
/** Refills vpn_ip<n> and vpn_mac<n> from the files and regenerates the
 * dnsmasq file (the domain set keeps its members). 0; -1 on directory
 * failure.
 * @param n tunnel index
 * @par Touches
 * reads the list files; "/var/vpn_ipset_save" and "ipset" command lines; the dnsmasq ipset file. */
QVS_API int qvvpn_reload_route(int n);
/** The part of qvvpn_reload_route for one list type (others: nothing). 0;
 * -1 on directory failure.
 * @param n tunnel index
 * @param type list type: 0 IP, 1 domain, 2 MAC
 * @par Touches
 * as qvvpn_reload_route() for that list. */
QVS_API int qvvpn_reload_route_mode(int n, unsigned int type);
/** Replaces a whole list with the items of list joined by '%' (split in
 * place; empty items vanish), then reloads that list. 0; -1 on bad type,
 * directory or file failure, or refused text.
 * @param n tunnel index
 * @param type list type: 0 IP, 1 domain, 2 MAC
 * @param list items joined by '%' (writable: split in place)
 * @par Touches
 * the list file (rewritten) and its set or dnsmasq file. */
QVS_API int qvvpn_set_route_all(int n, unsigned int type, char *list);
/** Writes the list's items joined by '%' into out (size bytes; each line cut
 * at its first blank; an item that does not fit is skipped). Number of
 * items written; -1 on bad type or unreadable file.
 * @param n tunnel index
 * @param type list type: 0 IP, 1 domain, 2 MAC
 * @param out caller's buffer
 * @param size bytes of out
 * @par Touches
 * reads the list file. */
QVS_API int qvvpn_get_route_all(int n, unsigned int type, char *out, int size);
/** Per list entry the packets counted for the set members it contains, as
 * "<entry>@<count>" joined by '%' into out (size bytes; stops at the first
 * piece that does not fit). At most 2048 entries. 0; -1 on bad type,
 * directory failure, unreadable list file or no memory.
 * @param n tunnel index
 * @param type list type: 0 IP, 1 domain, 2 MAC
 * @param out caller's buffer
 * @param size bytes of out
 * @par Touches
 * reads the list file; "ipset list" command lines through a pipe. */
QVS_API int qvvpn_get_statistics(int n, unsigned int type, char *out, int size);
/** Packet sum read from a file named "iptables -t mangle -nvL QV_VPN<n>
 * 2>/dev/null" (two blanks before "2>"), which normally does not exist:
 * then 0.
 * @param n tunnel index
 * @par Touches
 * reads the file named above; runs nothing. */
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

/** @name approute_add_route_ip, approute_add_route_domain, approute_add_route_mac
 * @{ */
/** Adds one entry to the file and the module. 0 added; the 1-based number of
 * a line that already holds it (IP, domain: contains it; MAC: begins with it,
 * case ignored), nothing changed; -1 directory or file failure.
 * @par Arguments
 * n, the rule index; the entry text (writable: changed in place as described for the section).
 * @par Touches
 * the list file under "/userconfig/config/approute" and "/proc/approute/rule" (an "echo" command line). */
QVS_API int approute_add_route_ip(int n, char *ip);
QVS_API int approute_add_route_domain(int n, char *domain);
QVS_API int approute_add_route_mac(int n, char *mac);
/** @} */

/** @name approute_del_route_ip, approute_del_route_domain, approute_del_route_mac
 * @{ */
/** Deletes the first line holding the entry and sends it to the module as
 * deleted. 0 (also when absent); -1 when the directory cannot be created.
 * @par Arguments
 * n, the rule index; the entry text (writable).
 * @par Touches
 * the list file (line deleted by a synced rewrite) and "/proc/approute/rule". */
QVS_API int approute_del_route_ip(int n, char *ip);
QVS_API int approute_del_route_domain(int n, char *domain);
QVS_API int approute_del_route_mac(int n, char *mac);
/** @} */

/** @name approute_flush_route_ip, approute_flush_route_domain, approute_flush_route_mac
 * @{ */
/** Empties the list file and the module's list. 0; -1 directory or file failure.
 * @par Argument
 * n, the rule index.
 * @par Touches
 * the list file and "/proc/approute/rule". */
QVS_API int approute_flush_route_ip(int n);
QVS_API int approute_flush_route_domain(int n);
QVS_API int approute_flush_route_mac(int n);
/** @} */

/** @name approute_add_route_iplist, approute_add_route_domainlist, approute_add_route_maclist
 * @{ */
/** Sends the whole comma-joined list to the module, then appends each item
 * that no line holds yet (domains: an item found in a line replaces that
 * line, moving it to the end). 0; -1 directory or file failure.
 * @par Arguments
 * n, the rule index; list, the items joined by ',' (writable: split in place).
 * @par Touches
 * the list file and "/proc/approute/rule". */
QVS_API int approute_add_route_iplist(int n, char *list);
QVS_API int approute_add_route_domainlist(int n, char *list);
QVS_API int approute_add_route_maclist(int n, char *list);
/** @} */

/** @name approute_del_route_iplist, approute_del_route_domainlist, approute_del_route_maclist
 * @{ */
/** Sends the list to the module as deleted, then deletes each item's line.
 * 0; -1 when the directory cannot be created.
 * @par Arguments
 * n, the rule index; list, the items joined by ',' (writable: split in place).
 * @par Touches
 * the list file and "/proc/approute/rule". */
QVS_API int approute_del_route_iplist(int n, char *list);
QVS_API int approute_del_route_domainlist(int n, char *list);
QVS_API int approute_del_route_maclist(int n, char *list);
/** @} */

/** @name approute_add_route_list, approute_del_route_list
 * @{ */
/** The list functions of type 0, 1 or 2; always 0 (also for another type).
 * @par Arguments
 * n, the rule index; type, the list type; list, the items joined by ',' (writable).
 * @par Touches
 * as the function chosen. */
QVS_API int approute_add_route_list(int n, unsigned int type, char *list);
QVS_API int approute_del_route_list(int n, unsigned int type, char *list);
/** @} */

/** Replaces a whole list in the module (clear, then the list) and in the
 * file. No line end allowed in the list. 0; -1 bad type, directory or file
 * failure.
 * @param n rule index
 * @param type list type: 0 IP, 1 domain, 2 MAC
 * @param list items joined by ',' (writable: split in place)
 * @par Touches
 * the list file (rewritten) and "/proc/approute/rule". */
QVS_API int approute_set_route_all(int n, unsigned int type, char *list);

/** Refills the module's three lists of rule n from the files (after a
 * restart). 0; -1 when the directory cannot be created.
 * @param n rule index
 * @par Touches
 * reads the three list files; writes "/proc/approute/rule". */
QVS_API int approute_reload_route(int n);

/** Writes the list's entries (each cut at its first blank) joined by ','
 * into out (size bytes, emptied first; entries that do not fit are
 * skipped). Number of entries written; -1 bad type, null out, size < 1 or
 * unreadable file; 0 with out untouched when the directory was missing.
 * @param n rule index
 * @param type list type: 0 IP, 1 domain, 2 MAC
 * @param out caller's buffer
 * @param size bytes of out
 * @par Touches
 * reads the list file. */
QVS_API int approute_get_route_all(int n, unsigned int type, char *out, int size);

/** Number of lines of the list file; 0 when the directory or the file is
 * missing (nothing is created) or the type is not 0, 1 or 2.
 * @param n rule index
 * @param type list type: 0 IP, 1 domain, 2 MAC
 * @par Touches
 * reads the list file. */
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

/** Sends the stored list of rule n and type to the module (clear, then one
 * add per item). 0; -1 when the list file cannot be opened or no memory.
 * @param n rule index
 * @param type list type: 0 IP, 1 domain, 2 MAC
 * @par Touches
 * reads the list file under "/userconfig/config/appfilter"; writes "/proc/appfilter/rule". */
QVS_API int update_data_list_to_appfilter_module(int n, unsigned int type);

/** @name appfilter_add_route_iplist, appfilter_add_route_domainlist, appfilter_add_route_maclist
 * @{ */
/** Adds the items that the stored line does not contain yet (a substring
 * test), then updates the module. 0; -1 directory or file failure.
 * @par Arguments
 * n, the rule index; list, the items joined by ',' (writable: split in place).
 * @par Touches
 * the list file under "/userconfig/config/appfilter" and "/proc/appfilter/rule". */
QVS_API int appfilter_add_route_iplist(int n, char *list);
QVS_API int appfilter_add_route_domainlist(int n, char *list);
QVS_API int appfilter_add_route_maclist(int n, char *list);
/** @} */

/** @name appfilter_del_route_iplist, appfilter_del_route_domainlist, appfilter_del_route_maclist
 * @{ */
/** Removes each item's first occurrence (a substring) with its separating
 * comma, then updates the module. 0 (also when there is no file, then
 * nothing is sent); -1 directory or file failure.
 * @par Arguments
 * n, the rule index; list, the items joined by ',' (writable: split in place).
 * @par Touches
 * the list file and "/proc/appfilter/rule". */
QVS_API int appfilter_del_route_iplist(int n, char *list);
QVS_API int appfilter_del_route_domainlist(int n, char *list);
QVS_API int appfilter_del_route_maclist(int n, char *list);
/** @} */

/** @name appfilter_flush_route_ip, appfilter_flush_route_domain, appfilter_flush_route_mac
 * @{ */
/** Empties the list file and the module's list. 0; -1 directory or file failure.
 * @par Argument
 * n, the rule index.
 * @par Touches
 * the list file and "/proc/appfilter/rule". */
QVS_API int appfilter_flush_route_ip(int n);
QVS_API int appfilter_flush_route_domain(int n);
QVS_API int appfilter_flush_route_mac(int n);
/** @} */

/** @name appfilter_add_route_list, appfilter_del_route_list, appfilter_flush_route_list
 * @{ */
/** The function of type 0, 1 or 2 and its result; 0 for another type.
 * @par Arguments
 * n, the rule index; type, the list type; list (where taken), the items joined by ',' (writable).
 * @par Touches
 * as the function chosen. */
QVS_API int appfilter_add_route_list(int n, unsigned int type, char *list);
QVS_API int appfilter_del_route_list(int n, unsigned int type, char *list);
QVS_API int appfilter_flush_route_list(int n, unsigned int type);
/** @} */

/** Copies the stored line (at most size - 1 characters, terminated) into
 * out. 0 (out untouched when the file is missing or empty, or the type is
 * not 0, 1 or 2: clear out first); -1 when the directory is not writable
 * (it is not created), out is null or size < 1.
 * @param n rule index
 * @param type list type: 0 IP, 1 domain, 2 MAC
 * @param out caller's buffer (clear it first)
 * @param size bytes of out
 * @par Touches
 * reads the list file. */
QVS_API int appfilter_get_route_list(int n, int type, char *out, int size);

/* ==== VPN account retrieval =============================================== */

/** cJSON's object type (from cJSON.h, whose functions this library exports). */
struct cJSON;

/** Writes the hardware address of "br0" as 12 upper-case hex digits and a NUL
 * to `mac` (at least 13 bytes). Prints "cd get_macAddr() " first. When the
 * address cannot be read, `mac` is left as it was. Returns 0 when written,
 * -1 otherwise (informational only; callers need not check it).
 * @param mac caller's buffer of at least 13 bytes
 * @par Touches
 * a socket ioctl (SIOCGIFHWADDR) on "br0"; standard output. */
QVS_API int get_macAddr(char *mac);

/** Writes the 16 digest bytes as 32 upper-case hex digits and a NUL to `out`
 * (at least 33 bytes).
 * @param digest the 16 digest bytes
 * @param out caller's buffer of at least 33 bytes
 * @par Touches
 * nothing but out. */
QVS_API void md5ToAscii(const unsigned char *digest, char *out);

/** Adds the six members of the signed account request to `req`, in order:
 * "RPCMethod" "Post", "Plugin_Name" "", "MD5", "time", "mac", "Message"
 * (Base64 of the formatted inner object {"CmdType", "tunnelName", "userId"}).
 * Progress is printed to standard output.
 * Returns 0 on success; -1 when an argument is NULL, when the inner object
 * cannot be created or printed, or when its formatted text is longer than
 * 765 bytes (its Base64 would not fit the 1024-byte message buffer: such a
 * request is refused, never cut; `req` is then left unchanged).
 * @param tunnelName tunnel name for the inner object
 * @param userId user identifier for the inner object
 * @param req cJSON object that receives the members
 * @par Touches
 * the hardware address of "br0", the clock, standard output. */
QVS_API int constructReqData(const char *tunnelName, const char *userId, struct cJSON *req);

/** Sends the signed account request for `tunnelName`/`userId` over one TCP
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
 * untouched.
 * @param tunnelName tunnel name
 * @param userId user identifier
 * @param proxy server as "host:port"
 * @param reply caller's buffer of at least 2045 bytes
 * @par Touches
 * one TCP connection (name lookup, connect, write, read), standard output. */
QVS_API int createSocketToGetAccount(const char *tunnelName, const char *userId, const char *proxy,
                                     char *reply);

/** Parses a reply text {"return_Parameter": {"CmdType": "GET_VPN_ACCOUNT",
 * "Status": "0", "data": {"vpn_addr", "vpn_port", "vpn_user", "vpn_pwd",
 * "account_timeout"}}} (all strings, the five non-empty) and copies the five
 * values, unbounded, into the caller's buffers, which must each hold the
 * corresponding value and its NUL (a reply from createSocketToGetAccount
 * holds at most 2044 characters). Prints its progress to standard output.
 * Returns 0 on success; -1 on any failure (an argument NULL, not JSON, a
 * member missing, of the wrong type or value), with no buffer written.
 * @param buf the reply text
 * @param vpn_addr out: server address
 * @param vpn_port out: server port
 * @param vpn_user out: account name
 * @param vpn_pwd out: password
 * @param account_timeout out: account time-out
 * @par Touches
 * standard output and the caller's buffers. */
QVS_API int parseRepData(const char *buf, char *vpn_addr, char *vpn_port, char *vpn_user, char *vpn_pwd,
                         char *account_timeout);

/* ==== Base64 codecs ======================================================= */

/* Lenient codec, 32-bit sizes, no failures reported, no bounds checked. */

/** The alphabet b64_encode writes from: 64 characters and a NUL. Writable:
 * changing it changes the encoding of the whole process. */
extern QVS_API char b64_chr[65];

/** 6-bit value of one character: A-Z 0-25, a-z 26-51, 0-9 52-61, '+' 62,
 * '/' 63, '=' 64, anything else 0.
 * @param ch character code
 * @par Touches
 * nothing. */
QVS_API unsigned int b64_int(unsigned int ch);

/** Encoded size of `in_size` bytes: 4 * ceil(in_size / 3) modulo 2^32, NUL not
 * counted.
 * @param in_size number of bytes
 * @par Touches
 * nothing. */
QVS_API unsigned int b64e_size(unsigned int in_size);

/** Decoded size bound of `in_size` characters: (3 * in_size mod 2^32) >> 2.
 * @param in_size number of characters
 * @par Touches
 * nothing. */
QVS_API unsigned int b64d_size(unsigned int in_size);

/** Encodes `len` bytes with '=' padding into `out`, which must hold
 * b64e_size(len) + 1 bytes; NUL-terminates. Returns the characters written
 * (without the NUL).
 * @param in bytes to encode
 * @param len number of bytes
 * @param out caller's buffer of b64e_size(len) + 1 bytes
 * @par Touches
 * nothing but out (reads b64_chr). */
QVS_API unsigned int b64_encode(const unsigned char *in, unsigned int len, unsigned char *out);

/** Decodes the whole quartets of `len` characters into `out` (at least
 * b64d_size(len) bytes); a trailing group of 1 to 3 characters is dropped,
 * characters outside the alphabet count as 0, a '=' third character ends the
 * quartet after one byte, a '=' fourth after two. Writes no NUL. Returns the
 * bytes written.
 * @param in characters to decode
 * @param len number of characters
 * @param out caller's buffer of at least b64d_size(len) bytes
 * @par Touches
 * nothing but out. */
QVS_API unsigned int b64_decode(const unsigned char *in, unsigned int len, unsigned char *out);

/* Strict, bounded codec, lengths of the size type. */

#include <stdbool.h> /* bool, in C as in C++ */

/** Encodes `inlen` bytes into at most `outlen` characters (cut exactly there,
 * even inside a quartet); a NUL follows only when room is left.
 * @param in bytes to encode
 * @param inlen number of bytes
 * @param out caller's buffer
 * @param outlen bytes of out
 * @par Touches
 * nothing but out. */
QVS_API void base64_encode(const char *in, size_t inlen, char *out, size_t outlen);

/** Encodes into a new malloc'ed, NUL-terminated block stored in *out (free()
 * it). Returns the encoded length; 0 with *out NULL when the size overflows
 * size_t; (size_t)-1 with *out NULL when memory is short.
 * @param in bytes to encode
 * @param inlen number of bytes
 * @param out receives the new block (free() it)
 * @par Touches
 * the heap. */
QVS_API size_t base64_encode_alloc(const char *in, size_t inlen, char **out);

/** True when `ch` is one of the 64 alphabet characters ('=' and '\n' are not).
 * @param ch character
 * @par Touches
 * nothing. */
QVS_API bool isbase64(char ch);

/** Streaming decoder state, owned by the caller: `i` characters (0 to 4) of a
 * quartet gathered across calls in `buf`.
 * Layout: 8 bytes on every target, `i` at offset 0, `buf` at offset 4. */
struct base64_decode_context {
    unsigned int i; /**< characters of the quartet gathered so far, 0 to 4 (offset 0) */
    char buf[4];    /**< the gathered characters (offset 4) */
};

/** Starts a decoding context (i = 0).
 * @param ctx caller's context
 * @par Touches
 * nothing but ctx. */
QVS_API void base64_decode_ctx_init(struct base64_decode_context *ctx);

/** Decodes `inlen` characters into `out`, whose capacity is *outlen; bytes
 * beyond it are dropped. *outlen becomes the bytes written (including those
 * written before a fault). Without a context the input must be whole
 * quartets, '=' only in the last one. With a context, line feeds are skipped,
 * an incomplete quartet waits in the context for the next call, '=' may end
 * any quartet, and a call with `inlen` 0 flushes (fails when 1 to 3
 * characters are held). Returns true when all input was consumed.
 * @param ctx caller's context, or NULL
 * @param in characters to decode
 * @param inlen number of characters (0 with a context: flush)
 * @param out caller's buffer
 * @param outlen in: capacity of out; out: bytes written
 * @par Touches
 * nothing but ctx and out. */
QVS_API bool base64_decode_ctx(struct base64_decode_context *ctx, const char *in, size_t inlen, char *out,
                               size_t *outlen);

/** As base64_decode_ctx into a new malloc'ed block of 3 * (inlen / 4) + 2
 * bytes stored in *out (free() it); *outlen (if not NULL) gets the bytes
 * decoded. Returns false (and *out NULL) on bad input; true with *out NULL
 * when memory is short.
 * @param ctx caller's context, or NULL
 * @param in characters to decode
 * @param inlen number of characters
 * @param out receives the new block (free() it)
 * @param outlen receives the bytes decoded, or NULL
 * @par Touches
 * the heap. */
QVS_API bool base64_decode_alloc_ctx(struct base64_decode_context *ctx, const char *in, size_t inlen,
                                     char **out, size_t *outlen);

/* ==== IPsec: client certificate and SA status ============================= */

/** Stores the subject of the client certificate: writes "C=<country>,
 * O=<organisation>, CN=Client" (no line end) to "/tmp/ca.info", replacing
 * what it held.
 * @param countryca       country, e.g. "CN"; must not be NULL or empty
 * @param organizationca  organisation; must not be NULL or empty
 * @return 0 when the file was written; -1 for a NULL or empty argument
 *         ("countryca is null" / "organizationca is null" on stderr, the old
 *         file left as it is), for text holding a shell special character or
 *         a line end (level-1 log line), or when the file cannot be opened
 *         ("open file /tmp/ca.info failed!") or written.
 * The subject is used by ipsec_generate_client_ca(), which cuts it at 62
 * characters. */
QVS_API int ipsec_write_ca_info(const char *countryca, const char *organizationca);

/** Makes the client key and has the operator's CA certify it. Needs the CA
 * key and certificate at "/tmp/ca.key.pem" and "/tmp/ca.cert.pem" (placed by
 * another process) and the subject in "/tmp/ca.info". Creates
 * "/userconfig/config/ipsec" (mode 0755) when missing, then runs through the
 * platform's command runner, in this order:
 *   ipsec pki --gen --outform pem > /userconfig/config/ipsec/client.key.pem
 *   ipsec pki --pub --in /userconfig/config/ipsec/client.key.pem | ipsec pki --issue --cacert
 *     /tmp/ca.cert.pem --cakey /tmp/ca.key.pem --dn "<subject>" --outform pem
 *     > /userconfig/config/ipsec/client.cert.pem
 *   mv /tmp/ca.key.pem /userconfig/config/ipsec/ca.key.pem
 *   mv /tmp/ca.cert.pem /userconfig/config/ipsec/ca.cert.pem
 * The subject is the first line of "/tmp/ca.info", at most 62 characters.
 * @return 0 once the four commands ran (their own failures are not seen: the
 *         CA files are moved all the same); -1 when a CA file is missing ("CA
 *         file not ready" on stderr), when "/tmp/ca.info" cannot be opened
 *         ("open file /tmp/ca.info failed!"), or when the subject holds a
 *         shell special character (level-1 log line, nothing run).
 * Since the CA files are moved away, a second call fails until new CA files
 * are placed. */
QVS_API int ipsec_generate_client_ca(void);

/** Refreshes "ConnectionStatus" of the IPsec configuration instances
 * InternetGatewayDevice.X_CMCC_IPSecVPN.Config.1 to .10 (OID 533) from the
 * IKE daemon's SA list. Attaches to the store itself and detaches on every
 * path. Every existing instance is first set to "Disconnected" (enabled) or
 * "Unconfigured" (disabled); then "swanctl --list-sas > /var/ipsec.status"
 * is run and each line read: an IKE SA line of connection "conn<n>" selects
 * instance n (as a signed 8-bit number, so conn200 is -56 and conn255 none)
 * and gives "PhaseI_Connecting" (CONNECTING), "PhaseII_Connecting"
 * (ESTABLISHED) or "Disconnecting" (DELETING, DESTROYING); a following child
 * SA line whose name holds "child" gives "PhaseII_Connecting" (INSTALLING),
 * "Connected" (INSTALLED) or "Disconnecting". Writes do not notify the
 * store's listeners and are not saved; missing instances are skipped.
 * "/var/ipsec.status" is removed afterwards.
 * @return 0; -1 when the store cannot be attached (nothing else done). */
QVS_API int ipsec_update_status(void);

/* ==== String helpers ====================================================== */

/** Bytes needed by generateName()'s destination for any arguments. */
#define QVS_GENERATE_NAME_SIZE 78

/** Replaces every character equal to `from` by `to` in the text, in place.
 * Characters are compared as signed bytes (a byte above 0x7F matches only a
 * negative `from`). A NULL or empty text is left as it is.
 * @param str writable text, changed in place
 * @param from character replaced
 * @param to replacement
 * @par Touches
 * nothing but str. */
QVS_API void qvsReplace(char *str, char from, char to);

/** Writes the display name of a WAN connection to dst:
 * mode 0 "<index>_<name>_<R|B>_VID_", mode 1 "<index>_<name>_<R|B>_VID_0",
 * mode 2 "<index>_<name>_<R|B>_VID_<vid>"; any other mode leaves dst
 * untouched. The name is cut to 47 characters and every ',' in it becomes
 * '_'; the letter is R when connType contains "Routed", otherwise B; the
 * index is printed as a signed decimal number. A NULL name or connType counts
 * as empty; a NULL dst is not written.
 * dst must hold QVS_GENERATE_NAME_SIZE (78) bytes. Always returns 0.
 * @param index connection index
 * @param name connection name
 * @param connType connection type text
 * @param vid VLAN identifier
 * @param mode 0, 1 or 2 as above
 * @param dst caller's buffer of QVS_GENERATE_NAME_SIZE bytes
 * @par Touches
 * nothing but dst. */
QVS_API int generateName(unsigned int index, const char *name, const char *connType,
                         int vid, uint8_t mode, char *dst);

/** Replaces every occurrence of `from` by `to` in the text held in a buffer of
 * `size` bytes, left to right, in place. The result is cut so that it fits:
 * the rewrite stops once its length reaches size - strlen(to) - 1 (the first
 * step always runs), then at most size - 1 characters are copied back, the
 * rest of the buffer is zeroed and its last byte set to 0.
 * Returns str. The text is returned unchanged when `from` is empty, any
 * pointer is NULL, no work buffer of `size` bytes can be allocated, or size
 * is smaller than strlen(to) + 1 (no room for one replacement).
 * @param str writable text in a buffer of size bytes
 * @param size bytes of the buffer
 * @param from text replaced
 * @param to replacement text
 * @par Touches
 * the buffer and a temporary heap block. */
QVS_API char *str_replace(char *str, size_t size, const char *from, const char *to);

/** 1 when every character of the text is a hexadecimal digit (0-9, a-f, A-F)
 * or the text is empty; 0 otherwise, and 0 for NULL.
 * @param str text
 * @par Touches
 * nothing. */
QVS_API int qvs_is_hex_string(const char *str);

/** 0 when the 6 bytes are all 0x00 or all 0xFF (or mac is NULL); 1 for any
 * other address, multicast ones included.
 * @param mac the 6 address bytes
 * @par Touches
 * nothing. */
QVS_API int isValidMac(const unsigned char *mac);

/* ==== System facts ======================================================== */
/* Read-only facts for the management processes: the largest firmware image,
 * the default configuration file, area and province, CPU, RAM and flash use,
 * the software version. No state is kept between calls. */

/** Bytes available for a firmware image: the sizes of the "rootfs-1" and
 * "framework-1" partitions of "/proc/mtd" added up. Lines (256-byte buffer)
 * containing either name are scanned "%s %x %x %s" (device, size, erase
 * size, name); a partition that is not listed counts 0, and a later line of
 * the same partition overrides an earlier one.
 * @param size set in bytes; left untouched when "/proc/mtd" cannot be
 *             opened (NULL: nothing written)
 * @return 0 in every case
 * @par Touches
 * reads "/proc/mtd". */
QVS_API int GetMaxImageSize(uint32_t *size);

/** Path of the factory default configuration for the gateway's area and
 * province (`libqv_sys_getArea`, `libqv_sys_getProvince`, 32 bytes each):
 * the first that exists of "/userconfig/config/customized/`A`_`P`.default.enc",
 * "/usr/config/`A`_`P`.default.enc" and
 * "/userconfig/config/oem/`A`_`P`.default.enc" (`A` the area, `P` the
 * province); otherwise "/usr/config/CN_WX.default.enc" for area CN and
 * province WX, else "/usr/config/config.default.enc" (these two without
 * testing that they exist). A path longer than 95 characters is cut, and
 * the cut path is what is tested.
 * @return a static 96-byte text owned by the library and overwritten by
 *         every call: do not free it, copy it before calling again
 * @par Touches
 * the two platform calls, access() on the candidate paths; logs
 * `"final default xml is %s\n."` with the path at level 1 (the full stop follows the
 * line end). */
QVS_API char *getPreDefaultXml(void);

/** Area and province codes of the gateway from the platform.
 * @param area 32-byte buffer filled by `libqv_sys_getArea`, or NULL
 * @param province 32-byte buffer filled by `libqv_sys_getProvince`, or NULL
 * @return the province call's result when province is given, else the area
 *         call's result, else 0 (both NULL); the platform gives 0 on success
 *         and a negative value on failure
 * @par Touches
 * the platform calls only. */
QVS_API int getAreaAndProvince(char *area, char *province);

/** CPU occupancy in percent (0 to 100) as the platform measures it
 * (`libqv_sys_getCpuUsage`).
 * @param percent written only when the platform call succeeds; left
 *                untouched otherwise (NULL: nothing written)
 * @return 0 in every case
 * @par Touches
 * the platform call only. */
QVS_API int getCpuOccupy(unsigned int *percent);

/** RAM occupancy in percent, 100 * (MemTotal - MemAvailable) / MemTotal,
 * truncated, from the first 8192 bytes of "/proc/meminfo" (MemAvailable is
 * looked for after MemTotal).
 * @param percent written on success only (may be NULL)
 * @return 0; -1 when the file cannot be opened (nothing printed), when it is
 *         empty (prints "Invalid parameters."), or when MemTotal or
 *         MemAvailable is missing or MemTotal is not a positive number
 *         (prints "couln't parser, parameter error.")
 * @par Touches
 * reads "/proc/meminfo"; the two texts go to standard output (puts), not to
 * the log. */
QVS_API int getRamOccupy(unsigned int *percent);

/** Flash occupancy in percent: the used 1K blocks of the mounts
 * "/userconfig/config" and "/opt/sgw/apps" plus a fixed 50922 blocks, of
 * 262144 blocks (256 MB): ((sizes + 50922 - available) * 100) / 262144,
 * truncated toward zero (above 100 when the mounts are full).
 * @param percent written whenever the listing could be read, whatever the
 *                result (may be NULL)
 * @return 0 when exactly two such lines were listed; -1 otherwise, and -1
 *         with percent untouched when "/tmp/flashsize" cannot be read
 * @par Touches
 * runs "df>/tmp/flashsize" and then "rm /tmp/flashsize" with system(), and
 * reads the listing (128-byte lines). */
QVS_API int getFLASHOccupy(int *percent);

/** Copies the software version text of the device information object
 * (OID 3) into dst with an unbounded copy.
 * @param dst caller's buffer of at least 64 bytes (the version field's size)
 * @return 0; -1 when the store cannot be attached, the object is missing,
 *         the version text is empty or dst is NULL (dst untouched)
 * @par Touches
 * attaches to the store by itself and detaches on every path; logs
 * `"xmlShm init error.\r\n"` (level 1) when the store refuses, else
 * `"xmlShm init success.\r\n"` (level 5). */
QVS_API int qvs_getSWVersion(char *dst);

/* ==== Bridge and WAN helpers ============================================== */
/* The LAN bridge's forwarding database, an Ethernet port made a tagged member
 * of "br0", the PVC index for a new WAN connection and the bindings of LAN
 * interfaces to bridged WAN connections of the OTHER service. */

/** One record of a bridge's forwarding database as the kernel publishes it
 * in "/sys/class/net/`bridge`/brforward" (host byte order), copied unchanged.
 * Layout: 16 bytes on every target; the ageing timer at offset 8, the high
 * bits of the port number at offset 12. */
struct qvs_fdb_entry {
    uint8_t mac_addr[6];         /**< MAC address */
    uint8_t port_no;             /**< bridge port number, low 8 bits */
    uint8_t is_local;            /**< non-zero: an address of the bridge itself */
    uint32_t ageing_timer_value; /**< hundredths of a second since the host was last seen */
    uint8_t port_hi;             /**< bridge port number, high 8 bits */
    uint8_t pad0;                /**< padding */
    uint16_t unused;             /**< unused */
};

/** Finds the forwarding record of one MAC address. The file is read in
 * batches of 32 records until its end or more than 96 records were read, so
 * at most 128 records are considered. Local records count too; the first
 * equal record in file order wins.
 * @param brname bridge name (the path is cut at 127 characters)
 * @param mac 6 bytes
 * @param out receives the 16 bytes of the record when found
 * @return 1 when found; 0 when not found or the file cannot be opened
 * @par Touches
 * reads "/sys/class/net/`brname`/brforward". */
QVS_API int brctl_getmacs_by_mac(const char *brname, const unsigned char *mac, struct qvs_fdb_entry *out);

/** Copies, in file order, the learned (not local) records among the first
 * min(records read, max) records of a bridge's forwarding database, read as
 * for brctl_getmacs_by_mac() (at most 128 records). The maximum bounds the
 * records examined: local records among them reduce the result.
 * @param brname bridge name (the path is cut at 127 characters)
 * @param out room for max records (at most 128 are ever written)
 * @param max records to examine; below 1 gives 0 with out untouched
 * @return the number of records written; 0 when the file cannot be opened
 * @par Touches
 * reads "/sys/class/net/`brname`/brforward". */
QVS_API int brctl_getmacs(const char *brname, struct qvs_fdb_entry *out, int max);

/** Makes an Ethernet port a tagged member of the LAN bridge "br0", through
 * the VLAN device `V` = "`ifname`.`vid`" (16-byte buffer, cut at 15
 * characters), in this order: `libqv_netApi_remDev`(V); 200 ms pause;
 * "ifconfig `ifname` mtu 2000"; `libqv_netApi_addDev`(ifname, V, 3, vid, 0,
 * 0, 0, 0); pause; "ifconfig `ifname` promisc"; pause; "ifconfig `V` up";
 * pause; "brctl addif br0 `V`". The pauses are the only ordering guarantee
 * (the call takes at least 800 ms); results of the device calls and
 * commands are not checked.
 * @param ifname port name, must begin with "eth"; text with a shell meta
 *               character, or too long for a 128-byte command line, is
 *               refused with a level-1 log line
 * @param vid VLAN identifier
 * @return 0; -1, with nothing run, when ifname does not begin with "eth" or
 *         is refused
 * @par Touches
 * the two platform device calls and four command lines through
 * `qvs_system`. */
QVS_API int qvsUtil_setEthToLan(const char *ifname, int vid);

/** The PVC index for a new WAN connection: over the WANPPPConnection and
 * WANIPConnection objects 1 to 8 of connection devices 1 to 16 of WANDevice
 * 1, the lowest index from 1 that none uses below the highest index in use,
 * else one above it (capped at 20); 1 when there is no WAN device or no
 * index in use. Indices above 19 only raise the highest.
 * @param handle caller's store handle; 0 gives 1 without touching the store
 * @return 1 to 20
 * @par Touches
 * reads the store by object name through the caller's handle (never
 * attaches, writes or saves). */
QVS_API int Qvs_getpvcIndex(uint32_t handle);

/** Whether a LAN interface is bound to an enabled bridged WAN connection of
 * the OTHER service: a connection (connection devices 1 to 16, PPP then IP
 * connections 1 to 8) whose "Enable" is set, whose "ConnectionType"
 * contains "Bridged", whose "X_QV_ServiceList" contains "OTHER" and whose
 * "X_QV_LanInterface" contains the key as a substring. The key is the path
 * (cut at 255 characters), except that a path containing
 * "WLANConfiguration" is read as
 * "InternetGatewayDevice.LANDevice.1.WLANConfiguration.`k`" and looked up
 * as "InternetGatewayDevice.WiFi.SSID.`k`" (`k` 0 when the path has another
 * shape).
 * @param handle caller's store handle
 * @param path LAN interface object path
 * @return 1 when bound; 0 otherwise, for a NULL path and a zero handle
 * @par Touches
 * reads the store by object name through the caller's handle (never
 * attaches, writes or saves). */
QVS_API int isIntfBindByOtherBridgeWan(uint32_t handle, const char *path);

#ifdef __cplusplus
}
#endif

#endif /* QVS_UTILS_H */
