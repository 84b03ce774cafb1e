// SPDX-License-Identifier: MIT
// System facts and bridge/WAN helpers: image size, default configuration,
// area and province, CPU/RAM/flash use, software version, the bridge
// forwarding table, Ethernet-to-LAN, PVC index, bridged-WAN binding.
#include <cstdio>
#include <cstring>

#include "qvs_utils.h"
#include "qvsctl.hpp"
#include "store.hpp"

namespace {

using qvsctl::Store;

// Software version destination: the version field's size and more.
constexpr std::size_t kVersionSize = 256;
// Forwarding records: room for every record the library ever examines.
constexpr int kMaxEntries = 128;

void print_entry(const char *name, const qvs_fdb_entry &e) {
    char mac[18];
    std::snprintf(mac, sizeof mac, "%02x:%02x:%02x:%02x:%02x:%02x", e.mac_addr[0], e.mac_addr[1], e.mac_addr[2],
                  e.mac_addr[3], e.mac_addr[4], e.mac_addr[5]);
    char line[96];
    std::snprintf(line, sizeof line, "%s port %u local %u ageing %u.%02u", mac,
                  static_cast<unsigned>(e.port_no) | (static_cast<unsigned>(e.port_hi) << 8),
                  static_cast<unsigned>(e.is_local), e.ageing_timer_value / 100, e.ageing_timer_value % 100);
    qvsctl::print_text(name, line);
}

int run_max_image(char **) {
    uint32_t size = 0;
    int r = GetMaxImageSize(&size);
    qvsctl::print_result(r);
    qvsctl::print_int("size", size);
    return qvsctl::kRan;
}

int run_default_xml(char **) {
    const char *path = getPreDefaultXml();
    qvsctl::print_result(0);
    qvsctl::print_text("path", path);
    return qvsctl::kRan;
}

int run_area_province(char **argv) {
    const char *which = argv[0] != nullptr ? argv[0] : "both";
    const bool want_area = std::strcmp(which, "both") == 0 || std::strcmp(which, "area") == 0;
    const bool want_province = std::strcmp(which, "both") == 0 || std::strcmp(which, "province") == 0;
    if (!want_area && !want_province && std::strcmp(which, "none") != 0) {
        std::fprintf(stderr, "qvsctl: '%s' is not both, area, province or none\n", which);
        return qvsctl::kBadArgs;
    }
    char area[32] = {};
    char province[32] = {};
    int r = getAreaAndProvince(want_area ? area : nullptr, want_province ? province : nullptr);
    qvsctl::print_result(r);
    if (want_area) qvsctl::print_text("area", area);
    if (want_province) qvsctl::print_text("province", province);
    return qvsctl::kRan;
}

int run_cpu(char **) {
    unsigned int percent = 0;
    int r = getCpuOccupy(&percent);
    qvsctl::print_result(r);
    qvsctl::print_int("percent", percent);
    return qvsctl::kRan;
}

int run_ram(char **) {
    unsigned int percent = 0;
    int r = getRamOccupy(&percent);
    std::fflush(stdout);
    qvsctl::print_result(r);
    qvsctl::print_int("percent", percent);
    return qvsctl::kRan;
}

int run_flash(char **) {
    int percent = 0;
    int r = getFLASHOccupy(&percent);
    qvsctl::print_result(r);
    qvsctl::print_int("percent", percent);
    return qvsctl::kRan;
}

int run_sw_version(char **) {
    char version[kVersionSize] = {};
    int r = qvs_getSWVersion(version);
    qvsctl::print_result(r);
    qvsctl::print_text("version", version);
    return qvsctl::kRan;
}

int run_getmacs(char **argv) {
    long long max = kMaxEntries;
    if (argv[1] != nullptr && !qvsctl::parse_int(argv[1], -2147483648LL, kMaxEntries, max)) return qvsctl::kBadArgs;
    qvs_fdb_entry entries[kMaxEntries] = {};
    int r = brctl_getmacs(argv[0], entries, static_cast<int>(max));
    qvsctl::print_result(r);
    for (int i = 0; i < r && i < kMaxEntries; ++i) {
        char name[24];
        std::snprintf(name, sizeof name, "entry.%d", i + 1);
        print_entry(name, entries[i]);
    }
    return qvsctl::kRan;
}

int run_getmacs_by_mac(char **argv) {
    unsigned char mac[6];
    if (!qvsctl::parse_mac(argv[1], mac)) return qvsctl::kBadArgs;
    qvs_fdb_entry entry = {};
    int r = brctl_getmacs_by_mac(argv[0], mac, &entry);
    qvsctl::print_result(r);
    if (r == 1) print_entry("entry", entry);
    return qvsctl::kRan;
}

int run_eth_to_lan(char **argv) {
    long long vid = 0;
    if (!qvsctl::parse_int(argv[1], -2147483648LL, 2147483647LL, vid)) return qvsctl::kBadArgs;
    qvsctl::print_result(qvsUtil_setEthToLan(argv[0], static_cast<int>(vid)));
    return qvsctl::kRan;
}

int run_pvc_index(char **) {
    Store s;
    qvsctl::print_result(Qvs_getpvcIndex(s.handle()));
    return qvsctl::kRan;
}

int run_bind_other(char **argv) {
    Store s;
    qvsctl::print_result(isIntfBindByOtherBridgeWan(s.handle(), argv[0]));
    return qvsctl::kRan;
}

const qvsctl::Command kCommands[] = {
    {"GetMaxImageSize", "", "bytes of the rootfs-1 and framework-1 partitions of /proc/mtd", 0, 0, run_max_image},
    {"getPreDefaultXml", "", "path of the default configuration for the area and province", 0, 0, run_default_xml},
    {"getAreaAndProvince", "[both|area|province|none]", "area and province codes of the gateway", 0, 1,
     run_area_province},
    {"getCpuOccupy", "", "CPU use in percent", 0, 0, run_cpu},
    {"getRamOccupy", "", "RAM use in percent from /proc/meminfo", 0, 0, run_ram},
    {"getFLASHOccupy", "", "flash use in percent from df", 0, 0, run_flash},
    {"qvs_getSWVersion", "", "software version of the device information object", 0, 0, run_sw_version},
    {"brctl_getmacs", "<bridge> [max]", "learned hosts among the first max forwarding records (default 128)", 1, 2,
     run_getmacs},
    {"brctl_getmacs_by_mac", "<bridge> <mac>", "forwarding record of one MAC address", 2, 2, run_getmacs_by_mac},
    {"qvsUtil_setEthToLan", "<ethN> <vid>", "make <ethN>.<vid> a member of br0", 2, 2, run_eth_to_lan},
    {"Qvs_getpvcIndex", "", "PVC index for a new WAN connection", 0, 0, run_pvc_index},
    {"isIntfBindByOtherBridgeWan", "<lan-interface-path>", "1 when bound to a bridged OTHER WAN connection", 1, 1,
     run_bind_other},
};

}  // namespace

QVSCTL_FAMILY(g_sysinfo, "sysinfo", "system facts, bridge and WAN helpers", kCommands);
