// SPDX-License-Identifier: MIT
// Associated stations: finding one by its MAC address; the mesh queries
// this library does not support.
#include <cstring>

#include "core/store.hpp"

namespace qvs::wlan {

namespace {

constexpr int kStations = 128;  // station instances searched under one parent
constexpr int kMacSize = 6;
constexpr int kErrNullMac = -22;

}  // namespace

}  // namespace qvs::wlan

using namespace qvs;
using namespace qvs::wlan;

extern "C" {

int qvs_wlan_get_sta_objidx_by_mac(int parent, const uint8_t *mac) {
    if (mac == nullptr) return kErrNullMac;
    // A failed attach is logged as every self-attaching function logs it;
    // only the result differs (-1001 instead of -1).
    QVS_ATTACH(store, "XMLSHMINIT fail\n");
    if (!store) return kErrAttach;

    int read = kFail;
    for (int station = 1; station <= kStations; ++station) {
        const QVS_IA ia = QVS_IA_VALUE(2, "%d,%d", parent, station);
        uint8_t found[kMacSize] = {};
        read = ::qvsXml_getParameterByOID(store.handle(), QVS_OID_WIFI_ASSOC_STA, ia, "MACAddress", found);
        if (read >= 0 && std::memcmp(found, mac, kMacSize) == 0) return station;
    }
    // Deliberately the last read's code: 0 when station 128 exists but does
    // not match, the store's negative code when it does not exist.
    return read;
}

int qvs_wlan_get_map_sta_num(void) { return kFail; }

int qvs_wlan_get_map_bh_almac(void) { return kFail; }

}  // extern "C"
