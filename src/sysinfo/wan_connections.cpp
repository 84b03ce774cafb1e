// SPDX-License-Identifier: MIT
// WAN connection helpers: the PVC index for a new connection, and whether a
// LAN interface is bound to a bridged connection of the OTHER service.
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "core/store.hpp"

namespace qvs::sysinfo {

namespace {

constexpr std::size_t kNameSize = 128;
constexpr std::size_t kKeySize = 256;
constexpr int kWanDevice = 1;
constexpr int kConnDevices = 16;
constexpr int kConnsPerDevice = 8;
// Flags of the PVC indices 0 to 19; higher indices only raise the maximum.
constexpr std::uint32_t kPvcFlags = 20;

const void *by_name(Handle h, const char *format, int dev = 0, int conn = 0) {
    char name[kNameSize] = {};
    std::snprintf(name, sizeof name, format, kWanDevice, dev, conn);
    return ::qvsXml_GetObjectByName(h, name, 1);
}

const QVS_WAN_CONN_REC *ppp(Handle h, int dev, int conn) {
    return static_cast<const QVS_WAN_CONN_REC *>(
        by_name(h, "InternetGatewayDevice.WANDevice.%d.WANConnectionDevice.%d.WANPPPConnection.%d", dev, conn));
}
const QVS_WAN_CONN_REC *ip(Handle h, int dev, int conn) {
    return static_cast<const QVS_WAN_CONN_REC *>(
        by_name(h, "InternetGatewayDevice.WANDevice.%d.WANConnectionDevice.%d.WANIPConnection.%d", dev, conn));
}
bool conn_device_exists(Handle h, int dev) {
    return by_name(h, "InternetGatewayDevice.WANDevice.%d.WANConnectionDevice.%d", dev) != nullptr;
}

// Marks the PVC index of one connection record and follows the maximum.
class PvcTable {
public:
    void visit(const QVS_WAN_CONN_REC *conn) {
        if (conn != nullptr && conn->X_QV_PVCIndex != 0) {
            if (conn->X_QV_PVCIndex < kPvcFlags) used_[conn->X_QV_PVCIndex] = true;
            last_ = conn->X_QV_PVCIndex;
        }
        if (last_ > maximum_) maximum_ = last_;
    }
    // The lowest free index below the highest in use, else one above it.
    int choice() const {
        if (maximum_ == 0 || !used_[1]) return 1;
        const std::uint32_t top = maximum_ < kPvcFlags - 1 ? maximum_ : kPvcFlags - 1;
        for (std::uint32_t k = 2; k <= top; ++k) {
            if (!used_[k]) return static_cast<int>(k);
        }
        return static_cast<int>(top) + 1;
    }

private:
    bool used_[kPvcFlags] = {};
    std::uint32_t last_ = 0;
    std::uint32_t maximum_ = 0;
};

bool binds_other_bridge(const QVS_WAN_CONN_REC *conn, const char *key) {
    return conn != nullptr && conn->Enable != 0 && std::strstr(conn->ConnectionType, "Bridged") != nullptr &&
           std::strstr(conn->X_QV_ServiceList, "OTHER") != nullptr && conn->X_QV_LanInterface[0] != '\0' &&
           std::strstr(conn->X_QV_LanInterface, key) != nullptr;
}

}  // namespace

}  // namespace qvs::sysinfo

using namespace qvs;
using namespace qvs::sysinfo;

extern "C" {

int Qvs_getpvcIndex(uint32_t handle) {
    if (handle == 0 || by_name(handle, "InternetGatewayDevice.WANDevice.%d") == nullptr) return 1;
    PvcTable table;
    for (int dev = 1; dev <= kConnDevices; ++dev) {
        if (!conn_device_exists(handle, dev)) continue;
        for (int conn = 1; conn <= kConnsPerDevice; ++conn) table.visit(ppp(handle, dev, conn));
        for (int conn = 1; conn <= kConnsPerDevice; ++conn) table.visit(ip(handle, dev, conn));
    }
    return table.choice();
}

int isIntfBindByOtherBridgeWan(uint32_t handle, const char *path) {
    if (handle == 0 || path == nullptr) return 0;
    char key[kKeySize] = {};
    if (std::strstr(path, "WLANConfiguration") != nullptr) {
        int instance = 0;
        std::sscanf(path, "InternetGatewayDevice.LANDevice.1.WLANConfiguration.%d", &instance);
        std::snprintf(key, sizeof key, "InternetGatewayDevice.WiFi.SSID.%d", instance);
    } else {
        std::snprintf(key, sizeof key, "%s", path);
    }
    for (int dev = 1; dev <= kConnDevices; ++dev) {
        if (!conn_device_exists(handle, dev)) continue;
        for (int conn = 1; conn <= kConnsPerDevice; ++conn) {
            if (binds_other_bridge(ppp(handle, dev, conn), key)) return 1;
        }
        for (int conn = 1; conn <= kConnsPerDevice; ++conn) {
            if (binds_other_bridge(ip(handle, dev, conn), key)) return 1;
        }
    }
    return 0;
}

}  // extern "C"
