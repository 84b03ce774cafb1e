/* SPDX-License-Identifier: MIT */
/*
 * libqvs_utils, bridge and WAN helpers: the LAN bridge's forwarding database,
 * an Ethernet port on "br0", WAN connection indices and bindings.
 *
 * Callers include <qvs_utils.h>, which includes every family's header;
 * this one also compiles on its own.
 */
#ifndef QVS_UTILS_BRIDGE_WAN_H
#define QVS_UTILS_BRIDGE_WAN_H

#include <stdint.h>

#include "api.h"

#ifdef __cplusplus
extern "C" {
#endif

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
 * reads "/sys/class/net/`brname`/brforward".
 * @par Thread safety
 * MT-Safe. */
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
 * reads "/sys/class/net/`brname`/brforward".
 * @par Thread safety
 * MT-Safe. */
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
 * `qvs_system`.
 * @par Thread safety
 * MT-Safe race:ifname: the port's VLAN device is removed and made again in
 * separate steps, so two set-ups of the same port must not overlap. */
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
 * attaches, writes or saves).
 * @par Thread safety
 * MT-Safe: the index returned may be taken by a concurrent connection set-up
 * before the caller uses it. */
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
 * attaches, writes or saves).
 * @par Thread safety
 * MT-Safe. */
QVS_API int isIntfBindByOtherBridgeWan(uint32_t handle, const char *path);

#ifdef __cplusplus
}
#endif

#endif /* QVS_UTILS_BRIDGE_WAN_H */
