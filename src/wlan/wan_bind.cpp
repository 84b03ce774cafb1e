// SPDX-License-Identifier: MIT
// Which WAN connection an SSID is bound to.
#include <cstdio>
#include <cstring>

#include "wlan/ssid_map.hpp"

namespace qvs::wlan {

namespace {

constexpr int kKeySize = 1025;
constexpr int kConnDevices = 16;
constexpr int kConnsPerDevice = 8;

// True when one of the comma-separated pieces of the connection's bound
// interfaces equals key; the interface name is then copied into ifname.
bool binds(const QVS_WAN_CONN_REC *conn, const char *key, char *ifname) {
    char list[sizeof conn->X_QV_LanInterface + 1] = {};
    std::memcpy(list, conn->X_QV_LanInterface, ::strnlen(conn->X_QV_LanInterface, sizeof conn->X_QV_LanInterface));
    char *save = nullptr;
    for (char *piece = ::strtok_r(list, ",", &save); piece != nullptr; piece = ::strtok_r(nullptr, ",", &save)) {
        if (std::strcmp(piece, key) != 0) continue;
        std::size_t n = ::strnlen(conn->X_QV_IfName, sizeof conn->X_QV_IfName - 1);
        std::memcpy(ifname, conn->X_QV_IfName, n);
        ifname[n] = '\0';
        return true;
    }
    return false;
}

}  // namespace

}  // namespace qvs::wlan

using namespace qvs;
using namespace qvs::wlan;

extern "C" {

int qvs_wlan_get_bind_ifname_by_ssididx(int ssid_idx, char *ifname) {
    QVS_ATTACH(store, "XMLSHMINIT fail\n");
    if (!store) return kErrAttach;
    const Handle handle = store.handle();

    char key[kKeySize] = {};
    std::snprintf(key, sizeof key, "%s%d", "InternetGatewayDevice.WiFi.SSID.", ssid_idx);

    if (ifname == nullptr) return kOk;
    ifname[0] = '\0';

    if (object<QVS_WAN_DEVICE_REC>(handle, QVS_OID_WAN_DEVICE, QVS_IA_VALUE(1, "%d", 1)) == nullptr)
        return kErrSelector;

    for (int dev = 1; dev <= kConnDevices; ++dev) {
        if (object<QVS_WAN_CONN_DEVICE_REC>(handle, QVS_OID_WAN_CONN_DEVICE, QVS_IA_VALUE(2, "%d,%d", 1, dev)) == nullptr)
            continue;
        for (int conn = 1; conn <= kConnsPerDevice; ++conn) {
            const auto *ppp = object<QVS_WAN_CONN_REC>(handle, QVS_OID_WAN_PPP_CONN, QVS_IA_VALUE(3, "%d,%d,%d", 1, dev, conn));
            if (ppp != nullptr && binds(ppp, key, ifname)) return kOk;
        }
        for (int conn = 1; conn <= kConnsPerDevice; ++conn) {
            const auto *ip = object<QVS_WAN_CONN_REC>(handle, QVS_OID_WAN_IP_CONN, QVS_IA_VALUE(3, "%d,%d,%d", 1, dev, conn));
            if (ip != nullptr && binds(ip, key, ifname)) return kOk;
        }
    }
    return kErrSelector;
}

}  // extern "C"
