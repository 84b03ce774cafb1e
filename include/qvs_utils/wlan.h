/* SPDX-License-Identifier: MIT */
/*
 * libqvs_utils, WLAN: SSID numbering, merge and guest lists, adding and
 * deleting SSIDs, scans, the Wi-Fi agent, OMCI Wi-Fi VLANs and stations.
 *
 * Callers include <qvs_utils.h>, which includes every family's header;
 * this one also compiles on its own.
 */
#ifndef QVS_UTILS_WLAN_H
#define QVS_UTILS_WLAN_H

#include <stddef.h>
#include <stdint.h>

#include "api.h"

#ifdef __cplusplus
extern "C" {
#endif

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
 * reads "X_QV_External_SSID_Map" of the Wi-Fi common object.
 * @par Thread safety
 * MT-Safe. */
QVS_API int qvs_wlan_get_ssid_map(uint32_t handle, uint8_t *table, int *count);

/** Internal index of an external index (0 when the external index is free),
 * or -1 when the index is below 1, the map cannot be read or holds fewer
 * entries than the index.
 * @param handle attached store handle
 * @param ext_idx external SSID index, 1 to 16
 * @par Touches
 * reads the SSID map from the store.
 * @par Thread safety
 * MT-Safe. */
QVS_API int qvs_wlan_get_internal_ssididx_by_ext_ssididx(uint32_t handle, int ext_idx);

/** External index (first map position holding internal_idx, plus 1), or -1
 * when the map cannot be read, internal_idx is outside 1 to 16 or no entry
 * read holds it.
 * @param handle attached store handle
 * @param internal_idx internal SSID index, 1 to 16
 * @par Touches
 * reads the SSID map from the store.
 * @par Thread safety
 * MT-Safe. */
QVS_API int qvs_wlan_get_ext_ssididx_by_internal_ssididx(uint32_t handle, int internal_idx);

/** The ubus index taken as an internal index value: the external index that
 * maps to it (first match among all 16 positions), 0 when none does; -1 when
 * the index is below 1, the map cannot be read or holds fewer entries than
 * the index.
 * @param handle attached store handle
 * @param ubus_idx ubus SSID index of the Wi-Fi agent
 * @par Touches
 * reads the SSID map from the store.
 * @par Thread safety
 * MT-Safe. */
QVS_API int qvs_wlan_get_ssididx_by_ubus_ssididx(uint32_t handle, int ubus_idx);

/** The ubus index taken as a zero-based external position: the internal index
 * of external index ubus_idx + 1 (0 past the table's end); -1 under the same
 * conditions as qvs_wlan_get_internal_ssididx_by_ext_ssididx.
 * @param handle attached store handle
 * @param ubus_idx ubus SSID index (zero-based external position)
 * @par Touches
 * reads the SSID map from the store.
 * @par Thread safety
 * MT-Safe. */
QVS_API int qvs_wlan_get_internal_ssididx_by_ubus(uint32_t handle, int ubus_idx);

/** Radio of an internal index: 2 for 9 to 16, 1 for anything else.
 * @param internal_idx internal SSID index
 * @par Touches
 * nothing (pure computation).
 * @par Thread safety
 * MT-Safe. */
QVS_API int qvs_wlan_internal_ssididx_to_radioidx(int internal_idx);

/** Radio of a station-side interface index: 2 for 1, 1 for anything else.
 * @param sta_idx station-side interface index
 * @par Touches
 * nothing (pure computation).
 * @par Thread safety
 * MT-Safe. */
QVS_API int qvs_wlan_internal_staidx_to_radioidx(int sta_idx);

/** Attaches to the store itself. 1 when the external index's SSID lies on
 * radio 1 (internal 1 to 8, also when the index is unknown), 0 when it lies
 * on radio 2 or the store cannot be attached.
 * @param ext_idx external SSID index, 1 to 16
 * @par Touches
 * attaches to the store, reads the SSID map, detaches on every path.
 * @par Thread safety
 * MT-Safe. */
QVS_API int qvs_wlan_get_ssid_band(int ext_idx);

/** Always 1: both radios are present.
 * @par Touches
 * nothing.
 * @par Thread safety
 * MT-Safe. */
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
 * reads the text from the Wi-Fi common object only.
 * @par Thread safety
 * MT-Unsafe race:strtok: the list text is split with strtok(), whose position
 * is one for the whole process. */
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
 * the SSID objects' "X_QV_SSID_Bitmap", "SSID" and security parameters; saves the store (no reply).
 * @par Thread safety
 * MT-Unsafe race:ssid_bitmap: each SSID's "X_QV_SSID_Bitmap" is read, changed
 * and written back in separate store calls, so a concurrent change of the same
 * bitmap is lost. */
QVS_API int qvs_wlan_set_same_ssid(uint32_t handle, int src_ext_idx, int dst_ext_idx);

/** Clears every merge mark, renames each formerly merged SSID of internal
 * slots 1 to 8 to its first 29 characters plus "-5G", and saves (no reply).
 * 0; -1 zero handle.
 * @param handle attached store handle
 * @par Touches
 * "X_QV_SSID_Bitmap" and "SSID" of the SSID objects; saves the store (no reply).
 * @par Thread safety
 * MT-Unsafe race:ssid_bitmap: each SSID's "X_QV_SSID_Bitmap" is read, changed
 * and written back in separate store calls, so a concurrent change of the same
 * bitmap is lost. */
QVS_API int qvs_wlan_cancel_same_ssid(uint32_t handle);

/** 1 when any of the 16 SSIDs carries the merge mark, else 0; -1 zero handle.
 * @param handle attached store handle
 * @par Touches
 * reads "X_QV_SSID_Bitmap" of the 16 SSIDs.
 * @par Thread safety
 * MT-Safe. */
QVS_API int qvs_wlan_get_same_ssid_status(uint32_t handle);

/** Entry at position (1 to 16) of the shared or guest list (selector
 * QVS_WLAN_SHARED_LIST or QVS_WLAN_GUEST_LIST), or -1 for a bad position or
 * selector, an unreadable or empty list, or fewer entries than the position.
 * @param handle attached store handle
 * @param position list position, 1 to 16
 * @param selector QVS_WLAN_SHARED_LIST or QVS_WLAN_GUEST_LIST
 * @par Touches
 * reads the selected list text of the Wi-Fi common object.
 * @par Thread safety
 * MT-Unsafe race:strtok: the list text is split with strtok(), whose position
 * is one for the whole process. */
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
 * reads and writes the selected list text of the Wi-Fi common object.
 * @par Thread safety
 * MT-Unsafe race:strtok race:mapped_list: the list text is split with
 * strtok(), whose position is one for the whole process, and the list is read
 * and written back in separate store calls, so a concurrent change of the same
 * list is lost. */
QVS_API int qvs_wlan_update_mapped_list(uint32_t handle, int position, int value, int selector);

/** Tears down the guest settings of an external SSID: guest duration 0, port
 * isolation off, disabled, guest mark (0x20000) cleared; removes it from the
 * guest list when found at positions 1 to 15. Never saves. 0; -1 zero handle.
 * @param handle attached store handle
 * @param ext_idx external SSID index
 * @par Touches
 * the SSID's guest, isolation, enable and "X_QV_SSID_Bitmap" parameters and the guest list.
 * @par Thread safety
 * MT-Unsafe race:strtok race:ssid_bitmap race:mapped_list: the guest list is
 * split with strtok(), whose position is one for the whole process; the SSID's
 * "X_QV_SSID_Bitmap" and the guest list are read and written back in separate
 * store calls, so a concurrent change of either is lost. */
QVS_API int qvs_wlan_clean_guest_ssid_conf_by_ext_ssididx(uint32_t handle, int ext_idx);

/** Number of guest SSIDs (0 to 8) on the radio of internal index
 * internal_idx: slots 9 to 16 when it is above 8, slots 1 to 8 otherwise;
 * -1 zero handle.
 * @param handle attached store handle
 * @param internal_idx internal SSID index choosing the radio
 * @par Touches
 * reads "X_QV_SSID_Bitmap" of the radio's eight SSIDs.
 * @par Thread safety
 * MT-Safe. */
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
 * attaches to the store, reads the WAN connection objects, detaches on every path.
 * @par Thread safety
 * MT-Safe. */
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
 * the SSID map and "X_QV_SSID_Bitmap" (read); writes the map.
 * @par Thread safety
 * MT-Unsafe race:ssid_map: the map is read, a free slot chosen and the map
 * written back in separate store calls, so concurrent adds can take the same
 * slot and a concurrent change of the map is lost. */
QVS_API int qvs_wlan_add_ssid(uint32_t handle, int ext_idx, int band);

/** Disables the SSID of an external index and frees the index in the map.
 * Never saves. 0 (also when refusing to delete internal slot 1 or 9, the
 * radios' first SSIDs); -1 zero handle, unknown or free external index, or
 * failed map write.
 * @param handle attached store handle
 * @param ext_idx external SSID index to delete
 * @par Touches
 * the SSID's "Enable" and the SSID map.
 * @par Thread safety
 * MT-Unsafe race:ssid_map: the map is read and written back in separate store
 * calls, so a concurrent change of the map is lost. */
QVS_API int qvs_wlan_del_ssid(uint32_t handle, int ext_idx);

/** The same with the ubus index taken as the internal index; the external
 * index freed is the one mapping to it (none: the map is only rewritten).
 * 0; -1 zero handle, index below 1 or failed map write.
 * @param handle attached store handle
 * @param ubus_idx ubus index, taken as the internal index
 * @par Touches
 * the SSID's "Enable" and the SSID map.
 * @par Thread safety
 * MT-Unsafe race:ssid_map: the map is read and written back in separate store
 * calls, so a concurrent change of the map is lost. */
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
 * the radio's "X_QV_DiagnosticsState" (written).
 * @par Thread safety
 * MT-Safe race:radio: a radio has one scan state; concurrent scans of the same
 * radio read, and on failure overwrite, each other's state. */
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
 * statistics of the neighbour table (OID 392, 6000).
 * @par Thread safety
 * MT-Safe race:radio: a radio has one scan state; concurrent scans of the same
 * radio read, and on failure overwrite, each other's state. */
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
 * as qvs_wlan_start_scan and qvs_wlan_get_scan_result; standard error.
 * @par Thread safety
 * MT-Safe race:radio: a radio has one scan state; concurrent scans of the same
 * radio read, and on failure overwrite, each other's state. */
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
 * the radios' supported standards (read).
 * @par Thread safety
 * MT-Safe. */
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
 * the socket "/var/run/wlan_event_agent_socket", standard error.
 * @par Thread safety
 * MT-Safe: one connection per call; the send raises no SIGPIPE without
 * touching the process's signal disposition. */
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
 * the Wi-Fi agent's socket, the log, standard error.
 * @par Thread safety
 * MT-Safe. */
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
 * "/var/run/qvOmciWifi" (read), the switch and network device layer, the log.
 * @par Thread safety
 * MT-Safe. */
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
 * (read).
 * @par Thread safety
 * MT-Safe. */
QVS_API int qvs_wlan_get_sta_objidx_by_mac(int parent, const uint8_t *mac);

/** @name qvs_wlan_get_map_sta_num, qvs_wlan_get_map_bh_almac
 * @{ */
/** The mesh station count and backhaul AL MAC: not supported by this library.
 * @return always -1.
 * @par Touches
 * nothing.
 * @par Thread safety
 * MT-Safe. */
QVS_API int qvs_wlan_get_map_sta_num(void);
QVS_API int qvs_wlan_get_map_bh_almac(void);
/** @} */

#ifdef __cplusplus
}
#endif

#endif /* QVS_UTILS_WLAN_H */
