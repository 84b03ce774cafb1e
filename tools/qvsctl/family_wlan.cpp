// SPDX-License-Identifier: MIT
// WLAN family: SSID numbering, same-SSID merge, guest clean-up, adding and
// deleting SSIDs, scans and supported standards, the Wi-Fi agent message,
// OMCI Wi-Fi VLANs, station lookup. Functions taking a store handle get one
// attached here for the call (and detached after it).

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "qvs_utils.h"
#include "qvsctl.hpp"
#include "store.hpp"

namespace {

using qvsctl::Store;

bool arg_int(const char *text, int &out, long long min = -2147483648LL, long long max = 2147483647LL) {
    long long v = 0;
    if (!qvsctl::parse_int(text, min, max, v)) return false;
    out = static_cast<int>(v);
    return true;
}

void print_table(const uint8_t *table, int count) {
    std::string text;
    for (int i = 0; i < count && i < 16; ++i) {
        if (i > 0) text += ",";
        text += std::to_string(table[i]);
    }
    qvsctl::print_text("table", text.c_str());
}

// <function>(handle, int)
template <int (*F)(uint32_t, int)>
int run_handle_int(char **argv) {
    int a = 0;
    if (!arg_int(argv[0], a)) return qvsctl::kBadArgs;
    Store s;
    qvsctl::print_result(F(s.handle(), a));
    return qvsctl::kRan;
}

// <function>(handle, int, int)
template <int (*F)(uint32_t, int, int)>
int run_handle_int_int(char **argv) {
    int a = 0, b = 0;
    if (!arg_int(argv[0], a) || !arg_int(argv[1], b)) return qvsctl::kBadArgs;
    Store s;
    qvsctl::print_result(F(s.handle(), a, b));
    return qvsctl::kRan;
}

// <function>(handle)
template <int (*F)(uint32_t)>
int run_handle(char **) {
    Store s;
    qvsctl::print_result(F(s.handle()));
    return qvsctl::kRan;
}

// <function>(int)
template <int (*F)(int)>
int run_int(char **argv) {
    int a = 0;
    if (!arg_int(argv[0], a)) return qvsctl::kBadArgs;
    qvsctl::print_result(F(a));
    return qvsctl::kRan;
}

// Table readers: (handle, table, count) with the room as optional argument.
template <int (*F)(uint32_t, uint8_t *, int *)>
int run_table(char **argv) {
    int room = 16;
    if (argv[0] != nullptr && !arg_int(argv[0], room, -16, 16)) return qvsctl::kBadArgs;
    uint8_t table[16] = {};
    int count = room;
    Store s;
    int r = F(s.handle(), table, &count);
    qvsctl::print_result(r);
    qvsctl::print_int("count", count);
    print_table(table, r == 0 ? count : 0);
    return qvsctl::kRan;
}

int run_dual(char **) {
    qvsctl::print_result(qvs_wlan_get_dual_bandsupport());
    return qvsctl::kRan;
}

int run_update_mapped_list(char **argv) {
    int pos = 0, value = 0, selector = 0;
    if (!arg_int(argv[0], pos) || !arg_int(argv[1], value) || !arg_int(argv[2], selector)) return qvsctl::kBadArgs;
    Store s;
    qvsctl::print_result(qvs_wlan_update_mapped_list(s.handle(), pos, value, selector));
    return qvsctl::kRan;
}

int run_bind_ifname(char **argv) {
    int k = 0;
    if (!arg_int(argv[0], k)) return qvsctl::kBadArgs;
    char ifname[32] = {};
    qvsctl::print_result(qvs_wlan_get_bind_ifname_by_ssididx(k, ifname));
    qvsctl::print_text("ifname", ifname);
    return qvsctl::kRan;
}

int run_supported_standards(char **) {
    char text[64] = {};  // the function needs 50 bytes
    Store s;
    qvsctl::print_result(qvs_wlan_get_supported_standards_for_ct(s.handle(), text));
    qvsctl::print_text("standards", text);
    return qvsctl::kRan;
}

int run_agent_message(char **argv) {
    std::vector<unsigned char> bytes;
    if (!qvsctl::parse_hex(argv[0], bytes)) return qvsctl::kBadArgs;
    qvsctl::print_result(communicate_to_wlan_agent(bytes.data(), bytes.size()));
    return qvsctl::kRan;
}

int run_uplink_conn_info(char **argv) {
    qvsctl::print_result(qvs_set_uplink_wlan_conn_info(argv[0], argv[1], argv[2]));
    return qvsctl::kRan;
}

int run_omci_task(char **argv) {
    qvsTask_wlanUpToOmciMsg(argv[0]);  // no result: its effects are the switch's and network layer's
    return qvsctl::kRan;
}

int run_sta_by_mac(char **argv) {
    int parent = 0;
    unsigned char mac[6] = {};
    if (!arg_int(argv[0], parent) || !qvsctl::parse_mac(argv[1], mac)) return qvsctl::kBadArgs;
    qvsctl::print_result(qvs_wlan_get_sta_objidx_by_mac(parent, mac));
    return qvsctl::kRan;
}

template <int (*F)(void)>
int run_none(char **) {
    qvsctl::print_result(F());
    return qvsctl::kRan;
}

const qvsctl::Command kCommands[] = {
    {"qvs_wlan_get_ssid_map", "[room]", "the external-to-internal SSID map (room 16 by default)", 0, 1,
     run_table<qvs_wlan_get_ssid_map>},
    {"qvs_wlan_get_internal_ssididx_by_ext_ssididx", "<ext-index>", "internal index of an external index", 1, 1,
     run_handle_int<qvs_wlan_get_internal_ssididx_by_ext_ssididx>},
    {"qvs_wlan_get_ext_ssididx_by_internal_ssididx", "<int-index>", "external index of an internal index", 1, 1,
     run_handle_int<qvs_wlan_get_ext_ssididx_by_internal_ssididx>},
    {"qvs_wlan_get_ssididx_by_ubus_ssididx", "<ubus-index>", "external index mapping to the ubus index (0: none)", 1, 1,
     run_handle_int<qvs_wlan_get_ssididx_by_ubus_ssididx>},
    {"qvs_wlan_get_internal_ssididx_by_ubus", "<ubus-index>", "internal index at zero-based external position ubus", 1, 1,
     run_handle_int<qvs_wlan_get_internal_ssididx_by_ubus>},
    {"qvs_wlan_internal_ssididx_to_radioidx", "<int-index>", "radio of an internal index (1: 5 GHz, 2: 2.4 GHz)", 1, 1,
     run_int<qvs_wlan_internal_ssididx_to_radioidx>},
    {"qvs_wlan_internal_staidx_to_radioidx", "<sta-index>", "radio of a station-side interface index", 1, 1,
     run_int<qvs_wlan_internal_staidx_to_radioidx>},
    {"qvs_wlan_get_ssid_band", "<ext-index>", "1 when the SSID lies on radio 1 (slots 1 to 8)", 1, 1,
     run_int<qvs_wlan_get_ssid_band>},
    {"qvs_wlan_get_dual_bandsupport", "", "always 1", 0, 0, run_dual},
    {"qvs_wlan_get_shared_ssid_list", "[room]", "the shared SSID list", 0, 1, run_table<qvs_wlan_get_shared_ssid_list>},
    {"qvs_wlan_get_guest_ssid_list", "[room]", "the guest SSID list", 0, 1, run_table<qvs_wlan_get_guest_ssid_list>},
    {"qvs_wlan_set_same_ssid", "<src-ext> <dst-ext>", "merge: dst takes src's name and security", 2, 2,
     run_handle_int_int<qvs_wlan_set_same_ssid>},
    {"qvs_wlan_cancel_same_ssid", "", "undo every merge; 5 GHz names get \"-5G\"", 0, 0,
     run_handle<qvs_wlan_cancel_same_ssid>},
    {"qvs_wlan_get_same_ssid_status", "", "1 when any SSID is merged", 0, 0, run_handle<qvs_wlan_get_same_ssid_status>},
    {"qvs_wlan_get_ext_ssid_idx_by_mapped_ssid_oid_idx", "<position> <selector>",
     "list entry at a position (selector 0x10000 shared, 0x20000 guest)", 2, 2,
     run_handle_int_int<qvs_wlan_get_ext_ssid_idx_by_mapped_ssid_oid_idx>},
    {"qvs_wlan_update_mapped_list", "<position> <value> <selector>", "set (or clear with 0) one list entry", 3, 3,
     run_update_mapped_list},
    {"qvs_wlan_clean_guest_ssid_conf_by_ext_ssididx", "<ext-index>", "tear down a guest SSID", 1, 1,
     run_handle_int<qvs_wlan_clean_guest_ssid_conf_by_ext_ssididx>},
    {"qvs_wlan_get_guest_ssid_count_per_radio", "<int-index>", "guest SSIDs on that index's radio", 1, 1,
     run_handle_int<qvs_wlan_get_guest_ssid_count_per_radio>},
    {"qvs_wlan_get_bind_ifname_by_ssididx", "<ssid-instance>", "WAN interface the SSID is bound to", 1, 1,
     run_bind_ifname},
    {"qvs_wlan_add_ssid", "<ext-index> <band>", "map ext-index to a free slot (band 0: 1-8, else 9-16)", 2, 2,
     run_handle_int_int<qvs_wlan_add_ssid>},
    {"qvs_wlan_del_ssid", "<ext-index>", "disable and unmap an SSID", 1, 1, run_handle_int<qvs_wlan_del_ssid>},
    {"qvs_wlan_del_ssid_by_ubus", "<ubus-index>", "the same by ubus index", 1, 1,
     run_handle_int<qvs_wlan_del_ssid_by_ubus>},
    {"qvs_wlan_start_scan", "<radio>", "request a neighbour scan (radio 1: slots 1-8, 2: slots 9-16)", 1, 1,
     run_handle_int<qvs_wlan_start_scan>},
    {"qvs_wlan_start_scan_force", "<radio>", "request a forced scan", 1, 1, run_handle_int<qvs_wlan_start_scan_force>},
    {"qvs_wlan_start_scan_partial", "<radio>", "request a partial scan", 1, 1,
     run_handle_int<qvs_wlan_start_scan_partial>},
    {"qvs_wlan_get_scan_result", "<radio>", "wait up to 10 s for the scan: neighbours found, or a failure", 1, 1,
     run_handle_int<qvs_wlan_get_scan_result>},
    {"qvs_stats_wlan_neighbor", "<radio> <retry>", "scan and wait, retry more times 3 s apart", 2, 2,
     run_handle_int_int<qvs_stats_wlan_neighbor>},
    {"qvs_stats_wlan_neighbor_force", "<radio> <retry>", "the same with forced scans", 2, 2,
     run_handle_int_int<qvs_stats_wlan_neighbor_force>},
    {"qvs_wlan_get_supported_standards_for_ct", "", "802.11 standards of both radios, e.g. 802.11b/802.11n", 0, 0,
     run_supported_standards},
    {"communicate_to_wlan_agent", "<message-hex>", "send bytes to the Wi-Fi agent's socket", 1, 1,
     run_agent_message},
    {"qvs_set_uplink_wlan_conn_info", "<ssid> <password> <security-mode>",
     "send the uplink Wi-Fi credentials to the Wi-Fi agent", 3, 3, run_uplink_conn_info},
    {"qvsTask_wlanUpToOmciMsg", "<wifi-ifname>", "apply that interface's line of /var/run/qvOmciWifi (no result)",
     1, 1, run_omci_task},
    {"qvs_wlan_get_sta_objidx_by_mac", "<parent> <mac>", "station instance (1-128) with that MAC; below 1: none", 2,
     2, run_sta_by_mac},
    {"qvs_wlan_get_map_sta_num", "", "mesh station count: not supported, -1", 0, 0,
     run_none<qvs_wlan_get_map_sta_num>},
    {"qvs_wlan_get_map_bh_almac", "", "mesh backhaul AL MAC: not supported, -1", 0, 0,
     run_none<qvs_wlan_get_map_bh_almac>},
};

}  // namespace

QVSCTL_FAMILY(g_wlan, "wlan",
              "Wi-Fi SSIDs (numbering, merge, guests, add/delete), scans, agent message, OMCI VLANs, stations",
              kCommands);
